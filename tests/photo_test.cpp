#include "support/journal_test.h"

#include <array>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto InsertPhoto = "INSERT INTO PlantPhotos(UUID,PlantUUID,PhotoDate,FilePath,Caption) VALUES(?,?,?,?,?);";
constexpr auto UpdatePhoto = "UPDATE PlantPhotos SET PhotoDate=?,FilePath=?,Caption=? WHERE UUID=? AND PlantUUID=?;";

class PhotoTest : public JournalTest
{
  protected:
    PhotoTest() : Basil(NewPlant("Basil")) {}

    // Every field differs from the other fields and from its default.
    PlantPhoto Full(const std::string& uuid) const
    {
        return {.ID = 99,
                .UUID = uuid,
                .PlantUUID = Basil.UUID,
                .PhotoDate = "2024-06-01",
                .FilePath = "photos/basil.jpg",
                .Caption = "First leaves"};
    }

    PlantPhoto NewPhoto(const std::string& uuid)
    {
        PlantPhoto photo = Full(uuid);
        EXPECT_TRUE(Repository.CreatePlantPhoto(photo));
        return photo;
    }

    Rows StoredPhotos() const
    {
        return QueryRows("SELECT ID,UUID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos ORDER BY ID;");
    }

    Plant Basil;
};

TEST_F(PhotoTest, CreateStoresEveryFieldInItsColumn)
{
    NewPhoto("first");
    const PlantPhoto photo = NewPhoto("second");
    EXPECT_EQ(photo.ID, 2);
    EXPECT_EQ(photo.UUID, "second");
    EXPECT_EQ(StoredPhotos().at(1), (Row{"2", "second", Basil.UUID, "2024-06-01", "photos/basil.jpg", "First leaves"}));
    EXPECT_EQ(Listed(&PlantRepository::ListPlantPhotos, Basil.UUID).at(0), photo);
}

TEST_F(PhotoTest, UpdateOverwritesEveryFieldOfThatPhotoOnly)
{
    NewPhoto("first");
    NewPhoto("second");
    ASSERT_TRUE(Repository.UpdatePlantPhoto({.ID = 1, // any number but 0, since the UUID identifies the photo
                                             .UUID = "second",
                                             .PlantUUID = Basil.UUID,
                                             .PhotoDate = "2024-07-02",
                                             .FilePath = "photos/later.jpg",
                                             .Caption = "In flower"}));
    EXPECT_EQ(StoredPhotos(), (Rows{{"1", "first", Basil.UUID, "2024-06-01", "photos/basil.jpg", "First leaves"},
                                    {"2", "second", Basil.UUID, "2024-07-02", "photos/later.jpg", "In flower"}}));
}

TEST_F(PhotoTest, EachOperationRunsItsStatement)
{
    PlantPhoto photo = Full("photo");
    std::vector<PlantPhoto> photos;
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlantPhoto(photo); }), (Statements{InsertPhoto}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantPhoto(photo); }), (Statements{UpdatePhoto}));
    EXPECT_EQ(
        StatementsOf([&] { Repository.ListPlantPhotos(Basil.UUID, photos); }),
        (Statements{"SELECT ID,UUID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos WHERE PlantUUID=? ORDER "
                    "BY PhotoDate DESC,ID DESC;"}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantPhoto("photo"); }),
              (Statements{"DELETE FROM PlantPhotos WHERE UUID=?;"}));
    EXPECT_EQ(RowCount("PlantPhotos"), 0);
}

TEST_F(PhotoTest, CreateGivesAPhotoWithoutAUUIDANewOne)
{
    const PlantPhoto first = NewPhoto("");
    const PlantPhoto second = NewPhoto("");
    EXPECT_EQ(first.UUID.size(), 36U);
    EXPECT_NE(first.UUID, second.UUID);
    EXPECT_EQ(QueryRows("SELECT UUID FROM PlantPhotos ORDER BY ID;"), (Rows{{first.UUID}, {second.UUID}}));
}

TEST_F(PhotoTest, APhotoWithoutAPlantOrAFileIsRefusedAtOnceAndGetsNoUUID)
{
    for (std::string PlantPhoto::*field : {&PlantPhoto::PlantUUID, &PlantPhoto::FilePath})
    {
        PlantPhoto photo = Full("");
        (photo.*field).clear();
        const PlantPhoto before = photo;
        EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.CreatePlantPhoto(photo); }));
        EXPECT_EQ(photo, before);
    }
}

TEST_F(PhotoTest, AnUpdateWithoutAUUIDAPlantOrAFileIsRefusedAtOnce)
{
    const PlantPhoto stored = NewPhoto("photo");
    for (std::string PlantPhoto::*field : {&PlantPhoto::UUID, &PlantPhoto::PlantUUID, &PlantPhoto::FilePath})
    {
        PlantPhoto photo = stored;
        (photo.*field).clear();
        EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.UpdatePlantPhoto(photo); }));
    }
}

TEST_F(PhotoTest, AUUIDThatExistsIsRefused)
{
    NewPhoto("photo");
    PlantPhoto second = Full("photo");
    second.PlantUUID = NewPlant("Mint").UUID;
    EXPECT_FALSE(Repository.CreatePlantPhoto(second));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "UNIQUE constraint failed: PlantPhotos.UUID");
    EXPECT_EQ(second.ID, 99);
    EXPECT_EQ(RowCount("PlantPhotos"), 1);
}

TEST_F(PhotoTest, APhotoOfAnUnknownPlantIsRefusedButKeepsItsNewUUID)
{
    PlantPhoto photo = Full("");
    photo.PlantUUID = "unknown";
    EXPECT_FALSE(Repository.CreatePlantPhoto(photo));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "FOREIGN KEY constraint failed");
    EXPECT_EQ(photo.UUID.size(), 36U);
    EXPECT_EQ(photo.ID, 99);
    EXPECT_EQ(RowCount("PlantPhotos"), 0);
}

TEST_F(PhotoTest, AnEmptyDateAndCaptionStayEmpty)
{
    PlantPhoto photo = Full("photo");
    photo.PhotoDate.clear();
    photo.Caption.clear();
    ASSERT_TRUE(Repository.CreatePlantPhoto(photo));
    EXPECT_EQ(photo.PhotoDate, "");
    EXPECT_EQ(StoredPhotos(), (Rows{{"1", "photo", Basil.UUID, "", "photos/basil.jpg", ""}}));
}

TEST_F(PhotoTest, DeleteRemovesThePhotoWithExactlyThatUUID)
{
    NewPhoto("photo");
    NewPhoto("Photo");
    for (const char* unknown : {"PHOTO", "phot", "photo "})
        EXPECT_TRUE(Repository.DeletePlantPhoto(unknown));
    EXPECT_EQ(RowCount("PlantPhotos"), 2);
    EXPECT_TRUE(Repository.DeletePlantPhoto("photo"));
    EXPECT_EQ(QueryRows("SELECT UUID FROM PlantPhotos;"), (Rows{{"Photo"}}));
}

} // namespace

// Photos: the path that is stored, the missing file, and the date from the image's EXIF data.

#include "record/photo_file.h"

#include "command/basil_test.h"

#include <random>

using namespace support;

namespace
{

// A JPEG file with EXIF data, written byte by byte: the dates of the three tags, or empty texts for none.
class Picture
{
  public:
    Picture(const std::string& dateTime, const std::string& original, const std::string& digitized)
    {
        const std::vector<std::pair<unsigned, std::string>> inner = Given({{0x9003, original}, {0x9004, digitized}});
        const std::vector<std::pair<unsigned, std::string>> outer = Given({{0x0132, dateTime}});
        const std::size_t count = outer.size() + 1;
        const std::size_t innerAt = 8 + 2 + 12 * count + 4 + 20 * outer.size();
        std::string tiff = "II*" + std::string(1, '\0') + Number(8, 4) + Number(count, 2);
        tiff += Entries(outer, 8 + 2 + 12 * count + 4);
        tiff += Number(0x8769, 2) + Number(4, 2) + Number(1, 4) + Number(innerAt, 4) + Number(0, 4) + Dates(outer);
        tiff += Number(inner.size(), 2) + Entries(inner, innerAt + 2 + 12 * inner.size() + 4) + Number(0, 4);
        tiff += Dates(inner);
        const std::string segment = std::string("Exif\0\0", 6) + tiff;
        const std::size_t length = segment.size() + 2;
        Bytes = "\xFF\xD8\xFF\xE1" + std::string{static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)} +
                segment + "\xFF\xD9";
    }

    std::string Bytes;

  private:
    using Tags = std::vector<std::pair<unsigned, std::string>>;

    static Tags Given(const Tags& tags)
    {
        Tags given;
        std::copy_if(tags.begin(), tags.end(), std::back_inserter(given),
                     [](const auto& tag) { return !tag.second.empty(); });
        return given;
    }

    static std::string Number(std::size_t value, int bytes)
    {
        std::string text;
        for (; bytes > 0; --bytes, value >>= 8)
            text += static_cast<char>(value & 0xFF);
        return text;
    }

    static std::string Entries(const Tags& tags, std::size_t datesAt)
    {
        std::string text;
        for (const auto& [tag, date] : tags)
        {
            text += Number(tag, 2) + Number(2, 2) + Number(20, 4) + Number(datesAt, 4);
            datesAt += 20;
        }
        return text;
    }

    static std::string Dates(const Tags& tags)
    {
        std::string text;
        for (const auto& tag : tags)
            text += (tag.second + std::string(20, '\0')).substr(0, 20);
        return text;
    }
};

class PhotoFileTest : public BasilTest
{
  protected:
    std::string Taken(const std::string& bytes) const
    {
        Write("picture.jpg", bytes);
        return DateTaken(Scratch.File("picture.jpg"));
    }

    // Adds a photo; returns its record.
    JSON Added(Words words) const
    {
        words.insert(words.begin(), {"photo", "add", "b1"});
        return Parsed(words);
    }
};

TEST_F(PhotoFileTest, TheOriginalDateCountsBeforeTheOthers)
{
    const std::string original = "2026:05:01 12:30:00";
    const std::string digitized = "2026:05:02 12:30:00";
    const std::string changed = "2026:05:03 12:30:00";
    EXPECT_EQ(Taken(Picture(changed, original, digitized).Bytes), "2026-05-01");
    EXPECT_EQ(Taken(Picture(changed, "", digitized).Bytes), "2026-05-02");
    EXPECT_EQ(Taken(Picture(changed, "", "").Bytes), "2026-05-03");
    EXPECT_EQ(Taken(Picture("", original, "").Bytes), "2026-05-01");
    EXPECT_EQ(Taken(Picture("", "", "").Bytes), "");
    for (const char* notADate :
         {"0000:00:00 00:00:00", "    :  :     :  :  ", "2026:02:30 12:00:00", "2026-05-01 12:00:00", "2026"})
        EXPECT_EQ(Taken(Picture(changed, notADate, "").Bytes), "2026-05-03") << notADate;
}

TEST_F(PhotoFileTest, AFileWithoutEXIFDataHasNoDate)
{
    for (const std::string& bytes : {std::string(), std::string("a picture"), std::string("\xFF\xD8\xFF\xD9"),
                                     std::string("\xFF\xD8\xFF\xE1", 4), std::string(100'000, '\xFF')})
        EXPECT_EQ(Taken(bytes), "");
    EXPECT_EQ(DateTaken(Scratch.File("missing.jpg")), "");
    EXPECT_EQ(DateTaken(Scratch.File("data")), "");
}

TEST_F(PhotoFileTest, ABrokenPictureHasADateOrNone)
{
    const std::string whole = Picture("2026:05:03 12:30:00", "2026:05:01 12:30:00", "2026:05:02 12:30:00").Bytes;
    const auto check = [&](const std::string& bytes)
    {
        const std::string date = Taken(bytes);
        EXPECT_TRUE(date.empty() || (date.size() == 10 && date[4] == '-' && date[7] == '-')) << date;
    };
    for (std::size_t length = 0; length < whole.size(); ++length)
        check(whole.substr(0, length));
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same pictures in every run
    for (int i = 0; i < 5000; ++i)
    {
        std::string bytes = whole;
        for (int changes = 1 + static_cast<int>(random() % 4); changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<char>(random() % 3 == 0 ? 0xFF : random() % 256);
        check(bytes);
    }
}

TEST_F(PhotoFileTest, ThePathIsRelativeBelowTheJournalsDirectory)
{
    Write("data/plantjournal/photos/a.jpg", "a picture");
    Write("elsewhere/b.jpg", "a picture");
    Left = {"journal.db", "photos"};
    const std::string inside = Scratch.File("data/plantjournal/photos/a.jpg");
    EXPECT_EQ(Added({"data/plantjournal/photos/a.jpg"}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Added({inside}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Added({"./elsewhere/../data//plantjournal/photos/a.jpg"}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Added({"elsewhere/b.jpg"}).at("FilePath"), Scratch.File("elsewhere/b.jpg"));
    EXPECT_EQ(Parsed({"photo", "edit", "b1", "4", "--file-path", inside}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Parsed({"photo", "edit", "b1", "4", "--caption", "low"}).at("FilePath"), "photos/a.jpg");
    Around.Directory = Scratch.File("data/plantjournal/photos");
    EXPECT_EQ(Added({"a.jpg"}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Added({"../../../elsewhere/b.jpg"}).at("FilePath"), Scratch.File("elsewhere/b.jpg"));
}

TEST_F(PhotoFileTest, LinksDoNotHideWhereAPhotoIs)
{
    Write("data/plantjournal/photos/a.jpg", "a picture");
    Write("elsewhere/b.jpg", "a picture");
    Left = {"album", "journal.db", "link.jpg", "photos"};
    std::filesystem::create_directory_symlink(Scratch.File("data"), Scratch.File("shortcut"));
    std::filesystem::create_symlink(Scratch.File("elsewhere/b.jpg"), Scratch.File("data/plantjournal/link.jpg"));
    std::filesystem::create_directory_symlink(Scratch.File("elsewhere"), Scratch.File("data/plantjournal/album"));
    EXPECT_EQ(Added({"shortcut/plantjournal/photos/a.jpg"}).at("FilePath"), "photos/a.jpg");
    EXPECT_EQ(Added({"data/plantjournal/link.jpg"}).at("FilePath"), "link.jpg");
    EXPECT_EQ(Added({"data/plantjournal/album/b.jpg"}).at("FilePath"), "album/b.jpg");
    const std::string linked = Scratch.File("shortcut/plantjournal/journal.db");
    EXPECT_EQ(Added({"--file", linked, "data/plantjournal/photos/a.jpg"}).at("FilePath"), "photos/a.jpg");
}

TEST_F(PhotoFileTest, AMissingFileIsANotice)
{
    const ProgramResult added = Run({"photo", "add", "b1", "missing.jpg"});
    EXPECT_EQ(added.Status, 0);
    EXPECT_EQ(added.Error, "notice: photo of Basil: --file-path \"missing.jpg\": the file cannot be found: "
                           "No such file or directory\n");
    EXPECT_EQ(Run({"photo", "edit", "b1", "1", "--file-path", "data"}).Error,
              "notice: photo of Basil: --file-path \"data\": the file cannot be found: not a regular file\n");
    EXPECT_EQ(Run({"photo", "edit", "b1", "1", "--caption", "low"}).Error, "");
    Sound = false;
}

TEST_F(PhotoFileTest, TheDateIsThatOfThePictureUnlessGiven)
{
    Write("a.jpg", Picture("", "2026:05:01 23:59:59", "").Bytes);
    Write("b.jpg", "a picture without a date");
    std::filesystem::last_write_time(Scratch.File("b.jpg"),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 100));
    EXPECT_EQ(Added({"a.jpg"}).at("PhotoDate"), "2026-05-01");
    EXPECT_EQ(Added({"a.jpg", "--date", "2026-06-01"}).at("PhotoDate"), "2026-06-01");
    EXPECT_EQ(Added({"a.jpg", "--date", ""}).at("PhotoDate"), "");
    EXPECT_EQ(Added({"b.jpg"}).at("PhotoDate"), PlantEventCurrentDate());
    EXPECT_EQ(Parsed({"photo", "edit", "b1", "2", "--file-path", "a.jpg"}).at("PhotoDate"), "2026-06-01");
}

} // namespace

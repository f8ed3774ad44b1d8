// The methods of the records: Save, Delete, Load and Duplicate.

#include "support/allocation_failure.h"
#include "support/journal_test.h"

#include <functional>
#include <new>
#include <utility>

#include <sqlite3.h>

using namespace support;

namespace
{

// What the tests need for a type of record: `Make` returns a record of a plant, `Change` changes it, `MakeInvalid`
// makes `Save` refuse it, and `All` returns the stored records.
template <typename Record> struct Savable;

template <> struct Savable<Plant>
{
    static constexpr auto Title = "Plant";
    static Plant Make(const Plant&)
    {
        Plant plant;
        plant.Name = "A cutting with a name that is too long to be kept without an allocation";
        plant.Strain = "a strain";
        plant.Sex = PlantSex::Female;
        plant.FlipHeightCm = 40.5;
        return plant;
    }
    static void Change(Plant& plant)
    {
        plant.Stage = PlantStage::Flower;
        plant.Strain = "another strain";
    }
    static void MakeInvalid(Plant& plant) { plant.MotherPlantUUID = "unknown"; }
    static std::vector<Plant> All(PlantRepository& repository, const Plant& owner)
    {
        std::vector<Plant> plants;
        EXPECT_TRUE(repository.ListPlants(plants));
        std::erase(plants, owner);
        return plants;
    }
};

template <typename Record, auto List> struct SavablePlantRecord
{
    static void MakeInvalid(Record& record) { record.PlantUUID = "unknown"; }
    static std::vector<Record> All(PlantRepository& repository, const Plant& plant)
    {
        std::vector<Record> records;
        EXPECT_TRUE((repository.*List)(plant.UUID, records));
        return records;
    }
};

template <> struct Savable<PlantEvent> : SavablePlantRecord<PlantEvent, &PlantRepository::ListPlantEvents>
{
    static constexpr auto Title = "PlantEvent";
    static PlantEvent Make(const Plant& plant)
    {
        return {0, plant.UUID, "2019-05-01", PlantEventType::LSTTrained,
                "tied down to the rim of the pot on three sides"};
    }
    static void Change(PlantEvent& event)
    {
        event.Type = PlantEventType::Topped;
        event.Details = "above the fifth node";
    }
};

template <> struct Savable<PlantCareEntry> : SavablePlantRecord<PlantCareEntry, &PlantRepository::ListPlantCareEntries>
{
    static constexpr auto Title = "PlantCareEntry";
    static PlantCareEntry Make(const Plant& plant)
    {
        PlantCareEntry entry;
        entry.PlantUUID = plant.UUID;
        entry.CareDate = "2019-05-02";
        entry.Action = PlantCareAction::Feed;
        entry.Product = "Tomato food, the brown bottle";
        entry.AmountMl = 500;
        return entry;
    }
    static void Change(PlantCareEntry& entry) { entry.PH = 6.2; }
};

template <> struct Savable<PlantPhoto> : SavablePlantRecord<PlantPhoto, &PlantRepository::ListPlantPhotos>
{
    static constexpr auto Title = "PlantPhoto";
    static PlantPhoto Make(const Plant& plant)
    {
        return {0, "", plant.UUID, "2019-05-03", "photos/2019/05/03/the first truss in the morning.jpg", ""};
    }
    static void Change(PlantPhoto& photo) { photo.Caption = "The first truss"; }
};

template <typename Record> class RecordMethodTest : public JournalTest
{
  protected:
    using Records = std::vector<Record>;

    Record NewRecord() { return Savable<Record>::Make(Owner); }
    Records Stored() { return Savable<Record>::All(Repository, Owner); }

    // Saves `record` with a failure constructed from `failure`. Returns true if the failure did not happen.
    template <typename Failure, typename... Arguments> bool SavedWithout(Record& record, Arguments... failure)
    {
        const Record before = record;
        bool saved = false;
        bool failed = false;
        {
            const Failure inForce(failure...);
            try
            {
                saved = record.Save(Repository);
            }
            catch (const std::bad_alloc&)
            {
                saved = false;
            }
            failed = inForce.Happened();
        }
        EXPECT_NE(saved, failed);
        if (failed)
        {
            EXPECT_EQ(record, before);
        }
        return !failed;
    }

    // Saves a record with the first call or allocation of a kind failing, then with the second, until none fails. The
    // record must then be stored, exactly once.
    void SaveDespiteFailures(const std::function<Record()>& make)
    {
        const std::function<bool(Record&, int)> attempts[] = {
            [&](Record& r, int n) { return SavedWithout<CallFailure>(r, SQLiteCall::Exec, n, SQLITE_IOERR); },
            [&](Record& r, int n) { return SavedWithout<CallFailure>(r, SQLiteCall::Prepare, n, SQLITE_ERROR); },
            [&](Record& r, int n) { return SavedWithout<CallFailure>(r, SQLiteCall::Bind, n, SQLITE_NOMEM); },
            [&](Record& r, int n) { return SavedWithout<CallFailure>(r, SQLiteCall::Step, n, SQLITE_FULL); },
            [&](Record& r, int n) { return SavedWithout<AllocationFailure>(r, Allocator::New, n); }};
        for (const auto& attempt : attempts)
        {
            Record record = make();
            int number = 1;
            while (!attempt(record, number) && !this->HasFailure())
                ++number;
            EXPECT_EQ(Stored(), Records{record});
            EXPECT_TRUE(record.Delete(Repository));
        }
    }

    Plant Owner = NewPlant("Owner");
};

struct RecordName
{
    template <typename Record> static std::string GetName(int /*index*/) { return Savable<Record>::Title; }
};

using SavableRecords = testing::Types<Plant, PlantEvent, PlantCareEntry, PlantPhoto>;
TYPED_TEST_SUITE(RecordMethodTest, SavableRecords, RecordName);

TYPED_TEST(RecordMethodTest, SaveCreatesANewRecordAndUpdatesAStoredOne)
{
    TypeParam record = this->NewRecord();
    EXPECT_TRUE(record.Save(this->Repository));
    EXPECT_GT(record.ID, 0);
    EXPECT_EQ(this->Stored(), std::vector{record});

    Savable<TypeParam>::Change(record);
    const TypeParam changed = record;
    EXPECT_NE(this->Stored(), std::vector{record});
    EXPECT_TRUE(record.Save(this->Repository));
    EXPECT_EQ(record, changed);
    EXPECT_EQ(this->Stored(), std::vector{record});
}

TYPED_TEST(RecordMethodTest, AFailedCreateLeavesTheRecordReadyToSaveAgain)
{
    this->SaveDespiteFailures([this] { return this->NewRecord(); });
}

TYPED_TEST(RecordMethodTest, AFailedUpdateLeavesTheRecordReadyToSaveAgain)
{
    this->SaveDespiteFailures(
        [this]
        {
            TypeParam record = this->NewRecord();
            EXPECT_TRUE(record.Save(this->Repository));
            Savable<TypeParam>::Change(record);
            return record;
        });
}

TYPED_TEST(RecordMethodTest, ARefusedSaveLeavesTheRecordUnchanged)
{
    TypeParam record = this->NewRecord();
    Savable<TypeParam>::MakeInvalid(record);
    const TypeParam refused = record;
    EXPECT_FALSE(record.Save(this->Repository));
    EXPECT_EQ(record, refused);
    EXPECT_TRUE(this->Stored().empty());
}

TYPED_TEST(RecordMethodTest, SaveOnAClosedJournalLeavesTheRecordUnchanged)
{
    TypeParam record = this->NewRecord();
    const TypeParam before = record;
    this->Database.Close();
    EXPECT_FALSE(record.Save(this->Repository));
    EXPECT_EQ(record, before);
}

TYPED_TEST(RecordMethodTest, DeleteRemovesOnlyTheRowOfTheRecord)
{
    TypeParam kept = this->NewRecord();
    TypeParam record = this->NewRecord();
    EXPECT_TRUE(kept.Save(this->Repository));
    EXPECT_TRUE(record.Save(this->Repository));
    const TypeParam before = record;
    EXPECT_TRUE(std::as_const(record).Delete(this->Repository));
    EXPECT_EQ(record, before);
    EXPECT_EQ(this->Stored(), std::vector{kept});
}

using UnstoredRecordTest = JournalTest;

TEST_F(UnstoredRecordTest, OnlyAPlantThatIsNotStoredCanBeDeleted)
{
    EXPECT_FALSE(PlantEvent{}.Delete(Repository));
    EXPECT_FALSE(PlantCareEntry{}.Delete(Repository));
    EXPECT_FALSE(PlantPhoto{}.Delete(Repository));
    EXPECT_TRUE(Plant{}.Delete(Repository));
}

using CareEntryMethodTest = RecordMethodTest<PlantCareEntry>;

// With the row ID of an event that was rolled back, the next save would fail.
TEST_F(CareEntryMethodTest, AFailedSaveLeavesAnEntryWithoutAnEvent)
{
    SaveDespiteFailures(
        [this]
        {
            PlantCareEntry entry = NewRecord();
            EXPECT_TRUE(entry.Save(Repository));
            EXPECT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
            entry.TimelineEventID = 0;
            return entry;
        });
    EXPECT_EQ(RowCount("PlantEvents"), 0);
}

using PlantMethodTest = RecordMethodTest<Plant>;

TEST_F(PlantMethodTest, LoadReadsThePlantIntoTheRecord)
{
    Plant stored = NewRecord();
    stored.MotherPlantUUID = Owner.UUID;
    ASSERT_TRUE(stored.Save(Repository));

    Plant plant = Owner;
    EXPECT_TRUE(plant.Load(Repository, stored.UUID));
    EXPECT_EQ(plant, stored);
    EXPECT_TRUE(plant.Load(Repository, plant.UUID));
    EXPECT_EQ(plant, stored);
    EXPECT_TRUE(plant.Load(Repository, plant.MotherPlantUUID));
    EXPECT_EQ(plant, Owner);
}

TEST_F(PlantMethodTest, LoadOfAnUnknownPlantLeavesTheRecordUnchanged)
{
    Plant plant = Owner;
    for (const std::string& unknown : {std::string(), std::string("unknown"), Owner.UUID + ' '})
    {
        EXPECT_FALSE(plant.Load(Repository, unknown)) << unknown;
        EXPECT_EQ(plant, Owner);
    }
}

TEST_F(PlantMethodTest, DuplicateStoresACopyAndReturnsIt)
{
    Plant source = NewRecord();
    source.MotherPlantUUID = Owner.UUID;
    ASSERT_TRUE(source.Save(Repository));
    const Plant before = source;

    const Plant copy = source.Duplicate(Repository);
    EXPECT_EQ(source, before);
    EXPECT_GT(copy.ID, source.ID);
    Plant expected = before;
    expected.ID = copy.ID;
    expected.UUID = copy.UUID;
    expected.Name += " copy";
    expected.MotherPlantUUID.clear();
    EXPECT_EQ(copy, expected);
    EXPECT_NE(copy.UUID, source.UUID);

    Plant stored;
    EXPECT_TRUE(stored.Load(Repository, copy.UUID));
    EXPECT_EQ(stored, copy);
}

TEST_F(PlantMethodTest, ADuplicateThatCouldNotBeStoredHasNoID)
{
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "INSERT INTO Plants");
    const Plant copy = Owner.Duplicate(Repository);
    EXPECT_TRUE(failure.Happened());
    EXPECT_EQ(copy.ID, 0);
    EXPECT_EQ(copy.Name, "Owner copy");
    EXPECT_TRUE(Stored().empty());
}

} // namespace

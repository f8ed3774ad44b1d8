// The records by themselves: their defaults, the stored names of the enumerations, today's date, and the records' own
// short forms of the repository's operations.

#include "support/allocation_failure.h"
#include "support/fixed_time.h"
#include "support/journal_test.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

#include <sqlite3.h>

using namespace support;

namespace
{

// ---- Defaults

template <typename... Types>
constexpr bool AreValues = (std::is_default_constructible_v<Types> && ...) &&
                           (std::is_copy_constructible_v<Types> && ...) && (std::is_copy_assignable_v<Types> && ...) &&
                           (std::is_nothrow_move_constructible_v<Types> && ...) &&
                           (std::is_nothrow_move_assignable_v<Types> && ...);
static_assert(AreValues<Plant, Strain, PlantEvent, PlantCareEntry, HarvestRecord, StrainSummary, PlantPhoto,
                        PlantHealthObservation, PlantJournalEntry>);

template <typename Type, typename... Fields> constexpr bool AreAll = (std::is_same_v<Type, Fields> && ...);
static_assert(
    AreAll<std::int64_t, decltype(Plant::ID), decltype(Strain::ID), decltype(PlantEvent::ID),
           decltype(PlantCareEntry::ID), decltype(PlantCareEntry::TimelineEventID), decltype(HarvestRecord::ID),
           decltype(HarvestRecord::TimelineEventID), decltype(StrainSummary::StrainID), decltype(PlantPhoto::ID),
           decltype(PlantHealthObservation::ID), decltype(PlantJournalEntry::ID)>);
static_assert(AreAll<int, decltype(Strain::FloweringWeeks), decltype(HarvestRecord::SeedYield),
                     decltype(PlantHealthObservation::Severity), decltype(StrainSummary::TotalPlants),
                     decltype(StrainSummary::HarvestCount)>);

TEST(RecordTest, ANewRecordIsEmptyButForTheDefaultOfItsKind)
{
    EXPECT_EQ(Plant{}, (Plant{.ID = 0,
                              .UUID = "",
                              .Name = "",
                              .Strain = "",
                              .MotherPlantUUID = "",
                              .Stage = PlantStage::Veg,
                              .Sex = PlantSex::Unknown,
                              .Tent = "",
                              .PotSize = "",
                              .Medium = "",
                              .SeedDate = "",
                              .FlipHeightCm = 0,
                              .FinalHeightCm = 0,
                              .CloneDate = "",
                              .TransplantDate = "",
                              .FlipDate = "",
                              .HarvestDate = "",
                              .Notes = ""}));
    EXPECT_EQ(Strain{}, (Strain{.ID = 0, .Name = "", .Breeder = "", .FloweringWeeks = 0, .Notes = ""}));
    EXPECT_EQ(PlantEvent{},
              (PlantEvent{.ID = 0, .PlantUUID = "", .EventDate = "", .Type = PlantEventType::Note, .Details = ""}));
    EXPECT_EQ(PlantCareEntry{}, (PlantCareEntry{.ID = 0,
                                                .TimelineEventID = 0,
                                                .PlantUUID = "",
                                                .CareDate = "",
                                                .Action = PlantCareAction::Water,
                                                .Product = "",
                                                .AmountMl = 0,
                                                .EC = 0,
                                                .PH = 0,
                                                .RunoffMl = 0,
                                                .Notes = ""}));
    EXPECT_EQ(HarvestRecord{}, (HarvestRecord{.ID = 0,
                                              .TimelineEventID = 0,
                                              .PlantUUID = "",
                                              .HarvestDate = "",
                                              .WetWeightG = 0,
                                              .DryWeightG = 0,
                                              .QualityRating = 0,
                                              .SeedYield = 0,
                                              .CureOutcome = "",
                                              .Notes = ""}));
    EXPECT_EQ(StrainSummary{}, (StrainSummary{.StrainID = 0,
                                              .StrainName = "",
                                              .TotalPlants = 0,
                                              .Seed = 0,
                                              .Clone = 0,
                                              .Veg = 0,
                                              .Flower = 0,
                                              .Dry = 0,
                                              .Cure = 0,
                                              .Harvested = 0,
                                              .Archived = 0,
                                              .HarvestCount = 0,
                                              .AverageDryWeightG = 0,
                                              .AverageQuality = 0}));
    EXPECT_EQ(PlantPhoto{},
              (PlantPhoto{.ID = 0, .UUID = "", .PlantUUID = "", .PhotoDate = "", .FilePath = "", .Caption = ""}));
    EXPECT_EQ(PlantHealthObservation{}, (PlantHealthObservation{.ID = 0,
                                                                .PlantUUID = "",
                                                                .ObservationDate = "",
                                                                .Issue = "",
                                                                .Severity = 1,
                                                                .Treatment = "",
                                                                .Notes = ""}));
    EXPECT_EQ(PlantJournalEntry{},
              (PlantJournalEntry{
                  .ID = 0, .PlantUUID = "", .EntryDate = "", .Type = PlantJournalType::Observation, .Details = ""}));
}

// ---- Stored names

// The enumerators in the order of their numbers, and the functions that name them.
template <typename Enum> struct Vocabulary;

template <> struct Vocabulary<PlantStage>
{
    static constexpr auto Title = "PlantStage";
    static constexpr auto NameOf = PlantStageName;
    static constexpr auto FromName = PlantStageFromName;
    static constexpr PlantStage Default = PlantStage::Veg;
    static constexpr std::pair<PlantStage, const char*> Names[] = {
        {PlantStage::Seed, "Seed"},           {PlantStage::Clone, "Clone"},      {PlantStage::Veg, "Veg"},
        {PlantStage::Flower, "Flower"},       {PlantStage::Dry, "Dry"},          {PlantStage::Cure, "Cure"},
        {PlantStage::Harvested, "Harvested"}, {PlantStage::Archived, "Archived"}};
};

template <> struct Vocabulary<PlantSex>
{
    static constexpr auto Title = "PlantSex";
    static constexpr auto NameOf = PlantSexName;
    static constexpr auto FromName = PlantSexFromName;
    static constexpr PlantSex Default = PlantSex::Unknown;
    static constexpr std::pair<PlantSex, const char*> Names[] = {{PlantSex::Unknown, "Unknown"},
                                                                 {PlantSex::Female, "Female"},
                                                                 {PlantSex::Male, "Male"},
                                                                 {PlantSex::Hermaphrodite, "Hermaphrodite"}};
};

template <> struct Vocabulary<PlantEventType>
{
    static constexpr auto Title = "PlantEventType";
    static constexpr auto NameOf = PlantEventTypeName;
    static constexpr auto FromName = PlantEventTypeFromName;
    static constexpr PlantEventType Default = PlantEventType::Note;
    static constexpr std::pair<PlantEventType, const char*> Names[] = {{PlantEventType::Clone, "Clone"},
                                                                       {PlantEventType::Transplant, "Transplant"},
                                                                       {PlantEventType::Flip, "Flip"},
                                                                       {PlantEventType::Harvest, "Harvest"},
                                                                       {PlantEventType::Feed, "Feed"},
                                                                       {PlantEventType::Water, "Water"},
                                                                       {PlantEventType::Stage, "Stage"},
                                                                       {PlantEventType::Topped, "Topped"},
                                                                       {PlantEventType::LSTTrained, "LST Trained"},
                                                                       {PlantEventType::Defoliated, "Defoliated"},
                                                                       {PlantEventType::Note, "Note"}};
};

template <> struct Vocabulary<PlantCareAction>
{
    static constexpr auto Title = "PlantCareAction";
    static constexpr auto NameOf = PlantCareActionName;
    static constexpr auto FromName = PlantCareActionFromName;
    static constexpr PlantCareAction Default = PlantCareAction::Water;
    static constexpr std::pair<PlantCareAction, const char*> Names[] = {{PlantCareAction::Feed, "Feed"},
                                                                        {PlantCareAction::Water, "Water"}};
};

template <> struct Vocabulary<PlantJournalType>
{
    static constexpr auto Title = "PlantJournalType";
    static constexpr auto NameOf = PlantJournalTypeName;
    static constexpr auto FromName = PlantJournalTypeFromName;
    static constexpr PlantJournalType Default = PlantJournalType::Observation;
    static constexpr std::pair<PlantJournalType, const char*> Names[] = {
        {PlantJournalType::Observation, "Observation"}, {PlantJournalType::Training, "Training"},
        {PlantJournalType::Pruning, "Pruning"},         {PlantJournalType::Topping, "Topping"},
        {PlantJournalType::Defoliation, "Defoliation"}, {PlantJournalType::Milestone, "Milestone"}};
};

template <typename Enum> class StoredNameTest : public testing::Test
{
    static_assert(std::is_same_v<std::underlying_type_t<Enum>, std::int32_t>);
    static_assert(!std::is_convertible_v<Enum, std::int32_t>, "a scoped enumeration");
};

// Names the tests of a type by what is known of it.
template <template <typename> typename Traits> struct Titles
{
    template <typename Type> static std::string GetName(int) { return Traits<Type>::Title; }
};

using Enumerations = testing::Types<PlantStage, PlantSex, PlantEventType, PlantCareAction, PlantJournalType>;
TYPED_TEST_SUITE(StoredNameTest, Enumerations, Titles<Vocabulary>);

TYPED_TEST(StoredNameTest, IsFixedForEveryNumberAndReadsBackAsIt)
{
    using Words = Vocabulary<TypeParam>;
    std::int32_t number = 0;
    for (const auto& [value, name] : Words::Names)
    {
        EXPECT_EQ(static_cast<std::int32_t>(value), number++) << name;
        EXPECT_STREQ(Words::NameOf(value), name);
        EXPECT_EQ(Words::FromName(name), value) << name;
        EXPECT_EQ(Words::FromName(Words::NameOf(value)), value) << name;
    }
}

TYPED_TEST(StoredNameTest, OfANumberOutsideIsTheDefaults)
{
    using Words = Vocabulary<TypeParam>;
    for (const std::int32_t number :
         {INT32_MIN, -1, static_cast<std::int32_t>(std::size(Words::Names)), 4711, INT32_MAX})
        EXPECT_STREQ(Words::NameOf(static_cast<TypeParam>(number)), Words::NameOf(Words::Default)) << number;
}

TYPED_TEST(StoredNameTest, StaysWhereItIs)
{
    using Words = Vocabulary<TypeParam>;
    for (const auto& [value, name] : Words::Names)
        EXPECT_EQ(static_cast<const void*>(Words::NameOf(value)), static_cast<const void*>(Words::NameOf(value)))
            << name;
}

TYPED_TEST(StoredNameTest, ReadsAsTheDefaultUnlessItIsExact)
{
    using Words = Vocabulary<TypeParam>;
    using namespace std::string_literals;
    for (const std::string& text : {""s, " "s, "\0"s, "0"s, "?"s, "NULL"s, "LSTTrained"s, "LST  Trained"s, "Toppings"s})
        EXPECT_EQ(Words::FromName(text), Words::Default) << testing::PrintToString(text);
    for (const auto& entry : Words::Names)
    {
        const std::string name = entry.second;
        std::string lower = name;
        std::string upper = name;
        for (std::size_t i = 0; i < name.size(); ++i)
        {
            lower[i] = static_cast<char>(std::tolower(name[i]));
            upper[i] = static_cast<char>(std::toupper(name[i]));
        }
        for (const std::string& text : {lower, upper, name + ' ', ' ' + name, name + '\0', name + "\0x"s, name + name,
                                        name.substr(1), name.substr(0, name.size() - 1)})
            EXPECT_EQ(Words::FromName(text), Words::Default) << testing::PrintToString(text);
    }
}

// ---- Today's date

// The local time zone while in scope, as a traveller sets it: the process has not been told.
class TimeZone
{
  public:
    explicit TimeZone(const char* zone)
    {
        if (const char* previous = std::getenv("TZ"))
            Previous = previous;
        setenv("TZ", zone, 1);
    }
    ~TimeZone()
    {
        if (Previous)
            setenv("TZ", Previous->c_str(), 1);
        else
            unsetenv("TZ");
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    std::optional<std::string> Previous;
};

TEST(CurrentDateTest, IsToday)
{
    const TimeZone greenwich("XXX0");
    const auto today = []
    {
        const std::time_t now = std::time(nullptr);
        std::tm parts{};
        gmtime_r(&now, &parts);
        char date[16];
        return std::string(date, std::strftime(date, sizeof date, "%Y-%m-%d", &parts));
    };
    std::string before;
    std::string date;
    do // until no midnight came between
    {
        before = today();
        date = PlantEventCurrentDate();
    } while (before != today());
    EXPECT_EQ(date, before);
}

TEST(CurrentDateTest, IsTheLocalYearMonthAndDayWithAllTheirDigits)
{
    constexpr std::time_t hour = 3'600;
    constexpr std::time_t day = 24 * hour;
    constexpr std::time_t newYear = 10'957 * day; // 2000-01-01 at Greenwich
    const struct
    {
        const char* Zone;
        std::time_t Time;
        const char* Date;
    } moments[] = {
        {"XXX0", 0, "1970-01-01"},
        {"XXX0", newYear - 1, "1999-12-31"},
        {"XXX0", newYear, "2000-01-01"},
        {"XXX-1", newYear - hour, "2000-01-01"},
        {"XXX-1", newYear - hour - 1, "1999-12-31"},
        {"XXX-14", newYear + 10 * hour, "2000-01-02"},
        {"XXX12", newYear + 12 * hour - 1, "1999-12-31"},
        {"XXX0", newYear + 59 * day, "2000-02-29"},
        {"XXX0YYY-1,0/0,365/25", newYear + day - 1, "2000-01-02"}, // summer time all the year
        {"XXX0", 253'402'300'799, "9999-12-31"},
    };
    for (const auto& [zone, time, date] : moments)
    {
        const TimeZone there(zone);
        const FixedTime then(time);
        EXPECT_EQ(PlantEventCurrentDate(), date) << zone << ' ' << time;
    }
}

// ---- Short forms

// What the tests need to know of a kind of record: one of `plant` that can be stored, a change to it, what makes it
// refused, and all that are stored.
template <typename Record> struct Kind;

template <> struct Kind<Plant>
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
    static void Spoil(Plant& plant) { plant.MotherPlantUUID = "nobody"; }
    static std::vector<Plant> All(PlantRepository& repository, const Plant& owner)
    {
        std::vector<Plant> plants;
        EXPECT_TRUE(repository.ListPlants(plants));
        std::erase(plants, owner);
        return plants;
    }
};

template <typename Record, auto List> struct KindOfAPlants
{
    static void Spoil(Record& record) { record.PlantUUID = "nobody"; }
    static std::vector<Record> All(PlantRepository& repository, const Plant& plant)
    {
        std::vector<Record> records;
        EXPECT_TRUE((repository.*List)(plant.UUID, records));
        return records;
    }
};

template <> struct Kind<PlantEvent> : KindOfAPlants<PlantEvent, &PlantRepository::ListPlantEvents>
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

template <> struct Kind<PlantCareEntry> : KindOfAPlants<PlantCareEntry, &PlantRepository::ListPlantCareEntries>
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

template <> struct Kind<PlantPhoto> : KindOfAPlants<PlantPhoto, &PlantRepository::ListPlantPhotos>
{
    static constexpr auto Title = "PlantPhoto";
    static PlantPhoto Make(const Plant& plant)
    {
        return {0, "", plant.UUID, "2019-05-03", "photos/2019/05/03/the first truss in the morning.jpg", ""};
    }
    static void Change(PlantPhoto& photo) { photo.Caption = "The first truss"; }
};

template <typename Record> class ShortFormTest : public JournalTest
{
  protected:
    using Records = std::vector<Record>;

    Record NewRecord() { return Kind<Record>::Make(Owner); }
    Records Stored() { return Kind<Record>::All(Repository, Owner); }

    // Saves `record` while `failure` is in force. True once that has not happened any more.
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

    // Saves `record` again and again, with the first call or allocation of one kind failing, then the second, until
    // none is left to fail. The record must be stored then, and once.
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

using Savable = testing::Types<Plant, PlantEvent, PlantCareEntry, PlantPhoto>;
TYPED_TEST_SUITE(ShortFormTest, Savable, Titles<Kind>);

TYPED_TEST(ShortFormTest, SaveStoresANewRecordAndOverwritesAStoredOne)
{
    TypeParam record = this->NewRecord();
    EXPECT_TRUE(record.Save(this->Repository));
    EXPECT_GT(record.ID, 0);
    EXPECT_EQ(this->Stored(), std::vector{record});

    Kind<TypeParam>::Change(record);
    const TypeParam changed = record;
    EXPECT_NE(this->Stored(), std::vector{record});
    EXPECT_TRUE(record.Save(this->Repository));
    EXPECT_EQ(record, changed);
    EXPECT_EQ(this->Stored(), std::vector{record});
}

TYPED_TEST(ShortFormTest, ANewRecordWhoseSaveFailsStaysAsItWasAndCanBeSavedAgain)
{
    this->SaveDespiteFailures([this] { return this->NewRecord(); });
}

TYPED_TEST(ShortFormTest, AStoredRecordWhoseSaveFailsStaysAsItWasAndCanBeSavedAgain)
{
    this->SaveDespiteFailures(
        [this]
        {
            TypeParam record = this->NewRecord();
            EXPECT_TRUE(record.Save(this->Repository));
            Kind<TypeParam>::Change(record);
            return record;
        });
}

TYPED_TEST(ShortFormTest, ARefusedSaveLeavesTheRecordAsItWas)
{
    TypeParam record = this->NewRecord();
    Kind<TypeParam>::Spoil(record);
    const TypeParam refused = record;
    EXPECT_FALSE(record.Save(this->Repository));
    EXPECT_EQ(record, refused);
    EXPECT_TRUE(this->Stored().empty());
}

TYPED_TEST(ShortFormTest, SaveOnAClosedJournalLeavesTheRecordAsItWas)
{
    TypeParam record = this->NewRecord();
    const TypeParam before = record;
    this->Database.Close();
    EXPECT_FALSE(record.Save(this->Repository));
    EXPECT_EQ(record, before);
}

TYPED_TEST(ShortFormTest, DeleteRemovesTheStoredOneAlone)
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

using UnstoredTest = JournalTest;

TEST_F(UnstoredTest, DeleteIsRefusedButForAPlant)
{
    EXPECT_FALSE(PlantEvent{}.Delete(Repository));
    EXPECT_FALSE(PlantCareEntry{}.Delete(Repository));
    EXPECT_FALSE(PlantPhoto{}.Delete(Repository));
    EXPECT_TRUE(Plant{}.Delete(Repository));
}

using CareShortFormTest = ShortFormTest<PlantCareEntry>;

// Its new event's number must not stay in the record: the next save would look for an event that is not there.
TEST_F(CareShortFormTest, AnEntryWithoutAnEventWhoseSaveFailsStaysWithoutOne)
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

using PlantShortFormTest = ShortFormTest<Plant>;

TEST_F(PlantShortFormTest, LoadReadsThePlantIntoTheRecord)
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

TEST_F(PlantShortFormTest, LoadOfAnUnknownPlantLeavesTheRecordAsItWas)
{
    Plant plant = Owner;
    for (const std::string& unknown : {std::string(), std::string("nobody"), Owner.UUID + ' '})
    {
        EXPECT_FALSE(plant.Load(Repository, unknown)) << unknown;
        EXPECT_EQ(plant, Owner);
    }
}

TEST_F(PlantShortFormTest, DuplicateStoresACopyAndReturnsIt)
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

TEST_F(PlantShortFormTest, ADuplicateThatCouldNotBeStoredHasNoNumber)
{
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "INSERT INTO Plants");
    const Plant copy = Owner.Duplicate(Repository);
    EXPECT_TRUE(failure.Happened());
    EXPECT_EQ(copy.ID, 0);
    EXPECT_EQ(copy.Name, "Owner copy");
    EXPECT_TRUE(Stored().empty());
}

} // namespace

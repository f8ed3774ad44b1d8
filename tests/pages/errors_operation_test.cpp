// Provokes every failure of an operation that docs/errors.md lists, and compares the code of the connection and the log
// of SQLite with the page.

#include "pages/errors_page.h"
#include "support/page.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include <sqlite3.h>

using namespace pages;
using namespace support;

namespace
{

// The third and fourth column of the page.
const std::string Nothing;
const std::string Unchanged = "unchanged";
const std::string DependsOnVersion = "depends on the version";
const std::string OK = "SQLITE_OK";
const std::string Unique = "SQLITE_CONSTRAINT_UNIQUE";
const std::string NotNull = "SQLITE_CONSTRAINT_NOTNULL";
const std::string ForeignKey = "SQLITE_CONSTRAINT_FOREIGNKEY";
const std::map<std::string, int> Codes = {
    {OK, SQLITE_OK},
    {Unique, SQLITE_CONSTRAINT_UNIQUE},
    {NotNull, SQLITE_CONSTRAINT_NOTNULL},
    {ForeignKey, SQLITE_CONSTRAINT_FOREIGNKEY},
};

// A row of the page: why an operation returns false, and what SQLite reports then.
struct Refusal
{
    std::string Operation;
    std::string Meaning;
    std::string Code;   // of the connection afterwards
    std::string Logged; // in SQLite's error log
    std::function<bool()> Call;
};

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

const auto WithoutPlant = [](auto& record) { record.PlantUUID.clear(); };
const auto WithUnknownPlant = [](auto& record) { record.PlantUUID = "unknown"; };
const auto WithoutID = [](auto& record) { record.ID = 0; };

template <typename Record, typename Change> Record Changed(Record record, const Change& change)
{
    change(record);
    return record;
}

class RefusalPageTest : public ErrorsPageTest
{
  protected:
    RefusalPageTest()
    {
        Basil = NewPlant("Basil", "Genovese");
        Clone = NewPlant("Clone", "Genovese", Basil.UUID);
        Event.PlantUUID = Observation.PlantUUID = Entry.PlantUUID = Photo.PlantUUID = Care.PlantUUID = Basil.UUID;
        Observation.Issue = "aphids";
        Photo.FilePath = "basil.jpg";
        EXPECT_TRUE(Repository.CreatePlantEvent(Event) && Repository.CreatePlantHealthObservation(Observation) &&
                    Repository.CreatePlantJournalEntry(Entry) && Repository.CreatePlantPhoto(Photo) &&
                    Repository.CreatePlantCareEntry(Care) && Repository.SaveHarvestRecord(Basil, Harvest));
        Thyme.Name = "Thyme";
        EXPECT_TRUE(Repository.CreateStrain(Thyme));
    }

    // Calls a create or an update with a changed record.
    template <typename Operation, typename Record, typename Change>
    bool Create(Operation operation, Record record, const Change& change)
    {
        change(record);
        record.ID = 0;
        return (Repository.*operation)(record);
    }
    template <typename Operation, typename Record, typename Change>
    bool Update(Operation operation, Record record, const Change& change)
    {
        change(record);
        return (Repository.*operation)(record);
    }
    template <typename Change> bool CreateChanged(const Change& change)
    {
        Plant plant;
        change(plant);
        return Repository.CreatePlant(plant);
    }
    template <typename Change> bool UpdateChanged(const Change& change)
    {
        return Repository.UpdatePlant(Changed(Basil, change));
    }
    template <typename Change> bool UpdateThyme(const Change& change)
    {
        return Repository.UpdateStrain(Changed(Thyme, change));
    }
    template <typename Change> bool SaveHarvest(Plant plant, HarvestRecord record, const Change& change)
    {
        change(plant, record);
        return Repository.SaveHarvestRecord(plant, record);
    }

    std::vector<Refusal> PlantRefusals();
    std::vector<Refusal> StrainRefusals();
    std::vector<Refusal> EventRefusals();
    std::vector<Refusal> CareRefusals();
    std::vector<Refusal> HarvestRefusals();
    std::vector<Refusal> PhotoRefusals();
    std::vector<Refusal> HealthRefusals();
    std::vector<Refusal> JournalRefusals();

    // All of them, in the order of the page.
    std::vector<Refusal> Refusals()
    {
        std::vector<Refusal> all;
        for (const auto& family : {PlantRefusals(), StrainRefusals(), EventRefusals(), CareRefusals(),
                                   HarvestRefusals(), PhotoRefusals(), HealthRefusals(), JournalRefusals()})
            all.insert(all.end(), family.begin(), family.end());
        return all;
    }

    Plant Basil;
    Plant Clone;
    Strain Thyme;
    PlantEvent Event;
    PlantCareEntry Care;
    HarvestRecord Harvest;
    PlantPhoto Photo;
    PlantHealthObservation Observation;
    PlantJournalEntry Entry;
};

std::vector<Refusal> RefusalPageTest::PlantRefusals()
{
    return {
        {"GetPlant", "no plant has this UUID", OK, Nothing,
         [this] { return Repository.GetPlant("unknown", *std::make_unique<Plant>()); }},
        {"CreatePlant", "the UUID is already in use", Unique, Unique,
         [this] { return CreateChanged([&](Plant& p) { p.UUID = Basil.UUID; }); }},
        {"CreatePlant", "a height is NaN", NotNull, NotNull,
         [this] { return CreateChanged([](Plant& p) { p.FinalHeightCm = NotANumber; }); }},
        {"CreatePlant", "the mother does not exist", OK, Nothing,
         [this] { return CreateChanged([](Plant& p) { p.MotherPlantUUID = "unknown"; }); }},
        {"CreatePlant", "the plant is its own mother", Unchanged, Nothing,
         [this] { return CreateChanged([](Plant& p) { p.MotherPlantUUID = p.UUID = "self"; }); }},
        {"UpdatePlant", "a height is NaN", NotNull, NotNull,
         [this] { return UpdateChanged([](Plant& p) { p.FlipHeightCm = NotANumber; }); }},
        {"UpdatePlant", "the mother does not exist, or descends from the plant", OK, Nothing,
         [this]
         {
             return UpdateChanged([](Plant& p) { p.MotherPlantUUID = "unknown"; }) ||
                    UpdateChanged([&](Plant& p) { p.MotherPlantUUID = Clone.UUID; });
         }},
        {"UpdatePlant", "the plant is its own mother, and has no strain", Unchanged, Nothing,
         [this]
         {
             return UpdateChanged(
                 [](Plant& p)
                 {
                     p.MotherPlantUUID = p.UUID;
                     p.Strain.clear();
                 });
         }},
        {"DuplicatePlant", "a height is NaN", NotNull, NotNull,
         [this]
         {
             Plant copy;
             return Repository.DuplicatePlant(Changed(Basil, [](Plant& p) { p.FlipHeightCm = NotANumber; }), copy);
         }},
    };
}

std::vector<Refusal> RefusalPageTest::StrainRefusals()
{
    return {
        {"GetStrain", "no strain has this row ID", OK, Nothing,
         [this] { return Repository.GetStrain(99, *std::make_unique<Strain>()); }},
        {"CreateStrain", "the name is empty", Unchanged, Nothing,
         [this] { return Repository.CreateStrain(*std::make_unique<Strain>()); }},
        {"CreateStrain", "the name is already in use", Unique, Unique,
         [this] { return Create(&PlantRepository::CreateStrain, Thyme, [](Strain&) {}); }},
        {"UpdateStrain", "`ID` is 0, or the name is empty", Unchanged, Nothing,
         [this] { return UpdateThyme(WithoutID) || UpdateThyme([](Strain& s) { s.Name.clear(); }); }},
        {"UpdateStrain", "no strain has this row ID", OK, Nothing,
         [this] { return UpdateThyme([](Strain& s) { s.ID = 99; }); }},
        {"UpdateStrain", "another strain has the name", OK, Unique,
         [this] { return UpdateThyme([](Strain& s) { s.Name = "Genovese"; }); }},
        {"DeleteStrain", "a plant has the strain", OK, Nothing,
         [this] {
             return Repository.DeleteStrain(
                 std::stoi(QueryRows("SELECT ID FROM Strains WHERE Name='Genovese';")[0][0]));
         }},
        {"GetStrainSummary", "no strain has this row ID", OK, Nothing,
         [this] { return Repository.GetStrainSummary(99, *std::make_unique<StrainSummary>()); }},
    };
}

std::vector<Refusal> RefusalPageTest::EventRefusals()
{
    return {
        {"CreatePlantEvent", "`PlantUUID` is empty", Unchanged, Nothing,
         [this] { return Create(&PlantRepository::CreatePlantEvent, Event, WithoutPlant); }},
        {"CreatePlantEvent", "the plant does not exist", ForeignKey, ForeignKey,
         [this] { return Create(&PlantRepository::CreatePlantEvent, Event, WithUnknownPlant); }},
        {"UpdatePlantEvent", "`ID` is 0, or `PlantUUID` is empty", Unchanged, Nothing,
         [this]
         {
             return Update(&PlantRepository::UpdatePlantEvent, Event, WithoutID) ||
                    Update(&PlantRepository::UpdatePlantEvent, Event, WithoutPlant);
         }},
        {"DeletePlantEvent", "the row ID is 0", Unchanged, Nothing, [this] { return Repository.DeletePlantEvent(0); }},
    };
}

std::vector<Refusal> RefusalPageTest::CareRefusals()
{
    return {
        {"CreatePlantCareEntry", "`PlantUUID` is empty", Unchanged, Nothing,
         [this] { return Create(&PlantRepository::CreatePlantCareEntry, Care, WithoutPlant); }},
        {"CreatePlantCareEntry", "the plant does not exist", OK, ForeignKey,
         [this] { return Create(&PlantRepository::CreatePlantCareEntry, Care, WithUnknownPlant); }},
        {"CreatePlantCareEntry", "a number is NaN", OK, NotNull,
         [this] { return Create(&PlantRepository::CreatePlantCareEntry, Care, [](auto& e) { e.PH = NotANumber; }); }},
        {"UpdatePlantCareEntry", "`ID` is 0, or `PlantUUID` is empty", Unchanged, Nothing,
         [this]
         {
             return Update(&PlantRepository::UpdatePlantCareEntry, Care, WithoutID) ||
                    Update(&PlantRepository::UpdatePlantCareEntry, Care, WithoutPlant);
         }},
        {"UpdatePlantCareEntry", "`TimelineEventID` is 0, and the plant does not exist", OK, ForeignKey,
         [this]
         {
             return Update(&PlantRepository::UpdatePlantCareEntry, Changed(Care, WithUnknownPlant),
                           [](auto& e) { e.TimelineEventID = 0; });
         }},
        {"UpdatePlantCareEntry", "`TimelineEventID` refers to no event", OK, DependsOnVersion,
         [this]
         { return Update(&PlantRepository::UpdatePlantCareEntry, Care, [](auto& e) { e.TimelineEventID = 99; }); }},
        {"UpdatePlantCareEntry", "a number is NaN", OK, NotNull,
         [this] { return Update(&PlantRepository::UpdatePlantCareEntry, Care, [](auto& e) { e.EC = NotANumber; }); }},
        {"DeletePlantCareEntry", "the row ID is 0", Unchanged, Nothing,
         [this] { return Repository.DeletePlantCareEntry(0); }},
        {"DeletePlantCareEntry", "no care entry has this row ID", OK, Nothing,
         [this] { return Repository.DeletePlantCareEntry(99); }},
    };
}

std::vector<Refusal> RefusalPageTest::HarvestRefusals()
{
    return {
        {"GetHarvestRecord", "the plant has no harvest record", OK, Nothing,
         [this] { return Repository.GetHarvestRecord(Clone.UUID, *std::make_unique<HarvestRecord>()); }},
        {"SaveHarvestRecord", "`plant.UUID` is empty", Unchanged, Nothing,
         [this] { return SaveHarvest({}, {}, [](Plant&, HarvestRecord&) {}); }},
        {"SaveHarvestRecord", "the plant does not exist", OK, ForeignKey,
         [this] { return SaveHarvest({}, {}, [](Plant& p, HarvestRecord&) { p.UUID = "unknown"; }); }},
        {"SaveHarvestRecord", "`record.ID` is 0, and the plant already has a harvest record", OK, Unique,
         [this] { return SaveHarvest(Basil, {}, [](Plant&, HarvestRecord&) {}); }},
        {"SaveHarvestRecord", "`TimelineEventID` refers to no event", OK, DependsOnVersion,
         [this] { return SaveHarvest(Basil, Harvest, [](Plant&, HarvestRecord& h) { h.TimelineEventID = 99; }); }},
        {"SaveHarvestRecord", "a number is NaN", OK, NotNull,
         [this] { return SaveHarvest(Basil, Harvest, [](Plant&, HarvestRecord& h) { h.DryWeightG = NotANumber; }); }},
        {"DeleteHarvestRecord", "the plant has no harvest record", OK, Nothing,
         [this] { return Repository.DeleteHarvestRecord(Clone.UUID); }},
    };
}

std::vector<Refusal> RefusalPageTest::PhotoRefusals()
{
    return {
        {"CreatePlantPhoto", "`PlantUUID` or `FilePath` is empty", Unchanged, Nothing,
         [this]
         {
             return Create(&PlantRepository::CreatePlantPhoto, Photo, WithoutPlant) ||
                    Create(&PlantRepository::CreatePlantPhoto, Photo, [](auto& p) { p.FilePath.clear(); });
         }},
        {"CreatePlantPhoto", "the UUID is already in use", Unique, Unique,
         [this] { return Create(&PlantRepository::CreatePlantPhoto, Photo, [](auto&) {}); }},
        {"CreatePlantPhoto", "the plant does not exist", ForeignKey, ForeignKey,
         [this]
         {
             return Create(&PlantRepository::CreatePlantPhoto, Changed(Photo, WithUnknownPlant),
                           [](auto& p) { p.UUID = "new"; });
         }},
        {"UpdatePlantPhoto", "`ID` is 0, or `UUID`, `PlantUUID` or `FilePath` is empty", Unchanged, Nothing,
         [this]
         {
             constexpr auto operation = &PlantRepository::UpdatePlantPhoto;
             return Update(operation, Photo, WithoutID) || Update(operation, Photo, WithoutPlant) ||
                    Update(operation, Photo, [](auto& p) { p.UUID.clear(); }) ||
                    Update(operation, Photo, [](auto& p) { p.FilePath.clear(); });
         }},
        {"DeletePlantPhoto", "the UUID is empty", Unchanged, Nothing,
         [this] { return Repository.DeletePlantPhoto(""); }},
    };
}

std::vector<Refusal> RefusalPageTest::HealthRefusals()
{
    return {
        {"CreatePlantHealthObservation", "`PlantUUID` or `Issue` is empty", Unchanged, Nothing,
         [this]
         {
             constexpr auto operation = &PlantRepository::CreatePlantHealthObservation;
             return Create(operation, Observation, WithoutPlant) ||
                    Create(operation, Observation, [](auto& o) { o.Issue.clear(); });
         }},
        {"CreatePlantHealthObservation", "the plant does not exist", ForeignKey, ForeignKey,
         [this] { return Create(&PlantRepository::CreatePlantHealthObservation, Observation, WithUnknownPlant); }},
        {"UpdatePlantHealthObservation", "`ID` is 0, or `PlantUUID` or `Issue` is empty", Unchanged, Nothing,
         [this]
         {
             constexpr auto operation = &PlantRepository::UpdatePlantHealthObservation;
             return Update(operation, Observation, WithoutID) || Update(operation, Observation, WithoutPlant) ||
                    Update(operation, Observation, [](auto& o) { o.Issue.clear(); });
         }},
        {"DeletePlantHealthObservation", "the row ID is 0", Unchanged, Nothing,
         [this] { return Repository.DeletePlantHealthObservation(0); }},
    };
}

std::vector<Refusal> RefusalPageTest::JournalRefusals()
{
    return {
        {"CreatePlantJournalEntry", "`PlantUUID` is empty", Unchanged, Nothing,
         [this] { return Create(&PlantRepository::CreatePlantJournalEntry, Entry, WithoutPlant); }},
        {"CreatePlantJournalEntry", "the plant does not exist", ForeignKey, ForeignKey,
         [this] { return Create(&PlantRepository::CreatePlantJournalEntry, Entry, WithUnknownPlant); }},
        {"UpdatePlantJournalEntry", "`ID` is 0, or `PlantUUID` is empty", Unchanged, Nothing,
         [this]
         {
             return Update(&PlantRepository::UpdatePlantJournalEntry, Entry, WithoutID) ||
                    Update(&PlantRepository::UpdatePlantJournalEntry, Entry, WithoutPlant);
         }},
        {"DeletePlantJournalEntry", "the row ID is 0", Unchanged, Nothing,
         [this] { return Repository.DeletePlantJournalEntry(0); }},
    };
}

TEST_F(RefusalPageTest, EveryFailureHasTheCodeAndTheLogOfThePage)
{
    std::vector<std::vector<std::string>> rows;
    const std::string content = Content();
    for (const Refusal& refusal : Refusals())
    {
        SCOPED_TRACE(refusal.Operation + ": " + refusal.Meaning);
        rows.push_back({refusal.Operation, Plain(refusal.Meaning), refusal.Code, refusal.Logged});
        if (refusal.Code == Unchanged)
        {
            EXPECT_TRUE(RefusedWithoutACall(refusal.Call));
            continue;
        }
        Log.str("");
        EXPECT_FALSE(refusal.Call());
        EXPECT_EQ(Code(), Codes.at(refusal.Code));
        EXPECT_EQ(Content(), content);
        if (refusal.Logged == DependsOnVersion)
            continue;
        const std::string logged = Log.str();
        EXPECT_EQ(logged.substr(0, logged.find(':')),
                  refusal.Logged.empty() ? "" : std::to_string(Codes.at(refusal.Logged)));
    }
    std::vector<std::vector<std::string>> shown = TableRows(ErrorsPage, "## When an operation returns `false`");
    for (auto& row : shown)
        std::transform(row.begin(), row.end(), row.begin(), Plain);
    EXPECT_EQ(shown, rows);
}

TEST_F(RefusalPageTest, ThePageListsEveryOperationThatCanRefuse)
{
    std::set<std::string> without;
    for (const auto& row : TableRows("README.md", "## The operations"))
        for (const std::string& cell : {row.at(1), row.at(2)})
        {
            std::istringstream names(Plain(cell));
            for (std::string name; names >> name;)
                without.insert(name);
        }
    EXPECT_EQ(without.size(), 36);
    for (const Refusal& refusal : Refusals())
        EXPECT_TRUE(without.contains(refusal.Operation)) << refusal.Operation;
    for (const Refusal& refusal : Refusals())
        without.erase(refusal.Operation);
    EXPECT_EQ(without,
              (std::set<std::string>{"CareTimelineDetails", "DeletePlant", "ListPlantCareEntries", "ListPlantEvents",
                                     "ListPlantHealthObservations", "ListPlantJournalEntries", "ListPlantPhotos",
                                     "ListPlants", "ListStrains"}));
}

} // namespace

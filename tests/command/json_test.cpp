// What the commands print with --json.

#include "support/command.h"
#include "testing/records.h"

#include <filesystem>

using namespace support;

namespace
{

// The names of the fields, in their order; the values come from the library.
const Words PlantFields = {"ID",       "UUID",         "Name",          "Strain",    "MotherPlantUUID",
                           "Stage",    "Sex",          "Tent",          "PotSize",   "Medium",
                           "SeedDate", "FlipHeightCm", "FinalHeightCm", "CloneDate", "TransplantDate",
                           "FlipDate", "HarvestDate",  "Notes"};
const Words StrainFields = {"ID", "Name", "Breeder", "FloweringWeeks", "Notes"};
const Words SummaryFields = {"StrainID",
                             "StrainName",
                             "TotalPlants",
                             "Seed",
                             "Clone",
                             "Veg",
                             "Flower",
                             "Dry",
                             "Cure",
                             "Harvested",
                             "Archived",
                             "HarvestCount",
                             "AverageDryWeightG",
                             "AverageQuality"};
const Words EventFields = {"ID", "PlantUUID", "EventDate", "Type", "Details"};
const Words CareFields = {"ID", "TimelineEventID", "PlantUUID", "CareDate", "Action", "Product", "AmountMl", "EC",
                          "PH", "RunoffMl",        "Notes"};
const Words HarvestFields = {"ID",         "TimelineEventID", "PlantUUID", "HarvestDate", "WetWeightG",
                             "DryWeightG", "QualityRating",   "SeedYield", "CureOutcome", "Notes"};
const Words PhotoFields = {"ID", "UUID", "PlantUUID", "PhotoDate", "FilePath", "Caption"};
const Words HealthFields = {"ID", "PlantUUID", "ObservationDate", "Issue", "Severity", "Treatment", "Notes"};
const Words NoteFields = {"ID", "PlantUUID", "EntryDate", "Type", "Details"};

std::string JSONValue(PlantStage value)
{
    return PlantStageName(value);
}
std::string JSONValue(PlantSex value)
{
    return PlantSexName(value);
}
std::string JSONValue(PlantEventType value)
{
    return PlantEventTypeName(value);
}
std::string JSONValue(PlantCareAction value)
{
    return PlantCareActionName(value);
}
std::string JSONValue(PlantJournalType value)
{
    return PlantJournalTypeName(value);
}
template <typename Value> const Value& JSONValue(const Value& value)
{
    return value;
}

// A record of a plant has the plant's name after its UUID.
JSON ObjectOf(const Record auto& record, const Words& names, const std::string& plant = {})
{
    JSON object = JSON::object();
    auto name = names.begin();
    const auto add = [&](const auto& value)
    {
        object[*name] = JSONValue(value);
        if (*name++ == "PlantUUID")
            object["Plant"] = plant;
    };
    std::apply([&](const auto&... values) { (add(values), ...); }, Fields(record));
    EXPECT_EQ(name, names.end());
    return object;
}

template <typename Type>
JSON ArrayOf(const std::vector<Type>& records, const Words& names, const std::string& plant = {})
{
    JSON array = JSON::array();
    for (const Type& record : records)
        array.push_back(ObjectOf(record, names, plant));
    return array;
}

using JSONTest = CommandTest;

// The records of the journal that KeepEverything() stores, as the library reads them.
class RecordJSONTest : public CommandTest
{
  protected:
    RecordJSONTest()
    {
        KeepEverything();
        Keep(
            [this](PlantRepository& repository)
            {
                EXPECT_TRUE(repository.ListPlants(Plants) && repository.ListStrains(Strains));
                EXPECT_TRUE(repository.GetStrainSummary(Strains.at(0).ID, Summary));
                EXPECT_TRUE(repository.ListPlantEvents(Plants.at(0).UUID, Events));
                EXPECT_TRUE(repository.ListPlantCareEntries(Plants[0].UUID, Care));
                EXPECT_TRUE(repository.GetHarvestRecord(Plants[0].UUID, Harvest));
                EXPECT_TRUE(repository.ListPlantPhotos(Plants[0].UUID, Photos));
                EXPECT_TRUE(repository.ListPlantHealthObservations(Plants[0].UUID, Observations));
                EXPECT_TRUE(repository.ListPlantJournalEntries(Plants.at(1).UUID, Notes));
            });
    }

    std::vector<Plant> Plants;
    std::vector<Strain> Strains;
    StrainSummary Summary;
    std::vector<PlantEvent> Events;
    std::vector<PlantCareEntry> Care;
    HarvestRecord Harvest;
    std::vector<PlantPhoto> Photos;
    std::vector<PlantHealthObservation> Observations;
    std::vector<PlantJournalEntry> Notes;
};

TEST_F(RecordJSONTest, JSONHoldsEveryRecordUnderItsFieldNames)
{
    EXPECT_EQ(Parsed({"plant", "list"}), ArrayOf(Plants, PlantFields));
    EXPECT_EQ(Parsed({"plant", "show", "Cutting"}), ObjectOf(Plants[1], PlantFields));
    EXPECT_EQ(Parsed({"strain", "list"}), ArrayOf(Strains, StrainFields));
    EXPECT_EQ(Parsed({"strain", "show", "Genovese"}), ObjectOf(Summary, SummaryFields));
    EXPECT_EQ(Events.size(), 3U);
    EXPECT_EQ(Parsed({"event", "list", "Basil"}), ArrayOf(Events, EventFields, "Basil"));
    EXPECT_EQ(Parsed({"care", "list", "Basil"}), ArrayOf(Care, CareFields, "Basil"));
    EXPECT_EQ(Parsed({"harvest", "list", "Basil"}), ArrayOf(std::vector{Harvest}, HarvestFields, "Basil"));
    EXPECT_EQ(Parsed({"photo", "list", "Basil"}), ArrayOf(Photos, PhotoFields, "Basil"));
    EXPECT_EQ(Parsed({"health", "list", "Basil"}), ArrayOf(Observations, HealthFields, "Basil"));
    EXPECT_EQ(Parsed({"note", "list", "Cutting"}), ArrayOf(Notes, NoteFields, "Cutting"));
    EXPECT_EQ(Parsed({"note", "list", "Basil"}), JSON::array());
    EXPECT_EQ(Parsed({"note", "list"}), ArrayOf(Notes, NoteFields, "Cutting")); // of all Plants
}

TEST_F(RecordJSONTest, JSONOfATreeHoldsTheClonesAndHarvests)
{
    JSON tree = ObjectOf(Plants[0], PlantFields);
    tree["Harvest"] = ArrayOf(std::vector{Harvest}, HarvestFields, "Basil").at(0);
    tree["Clones"] = JSON::array({ObjectOf(Plants[1], PlantFields)});
    tree["Clones"][0]["Harvest"] = nullptr;
    tree["Clones"][0]["Clones"] = JSON::array();
    EXPECT_EQ(Parsed({"plant", "tree"}), JSON::array({tree}));
}

TEST_F(RecordJSONTest, JSONOfATimelineHoldsTheTables)
{
    const auto of = [](const char* table, const JSON& object)
    {
        JSON item = {{"Table", table}};
        item.update(object);
        return item;
    };
    const auto ownDate = [this](const char* field, const char* date) -> JSON {
        return {
            {"Table", "Plants"}, {"PlantUUID", Plants[0].UUID}, {"Plant", "Basil"}, {"Field", field}, {"Date", date}};
    };
    EXPECT_EQ(
        Parsed({"timeline", "Basil"}),
        JSON::array({of("HarvestRecords", ObjectOf(Harvest, HarvestFields, "Basil")),
                     of("PlantHealthObservations", ObjectOf(Observations.at(0), HealthFields, "Basil")),
                     of("PlantPhotos", ObjectOf(Photos.at(0), PhotoFields, "Basil")),
                     of("PlantCareEntries", ObjectOf(Care.at(0), CareFields, "Basil")),
                     of("PlantEvents", ObjectOf(Events.at(2), EventFields, "Basil")), ownDate("FlipDate", "2026-04-20"),
                     ownDate("TransplantDate", "2026-03-12"), ownDate("SeedDate", "2026-02")}));
}

TEST_F(RecordJSONTest, JSONOfAnInspectionHoldsItsFields)
{
    const std::string bytes = std::to_string(std::filesystem::file_size(Journal));
    EXPECT_EQ(Parsed({"info"}),
              JSON::parse(R"({"File":)" + JSON(Journal).dump() + R"(,"Kind":"Current","Bytes":)" + bytes +
                          R"(,"FirstDate":"2026-02","LastDate":"2026-07-01","Steps":[],"Reasons":[],
        "Tables":{"SchemaMeta":0,"Strains":1,"Plants":2,"PlantEvents":3,"PlantCareEntries":1,"HarvestRecords":1,
        "PlantPhotos":1,"PlantHealthObservations":1,"PlantJournalEntries":1}})"));
    EXPECT_EQ(Parsed({"check"}), JSON::array());
}

TEST_F(JSONTest, JSONHoldsTextsThatAreNotUTF8AsHexDigits)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name = "\xFFz\xE4";
            EXPECT_TRUE(repository.CreatePlant(plant));
        });
    EXPECT_EQ(Parsed({"plant", "list"}).at(0).at("Name"), JSON({{"Hex", "ff7ae4"}}));
}

TEST_F(JSONTest, JSONOfACheckHoldsTheFindings)
{
    KeepEverything();
    std::filesystem::remove(Scratch.File("basil.jpg"));
    Sound = false;
    const ProgramResult check = Run({"check", "--json"});
    EXPECT_EQ(check.Status, 1);
    EXPECT_NE(check.Error.find("findings: 1"), std::string::npos);
    const JSON findings = JSON::parse(check.Out);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].at("Kind"), "MissingPhotoFile");
    EXPECT_EQ(findings[0].at("Table"), "PlantPhotos");
    EXPECT_EQ(findings[0].at("RowID"), 1);
    EXPECT_NE(findings[0].at("Description").get<std::string>().find("basil.jpg"), std::string::npos);
    EXPECT_NE(Run({"check"}).Out.find("MissingPhotoFile  PlantPhotos"), std::string::npos);
}

TEST_F(JSONTest, TheJSONFlagIsAllowedAnywhereInTheLine)
{
    KeepEverything();
    const std::string expected = Done({"plant", "list", "--json"});
    EXPECT_EQ(Done({"--json", "plant", "list"}), expected);
    EXPECT_EQ(Done({"plant", "--json", "list"}), expected);
}

} // namespace

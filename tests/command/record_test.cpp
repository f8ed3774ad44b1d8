// Everything that is written into a journal and read from it by the command, field by field.

#include "support/command.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <tuple>

using namespace support;

namespace
{

// The fields of `expected` are those of `object`, whatever else that has.
void ExpectFields(const JSON& object, const JSON& expected)
{
    for (const auto& [name, value] : expected.items())
        EXPECT_EQ(object.at(name), value) << name;
}

class RecordCommandTest : public CommandTest
{
  protected:
    RecordCommandTest() { Done({"plant", "add", "Basil", "--uuid", "b1", "--strain", "Genovese"}); }

    JSON Basil() const { return Parsed({"plant", "show", "b1"}); }
};

// ---- Plants

TEST_F(RecordCommandTest, APlantIsAddedWithEveryFieldAndItsUUIDPrinted)
{
    const std::string uuid = Told({"plant",
                                   "add",
                                   "Cutting",
                                   "--strain",
                                   "Roma",
                                   "--mother-plant-uuid",
                                   "Basil",
                                   "--stage",
                                   "flower",
                                   "--sex",
                                   "FEMALE",
                                   "--tent",
                                   "South",
                                   "--pot-size",
                                   "11 l",
                                   "--medium",
                                   "peat",
                                   "--seed-date",
                                   "2025",
                                   "--flip-height-cm",
                                   "40.5",
                                   "--final-height-cm",
                                   "1e2",
                                   "--clone-date",
                                   "2025-02",
                                   "--transplant-date",
                                   "2025-03-04",
                                   "--flip-date",
                                   "2024-02-29",
                                   "--harvest-date",
                                   "2025-12-31",
                                   "--notes",
                                   "two\nlines, \"quoted\""});
    EXPECT_EQ(uuid.size(), 36U);
    EXPECT_EQ(Parsed({"plant", "show", uuid}), JSON({{"ID", 2},
                                                     {"UUID", uuid},
                                                     {"Name", "Cutting"},
                                                     {"Strain", "Roma"},
                                                     {"MotherPlantUUID", "b1"},
                                                     {"Stage", "Flower"},
                                                     {"Sex", "Female"},
                                                     {"Tent", "South"},
                                                     {"PotSize", "11 l"},
                                                     {"Medium", "peat"},
                                                     {"SeedDate", "2025"},
                                                     {"FlipHeightCm", 40.5},
                                                     {"FinalHeightCm", 100.0},
                                                     {"CloneDate", "2025-02"},
                                                     {"TransplantDate", "2025-03-04"},
                                                     {"FlipDate", "2024-02-29"},
                                                     {"HarvestDate", "2025-12-31"},
                                                     {"Notes", "two\nlines, \"quoted\""}}));
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 2U); // the new one is registered
}

TEST_F(RecordCommandTest, APlantNeedsNoMoreThanAName)
{
    ExpectFields(Parsed({"plant", "add", "--name", "Mint"}), {{"Name", "Mint"},
                                                              {"Strain", ""},
                                                              {"MotherPlantUUID", ""},
                                                              {"Stage", "Veg"},
                                                              {"Sex", "Unknown"},
                                                              {"SeedDate", ""},
                                                              {"FlipHeightCm", 0.0}});
    Mistaken({"plant", "add", ""});
    Mistaken({"plant", "edit", "Basil", "--name", ""});
}

TEST_F(RecordCommandTest, AnEditChangesWhatIsGivenAndNothingElse)
{
    const JSON before = Basil();
    for (const auto& [flag, field, text, value] : std::vector<std::tuple<const char*, const char*, const char*, JSON>>{
             {"--name", "Name", "Sweet basil", "Sweet basil"},
             {"--strain", "Strain", "Gigante", "Gigante"},
             {"--stage", "Stage", "dRY", "Dry"},
             {"--sex", "Sex", "hermaphrodite", "Hermaphrodite"},
             {"--tent", "Tent", "North", "North"},
             {"--pot-size", "PotSize", "5 l", "5 l"},
             {"--medium", "Medium", "coco", "coco"},
             {"--seed-date", "SeedDate", "2026-01-31", "2026-01-31"},
             {"--flip-height-cm", "FlipHeightCm", "0.1", 0.1},
             {"--final-height-cm", "FinalHeightCm", "-3", -3.0},
             {"--clone-date", "CloneDate", "2026", "2026"},
             {"--transplant-date", "TransplantDate", "2026-12", "2026-12"},
             {"--flip-date", "FlipDate", "2026-02-28", "2026-02-28"},
             {"--harvest-date", "HarvestDate", "2026-07-01", "2026-07-01"},
             {"--notes", "Notes", "Süßkirsche", "Süßkirsche"}})
    {
        JSON expected = Basil();
        expected[field] = value;
        EXPECT_EQ(Done({"plant", "edit", "b1", flag, text}), "");
        EXPECT_EQ(Basil(), expected) << flag;
        EXPECT_NE(before.at(field), value); // or it would prove nothing
    }
    Done({"plant", "edit", "b1", "--seed-date=", "--tent="});
    ExpectFields(Basil(), {{"SeedDate", ""}, {"Tent", ""}, {"FlipDate", "2026-02-28"}});
}

TEST_F(RecordCommandTest, AMotherIsNamedAsAnyPlantAndTakenAwayByAnEmptyName)
{
    Done({"plant", "add", "Cutting", "--uuid", "c1"});
    EXPECT_EQ(Parsed({"plant", "edit", "c1", "--mother", "Basil"}).at("MotherPlantUUID"), "b1");
    EXPECT_NE(Refused({"plant", "edit", "Basil", "--mother", "Cutting"}).find("one of its descendants"),
              std::string::npos);
    EXPECT_EQ(Parsed({"plant", "edit", "c1", "--mother", ""}).at("MotherPlantUUID"), "");
}

TEST_F(RecordCommandTest, ADeletedPlantTakesItsRecordsAndLeavesItsClones)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil"});
    Done({"feed", "Basil"});
    Done({"note", "add", "Basil", "leaves"});
    EXPECT_EQ(Done({"plant", "delete", "Basil", "--yes"}), "");
    const JSON tables = Parsed({"info"}).at("Tables");
    ExpectFields(tables, {{"Plants", 1}, {"PlantCareEntries", 0}, {"PlantEvents", 0}, {"PlantJournalEntries", 0}});
    EXPECT_EQ(Parsed({"plant", "show", "Cutting"}).at("MotherPlantUUID"), "");
}

TEST_F(RecordCommandTest, ADuplicateHasAllButTheIdentityAndTheMother)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil", "--tent", "South"});
    JSON expected = Parsed({"plant", "show", "Cutting"});
    const std::string uuid = Told({"plant", "duplicate", "Cutting"});
    expected.update({{"ID", 3}, {"UUID", uuid}, {"Name", "Cutting copy"}, {"MotherPlantUUID", ""}});
    EXPECT_EQ(Parsed({"plant", "show", "Cutting copy"}), expected);
}

TEST_F(RecordCommandTest, TheLineageIsDrawn)
{
    Done(
        {"plant", "add", "Cutting 1", "--mother", "Basil", "--uuid", "c1", "--strain", "Genovese", "--stage", "clone"});
    Done({"plant", "add", "Cutting 2", "--mother", "Basil", "--uuid", "c2", "--strain", "Genovese"});
    Done({"plant", "add", "Süß", "--mother", "Cutting 1", "--uuid", "c3"});
    Done({"plant", "add", "Mint"});
    EXPECT_EQ(Done({"plant", "tree"}), "Mint Veg\n"
                                       "Basil (Genovese) Veg\n"
                                       "├── Cutting 1 (Genovese) Clone\n"
                                       "│   └── Süß Veg\n"
                                       "└── Cutting 2 (Genovese) Veg\n");
    EXPECT_EQ(Done({"plant", "tree", "c1"}), "Cutting 1 (Genovese) Clone\n└── Süß Veg\n");
}

// ---- Strains

TEST_F(RecordCommandTest, AStrainIsAddedListedChangedAndDeleted)
{
    ExpectFields(Parsed({"strain", "add", "Roma", "--breeder", "who", "--flowering-weeks", "9", "--notes", "red"}),
                 {{"Name", "Roma"}, {"Breeder", "who"}, {"FloweringWeeks", 9}, {"Notes", "red"}});
    EXPECT_EQ(Done({"strain", "list"}), "Name      Breeder  FloweringWeeks  Notes\n"
                                        "Genovese                        0\n"
                                        "Roma      who                   9  red\n");
    EXPECT_EQ(Done({"strain", "edit", "Genovese", "--name", "Gigante", "--breeder", "x", "--flowering-weeks", "8",
                    "--notes", "y"}),
              "");
    EXPECT_EQ(Basil().at("Strain"), "Gigante"); // the new name is carried into the plants
    EXPECT_EQ(Parsed({"strain", "list"}).at(0),
              JSON({{"ID", 1}, {"Name", "Gigante"}, {"Breeder", "x"}, {"FloweringWeeks", 8}, {"Notes", "y"}}));
    EXPECT_NE(Refused({"strain", "edit", "Gigante", "--name", "Roma"}).find("that name or UUID is already in use"),
              std::string::npos);
    EXPECT_NE(Refused({"strain", "delete", "Gigante", "--yes"}).find("it still has plants"), std::string::npos);
    EXPECT_EQ(RunOnTerminal({"strain", "delete", "Roma"}, "y\n").Out, "Delete the strain Roma? [y/N] ");
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 1U);
}

TEST_F(RecordCommandTest, AStrainIsSummedUp)
{
    Done({"plant", "add", "Other", "--strain", "Genovese", "--stage", "dry"});
    Done({"harvest", "add", "Basil", "--dry-weight-g", "50", "--quality-rating", "7"});
    Done({"harvest", "add", "Other", "--dry-weight-g", "100"});
    EXPECT_EQ(Done({"strain", "show", "Genovese"}), "Field              Value\n"
                                                    "StrainID           1\n"
                                                    "StrainName         Genovese\n"
                                                    "TotalPlants        2\n"
                                                    "Seed               0\n"
                                                    "Clone              0\n"
                                                    "Veg                0\n"
                                                    "Flower             0\n"
                                                    "Dry                0\n"
                                                    "Cure               0\n"
                                                    "Harvested          2\n"
                                                    "Archived           0\n"
                                                    "HarvestCount       2\n"
                                                    "AverageDryWeightG  75\n"
                                                    "AverageQuality     7\n");
}

// ---- The records of a plant

// One kind of record: the flags that set each of its fields, and what others they are changed to.
struct Family
{
    std::string Name;
    std::string Table;
    Words Add;
    JSON Added;
    Words Edit;
    JSON Edited;
};

std::ostream& operator<<(std::ostream& out, const Family& family)
{
    return out << family.Name;
}

const std::vector<Family> Families = {
    {"care",
     "PlantCareEntries",
     {"--care-date", "2026-05-02", "--action", "feed", "--product", "Bloom A", "--amount-ml", "500.25", "--ec", "1.8",
      "--ph", "6.2", "--runoff-ml", "20", "--notes", "half"},
     {{"CareDate", "2026-05-02"},
      {"Action", "Feed"},
      {"Product", "Bloom A"},
      {"AmountMl", 500.25},
      {"EC", 1.8},
      {"PH", 6.2},
      {"RunoffMl", 20.0},
      {"Notes", "half"}},
     {"--care-date", "2026-05", "--action", "WATER", "--product", "", "--amount-ml", "1", "--ec", "0", "--ph", "7",
      "--runoff-ml", "0.5", "--notes", "whole"},
     {{"CareDate", "2026-05"},
      {"Action", "Water"},
      {"Product", ""},
      {"AmountMl", 1.0},
      {"EC", 0.0},
      {"PH", 7.0},
      {"RunoffMl", 0.5},
      {"Notes", "whole"}}},
    {"event",
     "PlantEvents",
     {"tied down", "--event-date", "2026-05-01", "--type", "lst trained"},
     {{"EventDate", "2026-05-01"}, {"Type", "LST Trained"}, {"Details", "tied down"}},
     {"--event-date", "2025", "--type", "Flip", "--details", "turned"},
     {{"EventDate", "2025"}, {"Type", "Flip"}, {"Details", "turned"}}},
    {"harvest",
     "HarvestRecords",
     {"--harvest-date", "2026-07-01", "--wet-weight-g", "410", "--dry-weight-g", "96.5", "--quality-rating", "8",
      "--seed-yield", "12", "--cure-outcome", "good", "--notes", "early"},
     {{"HarvestDate", "2026-07-01"},
      {"WetWeightG", 410.0},
      {"DryWeightG", 96.5},
      {"QualityRating", 8.0},
      {"SeedYield", 12},
      {"CureOutcome", "good"},
      {"Notes", "early"}},
     {"--harvest-date", "2026-07-02", "--wet-weight-g", "1", "--dry-weight-g", "2", "--quality-rating", "3.5",
      "--seed-yield", "4", "--cure-outcome", "bad", "--notes", "late"},
     {{"HarvestDate", "2026-07-02"},
      {"WetWeightG", 1.0},
      {"DryWeightG", 2.0},
      {"QualityRating", 3.5},
      {"SeedYield", 4},
      {"CureOutcome", "bad"},
      {"Notes", "late"}}},
    {"photo",
     "PlantPhotos",
     {"basil.jpg", "--uuid", "p1", "--photo-date", "2026-05-03", "--caption", "low"},
     {{"UUID", "p1"}, {"PhotoDate", "2026-05-03"}, {"FilePath", "basil.jpg"}, {"Caption", "low"}},
     {"--photo-date", "2026-05-04", "--file-path", "mint.jpg", "--caption", "high"},
     {{"UUID", "p1"}, {"PhotoDate", "2026-05-04"}, {"FilePath", "mint.jpg"}, {"Caption", "high"}}},
    {"health",
     "PlantHealthObservations",
     {"thrips", "--observation-date", "2026-05-04", "--severity", "5", "--treatment", "soap", "--notes", "few"},
     {{"ObservationDate", "2026-05-04"}, {"Issue", "thrips"}, {"Severity", 5}, {"Treatment", "soap"}, {"Notes", "few"}},
     {"--observation-date", "2026-06", "--issue", "mites", "--severity", "1", "--treatment", "", "--notes", "many"},
     {{"ObservationDate", "2026-06"}, {"Issue", "mites"}, {"Severity", 1}, {"Treatment", ""}, {"Notes", "many"}}},
    {"note",
     "PlantJournalEntries",
     {"above the fifth node", "--entry-date", "2026-05-05", "--type", "topping"},
     {{"EntryDate", "2026-05-05"}, {"Type", "Topping"}, {"Details", "above the fifth node"}},
     {"--entry-date", "2026-05-06", "--type", "MILESTONE", "--details", "first flower"},
     {{"EntryDate", "2026-05-06"}, {"Type", "Milestone"}, {"Details", "first flower"}}},
};

class FamilyCommandTest : public RecordCommandTest, public testing::WithParamInterface<Family>
{
  protected:
    FamilyCommandTest()
    {
        Write("data/plantjournal/basil.jpg", "a picture");
        Write("data/plantjournal/mint.jpg", "another");
        Left = {"basil.jpg", "journal.db", "mint.jpg"};
    }

    // A command of the family for Basil.
    Words Of(const std::string& operation, const Words& further = {}) const
    {
        Words words = {GetParam().Name, operation, "Basil"};
        words.insert(words.end(), further.begin(), further.end());
        return words;
    }
    // The same for its only record.
    Words OfIt(const std::string& operation, const Words& further = {}) const
    {
        Words words = Of(operation);
        if (GetParam().Name != "harvest")
            words.push_back(std::to_string(Parsed(Of("list")).at(0).at("ID").get<int>()));
        words.insert(words.end(), further.begin(), further.end());
        return words;
    }
    JSON Only() const
    {
        const JSON list = Parsed(Of("list"));
        EXPECT_EQ(list.size(), 1U);
        return list.at(0);
    }
};

TEST_P(FamilyCommandTest, ARecordIsAddedChangedAndDeletedWithEveryField)
{
    const std::string id = Told(Of("add", GetParam().Add));
    const JSON added = Only();
    ExpectFields(added, GetParam().Added);
    EXPECT_EQ(added.at("PlantUUID"), "b1");
    EXPECT_EQ(std::to_string(added.at("ID").get<int>()), id);

    EXPECT_EQ(Done(OfIt("edit", GetParam().Edit)), "");
    JSON expected = added;
    expected.update(GetParam().Edited);
    EXPECT_EQ(Only(), expected);

    EXPECT_NE(Refused(OfIt("delete")).find("--yes"), std::string::npos);
    EXPECT_EQ(Done(OfIt("delete", {"--yes"})), "");
    EXPECT_EQ(Parsed(Of("list")), JSON::array());
    EXPECT_EQ(Parsed({"info"}).at("Tables").at(GetParam().Table), 0);
    EXPECT_EQ(Parsed({"info"}).at("Tables").at("PlantEvents"), 0); // its event went along
}

TEST_P(FamilyCommandTest, AnEditOfOneFieldLeavesTheOthers)
{
    Done(Of("add", GetParam().Add));
    for (std::size_t i = 0; i < GetParam().Edit.size(); i += 2)
    {
        const JSON before = Only();
        Done(OfIt("edit", {GetParam().Edit[i], GetParam().Edit[i + 1]}));
        const JSON after = Only();
        int changed = 0;
        for (const auto& [name, value] : before.items())
            changed += after.at(name) == value ? 0 : 1;
        EXPECT_EQ(changed, 1) << GetParam().Edit[i];
    }
}

TEST_P(FamilyCommandTest, WithJSONAWriteGivesTheRecord)
{
    const JSON added = Parsed(Of("add", GetParam().Add));
    EXPECT_EQ(added, Only());
    const JSON edited = Parsed(OfIt("edit", GetParam().Edit));
    EXPECT_EQ(edited, Only());
}

TEST_P(FamilyCommandTest, ANewRecordIsOfTodayAndARecordIsFoundWithItsPlantOnly)
{
    Words shortest = {};
    if (GetParam().Name == "photo" || GetParam().Name == "health")
        shortest.push_back(GetParam().Add.front());
    Done(Of("add", shortest));
    EXPECT_EQ(Only().at(GetParam().Added.contains("CareDate")          ? "CareDate"
                        : GetParam().Added.contains("EventDate")       ? "EventDate"
                        : GetParam().Added.contains("HarvestDate")     ? "HarvestDate"
                        : GetParam().Added.contains("PhotoDate")       ? "PhotoDate"
                        : GetParam().Added.contains("ObservationDate") ? "ObservationDate"
                                                                       : "EntryDate"),
              PlantEventCurrentDate());
    Done({"plant", "add", "Mint"});
    Words others = OfIt("delete", {"--yes"});
    others.at(2) = "Mint";
    EXPECT_NE(Refused(others).find("Mint has no "), std::string::npos);
    EXPECT_EQ(Parsed({GetParam().Name, "list", "Mint"}), JSON::array());
}

TEST_P(FamilyCommandTest, TheListOfAllPlantsTellsThePlantOfEach)
{
    Done({"plant", "add", "Mint"});
    Words others = Of("add", GetParam().Add);
    others.at(2) = "Mint";
    if (GetParam().Name == "photo")
        others.at(5) = "p2"; // a UUID is of one photo only
    Done(others);
    Done(Of("add", GetParam().Add));
    const std::string list = Done({GetParam().Name, "list"});
    EXPECT_TRUE(list.starts_with("Plant  "));
    EXPECT_LT(list.find("\nMint   "), list.find("\nBasil  ")); // without a strain, with one
    EXPECT_EQ(Parsed({GetParam().Name, "list"}).size(), 2U);
    EXPECT_FALSE(Done(Of("list")).starts_with("Plant  "));
}

INSTANTIATE_TEST_SUITE_P(Of, FamilyCommandTest, testing::ValuesIn(Families),
                         [](const auto& test) { return test.param.Name; });

TEST_F(RecordCommandTest, FeedAndWaterAreCareEntriesWithTheirEvents)
{
    const std::string feeding = Told({"feed", "Basil", "--product", "Bloom A", "--amount-ml", "500", "--ec", "1.8",
                                      "--ph", "6.2", "--care-date", "2026-05-02"});
    const std::string watering = Told({"water", "Basil", "--amount-ml", "750"});
    const JSON care = Parsed({"care", "list", "Basil"});
    ASSERT_EQ(care.size(), 2U);
    ExpectFields(care.at(0), {{"ID", std::stoi(watering)}, {"Action", "Water"}, {"CareDate", PlantEventCurrentDate()}});
    ExpectFields(care.at(1), {{"ID", std::stoi(feeding)}, {"Action", "Feed"}, {"CareDate", "2026-05-02"}});
    const JSON events = Parsed({"event", "list", "Basil"});
    ASSERT_EQ(events.size(), 2U);
    ExpectFields(
        events.at(1),
        {{"ID", care[1].at("TimelineEventID")}, {"Type", "Feed"}, {"Details", "Bloom A | 500 ml | EC 1.80 | pH 6.20"}});
}

TEST_F(RecordCommandTest, AHarvestMovesItsPlantOn)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01"});
    ExpectFields(Basil(), {{"Stage", "Harvested"}, {"HarvestDate", "2026-07-01"}});
    EXPECT_NE(Refused({"harvest", "add", "Basil"}).find("already has a harvest record"), std::string::npos);
    Done({"harvest", "delete", "Basil", "--yes"});
    ExpectFields(Basil(), {{"Stage", "Harvested"}, {"HarvestDate", "2026-07-01"}});
}

TEST_F(RecordCommandTest, AListShowsTheNewestFirstAndNoMoreThanAskedFor)
{
    Done({"plant", "add", "Mint"});
    for (const char* plant : {"Basil", "Mint"})
        for (const char* date : {"2026-01", "2026-03", "2026-02"})
            Done({"note", "add", plant, date, "--entry-date", date});
    const std::string list = Done({"note", "list", "Basil"});
    EXPECT_TRUE(list.find("2026-03") < list.find("2026-02") && list.find("2026-02") < list.find("2026-01")) << list;
    EXPECT_EQ(Parsed({"note", "list", "Basil", "--newest", "2"}).size(), 2U);
    EXPECT_EQ(Parsed({"note", "list", "Basil", "--newest", "1"}).at(0).at("EntryDate"), "2026-03");
    EXPECT_EQ(Parsed({"note", "list", "--newest", "1"}).size(), 2U); // of each plant
    Mistaken({"note", "list", "--newest", "-1"});
}

TEST_F(RecordCommandTest, TheTimelineHasEverythingOfAPlantOnceByDate)
{
    Write("data/plantjournal/basil.jpg", "a picture");
    Left = {"basil.jpg", "journal.db"};
    Done({"plant", "add", "Mint"});
    Done({"note", "add", "Mint", "another's"});
    Done({"note", "add", "Basil", "six leaves", "--entry-date", "2026-05-06"});
    Done({"health", "add", "Basil", "thrips", "--severity", "3", "--treatment", "soap", "--observation-date",
          "2026-05-05"});
    Done({"photo", "add", "Basil", "basil.jpg", "--caption", "low", "--photo-date", "2026-05-04"});
    Done({"event", "add", "Basil", "tied down", "--type", "lst trained", "--event-date", "2026-05-02"});
    Done({"harvest", "add", "Basil", "--dry-weight-g", "96.5", "--harvest-date", "2026-07-01"});
    Done({"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"});
    Done({"water", "Basil", "--amount-ml", "750", "--care-date", "2026"});
    const std::string harvest = Parsed({"event", "list", "Basil", "--newest", "1"}).at(0).at("Details");
    EXPECT_NE(harvest, "");
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind         Details\n"
                                           "2026-07-01  Harvest      " +
                                               harvest +
                                               "\n"
                                               "2026-05-06  Observation  six leaves\n"
                                               "2026-05-05  Health       thrips (3 of 5) | soap\n"
                                               "2026-05-04  Photo        basil.jpg | low\n"
                                               "2026-05-03  Feed         500 ml\n"
                                               "2026-05-02  LST Trained  tied down\n"
                                               "2026        Water        750 ml\n");
}

TEST_F(RecordCommandTest, WhatLostItsEventIsStillInTheTimeline)
{
    Done({"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"});
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--cure-outcome", "good"});
    for (int i = 0; i < 2; ++i)
        Done({"event", "delete", "Basil", std::to_string(Parsed({"event", "list", "Basil"}).at(0).at("ID").get<int>()),
              "--yes"});
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind     Details\n"
                                           "2026-07-01  Harvest  good\n"
                                           "2026-05-03  Feed     500 ml\n");
    Sound = false; // an entry without its event is told of
}

// ---- Values

TEST_F(RecordCommandTest, NamesMayBeWrittenInAnyLetterCase)
{
    const std::vector<std::tuple<Words, std::string, Words>> flags = {
        {{"plant", "edit", "b1", "--stage"},
         "Stage",
         {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"}},
        {{"plant", "edit", "b1", "--sex"}, "Sex", {"Unknown", "Female", "Male", "Hermaphrodite"}},
        {{"care", "add", "b1", "--action"}, "Action", {"Feed", "Water"}},
        {{"event", "add", "b1", "--type"},
         "Type",
         {"Clone", "Transplant", "Flip", "Harvest", "Feed", "Water", "Stage", "Topped", "LST Trained", "Defoliated",
          "Note"}},
        {{"note", "add", "b1", "--type"},
         "Type",
         {"Observation", "Training", "Pruning", "Topping", "Defoliation", "Milestone"}}};
    for (const auto& [words, field, names] : flags)
    {
        for (const std::string& name : names)
            for (const bool upper : {false, true})
            {
                Words line = words;
                std::transform(name.begin(), name.end(), std::back_inserter(line.emplace_back()),
                               [&](char letter)
                               { return static_cast<char>(upper ? std::toupper(letter) : std::tolower(letter)); });
                EXPECT_EQ(Parsed(line).at(field), name);
            }
        for (const char* other : {"", "other", "1", "veg ", "lsttrained"})
        {
            Words line = words;
            line.emplace_back(other);
            const std::string message = Mistaken(line);
            EXPECT_NE(
                message.find(words.back() + ": \"" + other + "\" is not one of " + names.at(0) + ", " + names.at(1)),
                std::string::npos)
                << message;
        }
    }
}

std::string Yesterday()
{
    const std::time_t now = std::time(nullptr);
    std::tm day = *std::localtime(&now);
    day.tm_hour = 12;
    --day.tm_mday;
    EXPECT_NE(std::mktime(&day), -1);
    std::ostringstream text;
    text << std::put_time(&day, "%Y-%m-%d");
    return text.str();
}

TEST_F(RecordCommandTest, DatesAreRealOnesOrTodayOrYesterday)
{
    for (const auto& [text, date] : std::vector<std::pair<std::string, std::string>>{{"today", PlantEventCurrentDate()},
                                                                                     {"yesterday", Yesterday()},
                                                                                     {"2024-02-29", "2024-02-29"},
                                                                                     {"0001-01-01", "0001-01-01"},
                                                                                     {"2026-12", "2026-12"},
                                                                                     {"1999", "1999"},
                                                                                     {"", ""}})
        EXPECT_EQ(Parsed({"plant", "edit", "b1", "--seed-date", text}).at("SeedDate"), date);

    const std::vector<std::pair<Words, std::string>> commands = {
        {{"plant", "edit", "b1"}, "--seed-date"},       {{"plant", "edit", "b1"}, "--clone-date"},
        {{"plant", "edit", "b1"}, "--transplant-date"}, {{"plant", "edit", "b1"}, "--flip-date"},
        {{"plant", "add", "x"}, "--harvest-date"},      {{"feed", "b1"}, "--care-date"},
        {{"event", "add", "b1"}, "--event-date"},       {{"harvest", "add", "b1"}, "--harvest-date"},
        {{"photo", "add", "b1", "x"}, "--photo-date"},  {{"health", "add", "b1", "x"}, "--observation-date"},
        {{"note", "add", "b1"}, "--entry-date"}};
    for (const auto& [words, flag] : commands)
    {
        Words line = words;
        line.insert(line.end(), {flag, "2026-02-30"});
        const std::string message = Mistaken(line);
        EXPECT_EQ(
            message.find(flag + ": \"2026-02-30\" is not a date; write today, yesterday, YYYY-MM-DD, YYYY-MM or YYYY"),
            0U)
            << message;
    }
    for (const char* text :
         {"2025-02-29", "2026-13", "2026-00", "2026-01-00", "2026-1-1", "26", "20260101", "01.02.2026", "2026-04-31",
          "2026-", "2026-04-", "2026/04", "tomorrow", "Today", " 2026", "20265", "-026", "2026-0x", "٢٠٢٦"})
        EXPECT_NE(Mistaken({"plant", "edit", "b1", "--seed-date=" + std::string(text)}).find("--seed-date: "),
                  std::string::npos)
            << text;
}

TEST_F(RecordCommandTest, NumbersAreWholeTextsAndCanBeMeasured)
{
    for (const char* text : {"", "1,5", "1.5x", "x", "0x10", "nan", "inf", "-inf", "1e999", " 1", "1 ", "+1", "١"})
        EXPECT_NE(Mistaken({"feed", "b1", "--ec=" + std::string(text)}).find("--ec: "), std::string::npos) << text;
    for (const char* text : {"1.5", "3000000000", "", "1e2"})
        EXPECT_NE(Mistaken({"harvest", "add", "b1", "--seed-yield=" + std::string(text)}).find("--seed-yield: "),
                  std::string::npos)
            << text;
    for (const char* text : {"0", "6", "-1", "x", "2.5"})
        EXPECT_NE(Mistaken({"health", "add", "b1", "x", "--severity=" + std::string(text)}).find("--severity: "),
                  std::string::npos)
            << text;
    EXPECT_EQ(Parsed({"feed", "b1", "--ec", ".5"}).at("EC"), 0.5);
    EXPECT_EQ(Parsed({"feed", "b1", "--ec", "0.1"}).at("EC"), 0.1);
    EXPECT_NE(Done({"care", "list", "b1", "--newest", "1"}).find(" 0.1 "), std::string::npos); // the shortest digits
}

TEST_F(RecordCommandTest, TextsAreTakenByteForByte)
{
    for (const std::string text : {"-x", "--", "=", "紅", "\xFF\xFE", "two\nlines\r", "'; DROP TABLE Plants; --"})
    {
        Done({"plant", "edit", "b1", "--notes=" + text});
        Keep(
            [&](PlantRepository& repository)
            {
                Plant plant;
                EXPECT_TRUE(repository.GetPlant("b1", plant));
                EXPECT_EQ(plant.Notes, text);
            });
    }
}

} // namespace

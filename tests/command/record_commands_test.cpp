// The records of a plant: six kinds with the same commands.

#include "command/basil_test.h"

#include <ostream>
#include <string>

using namespace support;

namespace
{

// One kind of record: the flags that set every field, and flags that change every field.
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
     {"--care-date", "2026-05", "--action", "WATER", "--product", "", "--amount-ml", "25", "--ec", "0", "--ph", "7",
      "--runoff-ml", "0.5", "--notes", "whole"},
     {{"CareDate", "2026-05"},
      {"Action", "Water"},
      {"Product", ""},
      {"AmountMl", 25.0},
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
     {"--harvest-date", "2026-07-02", "--wet-weight-g", "200", "--dry-weight-g", "97", "--quality-rating", "3.5",
      "--seed-yield", "4", "--cure-outcome", "bad", "--notes", "late"},
     {{"HarvestDate", "2026-07-02"},
      {"WetWeightG", 200.0},
      {"DryWeightG", 97.0},
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

class FamilyCommandTest : public BasilTest, public testing::WithParamInterface<Family>
{
  protected:
    FamilyCommandTest()
    {
        Write("data/plantjournal/basil.jpg", "a picture");
        Write("data/plantjournal/mint.jpg", "another");
        Left = {"basil.jpg", "journal.db", "mint.jpg"};
        Around.Directory = Scratch.File("data/plantjournal"); // where the photos are
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
    const std::string id = Stored(Of("add", GetParam().Add));
    const JSON added = Only();
    ExpectFields(added, GetParam().Added);
    EXPECT_EQ(added.at("PlantUUID"), "b1");
    EXPECT_EQ(std::to_string(added.at("ID").get<int>()), id);

    EXPECT_EQ(Stored(OfIt("edit", GetParam().Edit)), id);
    JSON expected = added;
    expected.update(GetParam().Edited);
    EXPECT_EQ(Only(), expected);

    EXPECT_NE(Refused(OfIt("delete")).find("--yes"), std::string::npos);
    EXPECT_EQ(Done(OfIt("delete", {"--yes", "--quiet"})), "");
    EXPECT_EQ(Parsed(Of("list")), JSON::array());
    EXPECT_EQ(Parsed({"info"}).at("Tables").at(GetParam().Table), 0);
    EXPECT_EQ(Parsed({"info"}).at("Tables").at("PlantEvents"), 0); // its event is deleted, too
}

TEST_P(FamilyCommandTest, AnEditOfOneFieldKeepsTheOthers)
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

TEST_P(FamilyCommandTest, AWriteWithJSONPrintsTheRecord)
{
    const JSON added = Parsed(Of("add", GetParam().Add));
    EXPECT_EQ(added, Only());
    const JSON edited = Parsed(OfIt("edit", GetParam().Edit));
    EXPECT_EQ(edited, Only());
}

TEST_P(FamilyCommandTest, ANewRecordHasTodaysDateAndBelongsToItsPlant)
{
    Words shortest = {};
    if (GetParam().Name == "photo" || GetParam().Name == "health")
        shortest.push_back(GetParam().Add.front());
    if (GetParam().Name == "harvest")
        shortest.emplace_back("--unweighed");
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
    EXPECT_NE(Refused(others).find("Mint: the plant has no "), std::string::npos);
    EXPECT_EQ(Parsed({GetParam().Name, "list", "Mint"}), JSON::array());
}

TEST_P(FamilyCommandTest, AListOfAllPlantsNamesThePlantOfEachRecord)
{
    Done({"plant", "add", "Mint"});
    Words others = Of("add", GetParam().Add);
    others.at(2) = "Mint";
    if (GetParam().Name == "photo")
        others.at(5) = "p2"; // photo UUIDs are unique
    Done(others);
    Done(Of("add", GetParam().Add));
    const std::string list = Done({GetParam().Name, "list"});
    EXPECT_TRUE(list.starts_with("Plant  "));
    EXPECT_LT(list.find("\nMint   "), list.find("\nBasil  ")); // plants without a strain come first
    EXPECT_EQ(Parsed({GetParam().Name, "list"}).size(), 2U);
    EXPECT_FALSE(Done(Of("list")).starts_with("Plant  "));
}

INSTANTIATE_TEST_SUITE_P(Of, FamilyCommandTest, testing::ValuesIn(Families),
                         [](const auto& test) { return test.param.Name; });

TEST_F(BasilTest, FeedAndWaterStoreCareEntriesWithTheirEvents)
{
    const std::string feeding = Stored({"feed", "Basil", "--product", "Bloom A", "--amount-ml", "500", "--ec", "1.8",
                                        "--ph", "6.2", "--care-date", "2026-05-02"});
    const std::string watering = Stored({"water", "Basil", "--amount-ml", "750"});
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

TEST_F(BasilTest, AHarvestSetsStageAndDateOfItsPlant)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--unweighed"});
    ExpectFields(Basil(), {{"Stage", "Harvested"}, {"HarvestDate", "2026-07-01"}});
    EXPECT_NE(Refused({"harvest", "add", "Basil"}).find("already has a harvest record"), std::string::npos);
    Done({"harvest", "delete", "Basil", "--yes"});
    ExpectFields(Basil(), {{"Stage", "Harvested"}, {"HarvestDate", "2026-07-01"}});
}

TEST_F(BasilTest, ARecordIsFoundByItsOwnRowID)
{
    const std::string older = Stored({"note", "add", "Basil", "older"});
    Done({"note", "add", "Basil", "newer"});
    EXPECT_EQ(Parsed({"note", "edit", "Basil", older, "--details", "first"}).at("ID"), std::stoi(older));
}

TEST_F(BasilTest, AListIsNewestFirstAndLimitedByNewest)
{
    Done({"plant", "add", "Mint"});
    for (const char* plant : {"Basil", "Mint"})
        for (const char* date : {"2026-01", "2026-03", "2026-02"})
            Done({"note", "add", plant, date, "--entry-date", date});
    const std::string list = Done({"note", "list", "Basil"});
    EXPECT_TRUE(list.find("2026-03") < list.find("2026-02") && list.find("2026-02") < list.find("2026-01")) << list;
    EXPECT_EQ(Parsed({"note", "list", "Basil", "--newest", "2"}).size(), 2U);
    EXPECT_EQ(Parsed({"note", "list", "Basil", "--newest", "1"}).at(0).at("EntryDate"), "2026-03");
    EXPECT_EQ(Parsed({"note", "list", "--newest", "1"}).size(), 2U);                   // of each plant
    EXPECT_EQ(Parsed({"note", "list", "Basil", "--newest", "4294967297"}).size(), 3U); // more than 32 bits
    Mistaken({"note", "list", "--newest", "-1"});
}

} // namespace

#include "query/query_test.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

using namespace support;

namespace
{

using Activities = std::vector<PlantActivity>;
using NameList = std::vector<std::string>;

class QueryActivityTest : public QueryTest
{
  protected:
    // A note on each plant, so that the answer names the plants that were selected.
    void StorePlants()
    {
        StorePlant("Basil", "Genovese", "Tent 1", PlantStage::Veg);
        StorePlant("Thai", "Siam", "Tent 1", PlantStage::Flower);
        StorePlant("Mint", "Moroccan", "Tent 2", PlantStage::Veg);
    }

    void StorePlant(const std::string& name, const std::string& strain, const std::string& tent, PlantStage stage)
    {
        Plant plant;
        plant.UUID = "uuid of " + name;
        plant.Name = name;
        plant.Strain = strain;
        plant.Tent = tent;
        plant.Stage = stage;
        ASSERT_TRUE(Repository.CreatePlant(plant));
        StoreNote(plant.UUID, "2025-03-01", "a note");
    }

    void StoreNote(const std::string& plantUUID, const std::string& date, const std::string& details)
    {
        PlantEvent event;
        event.PlantUUID = plantUUID;
        event.EventDate = date;
        event.Details = details;
        ASSERT_TRUE(Repository.CreatePlantEvent(event));
    }

    Activities Found() { return AnswerOf<Activities>(QueryPlantActivity, Filter); }

    NameList Names()
    {
        NameList names;
        for (const PlantActivity& activity : Found())
            names.push_back(activity.PlantName);
        return names;
    }

    NameList Dates()
    {
        NameList dates;
        for (const PlantActivity& activity : Found())
            dates.push_back(activity.Date);
        return dates;
    }

    NameList Texts()
    {
        NameList texts;
        for (const PlantActivity& activity : Found())
            texts.push_back(activity.Text);
        return texts;
    }

    // How many searches the statements make in an index of the records of a plant.
    int IndexSearches()
    {
        int searches = 0;
        for (const std::string& sql : StatementsOf([this] { Found(); }))
            for (const Row& step : QueryRows("EXPLAIN QUERY PLAN " + sql))
                searches += step.back().find("PlantUUID=?") != std::string::npos ? 1 : 0;
        return searches;
    }

    PlantActivityFilter Filter;
};

TEST_F(QueryActivityTest, TheDefaultFilterSelectsTheActivitiesOfAllPlants)
{
    StorePlants();
    EXPECT_EQ(Names(), (NameList{"Mint", "Thai", "Basil"}));
}

TEST_F(QueryActivityTest, AnEmptyJournalHasNoActivities)
{
    EXPECT_EQ(Names(), NameList{});
    Filter.Plants.UUIDs = {"unknown"};
    EXPECT_EQ(Names(), NameList{});
}

TEST_F(QueryActivityTest, PlantsAreSelectedByUUIDEachOnlyOnce)
{
    StorePlants();
    Filter.Plants.UUIDs = {"uuid of Basil", "unknown", "uuid of Mint", "uuid of Basil"};
    EXPECT_EQ(Names(), (NameList{"Mint", "Basil"}));
}

TEST_F(QueryActivityTest, PlantsAreSelectedByStrainTentAndStage)
{
    StorePlants();
    Filter.Plants.Strains = {"Genovese", "Moroccan", "siam"};
    EXPECT_EQ(Names(), (NameList{"Mint", "Basil"})) << "letters must match exactly";
    Filter.Plants = {};
    Filter.Plants.Tents = {"Tent 1"};
    EXPECT_EQ(Names(), (NameList{"Thai", "Basil"}));
    Filter.Plants.Stages = {PlantStage::Veg, PlantStage::Dry};
    EXPECT_EQ(Names(), NameList{"Basil"}) << "a plant matches every list that is not empty";
    Filter.Plants.Tents = {};
    EXPECT_EQ(Names(), (NameList{"Mint", "Basil"}));
    Filter.Plants.UUIDs = {"uuid of Mint", "uuid of Thai"};
    EXPECT_EQ(Names(), NameList{"Mint"});
}

TEST_F(QueryActivityTest, KindsAreSelectedByTheirExactNames)
{
    StoreSampleRecords(Repository);
    const auto kinds = [&](const NameList& wanted)
    {
        Filter.Kinds = wanted;
        NameList found;
        for (const PlantActivity& activity : Found())
            found.push_back(activity.Kind);
        std::sort(found.begin(), found.end());
        return found;
    };
    EXPECT_EQ(kinds({}), (NameList{"Harvest", "Health", "Note", "Observation", "Photo", "Water", "Water"}));
    EXPECT_EQ(kinds({"Photo", "Harvest"}), (NameList{"Harvest", "Photo"}));
    EXPECT_EQ(kinds({"Water"}), (NameList{"Water", "Water"}));
    EXPECT_EQ(kinds({"water", "Nothing", ""}), NameList{});
}

TEST_F(QueryActivityTest, AFilterOfKindsDoesNotMakeAnOwnedEventVisible)
{
    StoreSampleRecords(Repository);
    RunSQL("UPDATE PlantEvents SET EventType='Flip' WHERE EventType IN('Water','Harvest');"); // by another program
    Filter.Kinds = {"Flip"};
    EXPECT_EQ(Found().size(), 0U);
}

TEST_F(QueryActivityTest, FromAndToAreTheFirstAndTheLastDate)
{
    StorePlants();
    RunSQL("DELETE FROM PlantEvents;");
    for (const char* date : {"2025-02-28", "2025-03-01", "2025-03-31", "2025-03-31 08:00", "2025-04-01", "zz"})
        StoreNote("uuid of Basil", date, "");
    for (const bool onePlant : {false, true})
    {
        Filter = {};
        if (onePlant)
            Filter.Plants.UUIDs = {"uuid of Basil"};
        Filter.From = "2025-03-01";
        Filter.To = "2025-03-31";
        EXPECT_EQ(Dates(), (NameList{"2025-03-31 08:00", "2025-03-31", "2025-03-01"}));
        Filter.To = "2025-03";
        EXPECT_EQ(Dates(), (NameList{"2025-03-31 08:00", "2025-03-31", "2025-03-01"}));
        Filter.From = "2025-03";
        Filter.To = "";
        EXPECT_EQ(Dates(), (NameList{"zz", "2025-04-01", "2025-03-31 08:00", "2025-03-31", "2025-03-01"}));
        Filter.From = "";
        Filter.To = "2025-03-01";
        EXPECT_EQ(Dates(), (NameList{"2025-03-01", "2025-02-28"}));
        Filter.From = "2025-03-02";
        EXPECT_EQ(Dates(), NameList{});
    }
}

TEST_F(QueryActivityTest, TheDatesOfAPlantAreFilteredAsAllOthers)
{
    Plant basil = NewPlant("Basil");
    basil.SeedDate = "2025-02-28";
    basil.TransplantDate = "2025-03-01";
    basil.FlipDate = "2025-03-31";
    basil.HarvestDate = "2025-04-01";
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    Filter.From = "2025-03-01";
    EXPECT_EQ(Dates(), (NameList{"2025-04-01", "2025-03-31", "2025-03-01"}));
    Filter.To = "2025-03";
    EXPECT_EQ(Dates(), (NameList{"2025-03-31", "2025-03-01"}));
    Filter.Kinds = {"Transplant", "Sown"};
    EXPECT_EQ(Dates(), NameList{"2025-03-01"});
    Filter = {};
    Filter.Text = "sow";
    EXPECT_EQ(Dates(), NameList{"2025-02-28"});
}

TEST_F(QueryActivityTest, ATextIsFoundInTheKindOrTheText)
{
    StorePlants();
    RunSQL("DELETE FROM PlantEvents;");
    for (const char* details : {"Mites below", "a termite", "", "ÄPFEL"})
        StoreNote("uuid of Basil", "2025-03-01", details);
    Filter.Text = "MITE";
    EXPECT_EQ(Texts(), (NameList{"a termite", "Mites below"}));
    Filter.Text = "note";
    EXPECT_EQ(Texts(), (NameList{"ÄPFEL", "", "a termite", "Mites below"})) << "the kind";
    Filter.Text = "äpfel";
    EXPECT_EQ(Texts(), NameList{}) << "only ASCII letters are equal without regard to case";
    Filter.Text = "Äpf";
    EXPECT_EQ(Texts(), NameList{"ÄPFEL"});
    Filter.Text = "%";
    EXPECT_EQ(Texts(), NameList{});
}

TEST_F(QueryActivityTest, TextsAreSearchedInTheFormOfTheFoldingFunction)
{
    StorePlants();
    StoreNote("uuid of Basil", "2025-03-02", "xyz");
    Filter.Text = "anything";
    Filter.Fold = [](const std::string& text) { return text == "xyz" || text == "anything" ? "equal" : text; };
    EXPECT_EQ(Texts(), NameList{"xyz"});
    Filter.Text = "A NOTE";
    EXPECT_EQ(Texts(), NameList{}) << "this function leaves the case";
}

TEST_F(QueryActivityTest, AnExceptionOfTheFoldingFunctionEndsTheCall)
{
    StorePlants();
    Filter.Text = "a";
    Filter.Fold = [](const std::string& text) -> std::string
    { return text == "a" ? text : throw std::runtime_error("no folding"); };
    Activities out(2);
    EXPECT_THROW(QueryPlantActivity(Database, Filter, out), std::runtime_error);
    EXPECT_TRUE(out.empty());
    ExpectNothingOpen();
    std::vector<PlantCalendarDay> days(2);
    EXPECT_THROW(QueryPlantCalendar(Database, Filter, days), std::runtime_error);
    EXPECT_TRUE(days.empty());
}

TEST_F(QueryActivityTest, AnEventHidesAnOwnDateEvenIfTheTextLeavesItOut)
{
    Plant basil = NewPlant("Basil");
    basil.FlipDate = "2025-03-01";
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    HarvestRecord record;
    record.HarvestDate = "2025-05-20";
    ASSERT_TRUE(Repository.SaveHarvestRecord(basil, record));
    RunSQL("INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) VALUES('" + basil.UUID +
           "','2025-03-01','Flip','lamp');");
    Filter.Text = "flip";
    EXPECT_EQ(Texts(), NameList{"lamp"}) << "once, not twice";
    Filter.Fold = [](const std::string& text) { return text == "lamp" ? "" : text; };
    Filter.Text = "Flip";
    EXPECT_EQ(Texts(), NameList{"lamp"});
    Filter.Fold = [kinds = 0](const std::string& text) mutable -> std::string
    { return text == "Flip" && ++kinds == 2 ? "hidden" : text; }; // the second is the kind of the event
    EXPECT_EQ(Texts(), NameList{}) << "the date of the plant is not listed a second time";
}

TEST_F(QueryActivityTest, OldestFirstIsTheReverse)
{
    StoreSampleRecords(Repository);
    StorePlants();
    Activities newest = Found();
    ASSERT_EQ(newest.size(), 10U);
    Filter.Order = PlantActivityOrder::OldestFirst;
    std::reverse(newest.begin(), newest.end());
    EXPECT_EQ(Printed(Found()), Printed(newest));
}

TEST_F(QueryActivityTest, AtMostKeepsTheFirstOnesInTheOrder)
{
    StorePlants();
    Filter.AtMost = 2;
    EXPECT_EQ(Names(), (NameList{"Mint", "Thai"}));
    Filter.Order = PlantActivityOrder::OldestFirst;
    EXPECT_EQ(Names(), (NameList{"Basil", "Thai"}));
    for (const std::int64_t all : {std::int64_t{3}, std::int64_t{4}, std::int64_t{0}, std::int64_t{-1},
                                   std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()})
    {
        Filter.AtMost = all;
        EXPECT_EQ(Names().size(), 3U) << all;
    }
}

TEST_F(QueryActivityTest, TheSelectedPlantsAreReadThroughTheirIndexes)
{
    StoreSampleRecords(Repository);
    Filter.Plants.Stages = {PlantStage::Harvested};
    EXPECT_EQ(IndexSearches(), 8) << "six tables, and the owners of events in two";
}

TEST_F(QueryActivityTest, DatesOfAllPlantsAreReadThroughTheirIndexes)
{
    StoreSampleRecords(Repository);
    EXPECT_EQ(IndexSearches(), 0);
    Filter.From = "2020";
    EXPECT_EQ(IndexSearches(), 10) << "the owners of events are searched twice";
    Filter = {};
    Filter.To = "2030";
    EXPECT_EQ(IndexSearches(), 10);
}

TEST_F(QueryActivityTest, AnOwnerWithAnotherDateAlsoOwnsItsEvent)
{
    StorePlants();
    for (const std::string name : {"Basil", "Mint"})
    {
        PlantCareEntry entry;
        entry.PlantUUID = "uuid of " + name;
        entry.CareDate = "2025-03-02";
        ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));
    }
    RunSQL("UPDATE PlantCareEntries SET CareDate='2025-01-01' WHERE PlantUUID='uuid of Basil';");
    Filter.From = "2025-03-02";
    EXPECT_EQ(Names(), NameList{"Mint"});
    Filter.Plants.Stages = {PlantStage::Veg};
    EXPECT_EQ(Names(), NameList{"Mint"});
}

TEST_F(QueryActivityTest, AnUnknownStoredTypeIsReadAsTheRepositoryReadsIt)
{
    StorePlants();
    RunSQL("PRAGMA ignore_check_constraints=ON;");
    RunSQL("UPDATE PlantEvents SET EventType='Storm';");
    EXPECT_EQ(Found().front().Kind, "Note");
    Filter.Kinds = {"Note"};
    EXPECT_EQ(Names().size(), 3U);
}

TEST_F(QueryActivityTest, TextsAndDatesEndAtAZeroByte)
{
    StorePlants();
    RunSQL("DELETE FROM PlantEvents WHERE PlantUUID<>'uuid of Basil';");
    RunSQL("UPDATE PlantEvents SET Details='a'||char(0)||'b',EventDate='2025-03-01'||char(0)||'x';");
    EXPECT_EQ(Texts(), NameList{"a"});
    Filter.From = "2025-03-01";
    Filter.To = "2025-03-01";
    EXPECT_EQ(Dates(), NameList{"2025-03-01"});
    Filter.Text = "b";
    EXPECT_EQ(Texts(), NameList{});
}

TEST_F(QueryActivityTest, RecordsOfUnknownPlantsAreLeftOut)
{
    StorePlants();
    RunSQL("PRAGMA foreign_keys=OFF;");
    RunSQL("DELETE FROM Plants WHERE Name='Basil';");
    EXPECT_EQ(Names(), (NameList{"Mint", "Thai"}));
    Filter.Plants.UUIDs = {"uuid of Basil"};
    EXPECT_EQ(Names(), NameList{});
}

} // namespace

#include "query/query_test.h"

#include <tuple>

using namespace support;

namespace
{

using Activities = std::vector<PlantActivity>;

class QueryTimelineTest : public QueryTest
{
  protected:
    QueryTimelineTest()
    {
        Basil.Name = "Basil";
        EXPECT_TRUE(Repository.CreatePlant(Basil));
    }

    Activities Timeline(const Plant& plant) { return AnswerOf<Activities>(QueryPlantTimeline, plant.UUID); }

    // What is read of a timeline at a glance: `date kind: text`.
    std::vector<std::string> Glance(const Plant& plant)
    {
        std::vector<std::string> lines;
        for (const PlantActivity& activity : Timeline(plant))
            lines.push_back(activity.Date + ' ' + activity.Kind + ": " + activity.Text);
        return lines;
    }

    PlantEvent StoredEvent(const Plant& plant, const std::string& date, PlantEventType type,
                           const std::string& details = {})
    {
        PlantEvent event;
        event.EventDate = date;
        event.Type = type;
        event.Details = details;
        return Stored(event, plant, &PlantRepository::CreatePlantEvent);
    }

    PlantCareEntry StoredCare(const Plant& plant, const std::string& date)
    {
        PlantCareEntry entry;
        entry.CareDate = date;
        entry.AmountMl = 500;
        return Stored(entry, plant, &PlantRepository::CreatePlantCareEntry);
    }

    Plant Basil;
};

using Lines = std::vector<std::string>;

TEST_F(QueryTimelineTest, AnUnknownPlantHasAnEmptyTimeline)
{
    StoredCare(Basil, "2025-03-01");
    Plant unknown;
    unknown.UUID = "unknown";
    EXPECT_EQ(Glance(unknown), Lines{});
    unknown.UUID = "";
    EXPECT_EQ(Glance(unknown), Lines{});
}

TEST_F(QueryTimelineTest, EveryRecordIsListedWithItsKindTextAndRow)
{
    Basil.SeedDate = "2025-01-01";
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    const PlantEvent event = StoredEvent(Basil, "2025-01-02", PlantEventType::LSTTrained, "bent");
    PlantCareEntry care = StoredCare(Basil, "2025-01-03");
    PlantJournalEntry entry;
    entry.EntryDate = "2025-01-04";
    entry.Type = PlantJournalType::Milestone;
    entry.Details = "first flower";
    entry = Stored(entry, Basil, &PlantRepository::CreatePlantJournalEntry);
    PlantHealthObservation seen;
    seen.ObservationDate = "2025-01-05";
    seen.Issue = "Mites";
    seen.Severity = 3;
    seen.Treatment = "soap";
    seen.Notes = "below";
    seen = Stored(seen, Basil, &PlantRepository::CreatePlantHealthObservation);
    PlantPhoto photo;
    photo.PhotoDate = "2025-01-06";
    photo.FilePath = "basil.jpg";
    photo.Caption = "leaves";
    photo = Stored(photo, Basil, &PlantRepository::CreatePlantPhoto);
    const std::string& u = Basil.UUID;
    const Activities expected = {
        {"2025-01-06", "Photo", "basil.jpg | leaves", u, "Basil", PlantActivityRecord::Photo, photo.ID},
        {"2025-01-05", "Health", "Mites (3 of 5) | soap | below", u, "Basil", PlantActivityRecord::HealthObservation,
         seen.ID},
        {"2025-01-04", "Milestone", "first flower", u, "Basil", PlantActivityRecord::JournalEntry, entry.ID},
        {"2025-01-03", "Water", "500 ml", u, "Basil", PlantActivityRecord::CareEntry, care.ID},
        {"2025-01-02", "LST Trained", "bent", u, "Basil", PlantActivityRecord::Event, event.ID},
        {"2025-01-01", "Sown", "", u, "Basil", PlantActivityRecord::Plant, Basil.ID}};
    EXPECT_EQ(Printed(Timeline(Basil)), Printed(expected));
}

TEST_F(QueryTimelineTest, TheTextOfACareEntryIsThatOfItsEvent)
{
    PlantCareEntry entry;
    entry.Action = PlantCareAction::Feed;
    entry.Product = "Bloom A";
    entry.AmountMl = 750;
    entry.EC = 1.8;
    entry.PH = 6.2;
    entry.RunoffMl = 50;
    entry.Notes = "slowly";
    entry = Stored(entry, Basil, &PlantRepository::CreatePlantCareEntry);
    const Activities timeline = Timeline(Basil);
    ASSERT_EQ(timeline.size(), 1U);
    EXPECT_EQ(timeline[0].Kind, "Feed");
    EXPECT_EQ(timeline[0].Text, "Bloom A | 750 ml | EC 1.80 | pH 6.20 | Runoff 50 ml | slowly");
    EXPECT_EQ(timeline[0].Text, QueryRows("SELECT Details FROM PlantEvents;").at(0).at(0));
}

TEST_F(QueryTimelineTest, TheTextOfAHarvestRecordIsThatOfItsEvent)
{
    HarvestRecord plain;
    plain.HarvestDate = "2025-05-20";
    HarvestRecord full = plain;
    full.WetWeightG = 310.25;
    full.DryWeightG = 62;
    full.SeedYield = 12;
    full.QualityRating = 8.5;
    full.CureOutcome = "good";
    full.Notes = "late";
    for (HarvestRecord record : {plain, full})
    {
        Plant plant = NewPlant("Mint");
        ASSERT_TRUE(Repository.SaveHarvestRecord(plant, record));
        const Activities timeline = Timeline(plant);
        ASSERT_EQ(timeline.size(), 1U);
        EXPECT_EQ(timeline[0].Kind, "Harvest");
        EXPECT_EQ(timeline[0].Record, PlantActivityRecord::HarvestRecord);
        EXPECT_EQ(timeline[0].RowID, record.ID);
        EXPECT_EQ(timeline[0].Text, QueryRows("SELECT Details FROM PlantEvents ORDER BY ID DESC LIMIT 1;").at(0).at(0));
        EXPECT_EQ(timeline[0].Text, record.Notes.empty()
                                        ? "Wet 0.0 g | Dry 0.0 g"
                                        : "Wet 310.2 g | Dry 62.0 g | Seeds 12 | Quality 8.5/10 | good | late");
    }
}

TEST_F(QueryTimelineTest, AnEventThatARecordOwnsIsNotListedAgain)
{
    const PlantCareEntry care = StoredCare(Basil, "2025-03-01");
    HarvestRecord record;
    record.HarvestDate = "2025-05-20";
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    RunSQL("UPDATE PlantEvents SET EventDate='2025-04-01',Details='changed';"); // by another program
    EXPECT_EQ(Glance(Basil), (Lines{"2025-05-20 Harvest: Wet 0.0 g | Dry 0.0 g", "2025-03-01 Water: 500 ml"}));

    RunSQL("UPDATE PlantCareEntries SET TimelineEventID=NULL; UPDATE HarvestRecords SET TimelineEventID=NULL;");
    EXPECT_EQ(Glance(Basil), (Lines{"2025-05-20 Harvest: Wet 0.0 g | Dry 0.0 g", "2025-04-01 Harvest: changed",
                                    "2025-04-01 Water: changed", "2025-03-01 Water: 500 ml"}));
}

TEST_F(QueryTimelineTest, ARecordOfAnotherPlantOwnsNoEvent)
{
    const Plant mint = NewPlant("Mint");
    const PlantEvent event = StoredEvent(Basil, "2025-03-01", PlantEventType::Note, "Basil's");
    StoredCare(mint, "2025-03-01");
    RunSQL("UPDATE PlantCareEntries SET TimelineEventID=" + std::to_string(event.ID) + ';');
    EXPECT_EQ(Glance(Basil), Lines{"2025-03-01 Note: Basil's"});
    const auto all = AnswerOf<Activities>(QueryPlantActivity, PlantActivityFilter{});
    EXPECT_EQ(all.size(), 3U) << Printed(all);
}

TEST_F(QueryTimelineTest, AnOwnDateIsListedWhereNothingElseSaysIt)
{
    Basil.SeedDate = Basil.CloneDate = Basil.TransplantDate = Basil.FlipDate = Basil.HarvestDate = "2025-03-01";
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    EXPECT_EQ(Glance(Basil), (Lines{"2025-03-01 Harvest: ", "2025-03-01 Flip: ", "2025-03-01 Transplant: ",
                                    "2025-03-01 Clone: ", "2025-03-01 Sown: "}));
    for (const PlantActivity& activity : Timeline(Basil))
        EXPECT_EQ(std::tie(activity.Record, activity.RowID), std::tuple(PlantActivityRecord::Plant, Basil.ID));

    StoredEvent(Basil, "2025-03-01", PlantEventType::Flip, "event");
    StoredEvent(Basil, "2025-03-02", PlantEventType::Clone, "another day");
    StoredEvent(NewPlant("Mint"), "2025-03-01", PlantEventType::Transplant, "another plant");
    HarvestRecord record;
    record.HarvestDate = "2025-03-01";
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(Glance(Basil),
              (Lines{"2025-03-02 Clone: another day", "2025-03-01 Harvest: Wet 0.0 g | Dry 0.0 g",
                     "2025-03-01 Flip: event", "2025-03-01 Transplant: ", "2025-03-01 Clone: ", "2025-03-01 Sown: "}));
}

TEST_F(QueryTimelineTest, DatesAreSortedAsTextsAndEmptyOnesComeLast)
{
    for (const char* date : {"2025-03-01", "", "2025", "zz", "2025-02-30", "2999-01-01"})
        StoredEvent(Basil, date, PlantEventType::Note);
    RunSQL("UPDATE PlantEvents SET EventDate='' WHERE ID=2;"); // the repository may store the current date
    EXPECT_EQ(
        Glance(Basil),
        (Lines{"zz Note: ", "2999-01-01 Note: ", "2025-03-01 Note: ", "2025-02-30 Note: ", "2025 Note: ", " Note: "}));
}

TEST_F(QueryTimelineTest, OneDateIsSortedByRecordAndThenByRow)
{
    StoredEvent(Basil, "2025-03-01", PlantEventType::Note, "first");
    StoredCare(Basil, "2025-03-01");
    StoredEvent(Basil, "2025-03-01", PlantEventType::Note, "second");
    EXPECT_EQ(Glance(Basil), (Lines{"2025-03-01 Water: 500 ml", "2025-03-01 Note: second", "2025-03-01 Note: first"}));
}

TEST_F(QueryTimelineTest, ThePlantMayBeNamedByTheListThatIsFilled)
{
    StoredCare(Basil, "2025-03-01");
    Activities timeline = Timeline(Basil);
    ASSERT_EQ(timeline.size(), 1U);
    EXPECT_TRUE(QueryPlantTimeline(Database, timeline.front().PlantUUID, timeline));
    EXPECT_EQ(Printed(timeline), Printed(Timeline(Basil)));
}

// The cost that the header promises: no table is read from its first row to its last.
TEST_F(QueryTimelineTest, ATimelineReadsOnlyTheRecordsOfThePlant)
{
    StoredCare(Basil, "2025-03-01");
    StoredEvent(Basil, "2025-03-01", PlantEventType::Note);
    int statements = 0;
    for (const std::string& sql : StatementsOf([&] { Timeline(Basil); }))
    {
        if (sql == "SELECT 1 FROM sqlite_master;") // begins to read
            continue;
        for (const Row& step : QueryRows("EXPLAIN QUERY PLAN " + sql))
            EXPECT_EQ(step.back().find("SCAN"), std::string::npos) << sql << '\n' << step.back();
        ++statements;
    }
    EXPECT_EQ(statements, 9);
}

TEST(PlantActivityRecordTest, EachRecordHasTheNameOfItsEnumerator)
{
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::Plant), "Plant");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::Event), "Event");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::CareEntry), "CareEntry");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::HarvestRecord), "HarvestRecord");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::JournalEntry), "JournalEntry");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::HealthObservation), "HealthObservation");
    EXPECT_STREQ(PlantActivityRecordName(PlantActivityRecord::Photo), "Photo");
    EXPECT_STREQ(PlantActivityRecordName(static_cast<PlantActivityRecord>(7)), "Plant");
    EXPECT_STREQ(PlantActivityRecordName(static_cast<PlantActivityRecord>(-1)), "Plant");
}

} // namespace

#include "support/comma_locale.h"
#include "support/journal_test.h"
#include "testing/operation_statements.h"

#include <climits>
#include <cstdint>
#include <limits>
#include <sstream>
#include <tuple>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto Get = "SELECT ID,COALESCE(TimelineEventID,0),PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,"
                     "SeedYield,CureOutcome,Notes FROM HarvestRecords WHERE PlantUUID=?;";
constexpr auto InsertHarvest = "INSERT INTO HarvestRecords(TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,"
                               "QualityRating,SeedYield,CureOutcome,Notes) VALUES(?,?,?,?,?,?,?,?,?);";
constexpr auto UpdateHarvest = "UPDATE HarvestRecords SET TimelineEventID=?,HarvestDate=?,WetWeightG=?,DryWeightG=?,"
                               "QualityRating=?,SeedYield=?,CureOutcome=?,Notes=? WHERE ID=? AND PlantUUID=?;";
constexpr auto MovePlant = "UPDATE Plants SET Stage='Harvested',HarvestDate=? WHERE UUID=?;";
constexpr auto DeleteHarvest = "DELETE FROM HarvestRecords WHERE PlantUUID=?;";

class HarvestTest : public JournalTest
{
  protected:
    HarvestTest() : Mint(NewPlant("Mint")), Thyme(NewPlant("Thyme")), Basil(NewPlant("Basil", "Genovese"))
    {
        // More events and plants than records, so that their row IDs differ.
        for (int i = 0; i < 4; ++i)
        {
            PlantEvent event;
            event.PlantUUID = Mint.UUID;
            EXPECT_TRUE(Repository.CreatePlantEvent(event));
        }
        HarvestRecord record;
        record.HarvestDate = "2024-01-01";
        EXPECT_TRUE(Repository.SaveHarvestRecord(Thyme, record));
    }

    // Every field differs from the other fields and from its default.
    static HarvestRecord Full()
    {
        return {.ID = 0,
                .TimelineEventID = 0,
                .PlantUUID = "",
                .HarvestDate = "2024-09-01",
                .WetWeightG = 450.5,
                .DryWeightG = 112.25,
                .QualityRating = 8.75,
                .SeedYield = 12,
                .CureOutcome = "Jarred",
                .Notes = "Sticky"};
    }

    HarvestRecord NewRecord()
    {
        HarvestRecord record = Full();
        EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
        return record;
    }

    HarvestRecord Stored(const std::string& plantUUID)
    {
        HarvestRecord record;
        EXPECT_TRUE(Repository.GetHarvestRecord(plantUUID, record));
        return record;
    }

    Rows StoredRecords() const
    {
        return QueryRows(
            "SELECT ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
            "CureOutcome,Notes FROM HarvestRecords ORDER BY ID;");
    }

    Rows EventsOf(const Plant& plant) const
    {
        return QueryRows("SELECT ID,EventDate,EventType,Details FROM PlantEvents WHERE PlantUUID='" + plant.UUID +
                         "' ORDER BY ID;");
    }

    Rows PlantRow(const Plant& plant) const
    {
        return QueryRows("SELECT * FROM Plants WHERE UUID='" + plant.UUID + "';");
    }

    Plant Mint;
    Plant Thyme; // harvested
    Plant Basil;
};

TEST_F(HarvestTest, TheFirstSaveStoresTheRecordItsEventAndThePlantsStage)
{
    Basil.Tent = "Not stored";
    const Plant plant = Basil;
    const Rows others = QueryRows("SELECT * FROM Plants WHERE ID<3;");
    HarvestRecord record = Full();
    record.PlantUUID = "overwritten";
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));

    HarvestRecord expected = Full();
    expected.ID = 2;
    expected.TimelineEventID = 6;
    expected.PlantUUID = Basil.UUID;
    EXPECT_EQ(record, expected);
    EXPECT_EQ(Stored(Basil.UUID), expected);
    EXPECT_EQ(StoredRecords().at(1),
              (Row{"2", "6", Basil.UUID, "2024-09-01", "450.5", "112.25", "8.75", "12", "Jarred", "Sticky"}));
    EXPECT_EQ(EventsOf(Basil), (Rows{{"6", "2024-09-01", "Harvest",
                                      "Wet 450.5 g | Dry 112.2 g | Seeds 12 | Quality 8.8/10 | Jarred | Sticky"}}));
    EXPECT_EQ(RowCount("PlantEvents"), 6);

    Plant harvested = plant;
    harvested.Stage = PlantStage::Harvested;
    harvested.HarvestDate = "2024-09-01";
    EXPECT_EQ(Basil, harvested);
    harvested.Tent = "";
    EXPECT_EQ(StoredPlant(Basil.UUID), harvested);
    EXPECT_EQ(QueryRows("SELECT * FROM Plants WHERE ID<3;"), others);
}

TEST_F(HarvestTest, ALaterSaveReplacesTheRecordAndItsEventInPlace)
{
    const HarvestRecord first = NewRecord();
    const Rows otherRecords = {StoredRecords().at(0)};
    Basil.Stage = PlantStage::Archived;
    ASSERT_TRUE(Repository.UpdatePlant(Basil));

    HarvestRecord record = {.ID = first.ID,
                            .TimelineEventID = first.TimelineEventID,
                            .PlantUUID = Thyme.UUID, // overwritten
                            .HarvestDate = "2024-09-02",
                            .WetWeightG = 1.5,
                            .DryWeightG = 2.5,
                            .QualityRating = 3.5,
                            .SeedYield = 4,
                            .CureOutcome = "Dried",
                            .Notes = "Late"};
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(record.PlantUUID, Basil.UUID);
    EXPECT_EQ(StoredRecords(), (Rows{otherRecords.at(0),
                                     {"2", "6", Basil.UUID, "2024-09-02", "1.5", "2.5", "3.5", "4", "Dried", "Late"}}));
    EXPECT_EQ(EventsOf(Basil), (Rows{{"6", "2024-09-02", "Harvest",
                                      "Wet 1.5 g | Dry 2.5 g | Seeds 4 | Quality 3.5/10 | Dried | Late"}}));
    EXPECT_EQ(Stored(Basil.UUID), record);
    EXPECT_EQ(Basil.Stage, PlantStage::Harvested);
    EXPECT_EQ(Basil.HarvestDate, "2024-09-02");
    EXPECT_EQ(QueryRows("SELECT Stage,HarvestDate FROM Plants WHERE ID=3;"), (Rows{{"Harvested", "2024-09-02"}}));
}

TEST_F(HarvestTest, EachOperationRunsItsStatements)
{
    HarvestRecord record = Full();
    const auto save = [&] { Repository.SaveHarvestRecord(Basil, record); };
    EXPECT_EQ(StatementsOf(save), (Statements{SQL::Begin, SQL::InsertEvent, InsertHarvest, MovePlant, SQL::Commit}));
    EXPECT_EQ(StatementsOf(save), (Statements{SQL::Begin, SQL::UpdateEvent, UpdateHarvest, MovePlant, SQL::Commit}));
    ASSERT_TRUE(Repository.DeletePlantEvent(record.TimelineEventID));
    record.TimelineEventID = 0;
    EXPECT_EQ(StatementsOf(save), (Statements{SQL::Begin, SQL::InsertEvent, UpdateHarvest, MovePlant, SQL::Commit}));

    EXPECT_EQ(StatementsOf([&] { Repository.GetHarvestRecord(Basil.UUID, record); }), (Statements{Get}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeleteHarvestRecord(Basil.UUID); }),
              (Statements{Get, SQL::Begin, DeleteHarvest, SQL::DeleteEvent, SQL::Commit}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeleteHarvestRecord(Basil.UUID); }), (Statements{Get}));
    EXPECT_EQ(EventsOf(Basil), Rows());
}

TEST_F(HarvestTest, ANewRecordKeepsTheEventThatItNames)
{
    PlantEvent event;
    event.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantEvent(event));
    HarvestRecord record = Full();
    record.TimelineEventID = event.ID;
    EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record)); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, InsertHarvest, MovePlant, SQL::Commit}));
    EXPECT_EQ(record.ID, 2);
    EXPECT_EQ(Stored(Basil.UUID).TimelineEventID, event.ID);
    EXPECT_EQ(EventsOf(Basil).at(0).at(2), "Harvest");
}

TEST_F(HarvestTest, APlantWithoutAUUIDIsRefusedAtOnce)
{
    HarvestRecord record;
    Plant plant;
    EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.SaveHarvestRecord(plant, record); }));
    EXPECT_EQ(record, HarvestRecord());
    EXPECT_EQ(plant, Plant());
}

TEST_F(HarvestTest, AnEmptyDateBecomesToday)
{
    HarvestRecord record;
    const std::string before = PlantEventCurrentDate();
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    const std::string after = PlantEventCurrentDate();
    EXPECT_TRUE(record.HarvestDate == before || record.HarvestDate == after) << record.HarvestDate;
    EXPECT_EQ(Basil.HarvestDate, record.HarvestDate);
    EXPECT_EQ(StoredRecords().at(1).at(3), record.HarvestDate);
    EXPECT_EQ(EventsOf(Basil).at(0).at(1), record.HarvestDate);
    EXPECT_EQ(QueryRows("SELECT HarvestDate FROM Plants WHERE ID=3;"), (Rows{{record.HarvestDate}}));
}

TEST_F(HarvestTest, AnUnknownPlantIsRefused)
{
    const std::string before = Content();
    Plant unknown;
    unknown.UUID = "unknown";
    const Plant plant = unknown;
    HarvestRecord record;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.SaveHarvestRecord(unknown, record)); }),
              (Statements{SQL::Begin, SQL::InsertEvent, SQL::Rollback}));
    EXPECT_EQ(record.PlantUUID, "unknown");
    EXPECT_EQ(record.HarvestDate.size(), 10U);
    EXPECT_EQ(record.TimelineEventID, 0);
    EXPECT_EQ(record.ID, 0);
    EXPECT_EQ(unknown, plant);
    EXPECT_EQ(Content(), before);
}

TEST_F(HarvestTest, ASecondRecordOfAPlantIsRefused)
{
    const std::string before = Content();
    const Plant plant = Thyme;
    HarvestRecord second = Full();
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.SaveHarvestRecord(Thyme, second)); }),
              (Statements{SQL::Begin, SQL::InsertEvent, InsertHarvest, SQL::Rollback}));
    EXPECT_EQ(second.ID, 0);
    EXPECT_EQ(second.TimelineEventID, 6);
    EXPECT_EQ(Thyme, plant);
    EXPECT_EQ(Content(), before);
}

TEST_F(HarvestTest, RowIDsSetBeforeAFailureStayAndThePlantIsUnchanged)
{
    const std::tuple<SQLiteCall, const char*, std::int64_t, std::int64_t> cases[] = {
        {SQLiteCall::Exec, "BEGIN", 0, 0},
        {SQLiteCall::Prepare, "INSERT INTO PlantEvents", 0, 0},
        {SQLiteCall::Step, "INSERT INTO PlantEvents", 0, 0},
        {SQLiteCall::Bind, "INSERT INTO HarvestRecords", 6, 0},
        {SQLiteCall::Step, "INSERT INTO HarvestRecords", 6, 0},
        {SQLiteCall::Prepare, "UPDATE Plants", 6, 2},
        {SQLiteCall::Bind, "UPDATE Plants", 6, 2},
        {SQLiteCall::Step, "UPDATE Plants", 6, 2},
        {SQLiteCall::Exec, "COMMIT", 6, 2}};
    const std::string before = Content();
    const Plant plant = Basil;
    for (const auto& [call, statement, eventID, id] : cases)
    {
        SCOPED_TRACE(statement);
        const CallFailure failure(call, 1, SQLITE_FULL, statement);
        HarvestRecord expected = Full();
        expected.TimelineEventID = eventID;
        expected.ID = id;
        expected.PlantUUID = Basil.UUID;
        HarvestRecord record = Full();
        EXPECT_FALSE(Repository.SaveHarvestRecord(Basil, record));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(record, expected);
        EXPECT_EQ(Basil, plant);
        EXPECT_EQ(Content(), before);
    }
}

TEST_F(HarvestTest, ADefaultedDateStaysWhenTheSaveFails)
{
    const CallFailure failure(SQLiteCall::Exec, 1, SQLITE_BUSY, "BEGIN");
    HarvestRecord record;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.SaveHarvestRecord(Basil, record)); }),
              (Statements{SQL::Begin}));
    EXPECT_EQ(record.HarvestDate.size(), 10U);
    EXPECT_EQ(record.PlantUUID, Basil.UUID);
    EXPECT_EQ(Basil.HarvestDate, "");
}

TEST_F(HarvestTest, ALaterSaveThatFailsIsRolledBack)
{
    HarvestRecord record = NewRecord();
    const std::string before = Content();
    record.WetWeightG = 1;
    record.HarvestDate = "2024-12-31";
    for (const char* statement : {"UPDATE PlantEvents", "UPDATE HarvestRecords", "UPDATE Plants"})
    {
        const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, statement);
        EXPECT_FALSE(Repository.SaveHarvestRecord(Basil, record));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(Content(), before);
        EXPECT_EQ(Basil.HarvestDate, "2024-09-01");
    }
}

TEST_F(HarvestTest, ASaveOfARecordWithoutAnEventCreatesOne)
{
    const std::int64_t lost = NewRecord().TimelineEventID;
    ASSERT_TRUE(Repository.DeletePlantEvent(lost));
    PlantEvent later;
    later.PlantUUID = Mint.UUID;
    ASSERT_TRUE(Repository.CreatePlantEvent(later)); // SQLite reuses the row ID

    HarvestRecord record = Stored(Basil.UUID);
    EXPECT_EQ(record.TimelineEventID, 0);
    EXPECT_EQ(record.ID, 2);
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(record.TimelineEventID, later.ID + 1);
    EXPECT_EQ(record.ID, 2);
    EXPECT_EQ(Stored(Basil.UUID), record);
    EXPECT_EQ(EventsOf(Basil).size(), 1U);
}

TEST_F(HarvestTest, ASaveWithTheIDOfADeletedEventIsRolledBack)
{
    HarvestRecord record = NewRecord();
    ASSERT_TRUE(Repository.DeletePlantEvent(record.TimelineEventID));
    const std::string before = Content();
    record.WetWeightG = 1;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.SaveHarvestRecord(Basil, record)); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, UpdateHarvest, SQL::Rollback}));
    EXPECT_EQ(Content(), before);
}

TEST_F(HarvestTest, ASaveWithAReusedEventIDOverwritesThatEvent)
{
    HarvestRecord record = NewRecord();
    ASSERT_TRUE(Repository.DeletePlantEvent(record.TimelineEventID));
    PlantEvent other;
    other.PlantUUID = Basil.UUID;
    other.Details = "Moved to the shed";
    ASSERT_TRUE(Repository.CreatePlantEvent(other));
    ASSERT_EQ(other.ID, record.TimelineEventID);

    record.HarvestDate = "2024-09-02";
    EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(EventsOf(Basil), (Rows{{"6", "2024-09-02", "Harvest",
                                      "Wet 450.5 g | Dry 112.2 g | Seeds 12 | Quality 8.8/10 | Jarred | Sticky"}}));
    EXPECT_EQ(Stored(Basil.UUID), record);
}

TEST_F(HarvestTest, ANewRecordWithAnUnknownEventIsRefused)
{
    const std::string before = Content();
    const Plant plant = Basil;
    HarvestRecord record = Full();
    record.TimelineEventID = 6;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.SaveHarvestRecord(Basil, record)); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, InsertHarvest, SQL::Rollback}));
    EXPECT_EQ(record.ID, 0);
    EXPECT_EQ(Basil, plant);
    EXPECT_EQ(Content(), before);
}

TEST_F(HarvestTest, ASaveOfADeletedRecordStillMovesThePlant)
{
    HarvestRecord record = NewRecord();
    ASSERT_TRUE(Repository.DeleteHarvestRecord(Basil.UUID));
    Basil.Stage = PlantStage::Cure;
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(StoredPlant(Basil.UUID).Stage, PlantStage::Harvested);
    EXPECT_EQ(RowCount("HarvestRecords"), 1);
    EXPECT_EQ(EventsOf(Basil), Rows());

    record.TimelineEventID = 0;
    EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(RowCount("HarvestRecords"), 1);
    EXPECT_EQ(EventsOf(Basil).size(), 1U);
}

TEST_F(HarvestTest, ASaveWithTheIDOfAnotherRecordStillMovesThePlant)
{
    const Rows records = StoredRecords();
    HarvestRecord stale = Full();
    stale.ID = 1; // Thyme's
    EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, stale));
    EXPECT_EQ(stale.ID, 1);
    EXPECT_EQ(stale.TimelineEventID, 6);
    EXPECT_EQ(EventsOf(Basil).size(), 1U);
    EXPECT_EQ(StoredRecords(), records);
    EXPECT_EQ(Basil.Stage, PlantStage::Harvested);
    EXPECT_EQ(QueryRows("SELECT Stage,HarvestDate FROM Plants WHERE ID=3;"), (Rows{{"Harvested", "2024-09-01"}}));
}

TEST_F(HarvestTest, AnotherPlantsEventIsLinkedButNotOverwritten)
{
    HarvestRecord record = NewRecord();
    const Rows events = EventsOf(Mint);
    record.TimelineEventID = 1; // Mint's
    EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_EQ(EventsOf(Mint), events);
    EXPECT_EQ(Stored(Basil.UUID).TimelineEventID, 1);
}

TEST_F(HarvestTest, GetOfAPlantWithoutARecordIsFalseAndEmpty)
{
    NewRecord();
    for (const std::string& uuid : {Mint.UUID, std::string("unknown"), std::string()})
    {
        HarvestRecord record = Full();
        EXPECT_FALSE(Repository.GetHarvestRecord(uuid, record));
        EXPECT_EQ(record, HarvestRecord());
    }
}

TEST_F(HarvestTest, GetThatFailsIsEmpty)
{
    NewRecord();
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        HarvestRecord record = Full();
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_FALSE(Repository.GetHarvestRecord(Basil.UUID, record));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(record, HarvestRecord());
    }
}

TEST_F(HarvestTest, DeleteRemovesTheRecordAndItsEventOnly)
{
    NewRecord();
    PlantEvent own;
    own.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantEvent(own));
    const Rows plant = PlantRow(Basil);
    const Rows others = EventsOf(Thyme);

    EXPECT_TRUE(Repository.DeleteHarvestRecord(Basil.UUID));
    EXPECT_EQ(QueryRows("SELECT PlantUUID FROM HarvestRecords;"), (Rows{{Thyme.UUID}}));
    EXPECT_EQ(EventsOf(Basil), (Rows{{std::to_string(own.ID), "", "Note", ""}}));
    EXPECT_EQ(EventsOf(Thyme), others);
    EXPECT_EQ(PlantRow(Basil), plant);
    EXPECT_EQ(QueryRows("SELECT Stage,HarvestDate FROM Plants WHERE ID=3;"), (Rows{{"Harvested", "2024-09-01"}}));
}

TEST_F(HarvestTest, DeleteOfARecordWithoutAnEventRemovesTheRecord)
{
    ASSERT_TRUE(Repository.DeletePlantEvent(NewRecord().TimelineEventID));
    const int events = RowCount("PlantEvents");
    EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.DeleteHarvestRecord(Basil.UUID)); }),
              (Statements{Get, SQL::Begin, DeleteHarvest, SQL::Commit}));
    EXPECT_EQ(RowCount("HarvestRecords"), 1);
    EXPECT_EQ(RowCount("PlantEvents"), events);
}

TEST_F(HarvestTest, DeleteOfAMissingRecordFailsAtTheLookup)
{
    const std::string before = Content();
    for (const std::string& uuid : {Basil.UUID, std::string("unknown"), std::string()})
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeleteHarvestRecord(uuid)); }), (Statements{Get}));
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeleteHarvestRecord(Thyme.UUID)); }), (Statements{Get}));
    }
    EXPECT_EQ(Content(), before);
}

TEST_F(HarvestTest, ADeleteThatFailsHalfWayIsRolledBack)
{
    NewRecord();
    const std::string before = Content();
    const std::pair<const char*, Statements> cases[] = {
        {"DELETE FROM HarvestRecords", {Get, SQL::Begin, DeleteHarvest, SQL::Rollback}},
        {"DELETE FROM PlantEvents", {Get, SQL::Begin, DeleteHarvest, SQL::DeleteEvent, SQL::Rollback}}};
    for (const auto& [statement, expected] : cases)
    {
        const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, statement);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeleteHarvestRecord(Basil.UUID)); }), expected);
        EXPECT_EQ(Content(), before);
    }
}

TEST_F(HarvestTest, RowIDsAndSeedsOfEverySizeAreKept)
{
    HarvestRecord record = NewRecord();
    for (const std::int64_t id :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
        for (const int seeds : {INT_MIN, INT_MAX})
        {
            RunSQL("UPDATE HarvestRecords SET TimelineEventID=NULL WHERE PlantUUID='" + Basil.UUID + "';");
            RunSQL("UPDATE PlantEvents SET ID=" + std::to_string(id) + " WHERE PlantUUID='" + Basil.UUID + "';");
            RunSQL("UPDATE HarvestRecords SET ID=" + std::to_string(id) + " WHERE PlantUUID='" + Basil.UUID + "';");
            record.ID = id;
            record.TimelineEventID = id;
            record.SeedYield = seeds;
            ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
            EXPECT_EQ(Stored(Basil.UUID), record);
        }
    EXPECT_TRUE(Repository.DeleteHarvestRecord(Basil.UUID));
    EXPECT_EQ(EventsOf(Basil), Rows());
}

// ---- The details of a record's event

class HarvestDetailsTest : public HarvestTest
{
  protected:
    std::string Details(HarvestRecord record)
    {
        Repository.DeleteHarvestRecord(Basil.UUID);
        EXPECT_TRUE(Repository.SaveHarvestRecord(Basil, record));
        return EventsOf(Basil).at(0).at(3);
    }

    std::string Weights(double wet, double dry)
    {
        HarvestRecord record;
        record.WetWeightG = wet;
        record.DryWeightG = dry;
        return Details(record);
    }

    std::string Quality(double quality)
    {
        HarvestRecord record;
        record.QualityRating = quality;
        return Details(record);
    }

    static HarvestRecord Of(double wet, double dry, double quality, int seeds, const std::string& outcome,
                            const std::string& notes)
    {
        return {.ID = 0,
                .TimelineEventID = 0,
                .PlantUUID = "",
                .HarvestDate = "2024-09-01",
                .WetWeightG = wet,
                .DryWeightG = dry,
                .QualityRating = quality,
                .SeedYield = seeds,
                .CureOutcome = outcome,
                .Notes = notes};
    }

    static constexpr double Infinity = std::numeric_limits<double>::infinity();
};

TEST_F(HarvestDetailsTest, TheDetailsAreTheRecordInOneLine)
{
    EXPECT_EQ(Details(Of(450, 112.5, 8, 0, "", "")), "Wet 450.0 g | Dry 112.5 g | Quality 8.0/10");
    EXPECT_EQ(Details(Of(0, 0, 0, 12, "Jarred 3 weeks", "Sticky")),
              "Wet 0.0 g | Dry 0.0 g | Seeds 12 | Jarred 3 weeks | Sticky");
    EXPECT_EQ(Details(Of(1234.56, 0.05, -1, -4, "", "late")), "Wet 1234.6 g | Dry 0.1 g | late");
    EXPECT_EQ(Details(Of(10, 2, 7.25, 0, "", "")), "Wet 10.0 g | Dry 2.0 g | Quality 7.2/10");
    EXPECT_EQ(Details(Of(1, 2, 3, 4, "outcome", "")), "Wet 1.0 g | Dry 2.0 g | Seeds 4 | Quality 3.0/10 | outcome");
    EXPECT_EQ(Details(HarvestRecord()), "Wet 0.0 g | Dry 0.0 g");
}

TEST_F(HarvestDetailsTest, NumbersAreRoundedToTenthsTiesToEven)
{
    EXPECT_EQ(Weights(0.25, 0.75), "Wet 0.2 g | Dry 0.8 g");
    EXPECT_EQ(Weights(0.35, 0.45), "Wet 0.3 g | Dry 0.5 g"); // no ties: the doubles are below 0.35 and above 0.45
    EXPECT_EQ(Weights(-0.25, -0.04), "Wet -0.2 g | Dry -0.0 g");
    EXPECT_EQ(Weights(999.96, -12.5), "Wet 1000.0 g | Dry -12.5 g");
    EXPECT_EQ(Weights(1e22, 1234567.5), "Wet 10000000000000000000000.0 g | Dry 1234567.5 g");
    EXPECT_EQ(Weights(Infinity, -Infinity), "Wet inf g | Dry -inf g");
    EXPECT_EQ(Quality(9.97), "Wet 0.0 g | Dry 0.0 g | Quality 10.0/10");
}

TEST_F(HarvestDetailsTest, OnlySeedsAndQualityAboveZeroAreIncluded)
{
    for (const double none : {0.0, -0.0, -0.01, -7.0, -Infinity})
        EXPECT_EQ(Quality(none), "Wet 0.0 g | Dry 0.0 g");
    EXPECT_EQ(Quality(std::numeric_limits<double>::denorm_min()), "Wet 0.0 g | Dry 0.0 g | Quality 0.0/10");
    EXPECT_EQ(Quality(Infinity), "Wet 0.0 g | Dry 0.0 g | Quality inf/10");
    for (const auto& [seeds, text] : {std::pair(1, " | Seeds 1"), std::pair(INT_MAX, " | Seeds 2147483647"),
                                      std::pair(0, ""), std::pair(-1, ""), std::pair(INT_MIN, "")})
        EXPECT_EQ(Details(Of(0, 0, 0, seeds, "", "")), std::string("Wet 0.0 g | Dry 0.0 g") + text);
}

TEST_F(HarvestDetailsTest, AQualityOfNaNIsLeftOut)
{
    ReplaceInDefinitions(" NOT NULL", "");
    EXPECT_EQ(Quality(std::numeric_limits<double>::quiet_NaN()), "Wet 0.0 g | Dry 0.0 g");
}

TEST_F(HarvestDetailsTest, TheDetailsAreTheSameInEveryLocale)
{
    const CommaLocale locale;
    std::ostringstream text;
    text << 1234.5;
    ASSERT_EQ(text.str(), "1.234,5");
    EXPECT_EQ(Details(Of(12345.5, 1234, 8.5, 4321, "", "")),
              "Wet 12345.5 g | Dry 1234.0 g | Seeds 4321 | Quality 8.5/10");
}

} // namespace

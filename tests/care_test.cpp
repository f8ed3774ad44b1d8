#include "support/comma_locale.h"
#include "support/journal_test.h"
#include "testing/operation_statements.h"

#include <climits>
#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>
#include <tuple>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto InsertCare =
    "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,"
    "RunoffMl,Notes) VALUES(?,?,?,?,?,?,?,?,?,?);";
constexpr auto UpdateCare =
    "UPDATE PlantCareEntries SET TimelineEventID=?,CareDate=?,Action=?,Product=?,AmountMl=?,EC=?,"
    "PH=?,RunoffMl=?,Notes=? WHERE ID=? AND PlantUUID=?;";
constexpr auto GetLink = "SELECT COALESCE(TimelineEventID,0) FROM PlantCareEntries WHERE ID=?;";
constexpr auto DeleteCare = "DELETE FROM PlantCareEntries WHERE ID=?;";

class CareTest : public JournalTest
{
  protected:
    CareTest() : Basil(NewPlant("Basil")), Mint(NewPlant("Mint"))
    {
        // More events than entries, so that the row ID of an event never equals that of its entry.
        for (const Plant& plant : {Mint, Mint, Basil})
        {
            PlantEvent event;
            event.PlantUUID = plant.UUID;
            event.Details = "Older";
            EXPECT_TRUE(Repository.CreatePlantEvent(event));
        }
    }

    PlantCareEntry Watering() const
    {
        PlantCareEntry entry;
        entry.PlantUUID = Basil.UUID;
        entry.CareDate = "2024-06-01";
        entry.AmountMl = 250;
        return entry;
    }

    PlantCareEntry NewEntry()
    {
        PlantCareEntry entry = Watering();
        EXPECT_TRUE(Repository.CreatePlantCareEntry(entry));
        return entry;
    }

    // Every field differs from the other fields and from its default.
    PlantCareEntry Feeding() const
    {
        return {.ID = 98,
                .TimelineEventID = 99,
                .PlantUUID = Basil.UUID,
                .CareDate = "2024-06-02",
                .Action = PlantCareAction::Feed,
                .Product = "Bloom A",
                .AmountMl = 500,
                .EC = 1.75,
                .PH = 6.25,
                .RunoffMl = 75.5,
                .Notes = "Thirsty"};
    }

    std::vector<PlantCareEntry> Listed()
    {
        return JournalTest::Listed(&PlantRepository::ListPlantCareEntries, Basil.UUID);
    }

    Rows StoredEntries() const
    {
        return QueryRows("SELECT ID,TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes "
                         "FROM PlantCareEntries ORDER BY ID;");
    }

    Rows EventWith(std::int64_t id) const
    {
        return QueryRows(
            "SELECT PlantUUID,EventDate,EventType,Details FROM PlantEvents WHERE ID=" + std::to_string(id) + ";");
    }

    Plant Basil;
    Plant Mint;
};

TEST_F(CareTest, CreateStoresEveryFieldInItsColumnAndTheEvent)
{
    PlantCareEntry entry = Feeding();
    ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));

    PlantCareEntry expected = Feeding();
    expected.ID = 1;
    expected.TimelineEventID = 4;
    EXPECT_EQ(entry, expected);
    EXPECT_EQ(StoredEntries(), (Rows{{"1", "4", Basil.UUID, "2024-06-02", "Feed", "Bloom A", "500.0", "1.75", "6.25",
                                      "75.5", "Thirsty"}}));
    EXPECT_EQ(EventWith(4), (Rows{{Basil.UUID, "2024-06-02", "Feed",
                                   "Bloom A | 500 ml | EC 1.75 | pH 6.25 | Runoff 76 ml | Thirsty"}}));
    EXPECT_EQ(RowCount("PlantEvents"), 4);
    EXPECT_EQ(Listed(), (std::vector{expected}));
}

TEST_F(CareTest, CreateOfABareEntryStoresTheDefaults)
{
    PlantCareEntry entry;
    entry.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));
    EXPECT_EQ(StoredEntries(), (Rows{{"1", "4", Basil.UUID, "", "Water", "", "0.0", "0.0", "0.0", "0.0", ""}}));
    EXPECT_EQ(EventWith(4), (Rows{{Basil.UUID, "", "Water", "0 ml"}}));
}

TEST_F(CareTest, UpdateOverwritesEveryFieldOfThatEntryAndItsEventOnly)
{
    NewEntry();
    const PlantCareEntry second = NewEntry();
    NewEntry();
    const std::string others = "SELECT * FROM PlantEvents WHERE ID<>5;";
    const Rows otherEvents = QueryRows(others);

    PlantCareEntry changed = Feeding();
    changed.ID = second.ID;
    changed.TimelineEventID = second.TimelineEventID;
    const PlantCareEntry before = changed;
    ASSERT_TRUE(Repository.UpdatePlantCareEntry(changed));
    EXPECT_EQ(changed, before);
    const Row watering = {"1", "4", Basil.UUID, "2024-06-01", "Water", "", "250.0", "0.0", "0.0", "0.0", ""};
    EXPECT_EQ(StoredEntries().at(0), watering);
    EXPECT_EQ(StoredEntries().at(1),
              (Row{"2", "5", Basil.UUID, "2024-06-02", "Feed", "Bloom A", "500.0", "1.75", "6.25", "75.5", "Thirsty"}));
    EXPECT_EQ(EventWith(5), (Rows{{Basil.UUID, "2024-06-02", "Feed",
                                   "Bloom A | 500 ml | EC 1.75 | pH 6.25 | Runoff 76 ml | Thirsty"}}));
    EXPECT_EQ(QueryRows(others), otherEvents);

    changed.Action = PlantCareAction::Water;
    ASSERT_TRUE(Repository.UpdatePlantCareEntry(changed));
    EXPECT_EQ(QueryRows("SELECT Action FROM PlantCareEntries WHERE ID=2;"), (Rows{{"Water"}}));
    EXPECT_EQ(QueryRows("SELECT EventType FROM PlantEvents WHERE ID=5;"), (Rows{{"Water"}}));
}

TEST_F(CareTest, EachOperationRunsItsStatements)
{
    PlantCareEntry entry = Watering();
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlantCareEntry(entry); }),
              (Statements{SQL::Begin, SQL::InsertEvent, InsertCare, SQL::Commit}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantCareEntry(entry); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, UpdateCare, SQL::Commit}));
    std::vector<PlantCareEntry> entries;
    EXPECT_EQ(StatementsOf([&] { Repository.ListPlantCareEntries(Basil.UUID, entries); }),
              (Statements{"SELECT ID,COALESCE(TimelineEventID,0),PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,"
                          "RunoffMl,Notes FROM PlantCareEntries WHERE PlantUUID=? ORDER BY CareDate DESC,ID DESC;"}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantCareEntry(entry.ID); }),
              (Statements{GetLink, SQL::Begin, DeleteCare, SQL::DeleteEvent, SQL::Commit}));
    EXPECT_EQ(RowCount("PlantCareEntries"), 0);
    EXPECT_EQ(RowCount("PlantEvents"), 3);
}

TEST_F(CareTest, AnEntryWithoutAnEventRunsOtherStatements)
{
    PlantCareEntry entry = NewEntry();
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    entry.TimelineEventID = 0;
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantCareEntry(entry); }),
              (Statements{SQL::Begin, SQL::InsertEvent, UpdateCare, SQL::Commit}));
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantCareEntry(entry.ID); }),
              (Statements{GetLink, SQL::Begin, DeleteCare, SQL::Commit}));
}

TEST_F(CareTest, AnEntryOfAnUnknownPlantIsRefused)
{
    const std::string before = Content();
    PlantCareEntry entry = Feeding();
    entry.PlantUUID = "unknown";
    const PlantCareEntry given = entry;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.CreatePlantCareEntry(entry)); }),
              (Statements{SQL::Begin, SQL::InsertEvent, SQL::Rollback}));
    EXPECT_EQ(entry, given);
    EXPECT_EQ(Content(), before);
}

TEST_F(CareTest, ANumberOutsideTheEnumerationIsAWatering)
{
    PlantCareEntry entry = NewEntry();
    for (const std::int32_t number : {-1, 2, INT_MIN, INT_MAX})
    {
        entry.Action = static_cast<PlantCareAction>(number);
        ASSERT_TRUE(Repository.UpdatePlantCareEntry(entry));
        EXPECT_EQ(QueryRows("SELECT Action FROM PlantCareEntries;"), (Rows{{"Water"}}));
        EXPECT_EQ(EventWith(entry.TimelineEventID).at(0).at(2), "Water");
    }
}

TEST_F(CareTest, AStoredActionThatIsUnknownReadsAsAWatering)
{
    PlantCareEntry entry = Feeding();
    ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));
    EXPECT_EQ(Listed().at(0).Action, PlantCareAction::Feed);
    RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE PlantCareEntries SET Action='feed';");
    EXPECT_EQ(Listed().at(0).Action, PlantCareAction::Water);
}

TEST_F(CareTest, AnActionThatTheFileDoesNotAllowIsRolledBackWithItsEvent)
{
    const PlantCareEntry stored = NewEntry();
    ReplaceInDefinitions("CHECK(Action IN ('Feed',", "CHECK(Action IN (");
    const std::string before = Content();

    PlantCareEntry entry = Feeding();
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.CreatePlantCareEntry(entry)); }),
              (Statements{SQL::Begin, SQL::InsertEvent, InsertCare, SQL::Rollback}));
    EXPECT_EQ(entry.TimelineEventID, stored.TimelineEventID + 1);
    EXPECT_EQ(entry.ID, 98);

    entry = stored;
    entry.Action = PlantCareAction::Feed;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry)); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, UpdateCare, SQL::Rollback}));
    EXPECT_EQ(Content(), before);
}

TEST_F(CareTest, RowIDsSetBeforeAFailureStay)
{
    const std::tuple<SQLiteCall, const char*, std::int64_t, std::int64_t> cases[] = {
        {SQLiteCall::Exec, "BEGIN", 99, 98},
        {SQLiteCall::Prepare, "INSERT INTO PlantEvents", 99, 98},
        {SQLiteCall::Step, "INSERT INTO PlantEvents", 99, 98},
        {SQLiteCall::Prepare, "INSERT INTO PlantCareEntries", 4, 98},
        {SQLiteCall::Bind, "INSERT INTO PlantCareEntries", 4, 98},
        {SQLiteCall::Step, "INSERT INTO PlantCareEntries", 4, 98},
        {SQLiteCall::Exec, "COMMIT", 4, 1}};
    const std::string before = Content();
    for (const auto& [call, statement, eventID, id] : cases)
    {
        SCOPED_TRACE(statement);
        const CallFailure failure(call, 1, SQLITE_FULL, statement);
        PlantCareEntry expected = Feeding();
        expected.TimelineEventID = eventID;
        expected.ID = id;
        PlantCareEntry entry = Feeding();
        EXPECT_FALSE(Repository.CreatePlantCareEntry(entry));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(entry, expected);
        EXPECT_EQ(Content(), before);
    }
}

TEST_F(CareTest, AnUpdateOfAnEntryWithoutAnEventCreatesOne)
{
    NewEntry();
    const std::int64_t lost = NewEntry().TimelineEventID;
    ASSERT_TRUE(Repository.DeletePlantEvent(lost));
    PlantEvent later;
    later.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantEvent(later)); // SQLite reuses the row ID

    PlantCareEntry entry = Listed().at(0);
    ASSERT_EQ(entry.TimelineEventID, 0);
    entry.AmountMl = 300;
    ASSERT_TRUE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(entry.TimelineEventID, later.ID + 1);
    EXPECT_EQ(EventWith(entry.TimelineEventID), (Rows{{Basil.UUID, "2024-06-01", "Water", "300 ml"}}));
    EXPECT_EQ(Listed().at(0), entry);
    EXPECT_EQ(QueryRows("SELECT TimelineEventID FROM PlantCareEntries ORDER BY ID;").at(1).at(0),
              std::to_string(entry.TimelineEventID));
}

TEST_F(CareTest, AFailedUpdateKeepsTheRowIDOfItsNewEvent)
{
    PlantCareEntry entry = NewEntry();
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    entry.TimelineEventID = 0;
    const std::string before = Content();
    const CallFailure failure(SQLiteCall::Exec, 1, SQLITE_BUSY, "COMMIT");
    EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(entry.TimelineEventID, 4);
    EXPECT_EQ(Content(), before);
}

TEST_F(CareTest, AnUpdateWithTheIDOfADeletedEventIsRolledBack)
{
    PlantCareEntry entry = NewEntry();
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    const std::string before = Content();
    entry.AmountMl = 300;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry)); }),
              (Statements{SQL::Begin, SQL::UpdateEvent, UpdateCare, SQL::Rollback}));
    EXPECT_EQ(entry.TimelineEventID, 4);
    EXPECT_EQ(Content(), before);
}

TEST_F(CareTest, AnUpdateWithAReusedEventIDOverwritesThatEvent)
{
    PlantCareEntry entry = NewEntry();
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    PlantEvent other;
    other.PlantUUID = Basil.UUID;
    other.Details = "Moved to the window";
    ASSERT_TRUE(Repository.CreatePlantEvent(other));
    ASSERT_EQ(other.ID, entry.TimelineEventID);

    entry.AmountMl = 300;
    EXPECT_TRUE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(EventWith(other.ID), (Rows{{Basil.UUID, "2024-06-01", "Water", "300 ml"}}));
    EXPECT_EQ(Listed(), (std::vector{entry}));
}

TEST_F(CareTest, AnUpdateOfAnUnknownEntryLeavesAnOrphanEvent)
{
    NewEntry();
    const Rows before = StoredEntries();
    PlantCareEntry unknown = Feeding();
    unknown.TimelineEventID = 0;
    EXPECT_TRUE(Repository.UpdatePlantCareEntry(unknown));
    EXPECT_EQ(unknown.TimelineEventID, 5);
    EXPECT_EQ(unknown.ID, 98);
    EXPECT_EQ(EventWith(5).at(0).at(2), "Feed");
    EXPECT_EQ(StoredEntries(), before);
}

TEST_F(CareTest, AnUpdateOfAnUnknownEntryOverwritesItsEvent)
{
    const PlantCareEntry stored = NewEntry();
    const Rows before = StoredEntries();
    PlantCareEntry unknown = Feeding();
    unknown.TimelineEventID = stored.TimelineEventID;
    EXPECT_TRUE(Repository.UpdatePlantCareEntry(unknown));
    EXPECT_EQ(EventWith(stored.TimelineEventID).at(0).at(1), "2024-06-02");
    EXPECT_EQ(StoredEntries(), before);
}

TEST_F(CareTest, AnotherPlantsEventIsLinkedButNotOverwritten)
{
    PlantCareEntry entry = NewEntry();
    const Rows events = QueryRows("SELECT * FROM PlantEvents;");
    entry.TimelineEventID = 1; // Mint's
    entry.AmountMl = 300;
    EXPECT_TRUE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(QueryRows("SELECT * FROM PlantEvents;"), events);
    EXPECT_EQ(QueryRows("SELECT TimelineEventID,AmountMl FROM PlantCareEntries;"), (Rows{{"1", "300.0"}}));
}

TEST_F(CareTest, DeleteRemovesOnlyThatEntryAndItsEvent)
{
    NewEntry();
    const PlantCareEntry second = NewEntry();
    NewEntry();
    EXPECT_TRUE(Repository.DeletePlantCareEntry(second.ID));
    EXPECT_EQ(QueryRows("SELECT ID,TimelineEventID FROM PlantCareEntries ORDER BY ID;"),
              (Rows{{"1", "4"}, {"3", "6"}}));
    EXPECT_EQ(QueryRows("SELECT ID FROM PlantEvents ORDER BY ID;"), (Rows{{"1"}, {"2"}, {"3"}, {"4"}, {"6"}}));
}

TEST_F(CareTest, DeleteOfAnEntryWithoutAnEventRemovesTheEntry)
{
    const PlantCareEntry entry = NewEntry();
    ASSERT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    EXPECT_TRUE(Repository.DeletePlantCareEntry(entry.ID));
    EXPECT_EQ(RowCount("PlantCareEntries"), 0);
    EXPECT_EQ(RowCount("PlantEvents"), 3);
}

TEST_F(CareTest, DeleteOfAnUnknownEntryFailsAtTheLookup)
{
    NewEntry();
    const std::string before = Content();
    for (const std::int64_t id : {2, -1})
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeletePlantCareEntry(id)); }), (Statements{GetLink}));
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeletePlantCareEntry(1)); }), (Statements{GetLink}));
    }
    EXPECT_EQ(Content(), before);
}

TEST_F(CareTest, ADeleteThatFailsHalfWayIsRolledBack)
{
    NewEntry();
    const std::string before = Content();
    const std::pair<const char*, Statements> cases[] = {
        {"DELETE FROM PlantCareEntries", {GetLink, SQL::Begin, DeleteCare, SQL::Rollback}},
        {"DELETE FROM PlantEvents", {GetLink, SQL::Begin, DeleteCare, SQL::DeleteEvent, SQL::Rollback}}};
    for (const auto& [statement, expected] : cases)
        for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
        {
            const CallFailure failure(call, 1, SQLITE_FULL, statement);
            EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeletePlantCareEntry(1)); }), expected);
            EXPECT_TRUE(failure.Happened());
            EXPECT_EQ(Content(), before);
        }
}

TEST_F(CareTest, EventIDsOfEverySizeAreKept)
{
    for (const std::int64_t id :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
    {
        PlantCareEntry entry = NewEntry();
        RunSQL("UPDATE PlantCareEntries SET TimelineEventID=NULL;");
        RunSQL("UPDATE PlantEvents SET ID=" + std::to_string(id) +
               " WHERE ID=" + std::to_string(entry.TimelineEventID) + ";");
        entry.TimelineEventID = id;
        entry.AmountMl = 300;
        ASSERT_TRUE(Repository.UpdatePlantCareEntry(entry));
        EXPECT_EQ(Listed(), (std::vector{entry}));
        EXPECT_EQ(EventWith(id).at(0).at(3), "300 ml");
        EXPECT_TRUE(Repository.DeletePlantCareEntry(entry.ID));
        EXPECT_EQ(RowCount("PlantEvents"), 3);
    }
}

// ---- The details of an entry's event

struct DetailsCase
{
    const char* Text;
    std::function<void(PlantCareEntry&)> Fill;
};

class CareDetailsTest : public JournalTest
{
  protected:
    void ExpectTexts(const std::vector<DetailsCase>& cases)
    {
        for (const DetailsCase& expected : cases)
        {
            PlantCareEntry entry;
            expected.Fill(entry);
            EXPECT_EQ(Repository.CareTimelineDetails(entry), expected.Text);
        }
    }

    static DetailsCase Amount(double amount, const char* text)
    {
        return {text, [=](PlantCareEntry& entry) { entry.AmountMl = amount; }};
    }
    static DetailsCase EC(double ec, const char* text)
    {
        return {text, [=](PlantCareEntry& entry) { entry.EC = ec; }};
    }
    static DetailsCase PH(double ph, const char* text)
    {
        return {text, [=](PlantCareEntry& entry) { entry.PH = ph; }};
    }
    static DetailsCase Runoff(double runoff, const char* text)
    {
        return {text, [=](PlantCareEntry& entry) { entry.RunoffMl = runoff; }};
    }

    static constexpr double Infinity = std::numeric_limits<double>::infinity();
    static constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
};

TEST_F(CareDetailsTest, TheDetailsAreTheEntryInOneLine)
{
    ExpectTexts({{"Bloom A | 500 ml | EC 1.80 | pH 6.20 | Runoff 75 ml",
                  [](PlantCareEntry& entry)
                  {
                      entry.Product = "Bloom A";
                      entry.AmountMl = 500;
                      entry.EC = 1.8;
                      entry.PH = 6.2;
                      entry.RunoffMl = 75;
                  }},
                 {"1000 ml | pH 6.45 | dry pot",
                  [](PlantCareEntry& entry)
                  {
                      entry.AmountMl = 1000;
                      entry.PH = 6.45;
                      entry.Notes = "dry pot";
                  }},
                 {"Cal-Mag | 250 ml | EC 0.90",
                  [](PlantCareEntry& entry)
                  {
                      entry.Product = "Cal-Mag";
                      entry.AmountMl = 250.4;
                      entry.EC = 0.9;
                  }},
                 {"0 ml | EC 2.00 | Runoff 20 ml | one\ntwo",
                  [](PlantCareEntry& entry)
                  {
                      entry.EC = 2;
                      entry.RunoffMl = 20;
                      entry.Notes = "one\ntwo";
                  }},
                 {"0 ml", [](PlantCareEntry&) {}},
                 {"0 ml", [](PlantCareEntry& entry) { entry.Action = PlantCareAction::Feed; }}});
}

TEST_F(CareDetailsTest, TheAmountIsRoundedToTheNearestTiesToEven)
{
    ExpectTexts({Amount(0.4, "0 ml"), Amount(0.5, "0 ml"), Amount(0.51, "1 ml"), Amount(1.5, "2 ml"),
                 Amount(2.5, "2 ml"), Amount(3.5, "4 ml"), Amount(999.9, "1000 ml"), Amount(-0.4, "-0 ml"),
                 Amount(-12.6, "-13 ml"), Amount(1234567, "1234567 ml"), Amount(1e22, "10000000000000000000000 ml"),
                 Amount(Infinity, "inf ml"), Amount(-Infinity, "-inf ml"), Amount(NotANumber, "nan ml")});
}

TEST_F(CareDetailsTest, OnlyValuesAboveZeroAreIncluded)
{
    constexpr double least = std::numeric_limits<double>::denorm_min();
    for (const double none : {0.0, -0.0, -0.01, -7.0, -Infinity, NotANumber})
        ExpectTexts({EC(none, "0 ml"), PH(none, "0 ml"), Runoff(none, "0 ml")});
    ExpectTexts({EC(least, "0 ml | EC 0.00"), PH(least, "0 ml | pH 0.00"), Runoff(least, "0 ml | Runoff 0 ml"),
                 EC(Infinity, "0 ml | EC inf"), PH(Infinity, "0 ml | pH inf"),
                 Runoff(Infinity, "0 ml | Runoff inf ml")});
}

TEST_F(CareDetailsTest, ECAndPHAreRoundedToHundredths)
{
    ExpectTexts({EC(1.125, "0 ml | EC 1.12"), EC(1.375, "0 ml | EC 1.38"), EC(0.996, "0 ml | EC 1.00"),
                 EC(12345.678, "0 ml | EC 12345.68"), PH(6.125, "0 ml | pH 6.12"), PH(6.005, "0 ml | pH 6.00"),
                 PH(5.999, "0 ml | pH 6.00"), Runoff(2.5, "0 ml | Runoff 2 ml"),
                 Runoff(1e6, "0 ml | Runoff 1000000 ml")});
}

TEST_F(CareDetailsTest, TheDetailsAreTheSameInEveryLocale)
{
    PlantCareEntry entry;
    entry.Product = "Bloom A";
    entry.AmountMl = 12345;
    entry.EC = 1.8;
    entry.RunoffMl = 1234;
    const CommaLocale locale;
    std::ostringstream text;
    text << 1234.5;
    ASSERT_EQ(text.str(), "1.234,5");
    EXPECT_EQ(Repository.CareTimelineDetails(entry), "Bloom A | 12345 ml | EC 1.80 | Runoff 1234 ml");
}

TEST_F(CareDetailsTest, TheDetailsNeedNoDatabase)
{
    const PlantCareEntry entry;
    EXPECT_EQ(StatementsOf([&] { Repository.CareTimelineDetails(entry); }), Statements{});
    Database.Close();
    EXPECT_EQ(Repository.CareTimelineDetails(entry), "0 ml");
}

} // namespace

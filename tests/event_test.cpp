#include "support/journal_test.h"
#include "testing/operation_statements.h"

#include <climits>

#include <sqlite3.h>

using namespace support;

namespace
{

class EventTest : public JournalTest
{
  protected:
    EventTest() : Basil(NewPlant("Basil")) {}

    PlantEvent NewEvent(const std::string& details = "Cut back")
    {
        PlantEvent event = Full(Basil.UUID, details);
        EXPECT_TRUE(Repository.CreatePlantEvent(event));
        return event;
    }

    static PlantEvent Full(const std::string& plantUUID, const std::string& details)
    {
        return {.ID = 0,
                .PlantUUID = plantUUID,
                .EventDate = "2024-06-01",
                .Type = PlantEventType::Topped,
                .Details = details};
    }

    std::vector<PlantEvent> Listed() { return JournalTest::Listed(&PlantRepository::ListPlantEvents, Basil.UUID); }

    Rows StoredEvents() const
    {
        return QueryRows("SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents ORDER BY ID;");
    }

    Plant Basil;
};

TEST_F(EventTest, CreateStoresEveryFieldInItsColumn)
{
    NewEvent("First");
    PlantEvent event = Full(Basil.UUID, "Cut back");
    event.ID = 99;
    ASSERT_TRUE(Repository.CreatePlantEvent(event));
    EXPECT_EQ(event.ID, 2);
    EXPECT_EQ(StoredEvents().at(1), (Row{"2", Basil.UUID, "2024-06-01", "Topped", "Cut back"}));
    EXPECT_EQ(Listed().at(0), event);
}

TEST_F(EventTest, UpdateOverwritesEveryFieldOfThatEventOnly)
{
    NewEvent("First");
    const PlantEvent event = NewEvent();
    NewEvent("Third");
    ASSERT_TRUE(Repository.UpdatePlantEvent({.ID = event.ID,
                                             .PlantUUID = Basil.UUID,
                                             .EventDate = "2024-07-02",
                                             .Type = PlantEventType::Flip,
                                             .Details = "Into the dark"}));
    EXPECT_EQ(StoredEvents(), (Rows{{"1", Basil.UUID, "2024-06-01", "Topped", "First"},
                                    {"2", Basil.UUID, "2024-07-02", "Flip", "Into the dark"},
                                    {"3", Basil.UUID, "2024-06-01", "Topped", "Third"}}));
}

TEST_F(EventTest, EachOperationRunsItsStatement)
{
    PlantEvent event = Full(Basil.UUID, "Cut back");
    std::vector<PlantEvent> events;
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlantEvent(event); }), (Statements{SQL::InsertEvent}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantEvent(event); }), (Statements{SQL::UpdateEvent}));
    EXPECT_EQ(StatementsOf([&] { Repository.ListPlantEvents(Basil.UUID, events); }),
              (Statements{"SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents WHERE PlantUUID=? ORDER BY "
                          "EventDate DESC,ID DESC;"}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantEvent(event.ID); }), (Statements{SQL::DeleteEvent}));
    EXPECT_EQ(RowCount("PlantEvents"), 0);
}

TEST_F(EventTest, AnEventOfAnUnknownPlantIsRefused)
{
    PlantEvent event = Full("unknown", "Cut back");
    event.ID = 77;
    const PlantEvent before = event;
    EXPECT_FALSE(Repository.CreatePlantEvent(event));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "FOREIGN KEY constraint failed");
    EXPECT_EQ(event, before);
    EXPECT_EQ(RowCount("PlantEvents"), 0);
}

TEST_F(EventTest, AnEmptyDateStaysEmpty)
{
    PlantEvent event;
    event.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantEvent(event));
    EXPECT_EQ(StoredEvents(), (Rows{{"1", Basil.UUID, "", "Note", ""}}));
    EXPECT_EQ(event.EventDate, "");
    EXPECT_EQ(Listed().at(0), event);
}

TEST_F(EventTest, TypesAreStoredByTheirNames)
{
    const char* names[] = {"Clone", "Transplant", "Flip",        "Harvest",    "Feed", "Water",
                           "Stage", "Topped",     "LST Trained", "Defoliated", "Note"};
    PlantEvent event = NewEvent();
    for (int number = 0; number < 11; ++number)
    {
        event.Type = static_cast<PlantEventType>(number);
        ASSERT_TRUE(Repository.UpdatePlantEvent(event));
        EXPECT_EQ(QueryRows("SELECT EventType FROM PlantEvents;"), (Rows{{names[number]}}));
        EXPECT_EQ(Listed().at(0), event);
    }
}

TEST_F(EventTest, NumbersOutsideTheEnumerationAreStoredAsNotes)
{
    PlantEvent event = NewEvent();
    for (const std::int32_t number : {-1, 11, INT_MIN, INT_MAX})
    {
        event.Type = static_cast<PlantEventType>(number);
        ASSERT_TRUE(Repository.UpdatePlantEvent(event));
        EXPECT_EQ(QueryRows("SELECT EventType FROM PlantEvents;"), (Rows{{"Note"}}));
    }
}

TEST_F(EventTest, AStoredTypeThatIsUnknownReadsAsANote)
{
    NewEvent();
    for (const char* name : {"Pruned", "flip", "LSTTrained", ""})
    {
        RunSQL("PRAGMA ignore_check_constraints=ON;");
        RunSQL(std::string("UPDATE PlantEvents SET EventType='") + name + "';");
        EXPECT_EQ(Listed().at(0).Type, PlantEventType::Note);
    }
}

TEST_F(EventTest, ATypeThatTheFileDoesNotAllowIsRefused)
{
    PlantEvent event = NewEvent();
    ReplaceInDefinitions("'Flip',", "");
    event.Type = PlantEventType::Flip;
    EXPECT_FALSE(Repository.UpdatePlantEvent(event));
    EXPECT_EQ(sqlite3_extended_errcode(Database.NativeHandle()), SQLITE_CONSTRAINT_CHECK);
    EXPECT_FALSE(Repository.CreatePlantEvent(event));
    EXPECT_EQ(event.ID, 1);
    EXPECT_EQ(StoredEvents(), (Rows{{"1", Basil.UUID, "2024-06-01", "Topped", "Cut back"}}));
}

TEST_F(EventTest, TheOwnerOfADeletedEventStaysWithoutAnEvent)
{
    PlantCareEntry entry;
    entry.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));
    HarvestRecord record;
    ASSERT_TRUE(Repository.SaveHarvestRecord(Basil, record));
    EXPECT_TRUE(Repository.DeletePlantEvent(entry.TimelineEventID));
    EXPECT_TRUE(Repository.DeletePlantEvent(record.TimelineEventID));

    EXPECT_EQ(JournalTest::Listed(&PlantRepository::ListPlantCareEntries, Basil.UUID).at(0).TimelineEventID, 0);
    ASSERT_TRUE(Repository.GetHarvestRecord(Basil.UUID, record));
    EXPECT_EQ(record.TimelineEventID, 0);
    EXPECT_EQ(
        QueryRows("SELECT TimelineEventID FROM PlantCareEntries UNION ALL SELECT TimelineEventID FROM HarvestRecords;"),
        (Rows{{"NULL"}, {"NULL"}}));
}

} // namespace

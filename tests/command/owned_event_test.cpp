// Events that belong to a care entry or a harvest record.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

using namespace support;

namespace
{

class OwnedEventTest : public BasilTest
{
  protected:
    OwnedEventTest()
    {
        Done({"note", "add", "Basil", "leaves"});
        Done({"event", "add", "Basil", "into the big tent"}); // row 1 of the events
        Done({"care", "add", "Basil"});
        Done({"care", "add", "Basil"}); // care entry 2 with event 3
        Done({"harvest", "add", "Basil", "--dry-weight-g", "96.5"});
    }
};

TEST_F(OwnedEventTest, TheEventOfACareEntryIsDeletedWithTheEntry)
{
    EXPECT_EQ(Refused({"event", "delete", "Basil", "3", "--yes"}),
              "plantjournal: timeline event 3: it belongs to care entry 2; "
              "`plantjournal care delete Basil 2` deletes both\n");
    Done({"care", "delete", "Basil", "2", "--yes"});
    EXPECT_EQ(Parsed({"event", "list", "Basil"}).size(), 3U);
}

TEST_F(OwnedEventTest, TheEventOfACareEntryIsChangedWithTheEntry)
{
    EXPECT_EQ(Refused({"event", "edit", "b1", "3", "--details", "x"}),
              "plantjournal: timeline event 3: it belongs to care entry 2; `plantjournal care edit b1 2` edits both\n");
}

TEST_F(OwnedEventTest, TheEventOfAHarvestIsChangedAndDeletedWithIt)
{
    EXPECT_EQ(Refused({"event", "edit", "Basil", "4", "--details", "x"}),
              "plantjournal: timeline event 4: it belongs to a harvest record; "
              "`plantjournal harvest edit Basil` edits both\n");
    EXPECT_EQ(Refused({"event", "delete", "Basil", "4", "--yes"}),
              "plantjournal: timeline event 4: it belongs to a harvest record; "
              "`plantjournal harvest delete Basil` deletes both\n");
}

TEST_F(OwnedEventTest, ACommandInTheRefusalQuotesTheName)
{
    Done({"plant", "edit", "Basil", "--name", "Sweet basil"});
    EXPECT_NE(
        Refused({"event", "delete", "Sweet basil", "3", "--yes"}).find("`plantjournal care delete \"Sweet basil\" 2`"),
        std::string::npos);
}

TEST_F(OwnedEventTest, AnOwnerOfAnotherPlantIsNamedByItsUUID)
{
    Done({"plant", "add", "Mint", "--uuid", "m1"});
    PlainConnection(Journal).RunSQL("UPDATE PlantCareEntries SET PlantUUID='m1' WHERE ID=2;");
    EXPECT_NE(Refused({"event", "delete", "Basil", "3", "--yes"}).find("`plantjournal care delete m1 2`"),
              std::string::npos);
    Sound = false; // the event of another plant
}

TEST_F(OwnedEventTest, AnyOtherEventIsChangedAndDeleted)
{
    Done({"event", "edit", "Basil", "1", "--details", "into the small tent"});
    EXPECT_EQ(Parsed({"event", "list", "Basil"}).size(), 4U);
    Done({"event", "delete", "Basil", "1", "--yes"});
    EXPECT_EQ(Parsed({"event", "list", "Basil"}).size(), 3U);
}

} // namespace

// `check --repair`, which restores the events of care entries and harvest records.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

#include <filesystem>

using namespace support;

namespace
{

class RepairTest : public BasilTest
{
  protected:
    RepairTest()
    {
        Done({"event", "add", "Basil", "into the big tent"});
        Done({"feed", "Basil", "500ml", "--product", "Bloom A", "--ec", "1.8", "--ph", "6.2", "--runoff-ml", "75",
              "--notes", "half", "--care-date", "2026-05-02"});
        Done({"water", "Basil", "250.4ml", "--care-date", "2026-05"});
        Done({"harvest", "add", "Basil", "--wet-weight-g", "410.26", "--dry-weight-g", "96.5", "--quality-rating",
              "7.25", "--seed-yield", "12", "--cure-outcome", "good", "--notes", "late", "--harvest-date",
              "2026-07-01"});
    }

    void RunSQL(const std::string& sql) const { PlainConnection(Journal).RunSQL(sql); }
    // Deletes events as the library does; the records that own them refer to no event then.
    void DeleteEvents(const std::string& which) const
    {
        RunSQL("PRAGMA foreign_keys=ON; DELETE FROM PlantEvents WHERE " + which + ";");
    }
    // The events without their row IDs, by date and type.
    JSON Events() const
    {
        JSON events = Parsed({"event", "list", "Basil"});
        for (JSON& event : events)
            event.erase("ID");
        return events;
    }
    // Repairs a journal in which nothing remains to be repaired; returns the output.
    std::string Repaired()
    {
        const ProgramResult outcome = Run({"check", "--repair"});
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_EQ(outcome.Error, Journal + ": backed up as " + Journal + ".before-repair-" + PlantEventCurrentDate() +
                                     ", now repairing\n");
        Left = {"journal.db", "journal.db.before-repair-" + PlantEventCurrentDate()};
        return outcome.Out;
    }
};

TEST_F(RepairTest, EventsGetTheDateTypeAndDetailsOfTheirRecords)
{
    const JSON before = Events();
    DeleteEvents("EventType<>'Note'");
    ASSERT_EQ(Events().size(), 1U);
    EXPECT_EQ(Repaired(), "Restored the event of care entry 1 of Basil\n"
                          "Restored the event of care entry 2 of Basil\n"
                          "Restored the event of the harvest record of Basil\n"
                          "Restored events: 3\n"
                          "No problems found.\n");
    EXPECT_EQ(Events(), before);
}

TEST_F(RepairTest, ALinkToAnEventThatDoesNotExistIsReplaced)
{
    const JSON before = Events();
    RunSQL("DELETE FROM PlantEvents WHERE EventType<>'Note';"); // the links stay
    EXPECT_NE(Repaired().find("Restored events: 3\nNo problems found.\n"), std::string::npos);
    EXPECT_EQ(Events(), before);
}

TEST_F(RepairTest, ANewEventIsNotTakenForTheEventOfAnotherRecord)
{
    const JSON before = Events();
    // The new event of care entry 1 gets the row ID 2, to which the other records refer.
    RunSQL("DELETE FROM PlantEvents WHERE ID>1; UPDATE PlantCareEntries SET TimelineEventID=4-ID; "
           "UPDATE HarvestRecords SET TimelineEventID=2;");
    EXPECT_NE(Repaired().find("Restored events: 3\n"), std::string::npos);
    EXPECT_EQ(Events(), before);
}

TEST_F(RepairTest, EventsThatExistAreNotChanged)
{
    DeleteEvents("EventType='Water'");
    const JSON before = Parsed({"event", "list", "Basil"});
    EXPECT_NE(Repaired().find("Restored events: 1\n"), std::string::npos);
    JSON after = Parsed({"event", "list", "Basil"});
    EXPECT_EQ(after.size(), 4U);
    for (const JSON& event : before)
        EXPECT_NE(std::find(after.begin(), after.end(), event), after.end()) << event;
}

TEST_F(RepairTest, TheStageOfAnArchivedPlantStays)
{
    Done({"plant", "edit", "Basil", "--stage", "archived", "--harvest-date", "2026-06-30"});
    DeleteEvents("EventType='Harvest'");
    const JSON before = Basil();
    Repaired();
    EXPECT_EQ(Basil(), before);
    EXPECT_EQ(before.at("Stage"), "Archived");
}

TEST_F(RepairTest, AnEmptyDateStaysEmpty)
{
    RunSQL("UPDATE HarvestRecords SET HarvestDate=''; UPDATE PlantEvents SET EventDate='' WHERE EventType='Harvest';");
    const JSON before = Events();
    DeleteEvents("EventType='Harvest'");
    Repaired();
    EXPECT_EQ(Events(), before);
}

TEST_F(RepairTest, EachHarvestGetsItsOwnDetails)
{
    Done({"plant", "add", "Mint"});
    Done({"harvest", "add", "Mint", "--wet-weight-g", "5"});
    const std::string before = Done({"event", "list", "Mint", "--json"});
    DeleteEvents("EventType='Harvest'");
    Repaired();
    EXPECT_EQ(Parsed({"event", "list", "Mint"}).at(0).at("Details"), "Wet 5.0 g | Dry 0.0 g");
    EXPECT_EQ(Parsed({"event", "list", "Mint"}).at(0).at("Details"), JSON::parse(before).at(0).at("Details"));
}

TEST_F(RepairTest, TheBackUpHoldsTheJournalFromBefore)
{
    DeleteEvents("EventType='Feed'");
    const std::string before = Content();
    Repaired();
    EXPECT_NE(Content(), before);
    Journal += ".before-repair-" + PlantEventCurrentDate();
    EXPECT_EQ(Content(), before);
    Sound = false; // the backup has the findings
}

TEST_F(RepairTest, ASecondRepairKeepsTheFirstBackUp)
{
    DeleteEvents("EventType='Feed'");
    Repaired();
    DeleteEvents("EventType='Feed'");
    const ProgramResult outcome = Run({"check", "--repair"});
    EXPECT_EQ(outcome.Status, 0);
    const std::string name = "journal.db.before-repair-" + PlantEventCurrentDate();
    EXPECT_NE(outcome.Error.find(name + "-2, now repairing"), std::string::npos);
    Left = {"journal.db", name, name + "-2"};
}

TEST_F(RepairTest, AJournalWithoutFindingsIsNotBackedUp)
{
    const std::string before = FileBytes(Journal);
    EXPECT_EQ(Done({"check", "--repair"}), "No problems found.\n");
    EXPECT_TRUE(FileBytes(Journal) == before);
}

TEST_F(RepairTest, OtherFindingsAreListedAndLeft)
{
    RunSQL("UPDATE PlantEvents SET Details='other' WHERE EventType='Feed';");
    const std::string before = Content();
    ProgramResult outcome = Run({"check", "--repair"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("differs in details"), std::string::npos);
    EXPECT_NE(outcome.Error.find("findings: 1; none of them can be repaired; nothing was changed"), std::string::npos);
    EXPECT_EQ(Content(), before);

    DeleteEvents("EventType='Water'");
    outcome = Run({"check", "--repair"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("Restored events: 1\n"), std::string::npos);
    EXPECT_NE(outcome.Out.find("differs in details"), std::string::npos);
    EXPECT_NE(outcome.Error.find("findings: 1; they cannot be repaired"), std::string::npos);
    Left = {"journal.db", "journal.db.before-repair-" + PlantEventCurrentDate()};
    Sound = false;
}

TEST_F(RepairTest, ARecordOfAPlantThatDoesNotExistIsLeft)
{
    DeleteEvents("EventType='Water' OR EventType='Feed'");
    RunSQL("UPDATE PlantCareEntries SET PlantUUID='gone' WHERE ID=1;");
    const ProgramResult outcome = Run({"check", "--repair"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("Restored the event of care entry 2 of Basil\nRestored events: 1\n"), std::string::npos);
    Left = {"journal.db", "journal.db.before-repair-" + PlantEventCurrentDate()};
    Sound = false;
}

TEST_F(RepairTest, UndoRollsARepairBack)
{
    DeleteEvents("EventType<>'Note'");
    const std::string before = Content();
    Repaired();
    const ProgramResult outcome = Run({"undo", "--yes"});
    EXPECT_EQ(outcome.Status, 0) << outcome.Error;
    EXPECT_EQ(Content(), before);
    Sound = false;
}

TEST_F(RepairTest, JSONListsTheFindingsThatAreLeft)
{
    DeleteEvents("EventType='Feed'");
    const ProgramResult outcome = Run({"check", "--repair", "--json"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(JSON::parse(outcome.Out), JSON::array());
    Left = {"journal.db", "journal.db.before-repair-" + PlantEventCurrentDate()};
}

TEST_F(RepairTest, CheckAloneRepairsNothing)
{
    DeleteEvents("EventType='Feed'");
    const std::string before = FileBytes(Journal);
    const ProgramResult outcome = Run({"check"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Error.find("findings: 1; nothing was changed"), std::string::npos);
    EXPECT_TRUE(FileBytes(Journal) == before);
    Sound = false;
}

} // namespace

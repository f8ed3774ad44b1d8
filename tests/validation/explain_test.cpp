// The sentence for each cause of a failure that is not in the record.

#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/connection_interruption.h"
#include "support/journal_files.h"
#include "support/journal_test.h"
#include "support/privileges.h"
#include "support/sample_records.h"
#include "validation/stored_records.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

const std::string Locked = "locked: another process or connection was using the journal for too long; try again later";
const std::string RolledBack = "rolled back; the cause was not recorded";

// Up to the first colon.
std::string Beginning(const std::string& sentence)
{
    return sentence.substr(0, sentence.find(':'));
}

class ExplainTest : public JournalTest
{
  protected:
    ExplainTest() : Sample(StoreSampleRecords(Repository))
    {
        sqlite3_busy_timeout(Database.NativeHandle(), 0); // a test that waits takes long and shows nothing more
    }

    // The sentence after each record was not stored.
    std::map<std::string, int> Sentences(const std::vector<StoredRecord>& records)
    {
        std::map<std::string, int> sentences;
        for (const StoredRecord& record : records)
            ++sentences[SentenceOf(record)];
        return sentences;
    }
    std::string SentenceOf(const StoredRecord& record)
    {
        EXPECT_FALSE(record.Store(Repository)) << record;
        return record.Explain(Database);
    }
    // Expects one sentence for the records that are stored in one statement, and one for the others.
    void ExpectSentences(const std::string& ofOne, const std::string& ofTransaction)
    {
        for (const StoredRecord& record : AcceptedRecords())
            EXPECT_EQ(SentenceOf(record), record.UsesTransaction ? ofTransaction : ofOne) << record;
    }

    SampleRecords Sample;
};

TEST_F(ExplainTest, AClosedDatabaseIsClosed)
{
    Database.Close();
    ExpectSentences("closed: the database is not open; open the journal first",
                    "closed: the database is not open; open the journal first");
    for (const StoredRecord& record : RecordsRefusedByThemselves())
        EXPECT_EQ(Beginning(SentenceOf(record)), "refused") << record;
}

TEST_F(ExplainTest, TheLockOfAWriterIsALock)
{
    for (const char* begin : {"BEGIN IMMEDIATE;", "BEGIN EXCLUSIVE;"})
    {
        const PlainConnection other(Path);
        other.RunSQL(begin);
        ExpectSentences(Locked, Locked);
    }
}

TEST_F(ExplainTest, TheLockOfAnotherProcessIsALock)
{
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            const PlainConnection other(Path);
            other.RunSQL("BEGIN IMMEDIATE;");
            parent.Send("locked");
            parent.Wait();
        });
    ASSERT_EQ(child.ReadLine(), "locked");
    ExpectSentences(Locked, Locked);
    child.Continue();
    EXPECT_EQ(child.End(), "done");
}

// A record that the journal refuses was not compared with it.
TEST_F(ExplainTest, ALockIsNamedBeforeARefusalByTheJournal)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_EQ(Sentences(RecordsRefusedByTheJournal()),
              (std::map<std::string, int>{{Locked, static_cast<int>(RecordsRefusedByTheJournal().size())}}));
}

TEST_F(ExplainTest, ARefusalWithoutTheFileIsNamedUnderALock)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    for (const StoredRecord& record : RecordsRefusedByThemselves())
        EXPECT_EQ(Beginning(SentenceOf(record)), "refused") << record;
}

// The strain of a plant is stored before its mother is checked.
TEST_F(ExplainTest, ALockIsNamedForAPlantWithAStrainThatIsItsOwnMother)
{
    Plant plant = Sample.Clone;
    plant.MotherPlantUUID = plant.UUID;
    plant.Strain = "a new strain";
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN EXCLUSIVE;");
        EXPECT_FALSE(Repository.UpdatePlant(plant));
        EXPECT_EQ(Explain(Database, plant), Locked);
    }
    EXPECT_FALSE(Repository.UpdatePlant(plant));
    EXPECT_EQ(Explain(Database, plant), "refused: MotherPlantUUID: a plant cannot be its own mother");
}

// SQLite still has the code of the earlier call.
TEST_F(ExplainTest, AnEarlierCodeIsNotTheCauseOfARefusal)
{
    for (const StoredRecord& record : RecordsRefusedByThemselves())
    {
        Plant used = Sample.Clone;
        used.ID = 0;
        EXPECT_FALSE(Repository.CreatePlant(used));
        EXPECT_EQ(Beginning(SentenceOf(record)), "refused") << record;
        EXPECT_EQ(sqlite3_extended_errcode(Database.NativeHandle()), SQLITE_CONSTRAINT_UNIQUE);
    }
}

TEST_F(ExplainTest, AReaderAtTheCommitIsNotRecorded)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN; SELECT * FROM Plants;");
    ExpectSentences(Locked, RolledBack);
}

TEST_F(ExplainTest, AFullDiskIsRecordedWithoutATransaction)
{
    RunSQL("PRAGMA max_page_count=" + QueryRows("PRAGMA page_count;")[0][0] + ";");
    ExpectSentences("disk full: the journal's disk has no room left; free some space, then try again", RolledBack);
}

// A full disk rolls back by itself, so that the code cannot be that of a refusal.
TEST_F(ExplainTest, ARefusalIsNotTheCauseOfARollbackBySQLite)
{
    RunSQL("PRAGMA max_page_count=" + QueryRows("PRAGMA page_count;")[0][0] + ";");
    PlantCareEntry entry = Sample.Care;
    entry.EC = std::nan("");
    entry.Notes.assign(100'000, 'x'); // the event is stored first
    EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(Explain(Database, entry), RolledBack);
}

constexpr auto ReadOnly = "read-only: the journal file or its directory cannot be written; change its permissions, or "
                          "copy the journal to another directory";

TEST_F(ExplainTest, AReadOnlyFileIsReadOnly)
{
    Database.Close();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0777});
    std::filesystem::permissions(Path, std::filesystem::perms{0444});
    const WithoutPrivileges user;
    OpenJournal();
    ExpectSentences(ReadOnly, ReadOnly);
}

TEST_F(ExplainTest, AReadOnlyDirectoryIsNotRecordedAfterARollback)
{
    Database.Close();
    std::filesystem::permissions(Path, std::filesystem::perms{0666});
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0555});
    {
        const WithoutPrivileges user;
        OpenJournal();
        ExpectSentences(ReadOnly, RolledBack);
    }
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0777});
}

TEST_F(ExplainTest, ADeletedFileWasMoved)
{
    std::filesystem::remove(Path);
    ExpectSentences(
        "moved: the journal file was moved or deleted while it was open; close the journal and open it again",
        RolledBack);
}

TEST_F(ExplainTest, ADamagedFileIsDamaged)
{
    Database.Close();
    OverwritePage(Path, "PlantEvents");
    OpenJournal();
    const std::string damaged = "damaged: the journal file is damaged; restore a backup";
    EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    EXPECT_EQ(Explain(Database, Sample.Event), damaged);
    PlantCareEntry entry = Sample.Care;
    entry.ID = 0;
    EXPECT_FALSE(Store(Repository, entry));
    EXPECT_EQ(Explain(Database, entry), RolledBack);
    EXPECT_FALSE(Store(Repository, Sample.Care));
    EXPECT_EQ(Explain(Database, Sample.Care), RolledBack +
                                                  "; the journal cannot be read at present: reading the timeline "
                                                  "events: database disk image is malformed");
}

TEST_F(ExplainTest, AFileThatWasOverwrittenIsDamaged)
{
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(100, 'x');
    }
    EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    EXPECT_EQ(sqlite3_errcode(Database.NativeHandle()), SQLITE_NOTADB);
    EXPECT_EQ(Explain(Database, Sample.Event), "damaged: the journal file is damaged; restore a backup");
}

// An operation of one statement can run in it.
TEST_F(ExplainTest, AnotherErrorInAnOpenTransactionIsItsMessage)
{
    RunSQL("BEGIN; ALTER TABLE PlantEvents RENAME TO Moved;");
    EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    EXPECT_EQ(Explain(Database, Sample.Event), "failed: no such table: PlantEvents");
    RunSQL("ROLLBACK;");
}

TEST_F(ExplainTest, AnOpenTransactionIsNamed)
{
    RunSQL("BEGIN;");
    const std::string open = "open transaction: the operation needs a transaction of its own; commit or roll back the "
                             "one that is open on this connection";
    for (const StoredRecord& record : AcceptedRecords())
    {
        if (record.UsesTransaction)
        {
            EXPECT_EQ(SentenceOf(record), open) << record;
        }
    }
    for (const StoredRecord& record : RecordsRefusedByTheJournal())
        EXPECT_EQ(Beginning(SentenceOf(record)),
                  record.UsesTransaction && record.Name != "AnUnknownStrain" ? "open transaction" : "refused")
            << record;
    RunSQL("ROLLBACK;");
}

TEST_F(ExplainTest, AnotherReasonOfSQLiteIsItsMessage)
{
    RunSQL("CREATE TEMP TRIGGER no_events BEFORE INSERT ON PlantEvents BEGIN SELECT RAISE(ABORT,'no more'); END;");
    EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    EXPECT_EQ(Explain(Database, Sample.Event), "failed: no more");
    EXPECT_EQ(SentenceOf(AcceptedRecords().at(7)), RolledBack);
    RunSQL("DROP TRIGGER no_events;");

    {
        const ConnectionInterruption interruption(Database.NativeHandle(), 1);
        EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    }
    EXPECT_EQ(Explain(Database, Sample.Event), "failed: interrupted");

    RunSQL("ALTER TABLE PlantEvents RENAME TO Moved;");
    EXPECT_FALSE(Repository.CreatePlantEvent(Sample.Event));
    EXPECT_EQ(Explain(Database, Sample.Event), "failed: no such table: PlantEvents");
}

TEST_F(ExplainTest, EvidenceThatAnotherCallReplacedIsNotRecorded)
{
    Plant used = Sample.Clone;
    used.ID = 0;
    EXPECT_FALSE(Repository.CreatePlant(used));
    RunSQL("DELETE FROM Plants;");
    EXPECT_EQ(Beginning(Explain(Database, used)), "refused"); // its mother
    used.MotherPlantUUID.clear();
    EXPECT_EQ(Explain(Database, used), "failed: the cause was not recorded");
}

// An update of a care entry without an event writes the row ID of the new event back, even if it then fails.
TEST_F(ExplainTest, AnEventThatWasRolledBackIsNotTheCause)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN; SELECT * FROM Plants;");
    PlantCareEntry entry = Sample.Unlinked;
    EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_NE(entry.TimelineEventID, 0);
    EXPECT_EQ(Explain(Database, entry), RolledBack);
    HarvestRecord record = Sample.Harvest;
    record.TimelineEventID = 0;
    EXPECT_FALSE(Repository.SaveHarvestRecord(Sample.Mother, record));
    EXPECT_EQ(Explain(Database, record), RolledBack);
}

TEST_F(ExplainTest, ARecordThatWasChangedByTheFailureHasItsOwnCause)
{
    PlantCareEntry entry = Sample.Unlinked;
    entry.PH = std::nan("");
    EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry));
    EXPECT_EQ(Explain(Database, entry), "refused: PH: the value is not a number");
    HarvestRecord second;
    second.PlantUUID = Sample.Mother.UUID;
    EXPECT_FALSE(Repository.SaveHarvestRecord(Sample.Mother, second));
    EXPECT_EQ(Explain(Database, second), "refused: PlantUUID: the plant already has a harvest record");
}

TEST_F(ExplainTest, AnExplanationWithoutMemoryThrowsOrIsRight)
{
    PlantCareEntry entry = Sample.Care;
    entry.TimelineEventID = 99;
    bool happened = true;
    int thrown = 0;
    for (int number = 1; happened; ++number)
    {
        EXPECT_FALSE(Store(Repository, entry));
        std::string sentence = "thrown";
        {
            const AllocationFailure failure(Allocator::SQLite, number);
            try
            {
                sentence = Explain(Database, entry);
            }
            catch (const std::bad_alloc&)
            {
                ++thrown;
            }
            happened = failure.Happened();
        }
        EXPECT_TRUE(sentence == "thrown" || sentence == "refused: TimelineEventID: no timeline event has this row ID")
            << sentence;
        ExpectNothingOpen();
    }
    EXPECT_GT(thrown, 3);
}

// The operation cannot reserve memory, and makes no call that leaves a code.
TEST_F(ExplainTest, WithoutMemoryToBeginAnEarlierCodeIsExplained)
{
    const auto explanation = [&]
    {
        PlantCareEntry entry = Sample.Care;
        {
            const AllocationFailure failure(Allocator::SQLite, 1);
            EXPECT_FALSE(Repository.UpdatePlantCareEntry(entry));
            EXPECT_TRUE(failure.Happened());
        }
        return Explain(Database, entry);
    };
    EXPECT_TRUE(Repository.UpdatePlant(Sample.Clone));
    EXPECT_EQ(explanation(), RolledBack);
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN IMMEDIATE;");
        EXPECT_FALSE(Repository.UpdatePlant(Sample.Clone));
    }
    EXPECT_EQ(explanation(), Locked);
}

TEST_F(ExplainTest, AnExplanationChangesNothing)
{
    const std::string content = Content();
    for (const StoredRecord& record : RecordsRefusedByTheJournal())
        EXPECT_FALSE(SentenceOf(record).empty());
    EXPECT_EQ(Content(), content);
    ExpectNothingOpen();
}

} // namespace

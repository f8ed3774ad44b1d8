// The migration of a journal, with a power loss at every write, every sync and every statement.

#include "support/power_loss.h"
#include "testing/old_files.h"

#include <string>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

class MigrationPowerLossTest : public PowerLossTest
{
  protected:
    // Writes a file with an earlier schema, and runs more SQL on it.
    void Write(const Durability& durability, const OldFile& file, const std::string& more = {})
    {
        Begin(durability);
        PlainConnection(JournalName).RunSQL("BEGIN;" + file.SQL + more + "COMMIT;");
        Disk.SyncAll();
    }

    // Every schema, and a missing file.
    static std::vector<OldFile> Files()
    {
        std::vector<OldFile> files = OldFiles();
        files.push_back({"new", ""});
        return files;
    }
};

TEST_F(MigrationPowerLossTest, TheNextOpenFinishesAnInterruptedMigration)
{
    for (const OldFile& file : Files())
        for (const Durability& durability : {UnlinksPersist, UnlinksCanBeUndone})
        {
            SCOPED_TRACE(file.Name + ", " + durability.Name);
            Write(durability, file);
            const SimulatedDisk written = Disk;
            const std::string whole = OpenedContent();
            bool returned = false;
            for (int call = 1; !returned && !HasFailure(); ++call)
            {
                SCOPED_TRACE("call " + std::to_string(call));
                Disk = written;
                const Interruption interruption = InterruptOpening(call);
                returned = interruption.AfterReturn;
                EXPECT_EQ(interruption.Succeeded, returned);
                Reboot(ShortOrLong(1, 10), [&] { EXPECT_EQ(OpenedContent(), whole); });
            }
        }
}

// While in scope, cuts the power at the beginning of the `number`-th statement of a connection that is opened.
class PowerCutAtStatement
{
  public:
    PowerCutAtStatement(SimulatedDisk& disk, int number) : Disk(disk), Remaining(number)
    {
        current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnConnection));
    }
    ~PowerCutAtStatement() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(OnConnection)); }
    PowerCutAtStatement(const PowerCutAtStatement&) = delete;
    PowerCutAtStatement& operator=(const PowerCutAtStatement&) = delete;

  private:
    static int OnConnection(sqlite3* db, const char**, const sqlite3_api_routines*)
    {
        return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, OnStatement, nullptr);
    }
    static int OnStatement(unsigned, void*, void*, void*)
    {
        if (--current->Remaining == 0)
            current->Disk.CutPower();
        return 0;
    }

    static inline PowerCutAtStatement* current = nullptr;
    SimulatedDisk& Disk;
    int Remaining;
};

TEST_F(MigrationPowerLossTest, AMigrationContinuesAfterAnyStatement)
{
    for (const OldFile& file : Files())
    {
        SCOPED_TRACE(file.Name);
        Write(UnlinksPersist, file);
        const SimulatedDisk written = Disk;
        const std::string whole = OpenedContent();
        bool returned = false;
        for (int statement = 1; !returned && !HasFailure(); ++statement)
        {
            SCOPED_TRACE("statement " + std::to_string(statement));
            Disk = written;
            {
                const PowerCutAtStatement cut(Disk, statement);
                returned = InterruptOpening(0).AfterReturn;
            }
            Reboot(ShortOrLong(1, 10), [&] { EXPECT_EQ(OpenedContent(), whole); });
        }
    }
}

// The table has more rows than SQLite keeps in memory until the end of the transaction.
TEST_F(MigrationPowerLossTest, ALargeEventTableIsRebuiltWholeOrNotAtAll)
{
    constexpr auto many =
        "WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i+1 FROM n WHERE i<6100) INSERT INTO PlantEvents "
        "SELECT i,'0f0f0f0f-0000-4000-8000-000000000005','2019-06-'||(10+i%20),CASE i%4 WHEN 0 THEN 'Water' ELSE 'Note' "
        "END,CASE i%4 WHEN 0 THEN 'Watered' WHEN 1 THEN 'Topped' ELSE i||printf('%300s','') END FROM n;"
        "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate) "
        "SELECT ID,PlantUUID,EventDate FROM PlantEvents WHERE ID>=100 AND ID%8=0;";
    Write(UnlinksPersist, OldFiles().at(1), many); // the earliest schema that has every table
    const SimulatedDisk written = Disk;
    int calls = 0;
    {
        PlantDatabase database;
        Disk.CutPowerAt(0);
        ASSERT_TRUE(database.Open(JournalName));
        calls = Disk.Calls();
        int spilled = 0;
        int highest = 0;
        sqlite3_db_status(database.NativeHandle(), SQLITE_DBSTATUS_CACHE_SPILL, &spilled, &highest, 0);
        EXPECT_GT(spilled, 100);
    }
    const std::string whole = OpenedContent();
    const TimeLimit limit;
    for (int point = 0; (IsLongForm() ? !limit.IsOver() : point < 60) && !HasFailure(); ++point)
    {
        const int call = 1 + static_cast<int>(Random() % static_cast<unsigned>(calls));
        SCOPED_TRACE("call " + std::to_string(call));
        Disk = written;
        EXPECT_FALSE(InterruptOpening(call).Succeeded);
        Reboot(1, [&] { EXPECT_EQ(OpenedContent(), whole); });
    }
}

// This test is the last, since the figure counts all tests of the program.
TEST(PowerLossFiguresTest, ThePowerIsLostOftenEnough)
{
    EXPECT_GE(AddToFigure("power losses", 0), 3'000);
}

} // namespace

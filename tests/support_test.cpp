// The test support: a helper that never fails would hide errors.

#include "support/allocation_failure.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include <sqlite3.h>

using namespace support;

namespace
{

TEST(ScratchDirectoryTest, TheDirectoryExistsOnlyInItsScope)
{
    std::string file;
    {
        const ScratchDirectory scratch;
        file = scratch.File("journal.db");
        EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(file).parent_path()));
        PlainConnection(file).RunSQL("CREATE TABLE T(X);");
        EXPECT_EQ(FileBytes(file).substr(0, 15), "SQLite format 3");
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(file).parent_path()));
    EXPECT_THROW(FileBytes(file), std::runtime_error);
}

TEST(PlainConnectionTest, AConnectionReadsWhatItWroteAndReportsFailures)
{
    const PlainConnection connection(":memory:");
    connection.RunSQL("CREATE TABLE T(X,Y); INSERT INTO T VALUES(1,NULL),('a',0.5);");
    EXPECT_EQ(connection.QueryRows("SELECT X,Y FROM T ORDER BY rowid;"), (Rows{{"1", "NULL"}, {"a", "0.5"}}));
    EXPECT_EQ(connection.Value("SELECT COUNT(*) FROM T;"), "2");
    EXPECT_THROW(connection.RunSQL("INSERT INTO U VALUES(1);"), std::runtime_error);
    EXPECT_THROW(connection.QueryRows("SELECT abs(-9223372036854775808);"), std::runtime_error);
    EXPECT_THROW(PlainConnection("/nowhere/at/all.db"), std::runtime_error);
}

TEST(PlainConnectionTest, ContentDiffersByTypeAndByTheLastDigit)
{
    const auto contentOf = [](const std::string& value)
    {
        const PlainConnection connection(":memory:");
        connection.RunSQL("CREATE TABLE T(X); INSERT INTO T VALUES(" + value + ");");
        return Content(connection.NativeHandle());
    };
    EXPECT_EQ(contentOf("1"), contentOf("1"));
    EXPECT_NE(contentOf("1"), contentOf("'1'"));
    EXPECT_NE(contentOf("NULL"), contentOf("''"));
    EXPECT_NE(contentOf("0.1"), contentOf("0.10000000000000002"));
}

TEST(PlainConnectionTest, DamageReportsBrokenPagesAndBrokenLinks)
{
    const PlainConnection connection(":memory:");
    connection.RunSQL("CREATE TABLE A(X PRIMARY KEY); CREATE TABLE B(Y REFERENCES A(X)); INSERT INTO A VALUES('a');");
    connection.RunSQL("INSERT INTO B VALUES('a');");
    EXPECT_EQ(Damage(connection.NativeHandle()), "ok");
    connection.RunSQL("INSERT INTO B VALUES('b');");
    EXPECT_EQ(Damage(connection.NativeHandle()), "ok\nrow 2 of B has lost its A");
    connection.RunSQL("DELETE FROM B; CREATE TABLE C(Z CHECK(Z>0)); PRAGMA ignore_check_constraints=ON; "
                      "INSERT INTO C VALUES(0); PRAGMA ignore_check_constraints=OFF;");
    EXPECT_EQ(Damage(connection.NativeHandle()), "CHECK constraint failed in C");
}

TEST(RecordsTest, RecordsDifferIfAnyFieldDiffers)
{
    PlantEvent event;
    PlantEvent other;
    EXPECT_EQ(event, other);
    other.Type = PlantEventType::Flip;
    EXPECT_FALSE(event == other);
    PlantCareEntry care;
    PlantCareEntry otherCare;
    otherCare.EC = 5e-324;
    EXPECT_FALSE(care == otherCare);
}

class SupportTest : public JournalTest
{
};

TEST_F(SupportTest, ARecorderHasTheCallsOfTheLibraryInTheirOrder)
{
    const CallRecorder recorder;
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
    std::vector<SQLiteCall> calls;
    for (const RecordedCall& recorded : recorder.Calls())
    {
        calls.push_back(recorded.Call);
        EXPECT_EQ(recorded.SQL, "DELETE FROM PlantEvents WHERE ID=?;");
    }
    EXPECT_EQ(calls, (std::vector{SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step, SQLiteCall::Finalize}));
    EXPECT_EQ(recorder.Statements(), (Statements{"DELETE FROM PlantEvents WHERE ID=?;"}));
    EXPECT_EQ(recorder.CallCount(SQLiteCall::Bind), 1);
}

TEST_F(SupportTest, ACallFailureFailsOnlyTheChosenCall)
{
    const CallFailure failure(SQLiteCall::Step, 2, SQLITE_FULL, "DELETE FROM PlantEvents");
    EXPECT_TRUE(Repository.DeletePlantJournalEntry(7));
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
    EXPECT_FALSE(failure.Happened());
    EXPECT_FALSE(Repository.DeletePlantEvent(7));
    EXPECT_TRUE(failure.Happened());
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
}

TEST_F(SupportTest, AnAllocationFailureFailsOnlyTheChosenOne)
{
    const auto fails = []
    {
        try
        {
            operator delete(operator new(1));
            return false;
        }
        catch (const std::bad_alloc&)
        {
            return true;
        }
    };
    std::array<bool, 3> failed{};
    {
        const AllocationFailure failure(Allocator::New, 2);
        for (bool& each : failed)
            each = fails();
    }
    EXPECT_EQ(failed, (std::array{false, true, false}));
    {
        const AllocationFailure failure(Allocator::SQLite, 1);
        EXPECT_EQ(sqlite3_malloc(100'000), nullptr);
        EXPECT_TRUE(failure.Happened());
    }
    const std::unique_ptr<void, decltype(&sqlite3_free)> memory(sqlite3_malloc(100'000), sqlite3_free);
    EXPECT_NE(memory, nullptr);
}

// A file on the default disk of a connection.
class DiskFile
{
  public:
    explicit DiskFile(std::string path)
        : Memory(static_cast<std::size_t>(sqlite3_vfs_find(nullptr)->szOsFile)), Path(std::move(path))
    {
        sqlite3_vfs* disk = sqlite3_vfs_find(nullptr);
        Result = disk->xOpen(disk, Path.c_str(), Handle(),
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MAIN_DB, nullptr);
    }
    ~DiskFile()
    {
        if (Methods() != nullptr)
            Methods()->xClose(Handle());
    }
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    sqlite3_file* Handle() { return reinterpret_cast<sqlite3_file*>(Memory.data()); }
    const sqlite3_io_methods* Methods() { return Handle()->pMethods; }
    int Opened() const { return Result; }
    int Write(const std::string& bytes)
    {
        return Methods()->xWrite(Handle(), bytes.data(), static_cast<int>(bytes.size()), 0);
    }

  private:
    std::vector<char> Memory;
    std::string Path; // the disk may hold on to it
    int Result = SQLITE_OK;
};

class DiskFailureTest : public testing::Test
{
  protected:
    ScratchDirectory Scratch;
    FailingDisk Disk;
};

TEST_F(DiskFailureTest, OnlyTheChosenCallsFail)
{
    DiskFile file(Scratch.File("file"));
    ASSERT_EQ(file.Opened(), SQLITE_OK);
    const auto* methods = file.Methods();
    sqlite3_vfs* disk = sqlite3_vfs_find(nullptr);
    const std::string other = Scratch.File("other");
    char byte = 0;
    int result = 0;
    sqlite3_int64 size = 0;
    const struct
    {
        DiskCall Call;
        int IOError;
        std::function<int()> Make;
    } calls[] = {
        {DiskCall::Open, SQLITE_CANTOPEN, [&] { return DiskFile(other).Opened(); }},
        {DiskCall::Write, SQLITE_IOERR_WRITE, [&] { return file.Write("a"); }},
        {DiskCall::Read, SQLITE_IOERR_READ, [&] { return methods->xRead(file.Handle(), &byte, 1, 0); }},
        {DiskCall::Truncate, SQLITE_IOERR_TRUNCATE, [&] { return methods->xTruncate(file.Handle(), 1); }},
        {DiskCall::Sync, SQLITE_IOERR_FSYNC, [&] { return methods->xSync(file.Handle(), SQLITE_SYNC_NORMAL); }},
        {DiskCall::Size, SQLITE_IOERR_FSTAT, [&] { return methods->xFileSize(file.Handle(), &size); }},
        {DiskCall::Lock, SQLITE_IOERR_LOCK, [&] { return methods->xLock(file.Handle(), SQLITE_LOCK_SHARED); }},
        {DiskCall::Lock, SQLITE_IOERR_CHECKRESERVEDLOCK,
         [&] { return methods->xCheckReservedLock(file.Handle(), &result); }},
        {DiskCall::Delete, SQLITE_IOERR_DELETE,
         [&]
         {
             std::ofstream(other).close();
             return disk->xDelete(disk, other.c_str(), 0);
         }},
        {DiskCall::Access, SQLITE_IOERR_ACCESS,
         [&] { return disk->xAccess(disk, other.c_str(), SQLITE_ACCESS_EXISTS, &result); }},
    };
    for (const auto& call : calls)
        for (const auto& failing : calls)
            for (const DiskError error : {DiskError::IO, DiskError::Full})
                for (const bool lasting : {false, true})
                {
                    const DiskFault fault{failing.Call, error, lasting, 2};
                    SCOPED_TRACE(testing::Message() << fault << ", " << call.Call);
                    const DiskFailure failure(fault);
                    const bool meant = failing.Call == call.Call;
                    const int expected = !meant ? SQLITE_OK : error == DiskError::Full ? SQLITE_FULL : call.IOError;
                    EXPECT_EQ(call.Make(), SQLITE_OK);
                    EXPECT_FALSE(failure.Happened());
                    EXPECT_EQ(call.Make(), expected);
                    EXPECT_EQ(failure.Happened(), meant);
                    EXPECT_EQ(call.Make(), lasting ? expected : SQLITE_OK);
                }
}

TEST_F(DiskFailureTest, AFullDiskKeepsHalfOfAWrite)
{
    const std::string path = Scratch.File("file");
    DiskFile file(path);
    ASSERT_EQ(file.Write("before"), SQLITE_OK);
    {
        const DiskFailure failure({DiskCall::Write, DiskError::IO, false, 1});
        EXPECT_EQ(file.Write("AFTER!"), SQLITE_IOERR_WRITE);
    }
    EXPECT_EQ(FileBytes(path), "before");
    const DiskFailure failure({DiskCall::Write, DiskError::Full, false, 1});
    EXPECT_EQ(file.Write("AFTER!"), SQLITE_FULL);
    EXPECT_EQ(FileBytes(path), "AFTore");
}

TEST(FailingDiskTest, AJournalIsOpenedOnTheFailingDiskInItsScope)
{
    const ScratchDirectory scratch;
    PlantDatabase database;
    const DiskFailure failure({DiskCall::Open, DiskError::IO, true, 1});
    {
        const FailingDisk disk;
        EXPECT_FALSE(database.Open(scratch.File("journal.db")));
        EXPECT_EQ(database.LastError(), "unable to open database file");
    }
    EXPECT_TRUE(database.Open(scratch.File("journal.db")));
}

} // namespace

// Finds the cause of a failed operation in the ways that docs/errors.md shows: the code of the connection and the log
// of SQLite.

#include "pages/errors_page.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/page.h"
#include "support/repository_operations.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include <sqlite3.h>
#include <unistd.h>

using namespace pages;
using namespace support;

namespace
{

TEST_F(ErrorsPageTest, ThePageShowsTheCodeOfTheseTests)
{
    const std::string log = PLANTJOURNAL_SOURCE_DIR "/tests/pages/errors_page.cpp";
    EXPECT_EQ(CodeBlocks(ErrorsPage, "cpp"), (std::vector{Region(__FILE__, "reason"), Region(__FILE__, "forget"),
                                                          Region(log, "log"), Region(__FILE__, "configure")}));
}

TEST_F(ErrorsPageTest, AFailedStatementKeepsItsReason)
{
    Plant plant = NewPlant("Basil");
    PlantDatabase& journal = Database;
    PlantRepository& repository = Repository;
    std::ostringstream printed;
    std::streambuf* const usual = std::cerr.rdbuf(printed.rdbuf());
    // [reason]
    if (!repository.CreatePlant(plant))
    {
        sqlite3* db = journal.NativeHandle();
        std::cerr << sqlite3_extended_errcode(db) << ": " << sqlite3_errmsg(db) << '\n';
    }
    // [end]
    std::cerr.rdbuf(usual);
    EXPECT_EQ(printed.str(), "2067: UNIQUE constraint failed: Plants.UUID\n");
    EXPECT_NE(PageText(ErrorsPage).find("\n" + printed.str()), std::string::npos);

    EXPECT_TRUE(Repository.DeletePlant(plant.UUID)); // runs a statement
    EXPECT_EQ(Message(), "not an error");
}

TEST_F(ErrorsPageTest, AnEmptyStatementClearsTheReason)
{
    Plant plant = NewPlant("Basil");
    EXPECT_FALSE(Repository.CreatePlant(plant));
    EXPECT_FALSE(Repository.DeletePlantEvent(0)); // refused before it uses the file
    EXPECT_EQ(Code(), SQLITE_CONSTRAINT_UNIQUE);
    PlantDatabase& journal = Database;
    // [forget]
    sqlite3_exec(journal.NativeHandle(), "", nullptr, nullptr, nullptr);
    // [end]
    EXPECT_EQ(Code(), SQLITE_OK);
}

class SuccessCodeTest : public ErrorsPageTest, public testing::WithParamInterface<Operation>
{
};

TEST_P(SuccessCodeTest, ASuccessfulOperationLeavesTheCodeOK)
{
    SampleRecords garden = StoreSampleRecords(Repository);
    EXPECT_TRUE(GetParam().Call(Repository, garden));
    EXPECT_EQ(Code(), SQLITE_OK);
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, SuccessCodeTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

TEST_F(ErrorsPageTest, AListThatStopsEarlyReturnsTrueAndKeepsTheReason)
{
    NewPlant("Basil");
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    std::vector<Plant> plants;
    EXPECT_TRUE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());
    EXPECT_EQ(Code(), SQLITE_BUSY);
}

// ---- Causes that can affect any operation

class CommonErrorsTest : public ErrorsPageTest
{
  protected:
    CommonErrorsTest()
    {
        Event.PlantUUID = Care.PlantUUID = NewPlant("Basil").UUID;
        Care.Notes = Event.Details = std::string(100'000, 'x'); // needs more pages than the file has
    }

    // Returns the row of the page for a cause.
    static std::vector<std::string> Shown(const std::string& cause)
    {
        for (auto row : TableRows(ErrorsPage, "## Causes that can affect any operation"))
            if (row[0] == cause)
            {
                std::transform(row.begin(), row.end(), row.begin(), Plain);
                return row;
            }
        ADD_FAILURE() << "the page does not list the cause: " << cause;
        return std::vector<std::string>(4);
    }

    // Returns the code after a failed operation of one statement, the code after one with a transaction, and the first
    // code in the log.
    std::vector<std::string> Left(PlantRepository& repository, sqlite3* db)
    {
        const std::map<int, std::string> names = {
            {SQLITE_OK, "SQLITE_OK"},          {SQLITE_ERROR, "SQLITE_ERROR"},       {SQLITE_BUSY, "SQLITE_BUSY"},
            {SQLITE_FULL, "SQLITE_FULL"},      {SQLITE_READONLY, "SQLITE_READONLY"}, {SQLITE_IOERR, "SQLITE_IOERR"},
            {SQLITE_CORRUPT, "SQLITE_CORRUPT"}};
        Log.str("");
        EXPECT_FALSE(repository.CreatePlantEvent(Event));
        const int ofOne = sqlite3_errcode(db);
        EXPECT_FALSE(repository.CreatePlantCareEntry(Care));
        const int ofTransaction = sqlite3_errcode(db);
        // The cause is logged before its consequences.
        const std::string log = Log.str();
        const std::string first = log.empty() ? "" : names.at(std::stoi(log) & 0xFF);
        return {names.at(ofOne & 0xFF), names.at(ofTransaction & 0xFF), first};
    }

    void Expect(const std::string& cause)
    {
        const std::vector<std::string> shown = Shown(cause);
        const std::vector<std::string> left = Left(Repository, Database.NativeHandle());
        EXPECT_EQ(left[0], shown[1]);
        EXPECT_TRUE(shown[2] == left[1] || shown[2] == "SQLITE_ERROR or SQLITE_OK") << left[1];
        EXPECT_EQ(left[2], shown[3]);
    }

    PlantEvent Event;
    PlantCareEntry Care;
};

TEST_F(CommonErrorsTest, TheLockOfAWriterGivesTheCodesOnThePage)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE;");
    Expect("Another process writes for more than 2.5 seconds");
}

TEST_F(CommonErrorsTest, TheLockOfAReaderGivesTheCodesOnThePage)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN; SELECT * FROM Plants;");
    Expect("Another process reads for more than 2.5 seconds");
}

TEST_F(CommonErrorsTest, AReadOnlyFileGivesTheCodesOnThePage)
{
    Database.Close();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0755});
    std::filesystem::permissions(Path, std::filesystem::perms{0444});
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            constexpr uid_t nobody = 65534; // root ignores permissions
            if (geteuid() == 0 && setuid(nobody) != 0)
                throw std::runtime_error("cannot drop privileges");
            OpenJournal();
            for (const std::string& name : Left(Repository, Database.NativeHandle()))
                parent.Send(name);
        });
    std::vector<std::string> row = child.ReadLines();
    EXPECT_EQ(child.End(), "done");
    row.insert(row.begin(), "The file is read-only");
    EXPECT_EQ(row, Shown(row.front()));
}

TEST_F(CommonErrorsTest, AFullDiskGivesTheCodesOnThePage)
{
    RunSQL("PRAGMA max_page_count=" + QueryRows("PRAGMA page_count;")[0][0] + ";");
    Expect("The disk is full");
    EXPECT_EQ(Message(), "cannot rollback - no transaction is active");
}

TEST_F(CommonErrorsTest, AFailingDiskGivesTheCodesOnThePage)
{
    const FailingDisk disk;
    Database.Close();
    OpenJournal();
    {
        const DiskFailure failure({DiskCall::Write, DiskError::IO, true, 1});
        Expect("The disk fails");
    }
    Database.Close();
}

TEST_F(CommonErrorsTest, ADamagedFileGivesTheCodesOnThePage)
{
    const int page = std::stoi(QueryRows("SELECT rootpage FROM sqlite_master WHERE name='PlantEvents';")[0][0]);
    const int size = std::stoi(QueryRows("PRAGMA page_size;")[0][0]);
    Database.Close();
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(page - 1) * size);
        file << std::string(static_cast<std::size_t>(size), '\xFF');
    }
    OpenJournal();
    Expect("The file is damaged");
}

TEST_F(CommonErrorsTest, ThePageListsNoOtherCauses)
{
    EXPECT_EQ(TableRows(ErrorsPage, "## Causes that can affect any operation").size(), 6);
}

TEST_F(CommonErrorsTest, AnOpenTransactionMakesOperationsThatNeedOneFail)
{
    RunSQL("BEGIN;");
    EXPECT_TRUE(Repository.CreatePlantEvent(Event));
    EXPECT_FALSE(Repository.CreatePlantCareEntry(Care));
    EXPECT_EQ(Message(), "cannot start a transaction within a transaction");
    RunSQL("COMMIT;");
}

TEST_F(CommonErrorsTest, AClosedDatabaseKeepsNoReason)
{
    Database.Close();
    EXPECT_FALSE(Repository.CreatePlantEvent(Event));
    EXPECT_EQ(Database.NativeHandle(), nullptr);
    EXPECT_EQ(sqlite3_errcode(nullptr), SQLITE_NOMEM);
}

// ---- The log

TEST_F(ErrorsPageTest, TheLogHasTheCodeAndAShortMessageWhole)
{
    sqlite3_exec(Database.NativeHandle(), "INSERT INTO Strains(Name) VALUES('a'),('a');", nullptr, nullptr, nullptr);
    EXPECT_TRUE(Log.str().starts_with("2067: ")) << Log.str();
    EXPECT_NE(Log.str().find("UNIQUE constraint failed: Strains.Name"), std::string::npos) << Log.str();
}

TEST_F(ErrorsPageTest, TheLogHasTheCodeAndALongMessageWholeOrCut)
{
    Plant plant = NewPlant("Basil");
    EXPECT_FALSE(Repository.CreatePlant(plant)); // the text of the statement is in the message
    EXPECT_TRUE(Log.str().starts_with("2067: ")) << Log.str();
    const bool whole = Log.str().find("UNIQUE constraint failed: Plants.UUID") != std::string::npos;
    const bool cut = Log.str().size() > 200 && Log.str().size() < 220; // some two hundred bytes and the code
    EXPECT_TRUE(whole || cut) << Log.str();
}

TEST(ErrorLogTest, OldSQLiteAcceptsALogFunctionOnlyBeforeItsFirstUse)
{
    PlantDatabase database;
    EXPECT_TRUE(database.Open(":memory:"));
    const auto configure = []
    {
        // [configure]
        const bool taken = sqlite3_config(SQLITE_CONFIG_LOG, KeepLog, static_cast<void*>(&std::cerr)) == SQLITE_OK;
        // [end]
        return taken;
    };
    EXPECT_EQ(configure(), sqlite3_libversion_number() >= 3042000);
    database.Close();
    sqlite3_shutdown();
    EXPECT_TRUE(configure());
    EXPECT_EQ(sqlite3_config(SQLITE_CONFIG_LOG, nullptr, nullptr), SQLITE_OK);
}

} // namespace

// Finds the cause of a failed operation in the ways that docs/errors.md shows: Explain, the code of the connection and
// the log of SQLite.

#include "pages/errors_page.h"
#include "plant_validation.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/journal_files.h"
#include "support/page.h"
#include "support/privileges.h"
#include "support/repository_operations.h"

#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

#include <sqlite3.h>

using namespace pages;
using namespace support;

namespace
{

// What `work` prints on standard error.
template <typename Work> std::string Printed(const Work& work)
{
    std::ostringstream printed;
    std::streambuf* const usual = std::cerr.rdbuf(printed.rdbuf());
    work();
    std::cerr.rdbuf(usual);
    return printed.str();
}

TEST_F(ErrorsPageTest, ThePageShowsTheCodeOfTheseTests)
{
    const std::string log = PLANTJOURNAL_SOURCE_DIR "/tests/pages/errors_page.cpp";
    EXPECT_EQ(CodeBlocks(ErrorsPage, "cpp"), (std::vector{Region(__FILE__, "explain"), Region(__FILE__, "message"),
                                                          Region(log, "log"), Region(__FILE__, "configure")}));
}

TEST_F(ErrorsPageTest, TheExampleOfExplainPrintsItsSentence)
{
    Plant basil = NewPlant("Basil");
    HarvestRecord record;
    EXPECT_TRUE(Repository.SaveHarvestRecord(basil, record));
    record = {};
    PlantDatabase& journal = Database;
    PlantRepository& repository = Repository;
    const std::string printed = Printed(
        [&]
        {
            // clang-format off
            // [explain]
            if (!repository.SaveHarvestRecord(basil, record))
                std::cerr << Explain(journal, record) << '\n';
            // [end]
            // clang-format on
        });
    EXPECT_EQ(printed, "refused: PlantUUID: the plant already has a harvest record\n");
    EXPECT_NE(PageText(ErrorsPage).find("\n" + printed), std::string::npos);
}

TEST_F(ErrorsPageTest, AFailedReadKeepsItsMessage)
{
    PlantDatabase& journal = Database;
    PlantRepository& repository = Repository;
    const std::string uuid = "unknown";
    Plant plant;
    const auto read = [&]
    {
        // clang-format off
        // [message]
        if (!repository.GetPlant(uuid, plant))
            std::cerr << sqlite3_errmsg(journal.NativeHandle()) << '\n';
        // [end]
        // clang-format on
    };
    EXPECT_EQ(Printed(read), "not an error\n");
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_EQ(Printed(read), "database is locked\n");
}

// The header of the library lists the same.
TEST_F(ErrorsPageTest, ThePageListsEveryBeginningOfASentence)
{
    std::set<std::string> listed;
    for (const auto& row : TableRows(ErrorsPage, "## When an operation returns `false`"))
        listed.insert(Plain(row.at(0)));
    EXPECT_EQ(listed,
              (std::set<std::string>{"refused", "closed", "locked", "read-only", "moved", "disk full", "disk error",
                                     "damaged", "out of memory", "open transaction", "failed", "rolled back"}));
    const std::string header = PageText("validation/plant_validation.h");
    for (const std::string& beginning : listed)
        EXPECT_NE(header.find('`' + beginning), std::string::npos) << beginning;
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

// ---- Causes outside of the record

class CommonErrorsTest : public ErrorsPageTest
{
  protected:
    CommonErrorsTest()
    {
        Event.PlantUUID = Care.PlantUUID = NewPlant("Basil").UUID;
        Care.Notes = Event.Details = std::string(100'000, 'x'); // needs more pages than the file has
    }

    // Returns the sentences after a failed operation of one statement, and after one with a transaction.
    std::vector<std::string> Sentences(PlantDatabase& database) const
    {
        PlantRepository repository(database);
        PlantEvent event = Event;
        PlantCareEntry care = Care;
        EXPECT_FALSE(repository.CreatePlantEvent(event));
        const std::string ofOne = Explain(database, Event);
        EXPECT_FALSE(repository.CreatePlantCareEntry(care));
        return {ofOne, Explain(database, Care)};
    }

    // Expects that the sentences begin as the page shows.
    static void Expect(const std::string& cause, const std::vector<std::string>& sentences)
    {
        for (const auto& row : TableRows(ErrorsPage, "## After a rollback"))
            if (row.at(0) == cause)
            {
                EXPECT_TRUE(sentences.at(0).starts_with(Plain(row.at(1)))) << sentences.at(0);
                EXPECT_TRUE(sentences.at(1).starts_with(Plain(row.at(2)))) << sentences.at(1);
                return;
            }
        ADD_FAILURE() << "the page does not list the cause: " << cause;
    }
    void Expect(const std::string& cause) { Expect(cause, Sentences(Database)); }

    // The same in a process without privileges.
    void ExpectAsUser(const std::string& cause)
    {
        ChildProcess child(
            [&](const ParentProcess& parent)
            {
                const WithoutPrivileges user;
                OpenJournal();
                for (const std::string& sentence : Sentences(Database))
                    parent.Send(sentence);
            });
        const std::vector<std::string> sentences = child.ReadLines();
        EXPECT_EQ(child.End(), "done");
        ASSERT_EQ(sentences.size(), 2);
        Expect(cause, sentences);
    }

    PlantEvent Event;
    PlantCareEntry Care;
};

TEST_F(CommonErrorsTest, TheLockOfAWriterGivesTheSentencesOnThePage)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE;");
    Expect("Another process writes for more than 2.5 seconds");
}

TEST_F(CommonErrorsTest, TheLockOfAReaderGivesTheSentencesOnThePage)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN; SELECT * FROM Plants;");
    Expect("Another process reads for more than 2.5 seconds");
}

TEST_F(CommonErrorsTest, AReadOnlyFileGivesTheSentencesOnThePage)
{
    Database.Close();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0755});
    std::filesystem::permissions(Path, std::filesystem::perms{0444});
    ExpectAsUser("The file is read-only");
}

TEST_F(CommonErrorsTest, AReadOnlyDirectoryGivesTheSentencesOnThePage)
{
    Database.Close();
    std::filesystem::permissions(Path, std::filesystem::perms{0666});
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0555});
    ExpectAsUser("The directory is read-only");
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0755});
}

TEST_F(CommonErrorsTest, AFullDiskGivesTheSentencesOnThePage)
{
    RunSQL("PRAGMA max_page_count=" + QueryRows("PRAGMA page_count;")[0][0] + ";");
    Expect("The disk is full");
}

TEST_F(CommonErrorsTest, AFailingDiskGivesTheSentencesOnThePage)
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

TEST_F(CommonErrorsTest, ADamagedFileGivesTheSentencesOnThePage)
{
    Database.Close();
    OverwritePage(Path, "PlantEvents");
    OpenJournal();
    Expect("The file is damaged");
}

TEST_F(CommonErrorsTest, ThePageListsNoOtherCauses)
{
    EXPECT_EQ(TableRows(ErrorsPage, "## After a rollback").size(), 7);
}

TEST_F(CommonErrorsTest, AClosedDatabaseHasNoCode)
{
    Database.Close();
    EXPECT_FALSE(Repository.CreatePlantEvent(Event));
    EXPECT_EQ(Database.NativeHandle(), nullptr);
    EXPECT_TRUE(Explain(Database, Event).starts_with("closed"));
}

// ---- The log

TEST_F(CommonErrorsTest, TheLogHasTheCauseOfARollback)
{
    RunSQL("PRAGMA max_page_count=" + QueryRows("PRAGMA page_count;")[0][0] + ";");
    Log.str("");
    EXPECT_FALSE(Repository.CreatePlantCareEntry(Care));
    EXPECT_NE(Code(), SQLITE_FULL);
    EXPECT_TRUE(Log.str().starts_with(std::to_string(SQLITE_FULL) + ": ")) << Log.str();
}

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

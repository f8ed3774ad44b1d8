// Tests of the reading of a journal for a page: one moment, all or an error, and nothing left open.

#include "report/report_page.h"
#include "support/allocation_failure.h"
#include "support/connection_interruption.h"
#include "support/sample_records.h"
#include "support/sqlite_calls.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

// The parameter is whether the page is that of one plant.
class PageReadingTest : public ReportTest, public testing::WithParamInterface<bool>
{
  protected:
    PageReadingTest()
    {
        const SampleRecords sample = StoreSampleRecords(Repository);
        if (GetParam())
            Options.Plants.UUIDs = {sample.Mother.UUID};
        Whole = Page().HTML();
    }

    void ExpectNothingOpen() const
    {
        EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 1);
        EXPECT_EQ(sqlite3_next_stmt(Database.NativeHandle(), nullptr), nullptr);
    }

    // The page or an error; both where the function throws std::bad_alloc.
    PlantQueryResult Write(std::string& html)
    {
        html = "old";
        try
        {
            return WritePlantReport(Database, Options, html);
        }
        catch (const std::bad_alloc&)
        {
            return {"no memory"};
        }
    }

    void ExpectRefused(const PlantQueryResult& result, const std::string& html, const std::string& error)
    {
        EXPECT_TRUE(Contains(result.Error, error)) << result.Error;
        EXPECT_TRUE(html.empty());
        ExpectNothingOpen();
    }

    std::string Whole;
};

TEST_P(PageReadingTest, AClosedDatabaseIsAnError)
{
    Database.Close();
    EXPECT_EQ(Error(), "reading the journal: the database is closed");
}

TEST_P(PageReadingTest, TodayMustBeADay)
{
    for (const char* today : {"", "today", "2025-02-30", "2025-02"})
    {
        Options.Today = today;
        EXPECT_EQ(Error(), "computing the status: '" + Options.Today + "' is not a day of the form YYYY-MM-DD");
    }
    ExpectNothingOpen();
}

TEST_P(PageReadingTest, APageChangesNothing)
{
    const std::string content = Content();
    const int changes = sqlite3_total_changes(Database.NativeHandle());
    EXPECT_TRUE(Page().HTML() == Whole);
    EXPECT_EQ(sqlite3_total_changes(Database.NativeHandle()), changes);
    EXPECT_EQ(Content(), content);
    ExpectNothingOpen();
}

TEST_P(PageReadingTest, APageReadsInTheTransactionOfTheCaller)
{
    RunSQL("BEGIN;");
    RunSQL("UPDATE Plants SET Name='Renamed';");
    EXPECT_TRUE(Contains(Page().HTML(), "Renamed")) << "rows that are not committed yet";
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("ROLLBACK;");
    EXPECT_TRUE(Page().HTML() == Whole);
}

TEST_P(PageReadingTest, AnInterruptedReadingIsAnError)
{
    int interruptions = 0;
    for (int instructions = 1;; instructions += 1 + instructions / 40)
    {
        std::string html;
        PlantQueryResult result;
        {
            const ConnectionInterruption interruption(Database.NativeHandle(), instructions);
            result = Write(html);
            if (!interruption.Happened())
                break;
        }
        ExpectRefused(result, html, ": interrupted");
        ++interruptions;
    }
    EXPECT_GT(interruptions, 50);
    EXPECT_TRUE(Page().HTML() == Whole);
}

TEST_P(PageReadingTest, AStatementThatIsNotAllowedIsAnError)
{
    struct Reads
    {
        int Left; // until one is refused
        static int Next(void* reads, int action, const char*, const char*, const char*, const char*)
        {
            return action == SQLITE_SELECT && --static_cast<Reads*>(reads)->Left == 0 ? SQLITE_DENY : SQLITE_OK;
        }
    };
    std::string errors;
    int statement = 1;
    for (;; ++statement)
    {
        Reads reads{statement};
        sqlite3_set_authorizer(Database.NativeHandle(), &Reads::Next, &reads);
        std::string html;
        const PlantQueryResult result = Write(html);
        sqlite3_set_authorizer(Database.NativeHandle(), nullptr, nullptr);
        if (reads.Left > 0)
            break;
        ExpectRefused(result, html, ": not authorized");
        errors += result.Error + '\n';
    }
    for (const char* step : {"beginning to read", "reading the plants", "reading the harvest records",
                             "reading the health observations", "reading the photos"})
        EXPECT_TRUE(Contains(errors, step + std::string(": not authorized\n"))) << step;
    EXPECT_GT(statement, 15);
}

TEST_P(PageReadingTest, AJournalThatAnotherConnectionLocksIsAnError)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    sqlite3_busy_timeout(Database.NativeHandle(), 1);
    EXPECT_TRUE(Contains(Error(), ": database is locked"));
    other.RunSQL("ROLLBACK;");
    EXPECT_TRUE(Page().HTML() == Whole);
}

TEST_P(PageReadingTest, AFailedAllocationIsAnErrorAndLeavesNothingOpen)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
    {
        int number = 1;
        for (bool happened = true; happened; number += 1 + number / 20)
        {
            std::string html;
            PlantQueryResult result;
            {
                const AllocationFailure failure(allocator, number);
                result = Write(html);
                happened = failure.Happened();
            }
            if (!result)
                ExpectRefused(result, html, "memory");
            else
                EXPECT_TRUE(html == Whole) << "SQLite needs some of its allocations only to be faster";
        }
        EXPECT_GT(number, 50);
    }
    EXPECT_TRUE(Page().HTML() == Whole);
}

TEST_P(PageReadingTest, AWriterInBetweenDoesNotChangeThePage)
{
    RunSQL("PRAGMA journal_mode=WAL;"); // in the other modes, a writer waits until the reading ends
    const PlainConnection other(Path);
    other.RunSQL("PRAGMA foreign_keys=ON;");
    bool written = true;
    for (int step = 1; written; step += 1 + step / 10)
    {
        std::string html;
        {
            const AfterCall writer(SQLiteCall::Step, step,
                                   [&] { other.RunSQL("BEGIN; DELETE FROM Plants; DELETE FROM Strains; COMMIT;"); });
            EXPECT_TRUE(Write(html));
            written = writer.Happened();
        }
        EXPECT_TRUE(html == Whole) << "written after step " << step;
        if (written)
            StoreSampleRecords(Repository);
    }
}

TEST_P(PageReadingTest, AnExceptionOfTheCallbackLeavesNothingOpen)
{
    Options.PhotoSource = [](const PlantPhoto&) -> std::string { throw std::runtime_error("stop"); };
    std::string html = "old";
    EXPECT_THROW(WritePlantReport(Database, Options, html), std::runtime_error);
    EXPECT_EQ(html, "");
    ExpectNothingOpen();
}

TEST_P(PageReadingTest, TheTitleMayBeTheText)
{
    PlantReportOptions& options = Options;
    EXPECT_TRUE(WritePlantReport(Database, options, options.Title));
    EXPECT_TRUE(options.Title == Whole);
}

INSTANTIATE_TEST_SUITE_P(Of, PageReadingTest, testing::Values(false, true),
                         [](const auto& test) { return test.param ? "OnePlant" : "TheSeason"; });

} // namespace

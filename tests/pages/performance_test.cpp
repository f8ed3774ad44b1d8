// The figures on the page of the benchmarks are within the bars of the benchmarks.

#include "bench/bars.h"
#include "support/page.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

namespace
{

const std::string PerformancePage = "docs/performance.md";

using TableCells = std::vector<std::string>;

double NumberOf(std::string cell)
{
    std::erase(cell, ',');
    return std::stod(cell);
}

// Expects the figures in rows of an operation, its figure and its bar to be within these bars.
template <std::size_t Count> void ExpectWithin(const bars::Bar (&bars)[Count], const std::vector<TableCells>& rows)
{
    for (const bars::Bar& bar : bars)
    {
        SCOPED_TRACE(bar.Operation);
        const auto row = std::find_if(rows.begin(), rows.end(),
                                      [&](const TableCells& cells) { return cells.at(0) == bar.Operation; });
        if (row == rows.end())
        {
            ADD_FAILURE() << PerformancePage << " has no such row";
            continue;
        }
        EXPECT_EQ(NumberOf(row->at(2)), bar.Most);
        EXPECT_LE(NumberOf(row->at(1)), bar.Most);
    }
}

TEST(PerformancePageTest, InstructionsAreWithinTheirBars)
{
    const std::vector<TableCells> rows = TableRows(PerformancePage, "## Instructions");
    ExpectWithin(bars::InstructionRatios, rows);
    ExpectWithin(bars::Instructions, rows);
    EXPECT_EQ(rows.size(), std::size(bars::InstructionRatios) + std::size(bars::Instructions));
}

TEST(PerformancePageTest, AllocationsAreWithinTheirBars)
{
    const std::vector<TableCells> rows = TableRows(PerformancePage, "## Allocations");
    ExpectWithin(bars::AllocationsPerRecord, rows);
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const TableCells& cells) { return cells.at(2) != "–"; }),
              std::size(bars::AllocationsPerRecord));
}

TEST(PerformancePageTest, AnswersAreWithinTheirBars)
{
    const std::vector<TableCells> rows = TableRows(PerformancePage, "## Answers");
    ExpectWithin(bars::AnswerRatios, rows);
    ExpectWithin(bars::ShellRatios, rows);
    EXPECT_EQ(rows.size(), std::size(bars::AnswerRatios) + std::size(bars::ShellRatios));
}

TEST(PerformancePageTest, WritesWithAWatcherAreWithinTheirBars)
{
    const std::vector<TableCells> rows = TableRows(PerformancePage, "## Watching");
    ExpectWithin(bars::WatchRatios, rows);
    EXPECT_EQ(rows.size(), std::size(bars::WatchRatios));
}

TEST(PerformancePageTest, CostsOfTheCommandAreWithinTheirBars)
{
    const std::vector<TableCells> rows = TableRows(PerformancePage, "## The command");
    ExpectWithin(bars::CommandGrowth, rows);
    ExpectWithin(bars::ImportTimes, rows);
    ExpectWithin(bars::ImportInstructions, rows);
    EXPECT_EQ(rows.size(),
              std::size(bars::CommandGrowth) + std::size(bars::ImportTimes) + std::size(bars::ImportInstructions));
}

TEST(PerformancePageTest, ThePageStatesTheCommitThatWasMeasured)
{
    EXPECT_TRUE(std::regex_search(PageText(PerformancePage), std::regex("at\\s+commit\\s+[0-9a-f]{12}[,.]")));
}

} // namespace

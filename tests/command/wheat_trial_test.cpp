// A field trial of wheat, imported from the CSV files that an example makes of its table. The test reads the table by
// code of its own, so that the two have only the file in common.

#include "support/command.h"

#include <fstream>
#include <map>

using namespace support;

namespace
{

const std::string Table = PLANTJOURNAL_SOURCE_DIR "/examples/data/variety-trials/stroup.nin.txt";

struct Sum
{
    int Plots = 0;
    int Harvests = 0;
    double Yield = 0;
};

std::map<std::string, Sum> SumsOfTheTable()
{
    std::map<std::string, Sum> sums;
    std::ifstream file(Table);
    std::string cultivar;
    std::string replicate;
    std::string yield;
    std::string column;
    std::string row;
    file >> cultivar >> replicate >> yield >> column >> row; // the headings
    while (file >> cultivar >> replicate >> yield >> column >> row)
    {
        Sum& sum = sums[cultivar];
        ++sum.Plots;
        if (yield == "NA")
            continue;
        ++sum.Harvests;
        sum.Yield += std::stod(yield);
    }
    return sums;
}

class WheatTrialTest : public CommandTest
{
  protected:
    WheatTrialTest()
    {
        EXPECT_EQ(RunningProgram({PLANTJOURNAL_WHEAT_TRIAL, Table, "wheat"}, Around).End().Status, 0);
        Done({"import", "wheat"});
    }
};

TEST_F(WheatTrialTest, EveryCultivarHasThePlotsAndTheMeanYieldOfTheTable)
{
    const std::map<std::string, Sum> sums = SumsOfTheTable();
    EXPECT_EQ(sums.size(), 56U);
    int plots = 0;
    for (const auto& [cultivar, sum] : sums)
    {
        const JSON summary = Parsed({"strain", "show", cultivar});
        EXPECT_EQ(summary.at("TotalPlants"), sum.Plots) << cultivar;
        EXPECT_EQ(summary.at("HarvestCount"), sum.Harvests) << cultivar;
        EXPECT_EQ(summary.at("Harvested"), sum.Harvests) << cultivar;
        EXPECT_EQ(summary.at("Archived"), sum.Plots - sum.Harvests) << cultivar; // the plots without a yield
        EXPECT_NEAR(summary.at("AverageDryWeightG").get<double>(), sum.Yield / sum.Harvests, 1e-9) << cultivar;
        plots += sum.Plots;
    }
    EXPECT_EQ(plots, 242);
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 56U);
    EXPECT_EQ(Parsed({"plant", "list", "--all"}).size(), 242U);
}

TEST_F(WheatTrialTest, AHarvestIsInTheTimelineOfItsPlot)
{
    const JSON plot = Parsed({"plant", "list"}).at(0);
    const std::string name = plot.at("Name");
    const JSON timeline = Parsed({"timeline", name});
    ASSERT_EQ(timeline.size(), 1U);
    EXPECT_EQ(timeline[0].at("Table"), "HarvestRecords");
    EXPECT_EQ(timeline[0].at("HarvestDate"), "1989");
    EXPECT_EQ(plot.at("Tent"), "Alliance");
    EXPECT_EQ(plot.at("Stage"), "Harvested");
}

TEST_F(WheatTrialTest, ASecondImportIsRefusedForEachPlot)
{
    const std::string message = Refused({"import", "wheat"});
    EXPECT_NE(message.find("wheat/Plants.csv:2:1: UUID: "), std::string::npos);
    EXPECT_NE(message.find("is already in the journal"), std::string::npos);
    EXPECT_NE(message.find("plantjournal: wheat: errors: 466; nothing was imported; correct them and import again\n"),
              std::string::npos)
        << message; // 242 plots and 224 harvests
}

TEST_F(WheatTrialTest, ATableOfAnotherFormIsRefusedWithItsPlace)
{
    const auto converted = [this](const std::string& text)
    {
        Write("table.txt", text);
        const ProgramResult outcome = RunningProgram({PLANTJOURNAL_WHEAT_TRIAL, "table.txt", "other"}, Around).End();
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_FALSE(std::filesystem::exists(Scratch.File("other")));
        std::string message = outcome.Error;
        std::erase(message, '\r'); // on Windows, the example's lines end with it
        return message;
    };
    EXPECT_EQ(converted("a\tb\n"), "table.txt:1: expected the headings gen, rep, yield, col and row\n");
    EXPECT_EQ(converted("gen\trep\tyield\tcol\trow\nLancer\tR1\t20\t1\n"),
              "table.txt:2: expected a cultivar and four values\n");
    EXPECT_EQ(converted("gen\trep\tyield\tcol\trow\nLancer\tR1\t20\t0\t1\n"),
              "table.txt:2: \"0\" is not a position in the field\n");
    EXPECT_EQ(RunningProgram({PLANTJOURNAL_WHEAT_TRIAL}, Around).End().Status, 2);
}

} // namespace

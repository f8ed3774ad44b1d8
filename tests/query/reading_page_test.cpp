// Runs the statements and programs of docs/reading.md on the demonstration's journal, and compares their output with
// the page and with the answers of the library.

#include "support/page.h"
#include "support/reading_page.h"

#include "plant_query.h"

#include <algorithm>
#include <cmath>

using namespace support;

namespace
{

const std::string Today = "2020-06-01"; // after all records
const std::vector<PlantStage> Growing = {PlantStage::Seed, PlantStage::Clone, PlantStage::Veg, PlantStage::Flower};
const std::vector<std::string> Journals = {"season.db", "garden.db"};

// As the statements round, and as NULL where there is no value.
std::string Hundredths(double number)
{
    return NumberText(std::round(number * 100) / 100);
}

std::string Tenths(double number)
{
    return NumberText(std::round(number * 10) / 10);
}

std::string Mean(const PlantFigures& figures)
{
    return figures.Number == 0 ? "" : Hundredths(figures.Mean);
}

std::string Least(const PlantFigures& figures)
{
    return figures.Number == 0 ? "" : Hundredths(figures.Least);
}

std::string Most(const PlantFigures& figures)
{
    return figures.Number == 0 ? "" : Hundredths(figures.Most);
}

Rows Sorted(Rows rows)
{
    std::sort(rows.begin(), rows.end());
    return rows;
}

class ReadingPageTest : public ReadingPage
{
  protected:
    // The answer of the library for a journal.
    template <typename Out, typename... Arguments, typename... Parameters>
    Out Asked(const std::string& journal, PlantQueryResult (*query)(PlantDatabase&, Parameters...),
              const Arguments&... arguments) const
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Scratch.File(journal)));
        Out out;
        const PlantQueryResult result = query(database, arguments..., out);
        EXPECT_TRUE(result) << result.Error;
        return out;
    }

    std::string UUIDOf(const std::string& journal, const std::string& name) const
    {
        return PlainConnection(Scratch.File(journal)).Value("SELECT UUID FROM Plants WHERE Name='" + name + "';");
    }
};

TEST_F(ReadingPageTest, TheCommandsPrintTheOutputOnThePage)
{
    const std::string before = FileBytes(Scratch.File("season.db")) + FileBytes(Scratch.File("garden.db"));
    int commands = 0;
    for (const std::string& block : CodeBlocks(PageName, "text"))
    {
        const std::size_t end = block.find('\n');
        ASSERT_TRUE(block.starts_with("$ ")) << block;
        std::string shown = block.substr(end + 1);
        std::string printed = Run(block.substr(2, end - 2));
        EXPECT_EQ(Status, 0) << block << printed;
        if (shown.ends_with("\n...\n"))
        {
            shown.resize(shown.size() - 4);
            EXPECT_GT(printed.size(), shown.size());
            printed.resize(std::min(printed.size(), shown.size()));
        }
        EXPECT_EQ(printed, shown);
        ++commands;
    }
    EXPECT_EQ(commands, 12);
    EXPECT_EQ(FileBytes(Scratch.File("season.db")) + FileBytes(Scratch.File("garden.db")), before);
}

TEST_F(ReadingPageTest, EveryStatementHasTheSameAnswerInPythonAndR)
{
    int statements = 0;
    for (const std::string& block : CodeBlocks(PageName, "sql"))
    {
        const std::string file = FileNameOf(block);
        if (file == "activity.sql")
            continue;
        const std::string files = "garden.db activity.sql " + file;
        const Rows answer = ShellAnswer("garden.db", file);
        EXPECT_GT(answer.size(), 1U) << file;
        EXPECT_EQ(CsvRows(Run("python3 read.py " + files)), answer) << file;
        EXPECT_EQ(CsvRows(Run("Rscript read.R " + files)), answer) << file;
        ++statements;
    }
    EXPECT_EQ(statements, 8);
}

TEST_F(ReadingPageTest, AJournalOpenedAsOnThePageCannotBeChanged)
{
    const std::string before = FileBytes(Scratch.File("season.db"));
    Write("delete.sql", "DELETE FROM Plants;");
    for (const std::string command :
         {"sqlite3 'file:season.db?mode=ro' <delete.sql", "python3 read.py season.db delete.sql",
          "Rscript read.R season.db delete.sql", "Rscript read.R season.db delete.sql strains.sql"})
    {
        const std::string printed = Run(command + " 2>&1");
        EXPECT_NE(Status, 0) << command;
        EXPECT_NE(printed.find("attempt to write a readonly database"), std::string::npos) << printed;
    }
    EXPECT_EQ(FileBytes(Scratch.File("season.db")), before);
}

TEST_F(ReadingPageTest, TheTimelineIsThatOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        Rows expected;
        for (const PlantActivity& activity :
             Asked<std::vector<PlantActivity>>(journal, QueryPlantTimeline, UUIDOf(journal, "Reference")))
            expected.push_back({activity.Date, activity.Kind, activity.Text});
        EXPECT_GT(expected.size(), 200U);
        EXPECT_EQ(Sorted(Answer(journal, "timeline.sql")), Sorted(expected)) << journal;
    }
}

TEST_F(ReadingPageTest, TheActivityOfAWeekIsThatOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        PlantActivityFilter week;
        week.From = "2020-05-18";
        week.To = "2020-05-24";
        Rows expected;
        for (const PlantActivity& activity : Asked<std::vector<PlantActivity>>(journal, QueryPlantActivity, week))
            expected.push_back({activity.Date, activity.PlantName, activity.Kind, activity.Text});
        EXPECT_GT(expected.size(), 40U);
        EXPECT_EQ(Sorted(Answer(journal, "week.sql")), Sorted(expected)) << journal;
    }
}

TEST_F(ReadingPageTest, TheCalendarIsThatOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        Rows expected;
        for (const PlantCalendarDay& day :
             Asked<std::vector<PlantCalendarDay>>(journal, QueryPlantCalendar, PlantActivityFilter{}))
            expected.push_back({day.Date, day.Kind, std::to_string(day.Number)});
        EXPECT_GT(expected.size(), 200U);
        EXPECT_EQ(Answer(journal, "calendar.sql"), expected) << journal;
    }
}

TEST_F(ReadingPageTest, TheLastFeedingAndWateringAreThoseOfTheLibrary)
{
    PlantSet growing;
    growing.Stages = Growing;
    Rows expected;
    for (const PlantStatus& plant : Asked<std::vector<PlantStatus>>("garden.db", QueryPlantStatus, growing, Today))
        expected.push_back({plant.Name, PlantStageName(plant.Stage), plant.LastFeedDate, plant.LastWaterDate});
    EXPECT_EQ(expected.size(), 5U);
    EXPECT_EQ(Answer("garden.db", "last_care.sql"), expected);
    EXPECT_EQ(Answer("season.db", "last_care.sql"), Rows());
}

TEST_F(ReadingPageTest, CareIsDueOnTheDaysOfTheLibrary)
{
    Rows expected;
    for (const PlantStatus& plant : Asked<std::vector<PlantStatus>>("garden.db", QueryPlantStatus, PlantSet{}, Today))
        if (!plant.DueDate.empty())
            expected.push_back({plant.Name, NumberText(*plant.CareGapDays), plant.DueDate});
    EXPECT_EQ(expected.size(), 3U);
    for (const std::string program : {"python3 due.py garden.db", "Rscript due.R garden.db"})
    {
        Rows due;
        for (const std::string& line : Lines(Run(program)))
        {
            const std::size_t day = line.rfind(' ');
            const std::size_t gap = line.rfind(' ', day - 1);
            due.push_back({line.substr(0, gap), SameNumber(line.substr(gap + 1, day - gap - 1)), line.substr(day + 1)});
        }
        EXPECT_EQ(due, expected) << program;
    }
}

TEST_F(ReadingPageTest, TheTotalsOfCareAreThoseOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        PlantTotalFilter filter;
        filter.Group = PlantTotalGroup::Tent;
        filter.Period = PlantPeriod::Month;
        Rows expected;
        for (const PlantTotal& total : Asked<std::vector<PlantTotal>>(journal, QueryPlantTotals, filter))
            expected.push_back({total.Period, total.Name, std::to_string(total.Feedings),
                                std::to_string(total.Waterings), Tenths(total.AmountMl), Tenths(total.RunoffMl)});
        EXPECT_GT(expected.size(), 5U);
        EXPECT_EQ(Answer(journal, "totals.sql"), expected) << journal;
    }
}

TEST_F(ReadingPageTest, TheECAndPHAreThoseOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        PlantTotalFilter filter;
        filter.Group = PlantTotalGroup::Plant;
        Rows expected;
        for (const PlantTotal& total : Asked<std::vector<PlantTotal>>(journal, QueryPlantTotals, filter))
            expected.push_back({total.Name, Mean(total.EC), Least(total.EC), Most(total.EC), Mean(total.PH),
                                Least(total.PH), Most(total.PH)});
        EXPECT_GT(expected.size(), 5U);
        EXPECT_EQ(Answer(journal, "measurements.sql"), expected) << journal;
    }
}

TEST_F(ReadingPageTest, TheComparisonOfStrainsIsThatOfTheLibrary)
{
    for (const std::string& journal : Journals)
    {
        std::vector<PlantComparedSet> sets;
        for (const Row& strain :
             PlainConnection(Scratch.File(journal)).QueryRows("SELECT Name FROM Strains ORDER BY 1;"))
        {
            sets.push_back({strain[0], {}});
            sets.back().Plants.Strains = {strain[0]};
        }
        Rows expected;
        for (const PlantComparison& strain : Asked<std::vector<PlantComparison>>(journal, QueryPlantComparison, sets))
            expected.push_back({strain.Name, std::to_string(strain.Plants), std::to_string(strain.Harvested),
                                Mean(strain.DaysFromTransplant), Mean(strain.WetWeightG), Mean(strain.DryWeightG),
                                Least(strain.DryWeightG), Most(strain.DryWeightG), Mean(strain.DryingLossPercent),
                                Mean(strain.Quality), Mean(strain.MlPerGram)});
        EXPECT_EQ(expected.size(), journal == "season.db" ? 1U : 2U);
        EXPECT_EQ(Answer(journal, "strains.sql"), expected) << journal;
    }
}

TEST_F(ReadingPageTest, TheLineageIsThatOfTheLibrary)
{
    const auto lineage = Asked<PlantLineage>("garden.db", QueryPlantLineage, UUIDOf("garden.db", "Cutting A"));
    Rows expected = {{"0", "Cutting A", "Axiany", "Veg", ""}};
    for (const std::vector<PlantRelative>& relatives : {lineage.Ancestors, lineage.Descendants})
        for (const PlantRelative& plant : relatives)
            expected.push_back({std::to_string(plant.Generation), plant.Name, plant.Strain, PlantStageName(plant.Stage),
                                plant.Harvest ? Hundredths(plant.Harvest->DryWeightG) : ""});
    EXPECT_EQ(expected.size(), 3U);
    EXPECT_EQ(Sorted(Answer("garden.db", "lineage.sql")), Sorted(expected));
}

} // namespace

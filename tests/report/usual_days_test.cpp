// Tests of the days that charts show, and of those that are years away from the others.

#include "report/report_page.h"
#include "report/usual_days.h"

#include <gtest/gtest.h>

using namespace plant_report;
using namespace support;

namespace
{

using Records = std::map<std::int64_t, std::int64_t>;
using Ends = std::pair<std::int64_t, std::int64_t>;

Ends UsualEnds(const Records& records)
{
    const DayRange usual = UsualDays(records);
    return {usual.First, usual.Last};
}

TEST(UsualDaysTest, ARangeHoldsItsEnds)
{
    const DayRange range{-5, 7};
    EXPECT_TRUE(range.Holds(-5));
    EXPECT_TRUE(range.Holds(7));
    EXPECT_FALSE(range.Holds(-6));
    EXPECT_FALSE(range.Holds(8));
}

TEST(UsualDaysTest, WithoutALongGapAllDaysAreUsual)
{
    EXPECT_EQ(UsualEnds({{-40, 1}}), Ends(-40, -40));
    EXPECT_EQ(UsualEnds({{0, 1}, {1826, 1}, {2 * 1826, 5}}), Ends(0, 2 * 1826)); // five years
}

TEST(UsualDaysTest, DaysAfterAGapOfFiveYearsAreFar)
{
    EXPECT_EQ(UsualEnds({{-1837, 1}, {-10, 1}, {0, 2}, {10, 1}, {1837, 3}}), Ends(-10, 10));
    EXPECT_EQ(UsualEnds({{-1836, 1}, {-10, 1}, {0, 2}, {10, 1}, {1836, 3}}), Ends(-1836, 1836));
}

TEST(UsualDaysTest, TheDaysWithTheMostRecordsAreUsual)
{
    EXPECT_EQ(UsualEnds({{0, 3}, {9000, 1}, {9001, 1}}), Ends(0, 0));
    EXPECT_EQ(UsualEnds({{0, 1}, {9000, 1}, {9001, 1}}), Ends(9000, 9001));
    EXPECT_EQ(UsualEnds({{0, 2}, {9000, 1}, {9001, 1}}), Ends(9000, 9001)) << "the latest of equals";
}

TEST(UsualDaysTest, AGapThatIsShorterThanTheOtherTimeIsNone)
{
    const Records eightYears = {{0, 5}, {1500, 5}, {3000, 5}};
    Records records = eightYears;
    records[6000] = 1;   // 3,000 days later
    records[-6000] = 1;  // 6,000 days earlier, when the range is 6,000 days long
    records[18001] = 1;  // 12,001 days later
    records[-18001] = 1; // 12,001 days earlier
    EXPECT_EQ(UsualEnds(records), Ends(-6000, 6000));
    records[6001] = 1; // makes the range a day longer
    EXPECT_EQ(UsualEnds(records), Ends(-18001, 18001));
    records = eightYears;
    records[6001] = 1;
    records[-3001] = 1;
    EXPECT_EQ(UsualEnds(records), Ends(0, 3000));
}

TEST(UsualDaysTest, TheSentenceCountsTheRecords)
{
    EXPECT_EQ(FarSentence(0, "value", "values"), "");
    EXPECT_EQ(FarSentence(1, "value", "values"),
              " 1 value is not drawn: its date is years away from the others. The table has it.");
    EXPECT_EQ(FarSentence(1200, "value", "values"),
              " 1,200 values are not drawn: their dates are years away from the others. The table has them.");
}

class MistypedYearTest : public ReportTest
{
  protected:
    // The sections of a season of 2025, with one feeding, observation and sowing in the year.
    std::string SectionWithYear(const std::string& section, const std::string& year)
    {
        const Plant basil = Sown("Basil");
        Sown("Dill");
        Sown("Sage");
        for (int day = 10; day < 30; ++day)
            Care(basil, "2025-04-" + std::to_string(day), PlantCareAction::Feed, 500, 1.5, 6.1);
        Care(basil, "2024-12-31");
        Plant mint = NewPlant("Mint");
        mint.SeedDate = year + "-05-01";
        mint.Stage = PlantStage::Harvested;
        mint.HarvestDate = year + "-08-01";
        EXPECT_TRUE(Repository.UpdatePlant(mint));
        Care(mint, year + "-05-02", PlantCareAction::Feed, 700, 2.5, 6.5);
        for (const std::string& date : {std::string("2025-04-02"), std::string("2025-04-12"), year + "-05-03"})
        {
            PlantHealthObservation mites;
            mites.PlantUUID = basil.UUID;
            mites.ObservationDate = date;
            mites.Issue = "Mites";
            EXPECT_TRUE(Repository.CreatePlantHealthObservation(mites));
        }
        return Page().Section(section);
    }

    // The section is drawn without the year, and says so; its table has the figure.
    static void ExpectLeftOut(const std::string& section, const std::string& year, const std::string& sentence,
                              const std::string& row)
    {
        const std::string drawn = section.substr(0, section.find("</figure>"));
        EXPECT_NE(drawn.find("</svg>"), std::string::npos) << section;
        EXPECT_NE(drawn.find(sentence), std::string::npos) << drawn.substr(0, drawn.find("<svg"));
        EXPECT_EQ(drawn.find(year), std::string::npos) << drawn.substr(drawn.find(year));
        EXPECT_NE(section.find(row), std::string::npos) << section.substr(section.find("<table"));
    }
};

constexpr const char* OneCare = "1 feeding or watering is not drawn: its date is years away";

TEST_F(MistypedYearTest, TheStagesAreDrawnWithoutIt)
{
    ExpectLeftOut(SectionWithYear("stages", "1925"), "1925", "2 stages are not drawn: their dates are years away",
                  R"(<tr><td>Mint</td><td>Seed</td><td class="date">1925-05-01</td><td class="date">1925-08-01</td>)");
}

TEST_F(MistypedYearTest, TheCalendarIsDrawnWithoutIt)
{
    ExpectLeftOut(SectionWithYear("care", "2205"), "2205", OneCare, "<td class=\"date\">2205-05-02</td>");
}

TEST_F(MistypedYearTest, TheAmountsAreDrawnWithoutIt)
{
    const std::string section = SectionWithYear("amounts", "2205");
    ExpectLeftOut(section, "2205", OneCare, "<td class=\"number\">700</td>");
    EXPECT_NE(section.find("litres a week"), std::string::npos) << "the mistyped year makes no period longer";
}

TEST_F(MistypedYearTest, TheMeasurementsAreDrawnWithoutIt)
{
    const std::string section = SectionWithYear("measurements", "1925");
    ExpectLeftOut(section, "1925", "2 values are not drawn: their dates are years away",
                  "<td>Mint</td><td class=\"date\">1925-04-27</td>");
    EXPECT_NE(section.find("The mean of each week"), std::string::npos) << "the mistyped year makes no period longer";
}

TEST_F(MistypedYearTest, TheHealthProblemsAreDrawnWithoutIt)
{
    ExpectLeftOut(SectionWithYear("health", "2205"), "2205", "1 observation is not drawn: its date is years away",
                  "<td>Mites</td><td class=\"date\">2205-05-03</td>");
}

TEST_F(MistypedYearTest, TheCalendarYearsAreDrawnWithoutIt)
{
    const std::string section = SectionWithYear("years", "2205");
    ExpectLeftOut(section, "2205", OneCare, "<th class=\"number\">2205</th>");
    EXPECT_NE(section.find("2025 had 20 feedings"), std::string::npos);
    EXPECT_NE(section.find("<td>Jun</td><td class=\"number\">0</td><td class=\"number\"></td>"
                           "<td class=\"number\">1</td>"),
              std::string::npos)
        << section.substr(section.find("<table"));
}

} // namespace

// Sums of care and figures of harvests: `totals`, `compare`, and the harvests in `plant tree`.

#include "command/basil_test.h"
#include "support/page.h"

using namespace support;

namespace
{

class TotalsCommandTest : public TerminalTest
{
  protected:
    TotalsCommandTest()
    {
        Around.Environment.emplace_back("NO_COLOR=1");
        for (const char* name : {"Basil 1", "Basil 2"})
            Done({"plant", "add", name, "--strain", "Genovese", "--tent", "South", "--seed-date", "2025-03-01"});
        Done({"plant", "add", "Chili", "--strain", "Cayenne", "--tent", "Süd", "--seed-date", "2025-02-01"});
        Done({"water", "Basil 1", "9l", "--runoff-ml", "500", "--date", "2025-03-03"});
        Done({"water", "Basil 2", "999ml", "--date", "2025-03-09"});
        Done({"feed", "Basil 1", "1.5l", "--product", "Bloom A", "--ec", "1.2", "--ph", "6", "--date", "2025-03-10"});
        Done({"feed", "Chili", "250ml", "--product", "Bloom A", "--ec", "1.8", "--date", "2025-04-01"});
        NoticesOf({"feed", "Chili", "250ml", "--date", "2025"});
    }

    void HarvestAll() const
    {
        Done({"harvest", "add", "Basil 1", "--wet-weight-g", "300", "--dry-weight-g", "60", "--quality-rating", "8",
              "--harvest-date", "2025-07-05"});
        Done({"harvest", "add", "Basil 2", "--wet-weight-g", "250", "--dry-weight-g", "40", "--harvest-date",
              "2025-07-01"});
        Done({"harvest", "add", "Chili", "--wet-weight-g", "500", "--harvest-date", "2025-07-01"});
    }
};

TEST_F(TotalsCommandTest, TotalsAddUpAllCareInOneRow)
{
    EXPECT_EQ(Done({"totals"}), "Feedings  Waterings  Amount  Run-off  Mean EC  Mean pH\n"
                                "       3          2    12 l   500 ml     1.50     6.00\n");
    EXPECT_EQ(Done({"totals", "--to", "2025-03-09"}), "Feedings  Waterings  Amount  Run-off\n"
                                                      "       1          2  10.2 l   500 ml\n");
}

TEST_F(TotalsCommandTest, AmountsUpToTenLitresAreInMillilitres)
{
    EXPECT_NE(Done({"totals", "--from", "2025-03", "--action", "water"}).find(" 9999 ml "), std::string::npos);
    Done({"water", "Chili", "1ml", "--date", "2025-03-03"});
    EXPECT_NE(Done({"totals", "--from", "2025-03", "--action", "WATER"}).find(" 10 l "), std::string::npos);
}

TEST_F(TotalsCommandTest, TotalsAreByPlantStrainTentOrProduct)
{
    EXPECT_EQ(Done({"totals", "--by", "plant", "--action", "water"}), "Plant    Feedings  Waterings   Amount  Run-off\n"
                                                                      "Basil 1         0          1  9000 ml   500 ml\n"
                                                                      "Basil 2         0          1   999 ml\n");
    EXPECT_EQ(Done({"totals", "--by", "strain", "--action", "feed"}),
              "Strain    Feedings  Waterings   Amount  Mean EC  Mean pH\n"
              "Cayenne          2          0   500 ml     1.80\n"
              "Genovese         1          0  1500 ml     1.20     6.00\n");
    EXPECT_EQ(Done({"totals", "--by", "TENT", "--action", "feed"}),
              "Tent   Feedings  Waterings   Amount  Mean EC  Mean pH\n"
              "South         1          0  1500 ml     1.20     6.00\n"
              "Süd           2          0   500 ml     1.80\n");
    EXPECT_EQ(Done({"totals", "--by", "product", "--action", "feed"}),
              "Product  Feedings  Waterings   Amount  Mean EC  Mean pH\n"
              "(none)          1          0   250 ml\n"
              "Bloom A         2          0  1750 ml     1.50     6.00\n");
}

TEST_F(TotalsCommandTest, TotalsArePerDayWeekOrMonth)
{
    EXPECT_EQ(Done({"totals", "--per", "week"}), "Week from   Feedings  Waterings   Amount  Run-off  Mean EC  Mean pH\n"
                                                 "(no day)           1          0   250 ml\n"
                                                 "2025-03-03         0          2  9999 ml   500 ml\n"
                                                 "2025-03-10         1          0  1500 ml              1.20     6.00\n"
                                                 "2025-03-31         1          0   250 ml              1.80\n");
    EXPECT_EQ(Done({"totals", "--per", "month", "--by", "tent", "--from", "2025-03"}),
              "Month    Tent   Feedings  Waterings  Amount  Run-off  Mean EC  Mean pH\n"
              "2025-03  South         1          2  11.5 l   500 ml     1.20     6.00\n"
              "2025-04  Süd           1          0  250 ml              1.80\n");
    EXPECT_EQ(Parsed({"totals", "--per", "day", "--from", "2025-03-09"}).size(), 3U);
}

TEST_F(TotalsCommandTest, TotalsTakeTheOptionsThatSelectPlants)
{
    const auto amount = [&](Words words)
    {
        words.insert(words.begin(), "totals");
        return Parsed(words).at(0).at("AmountMl");
    };
    EXPECT_EQ(amount({"basil 2"}), 999.0);
    EXPECT_EQ(amount({"--strain", "CAYENNE"}), 500.0);
    EXPECT_EQ(amount({"--tent", "SÜD"}), 500.0);
    EXPECT_EQ(amount({"--stage", "veg"}), 11'999.0);
    Done({"archive", "Chili"});
    EXPECT_EQ(amount({}), 11'499.0);
    EXPECT_EQ(amount({"--all"}), 11'999.0);
    EXPECT_EQ(amount({"Chili"}), 500.0);
    EXPECT_EQ(Done({"totals", "--stage", "dry"}),
              "No care entries match; `plantjournal care list` shows all care entries.\n");
    EXPECT_NE(Mistaken({"totals", "--by", "room"}).find("\"room\" is not one of plant, strain, tent, product"),
              std::string::npos);
    EXPECT_NE(Mistaken({"totals", "--per", "year"}).find("\"year\" is not one of day, week, month"), std::string::npos);
    EXPECT_NE(Mistaken({"totals", "--action", "top"}).find("is not one of Feed, Water"), std::string::npos);
}

TEST_F(TotalsCommandTest, TotalsPrintJSONAndCSVWithTheSameFields)
{
    const JSON total = Parsed({"totals", "--by", "tent", "--per", "month", "--from", "2025-04"}).at(0);
    EXPECT_EQ(total, (JSON{{"Period", "2025-04"},
                           {"Key", "Süd"},
                           {"Name", "Süd"},
                           {"Feedings", 1},
                           {"Waterings", 0},
                           {"AmountMl", 250.0},
                           {"RunoffMl", 0.0},
                           {"ECNumber", 1},
                           {"ECMean", 1.8},
                           {"ECLeast", 1.8},
                           {"ECMost", 1.8},
                           {"PHNumber", 0},
                           {"PHMean", nullptr},
                           {"PHLeast", nullptr},
                           {"PHMost", nullptr}}));
    EXPECT_EQ(Done({"totals", "--by", "tent", "--per", "month", "--from", "2025-04", "--csv"}),
              "Period,Key,Name,Feedings,Waterings,AmountMl,RunoffMl,ECNumber,ECMean,ECLeast,ECMost,PHNumber,PHMean,"
              "PHLeast,PHMost\n2025-04,Süd,Süd,1,0,250,0,1,1.8,1.8,1.8,0,,,\n");
}

TEST_F(TotalsCommandTest, TotalsFitNarrowTerminals)
{
    for (const int columns : {60, 80, 200})
        for (const std::string& line :
             Lines(RunOnTerminal({"totals", "--by", "plant", "--per", "month"}, {}, columns).Out))
            EXPECT_LE(line.size(), static_cast<std::size_t>(columns)) << line;
    EXPECT_NE(RunOnTerminal({"totals", "--by", "plant", "--per", "month"}, {}, 60).Out.find("Amount"),
              std::string::npos);
}

TEST_F(TotalsCommandTest, CompareHasAColumnForEachStrain)
{
    HarvestAll();
    EXPECT_EQ(Done({"compare", "genovese", "Cayenne"}),
              "                             Genovese                      Cayenne\n"
              "Plants                       2                             1\n"
              "Harvested                    2                             1\n"
              "Days from sowing to harvest  124 (122 to 126, 2 plants)    150 (1 plant)\n"
              "Wet weight                   275 g (250 to 300, 2 plants)  500 g (1 plant)\n"
              "Dry weight                   50 g (40 to 60, 2 plants)\n"
              "Loss on drying               82 % (80 to 84, 2 plants)\n"
              "Quality (of 10)              8 (1 plant)\n"
              "Water and feed per dry gram  100 ml (25 to 175, 2 plants)\n");
}

TEST_F(TotalsCommandTest, CompareTakesPlantsAndArchivedPlants)
{
    HarvestAll();
    Done({"archive", "Basil 1"});
    const auto plants = [&](const std::string& name) { return Parsed({"compare", name}).at(0).at("Plants"); };
    EXPECT_EQ(plants("Genovese"), 2);
    EXPECT_EQ(plants("basil 1"), 1);
    EXPECT_EQ(plants("Basil 1,chili"), 2);
    EXPECT_EQ(Parsed({"compare", "Genovese", "--stage", "harvested"}).at(0).at("Plants"), 1);
    EXPECT_EQ(Parsed({"compare", "Genovese", "--tent", "süd"}).at(0).at("Plants"), 0);
    Done({"plant", "add", "Basil, red", "--uuid", "red"}); // the comma is in the name
    EXPECT_EQ(plants("basil, RED"), 1);
    Done({"plant", "add", "Dill", "--uuid", "abcdef"});
    EXPECT_EQ(plants("abcd"), 1);
    EXPECT_NE(Refused({"compare", "abc"}).find("\"abc\": no strain or plant has this name"), std::string::npos);
    Done({"strain", "add", "Opal"});
    EXPECT_EQ(plants("opal"), 0);
    EXPECT_EQ(Parsed({"compare", "opal"}).at(0).at("Name"), "Opal");
}

TEST_F(TotalsCommandTest, CompareCanLeaveOutArchivedPlants)
{
    HarvestAll();
    Done({"archive", "Basil 1"});
    EXPECT_EQ(Parsed({"compare", "Genovese", "--without-archived"}).at(0).at("Plants"), 1);
    EXPECT_EQ(Parsed({"compare", "Basil 1", "--without-archived"}).at(0).at("Plants"), 0);
    const auto last = [&](const Words& words) { return Lines(RunOnTerminal(words, {}, 200).Out).back(); };
    EXPECT_EQ(last({"compare", "Genovese"}), "1 archived plant is included; --without-archived leaves it out.");
    EXPECT_EQ(last({"compare", "Genovese", "--without-archived"}).find("archived"), std::string::npos);
    EXPECT_EQ(last({"compare", "Cayenne"}).find("archived"), std::string::npos);
    EXPECT_EQ(Done({"compare", "Genovese"}).find("archived"), std::string::npos);
    Done({"archive", "Basil 2"});
    EXPECT_EQ(last({"compare", "Genovese"}), "2 archived plants are included; --without-archived leaves them out.");
}

TEST_F(TotalsCommandTest, CompareTakesTheTimeOfTheHarvests)
{
    HarvestAll();
    const auto dry = [&](Words words)
    {
        words.insert(words.begin(), {"compare", "Genovese"});
        return Parsed(words).at(0).at("DryWeightGMean");
    };
    EXPECT_EQ(dry({}), 50.0);
    EXPECT_EQ(dry({"--from", "2025-07-02"}), 60.0);
    EXPECT_EQ(dry({"--to", "2025-07-01"}), 40.0);
    EXPECT_EQ(dry({"--from", "2025-07-01", "--to", "2025-07"}), 50.0);
    EXPECT_TRUE(dry({"--to", "2024"}).is_null());
    EXPECT_NE(Mistaken({"compare", "Genovese", "--from", "2025", "--to", "2024"}).find("swap them"), std::string::npos);
}

TEST_F(TotalsCommandTest, CompareRefusesUnknownNamesWithTheNearest)
{
    EXPECT_NE(Refused({"compare", "Genovese", "Cayene"})
                  .find("\"Cayene\": no strain or plant has this name; did you mean \"Cayenne\"?"),
              std::string::npos);
    EXPECT_NE(Refused({"compare", "Basil 3"}).find("did you mean \"Basil 1\" or \"Basil 2\"?"), std::string::npos);
    EXPECT_NE(Refused({"compare", "Basil 1,Mint"}).find("\"Mint\": no plant has this name"), std::string::npos);
    EXPECT_NE(Refused({"compare", "zz"}).find("`plantjournal strain list` shows all strains"), std::string::npos);
    EXPECT_NE(Mistaken({"compare"}).find("STRAIN-OR-PLANT"), std::string::npos);
}

TEST_F(TotalsCommandTest, ComparePrintsJSONAndCSV)
{
    HarvestAll();
    ExpectFields(Parsed({"compare", "Genovese", "Cayenne"}).at(0), {{"Name", "Genovese"},
                                                                    {"Harvested", 2},
                                                                    {"DryWeightGNumber", 2},
                                                                    {"DryWeightGMean", 50.0},
                                                                    {"DryWeightGLeast", 40.0},
                                                                    {"DryWeightGMost", 60.0},
                                                                    {"DaysFromFlipMean", nullptr}});
    const std::vector<std::string> lines = Lines(Done({"compare", "Genovese", "Cayenne", "--csv"}));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("Name,Plants,Harvested,DaysFromSeedNumber,DaysFromSeedMean,")) << lines[0];
    EXPECT_TRUE(lines[1].starts_with("Genovese,2,2,2,124,122,126,0,,,,")) << lines[1];
}

TEST_F(TotalsCommandTest, OnANarrowTerminalTheSetsFollowOneAnother)
{
    HarvestAll();
    const std::string shown = RunOnTerminal({"compare", "Genovese", "Cayenne"}, {}, 60).Out;
    EXPECT_TRUE(shown.starts_with("Name                         Genovese\n"
                                  "Plants                       2\n"))
        << shown;
    EXPECT_NE(shown.find("\n\nName                         Cayenne\n"), std::string::npos) << shown;
    for (const std::string& line : Lines(shown))
        EXPECT_LE(line.size(), 60U) << line;
    EXPECT_EQ(RunOnTerminal({"compare", "Genovese", "Cayenne"}, {}, 80).Out, Done({"compare", "Genovese", "Cayenne"}));
}

TEST_F(TotalsCommandTest, TheTreeShowsHarvests)
{
    HarvestAll();
    Done({"clone", "Basil 1"});
    EXPECT_EQ(Done({"plant", "tree"}), "Chili (Cayenne) Harvested: 500 g wet, 2025-07-01\n"
                                       "Basil 1 (Genovese) Harvested: 60 g dry, quality 8 of 10, 2025-07-05\n"
                                       "└── Basil 1 clone 1 (Genovese) Clone\n"
                                       "Basil 2 (Genovese) Harvested: 40 g dry, 2025-07-01\n");
    const JSON tree = Parsed({"plant", "tree", "Basil 1"}).at(0);
    ExpectFields(tree.at("Harvest"), {{"DryWeightG", 60.0}, {"HarvestDate", "2025-07-05"}});
    EXPECT_TRUE(tree.at("Clones").at(0).at("Harvest").is_null());
}

} // namespace

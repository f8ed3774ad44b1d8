#include "query/query_test.h"

#include <limits>

using namespace support;

namespace
{

class TotalsTest : public QueryTest
{
  protected:
    using Totals = std::vector<PlantTotal>;

    Plant PlantIn(const std::string& name, const std::string& strain, const std::string& tent)
    {
        Plant plant = NewPlant(name, strain);
        plant.Tent = tent;
        EXPECT_TRUE(Repository.UpdatePlant(plant));
        return plant;
    }

    void Water(const Plant& plant, const std::string& date, double ml = 100)
    {
        PlantCareEntry entry;
        entry.CareDate = date;
        entry.AmountMl = ml;
        Stored(entry, plant, &PlantRepository::CreatePlantCareEntry);
    }

    void Feed(const Plant& plant, const std::string& date, const std::string& product, double ec = 0, double ph = 0,
              double runoff = 0)
    {
        PlantCareEntry entry;
        entry.CareDate = date;
        entry.Action = PlantCareAction::Feed;
        entry.Product = product;
        entry.AmountMl = 10;
        entry.EC = ec;
        entry.PH = ph;
        entry.RunoffMl = runoff;
        Stored(entry, plant, &PlantRepository::CreatePlantCareEntry);
    }

    Totals TotalsOf(const PlantTotalFilter& filter) { return AnswerOf<Totals>(QueryPlantTotals, filter); }

    // Period, key, name and amount of each row.
    std::string Rows(const PlantTotalFilter& filter)
    {
        std::string text;
        for (const PlantTotal& total : TotalsOf(filter))
            text += total.Period + '|' + total.Key + '|' + total.Name + '|' +
                    std::to_string(static_cast<int>(total.AmountMl)) + '\n';
        return text;
    }

    std::string Rows(PlantTotalGroup group, PlantPeriod period)
    {
        PlantTotalFilter filter;
        filter.Group = group;
        filter.Period = period;
        return Rows(filter);
    }
};

TEST_F(TotalsTest, WithoutAnEntryThereIsNoRow)
{
    PlantIn("Basil", "Genovese", "Window");
    for (int group = 0; group <= static_cast<int>(PlantTotalGroup::Product); ++group)
        EXPECT_EQ(Rows(static_cast<PlantTotalGroup>(group), PlantPeriod::Day), "");
}

TEST_F(TotalsTest, ARowAddsUpItsEntries)
{
    const Plant plant = PlantIn("Basil", "", "");
    Feed(plant, "2025-06-01", "Bloom", 1.5, 6, 20);
    Feed(plant, "2025-06-02", "Grow", 2.5, 5.5);
    Feed(plant, "2025-06-02", "Grow", 1.75, 0, 5);
    Water(plant, "2025-06-03");
    const Totals totals = TotalsOf({});
    ASSERT_EQ(totals.size(), 1U);
    PlantTotal expected;
    expected.Feedings = 3;
    expected.Waterings = 1;
    expected.AmountMl = 130;
    expected.RunoffMl = 25;
    expected.EC = {3, 5.75 / 3, 1.5, 2.5};
    expected.PH = {2, 5.75, 5.5, 6};
    EXPECT_EQ(Printed(totals[0]), Printed(expected));
}

TEST_F(TotalsTest, OnlyNumbersAboveZeroAreMeasured)
{
    const Plant plant = PlantIn("Basil", "", "");
    for (const double number : {0.0, -1.0, std::numeric_limits<double>::infinity(), 5e-324})
        Feed(plant, "2025-06-01", "", number, number);
    RunSQL("UPDATE PlantCareEntries SET EC='many' WHERE EC=5e-324;");
    const PlantTotal total = TotalsOf({}).at(0);
    EXPECT_EQ(total.EC.Number, 0);
    EXPECT_EQ(total.EC.Mean, 0);
    EXPECT_EQ(total.PH.Number, 1);
    EXPECT_EQ(total.PH.Mean, 5e-324);
}

TEST_F(TotalsTest, ASumKeepsTheLowDigits)
{
    const Plant plant = PlantIn("Basil", "", "");
    for (int entry = 0; entry < 10; ++entry)
        Water(plant, "2025-06-01", 0.1);
    EXPECT_EQ(TotalsOf({}).at(0).AmountMl, 1.0);
    Water(plant, "2025-06-01", 1e17);
    Water(plant, "2025-06-01", -1e17);
    EXPECT_EQ(TotalsOf({}).at(0).AmountMl, 1.0);
    Water(plant, "2025-06-01", std::numeric_limits<double>::infinity());
    Water(plant, "2025-06-01", 1);
    EXPECT_EQ(TotalsOf({}).at(0).AmountMl, std::numeric_limits<double>::infinity());
}

TEST_F(TotalsTest, AMeanIsWithinTheValues)
{
    const Plant plant = PlantIn("Basil", "", "");
    for (const double number : {5e-324, 5e-324, 1.7e308, 1.7e308})
        Feed(plant, number < 1 ? "2025-06-01" : "2025-06-02", "", number, 6.2);
    for (const PlantTotal& total : TotalsOf({{}, {}, "", "", PlantTotalGroup::All, PlantPeriod::Day}))
    {
        EXPECT_EQ(total.EC.Mean, total.EC.Least);
        EXPECT_EQ(total.EC.Mean, total.EC.Most);
        EXPECT_EQ(total.PH.Mean, 6.2);
    }
}

TEST_F(TotalsTest, ARowIsAPlantAStrainATentOrAProduct)
{
    const Plant basil = PlantIn("Basil", "Genovese", "Window");
    const Plant thai = PlantIn("Basil", "thai", "");
    const Plant mint = PlantIn("mint", "", "Window");
    Water(basil, "2025-06-01", 1);
    Water(basil, "2025-06-02", 2);
    Water(thai, "2025-06-01", 4);
    Water(mint, "2025-06-01", 8);
    Feed(mint, "2025-06-02", "bloom");
    Feed(thai, "2025-06-02", "Ash");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::All), "|||35\n");
    const std::string first = '|' + basil.UUID + "|Basil|3\n";
    const std::string second = '|' + thai.UUID + "|Basil|14\n";
    EXPECT_EQ(Rows(PlantTotalGroup::Plant, PlantPeriod::All),
              (basil.UUID < thai.UUID ? first + second : second + first) + '|' + mint.UUID + "|mint|18\n");
    EXPECT_EQ(Rows(PlantTotalGroup::Strain, PlantPeriod::All), "|||18\n|Genovese|Genovese|3\n|thai|thai|14\n");
    EXPECT_EQ(Rows(PlantTotalGroup::Tent, PlantPeriod::All), "|||14\n|Window|Window|21\n");
    EXPECT_EQ(Rows(PlantTotalGroup::Product, PlantPeriod::All), "|||15\n|Ash|Ash|10\n|bloom|bloom|10\n");
}

TEST_F(TotalsTest, APeriodIsADayAWeekOrAMonth)
{
    const Plant plant = PlantIn("Basil", "", "");
    Water(plant, "2025-03-02", 1); // a Sunday
    Water(plant, "2025-03-03", 2);
    Water(plant, "2025-03-09", 4);
    Water(plant, "2025-02-28", 8);
    Water(plant, "2025-03-03", 16);
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Day),
              "2025-02-28|||8\n2025-03-02|||1\n2025-03-03|||18\n2025-03-09|||4\n");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Week), "2025-02-24|||9\n2025-03-03|||22\n");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Month), "2025-02|||8\n2025-03|||23\n");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::All), "|||31\n");
    Water(plant, "0000-01-01", 3);
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Week).substr(0, 14), "-0001-12-27|||");
}

TEST_F(TotalsTest, DatesThatAreNoDaysAreARowWithoutPeriod)
{
    const Plant plant = PlantIn("Basil", "", "");
    for (const char* date : {"", "2025", "2025-02-30", "zz"})
        Water(plant, date, 1);
    Water(plant, "2025-03-03", 16);
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Day), "|||4\n2025-03-03|||16\n");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Week), "|||4\n2025-03-03|||16\n");
    EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::Month), "|||4\n2025-03|||16\n");
}

TEST_F(TotalsTest, RowsAreSortedByPeriodThenByName)
{
    const Plant plant = PlantIn("Basil", "", "");
    for (const char* product : {"b", "a", "C", "B"})
        for (const char* date : {"2025-03-02", "2025-03-01"})
            Feed(plant, date, product);
    EXPECT_EQ(Rows(PlantTotalGroup::Product, PlantPeriod::Day),
              "2025-03-01|a|a|10\n2025-03-01|B|B|10\n2025-03-01|b|b|10\n2025-03-01|C|C|10\n"
              "2025-03-02|a|a|10\n2025-03-02|B|B|10\n2025-03-02|b|b|10\n2025-03-02|C|C|10\n");
}

TEST_F(TotalsTest, ThePlantsTheActionsAndTheDatesSelect)
{
    const Plant basil = PlantIn("Basil", "Genovese", "Window");
    const Plant mint = PlantIn("Mint", "Green", "Window");
    int ml = 1;
    for (const Plant& plant : {basil, mint})
        for (const char* date : {"2025-02-28", "2025-03-01", "2025-03-31 08:00", "2025-04-01"})
            Water(plant, date, ml *= 2);
    Feed(mint, "2025-03-02", "Bloom");
    const auto amount = [&](const PlantTotalFilter& filter)
    {
        const Totals totals = TotalsOf(filter);
        return totals.empty() ? 0 : totals.at(0).AmountMl;
    };
    EXPECT_EQ(amount({}), 520);
    EXPECT_EQ(amount({{{mint.UUID}, {}, {}, {}}, {}, "", ""}), 490);
    EXPECT_EQ(amount({{{}, {"Genovese"}, {}, {}}, {}, "", ""}), 30);
    EXPECT_EQ(amount({{{}, {}, {"Window"}, {}}, {}, "", ""}), 520);
    EXPECT_EQ(amount({{{}, {}, {}, {PlantStage::Flower}}, {}, "", ""}), 0);
    EXPECT_EQ(amount({{{"unknown"}, {}, {}, {}}, {}, "", ""}), 0);
    EXPECT_EQ(amount({{}, {PlantCareAction::Feed}, "", ""}), 10);
    EXPECT_EQ(amount({{}, {PlantCareAction::Water}, "", ""}), 510);
    EXPECT_EQ(amount({{}, {PlantCareAction::Water, PlantCareAction::Feed}, "", ""}), 520);
    for (const PlantSet& set : {PlantSet{}, PlantSet{{basil.UUID, mint.UUID}, {}, {}, {}}})
    {
        EXPECT_EQ(amount({set, {PlantCareAction::Water}, "2025-03-01", ""}), 510 - 2 - 32);
        EXPECT_EQ(amount({set, {PlantCareAction::Water}, "", "2025-03"}), 510 - 16 - 256);
        EXPECT_EQ(amount({set, {PlantCareAction::Water}, "2025-03", "2025-03-31"}), 4 + 8 + 64 + 128);
    }
}

TEST_F(TotalsTest, EntriesWithoutAPlantDoNotCount)
{
    const Plant plant = PlantIn("Basil", "", "");
    Water(plant, "2025-06-01", 1);
    Water(plant, "2025-06-01", 2);
    RunSQL("PRAGMA foreign_keys=OFF;");
    for (const std::string uuid : {"'gone'", "PlantUUID||char(0)||'x'"})
    {
        RunSQL("UPDATE PlantCareEntries SET PlantUUID=" + uuid + " WHERE AmountMl=2;");
        EXPECT_EQ(Rows(PlantTotalGroup::All, PlantPeriod::All), "|||1\n") << uuid;
        RunSQL("UPDATE PlantCareEntries SET PlantUUID='" + plant.UUID + "';");
    }
}

TEST_F(TotalsTest, ActionsWithUnknownNamesAreWaterings)
{
    const Plant plant = PlantIn("Basil", "", "");
    Feed(plant, "2025-06-01", "Bloom");
    RunSQL("PRAGMA ignore_check_constraints=ON;");
    RunSQL("UPDATE PlantCareEntries SET Action='Mist';");
    EXPECT_EQ(TotalsOf({}).at(0).Waterings, 1);
}

} // namespace

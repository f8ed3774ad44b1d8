// Tests of the page: its head, its sections, its tables, and what it says of the plants and dates.

#include "report/charts.h"
#include "report/report_page.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace support;

namespace
{

using Texts = std::vector<std::string>;

class PageTest : public ReportTest
{
  protected:
    // Two plants with something for every section.
    void StoreSeason()
    {
        Plant basil = Sown("Basil", "Genovese");
        Plant cutting = NewPlant("Cutting", "Genovese", basil.UUID);
        for (const std::string year : {"2024", "2025"})
            for (const std::string day : {"-03-01", "-03-08", "-03-15"})
            {
                Care(basil, year + day);
                Care(cutting, year + day, PlantCareAction::Feed, 250, 1.2, 6.1);
            }
        HarvestRecord harvest;
        harvest.HarvestDate = "2025-06-01";
        harvest.DryWeightG = 80;
        EXPECT_TRUE(Repository.SaveHarvestRecord(basil, harvest));
        PlantHealthObservation mites;
        mites.PlantUUID = basil.UUID;
        mites.ObservationDate = "2025-04-01";
        mites.Issue = "Mites";
        EXPECT_TRUE(Repository.CreatePlantHealthObservation(mites));
        Photo(basil, "2025-04-02", "photos/basil.jpg", "in bloom");
    }
};

TEST_F(PageTest, APageIsXMLThatForbidsAllButItsPhotos)
{
    StoreSeason();
    const ReportPage page = Page();
    EXPECT_EQ(page.HTML().rfind("<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">", 0), 0U);
    const std::vector<Element> metas = page.Named("meta");
    EXPECT_EQ(metas.at(0)["charset"], "utf-8");
    EXPECT_EQ(metas.at(1)["http-equiv"], "Content-Security-Policy");
    EXPECT_EQ(metas.at(1)["content"], "default-src 'none'; style-src 'unsafe-inline'; img-src 'self' data: file:; "
                                      "base-uri 'none'; form-action 'none'");
    Texts names;
    for (std::size_t i = 2; i < metas.size(); ++i)
        names.push_back(metas[i]["name"] + ": " + metas[i]["content"]);
    EXPECT_EQ(names, (Texts{"viewport: width=device-width, initial-scale=1", "color-scheme: light dark",
                            "referrer: no-referrer"}));
    ASSERT_EQ(page.Named("link").size(), 1U);
    EXPECT_EQ(page.Named("link")[0]["rel"], "icon") << "without one, a browser asks the server for it";
    EXPECT_TRUE(page.Named("script").empty());
    for (const Element& element : page.All())
        for (const auto& [attribute, value] : element.Attributes)
        {
            EXPECT_NE(attribute.substr(0, 2), "on") << element.Name;
            EXPECT_NE(attribute, "style") << element.Name;
            const bool isLink = attribute == "src" || attribute == "href";
            EXPECT_TRUE(!isLink || value.front() == '#' || value == "data:," || value == "photos/basil.jpg") << value;
        }
}

TEST_F(PageTest, OnlyElementsWithoutContentCloseThemselves)
{
    StoreSeason();
    std::string html = Page().HTML();
    for (std::size_t begin = html.find("<svg"); begin != std::string::npos; begin = html.find("<svg", begin))
        html.erase(begin, html.find("</svg>", begin) + 6 - begin); // SVG has other rules
    for (std::size_t end = html.find("/>"); end != std::string::npos; end = html.find("/>", end + 1))
    {
        const std::size_t begin = html.rfind('<', end);
        const std::string name = html.substr(begin + 1, html.find(' ', begin) - begin - 1);
        EXPECT_TRUE(name == "meta" || name == "link" || name == "img") << name;
    }
}

TEST_F(PageTest, ASeasonHasItsSectionsInOrder)
{
    StoreSeason();
    const ReportPage page = Page();
    EXPECT_EQ(page.Sections(),
              (Texts{"stages", "care", "amounts", "measurements", "health", "harvests", "lineage", "years", "photos"}));
    Texts links;
    for (const Element& link : page.Named("a"))
        links.push_back(link["href"]);
    EXPECT_EQ(links, (Texts{"#stages", "#care", "#amounts", "#measurements", "#health", "#harvests", "#lineage",
                            "#years", "#photos"}));
    EXPECT_EQ(page.Texts("a"), page.Texts("h2"));
    ASSERT_EQ(page.Named("nav").size(), 1U);
    EXPECT_EQ(page.Named("nav")[0]["aria-label"], "Contents");
}

TEST_F(PageTest, APhotoOfASeasonIsCaptionedWithItsPlant)
{
    StoreSeason();
    EXPECT_TRUE(Contains(Page().Section("photos"), "<figcaption><b>Basil</b> <span>2 Apr 2025: in bloom</span>"));
}

TEST_F(PageTest, EachPictureIsDrawnForADesktopAndForATelephone)
{
    StoreSeason();
    const ReportPage page = Page();
    Texts sizes;
    for (const Element& figure : page.Named("figure"))
        if (figure.Attributes.contains("class"))
            sizes.push_back(figure["class"]);
    Texts widths;
    std::vector<std::string> ids;
    for (const Element& picture : page.Named("svg"))
        widths.push_back(picture["width"]);
    ASSERT_EQ(sizes.size(), 16U);
    for (std::size_t i = 0; i < sizes.size(); ++i)
    {
        EXPECT_EQ(sizes[i], i % 2 == 0 ? "wide" : "narrow");
        EXPECT_EQ(widths.at(i), i % 2 == 0 ? "720" : "360");
    }
    for (const Element& element : page.All())
        if (const auto id = element.Attributes.find("id"); id != element.Attributes.end())
            ids.push_back(id->second);
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end()) << "an ID occurs twice";
}

TEST_F(PageTest, TwoSectionsNeedNoContents)
{
    const Plant basil = Sown("Basil");
    Sown("Mint");
    Photo(basil, "2025-04-02", "photos/basil.jpg");
    EXPECT_EQ(Page().Sections(), (Texts{"stages", "photos", "missing"}));
    EXPECT_TRUE(Page().Named("nav").empty());
    Care(basil, "2025-04-03", PlantCareAction::Water, 0);
    EXPECT_EQ(Page().Sections(), (Texts{"stages", "care", "photos", "missing"}));
    EXPECT_EQ(Page().Texts("a").size(), 3U);
}

TEST_F(PageTest, TheHeadStatesTheTitlePlantsEntriesAndDates)
{
    StoreSeason();
    const ReportPage page = Page();
    EXPECT_EQ(page.Texts("title").at(0), "A season");
    EXPECT_EQ(page.Texts("h1"), Texts{"A season"});
    EXPECT_TRUE(Contains(page.HTML(), "<p>2 plants, 16 entries from 1 Mar 2024 to 1 Jun 2025</p>")) << page.HTML();
    EXPECT_TRUE(Contains(page.HTML(), "Made on 31 Dec 2025"));
}

TEST_F(PageTest, TheHeadStatesTheLimitsOfTheReport)
{
    StoreSeason();
    Options.Plants.Strains = {"Genovese", "<b>"};
    Options.Plants.Tents = {""};
    Options.Plants.Stages = {PlantStage::Veg, PlantStage::Harvested};
    Options.From = "2025-01";
    Options.To = "2025-05";
    std::string html = Page().HTML();
    EXPECT_TRUE(Contains(html, "<p>Strain: Genovese, &lt;b&gt;</p>\n<p>Stage: Veg, Harvested</p>\n"
                               "<p>From 2025-01 to 2025-05</p>"));
    Options.From.clear();
    Options.Plants = {};
    html = Page().HTML();
    EXPECT_TRUE(Contains(html, "<p>To 2025-05</p>"));
    EXPECT_FALSE(Contains(html, "<p>Strain"));
}

TEST_F(PageTest, TextsOfTheHeadAreCutAndKeepTheirDirection)
{
    Sown("Basil", "\u05e9");
    Sown("Mint", "\u05e9");
    Options.Plants.Strains = {"\u05e9"};
    Options.From = "\u05d0";
    Options.To = "\u05d1";
    Options.Title = std::string(10'000, 'a');
    std::string html = Page().HTML();
    EXPECT_TRUE(Contains(html, "<p>Strain: \u2068\u05e9\u2069</p>"));
    EXPECT_TRUE(Contains(html, "<p>From \u2068\u05d0\u2069 to \u2068\u05d1\u2069</p>"));
    EXPECT_EQ(Page().Texts("h1").at(0), std::string(199, 'a') + "\xE2\x80\xA6");
    EXPECT_EQ(Page().Texts("title").at(0), Page().Texts("h1").at(0));
    Options.From.clear();
    html = Page().HTML();
    EXPECT_TRUE(Contains(html, "<p>To \u2068\u05d1\u2069</p>"));
}

TEST_F(PageTest, ThePageOfOnePlantDoesNotListIt)
{
    Options.Plants.UUIDs = {Sown("Basil").UUID};
    EXPECT_FALSE(Contains(Page().HTML(), "Plants:"));
}

TEST_F(PageTest, TheHeadNamesThePlantsThatWereChosen)
{
    for (int i = 1; i <= 22; ++i)
        Options.Plants.UUIDs.push_back(Sown("P" + std::to_string(i)).UUID);
    const std::string html = Page().HTML();
    EXPECT_TRUE(Contains(html, "<p>Plants: P1, P10, P11")) << html.substr(html.find("<body>"), 300);
    EXPECT_TRUE(Contains(html, " and 2 more</p>"));
}

TEST_F(PageTest, OnlyEntriesBetweenTheDatesCount)
{
    StoreSeason();
    Options.From = "2024-03-08";
    Options.To = "2025-03";
    const ReportPage page = Page();
    EXPECT_TRUE(Contains(page.HTML(), "2 plants, 11 entries from 8 Mar 2024 to 15 Mar 2025"));
    EXPECT_EQ(page.Sections(), (Texts{"stages", "care", "amounts", "measurements", "lineage", "years", "missing"}));
    EXPECT_TRUE(Contains(page.Section("stages"), "2025-03-31")) << "the last day of the report";
}

TEST_F(PageTest, AStageBeginsNotBeforeTheReport)
{
    Sown("Basil");
    Sown("Mint");
    Options.From = "2025-05-01";
    Options.To = "2025-05-20";
    const std::string stages = Page().Section("stages");
    EXPECT_TRUE(Contains(stages, "<td class=\"date\">2025-05-01</td><td class=\"date\">2025-05-20</td>")) << stages;
    Options.From = "2026-01-01";
    Options.To.clear();
    EXPECT_EQ(Page().Section("stages"), "");
}

TEST_F(PageTest, OnlyPlantsOfTheSetAreDrawn)
{
    StoreSeason();
    Sown("Sage", "Sage");
    Options.Plants.Strains = {"Sage"};
    EXPECT_EQ(Page().Section("care"), "");
    Options.Plants = {};
    Options.Plants.Stages = {PlantStage::Veg};
    const ReportPage page = Page();
    EXPECT_TRUE(Contains(page.HTML(), "2 plants"));
    EXPECT_TRUE(Contains(page.Section("stages"), "Sage"));
    EXPECT_FALSE(Contains(page.HTML(), "Mites"));
    EXPECT_EQ(page.Section("photos"), "");
}

TEST_F(PageTest, AnEmptyJournalIsAPageThatSaysWhatIsMissing)
{
    const ReportPage page = Page();
    EXPECT_TRUE(Contains(page.HTML(), "<p>0 plants, 0 entries</p>"));
    EXPECT_EQ(page.Sections(), Texts{"missing"});
    EXPECT_EQ(page.Texts("h2"), Texts{"Nothing to draw yet"});
    EXPECT_TRUE(Contains(page.Section("missing"), "<p>The journal has no plant.</p>"));
    EXPECT_TRUE(page.Named("nav").empty());
}

TEST_F(PageTest, ASetWithoutPlantsIsAPageThatSaysWhatIsMissing)
{
    NewPlant("Basil");
    const std::string missing = "<p>The journal has no plant of this selection.</p>";
    Options.Plants.UUIDs = {"unknown"};
    EXPECT_TRUE(Contains(Page().Section("missing"), missing));
    Options.Plants = {};
    Options.Plants.Strains = {"unknown"};
    EXPECT_TRUE(Contains(Page().Section("missing"), missing));
    Options.Plants = {};
    Options.Plants.Tents = {"unknown"};
    EXPECT_TRUE(Contains(Page().Section("missing"), missing));
    Options.Plants = {};
    Options.Plants.Stages = {PlantStage::Cure};
    EXPECT_TRUE(Contains(Page().Section("missing"), missing));
}

TEST_F(PageTest, AFewPlantsWithoutDatesAreAPage)
{
    NewPlant("Basil");
    NewPlant("Mint");
    const ReportPage page = Page();
    EXPECT_TRUE(Contains(page.HTML(), "<p>2 plants, 0 entries</p>"));
    EXPECT_EQ(page.Sections(), Texts{"missing"});
    EXPECT_EQ(page.Texts("b").size(), 8U); // the charts
}

TEST_F(PageTest, WhatIsMissingFollowsWhatIsDrawn)
{
    Sown("Basil");
    Sown("Mint");
    const ReportPage page = Page();
    EXPECT_EQ(page.Sections(), (Texts{"stages", "missing"}));
    EXPECT_EQ(page.Texts("h2").back(), "Not drawn");
    EXPECT_EQ(page.Texts("b").size(), 7U);
}

TEST_F(PageTest, TheFiguresStandInATableBelowThePicture)
{
    StoreSeason();
    const std::string section = Page().Section("harvests");
    const std::size_t picture = section.rfind("</svg>");
    const std::size_t table = section.find("<details><summary>Figures: 1 row</summary>");
    ASSERT_NE(table, std::string::npos) << section;
    EXPECT_LT(picture, table);
    EXPECT_TRUE(Contains(section, "<td>Basil</td>"));
    EXPECT_TRUE(Contains(section, "<td class=\"number\">80</td>")) << section.substr(table);
    EXPECT_TRUE(Contains(section, "tabindex=\"0\""));
    EXPECT_TRUE(Contains(section, "<div class=\"table\""));
}

TEST_F(PageTest, OnPaperALongTableIsSetInColumns)
{
    const Plant basil = Sown("Basil");
    for (int day = 10; day < 22; ++day)
        Care(basil, "2025-04-" + std::to_string(day), PlantCareAction::Feed, 500, 1.5);
    EXPECT_TRUE(Contains(Page().Section("care"), "<div class=\"table\"")) << "12 rows";
    Care(basil, "2025-04-22", PlantCareAction::Feed, 500, 1.5);
    const ReportPage page = Page();
    EXPECT_TRUE(Contains(page.Section("care"), "<div class=\"three-columns table\""));
    EXPECT_TRUE(Contains(page.Section("measurements"), "<div class=\"two-columns table\""));
    for (const char* rule : {".two-columns{columns:2}", ".three-columns{columns:3}"})
        EXPECT_TRUE(Contains(page.HTML(), rule)) << rule;
}

TEST_F(PageTest, ATableIsFoldedAndScrollsByItself)
{
    StoreSeason();
    const ReportPage page = Page();
    EXPECT_EQ(page.Named("details").size(), 8U);
    EXPECT_TRUE(page.Named("details")[0].Attributes.empty()) << "folded";
    EXPECT_TRUE(
        Contains(page.Section("health"),
                 "<div class=\"table\" role=\"region\" tabindex=\"0\" aria-label=\"Figures: Health problems\">"))
        << page.Section("health");
    EXPECT_TRUE(Contains(page.Section("health"), "<thead><tr><th>Issue</th>"));
}

TEST_F(PageTest, AColumnOfNumbersMayHaveEmptyCells)
{
    for (const double wet : {0.0, 250.5})
    {
        Plant plant = Sown(wet > 0 ? "7" : "Basil");
        HarvestRecord harvest;
        harvest.DryWeightG = 1234;
        harvest.WetWeightG = wet;
        EXPECT_TRUE(Repository.SaveHarvestRecord(plant, harvest));
    }
    const std::string section = Page().Section("harvests");
    EXPECT_TRUE(Contains(section, "<td class=\"number\">1,234</td><td class=\"number\"></td>")) << section;
    EXPECT_TRUE(Contains(section, "<th class=\"number\">Wet weight, g</th>"));
    EXPECT_TRUE(Contains(section, "<th>Plant</th>"));
}

TEST_F(PageTest, ALongTableIsCutAndSaysSo)
{
    const Plant basil = Sown("Basil");
    RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<599) INSERT INTO PlantCareEntries"
           "(PlantUUID,CareDate,Action,AmountMl) SELECT '" +
           basil.UUID +
           "',date('2024-01-01','+'||i||' days'),'Water',"
           "100 FROM n;");
    const std::string section = Page().Section("care");
    EXPECT_TRUE(Contains(section, "Figures: 600 rows"));
    EXPECT_TRUE(
        Contains(section, "These are the first 500 rows. 100 more are left out, so that the page stays small."));
    std::size_t rows = 0;
    for (std::size_t at = section.find("<tr>"); at != std::string::npos; at = section.find("<tr>", at + 1))
        ++rows;
    EXPECT_EQ(rows, 501U);
}

TEST_F(PageTest, HostileTextsStayTexts)
{
    for (const std::string& text : HostileTexts())
    {
        Plant plant = Sown(text, text);
        plant.Tent = plant.Medium = plant.PotSize = plant.Notes = plant.SeedDate = text;
        EXPECT_TRUE(Repository.UpdatePlant(plant));
        NewPlant(text, text, plant.UUID);
        Care(plant, "2025-03-01", PlantCareAction::Feed, 1, 1, 1);
        Care(plant, text);
        Photo(plant, text, "photos/" + text, text);
        PlantHealthObservation observation;
        observation.PlantUUID = plant.UUID;
        observation.ObservationDate = "2025-03-01";
        observation.Issue = "x" + text;
        EXPECT_TRUE(Repository.CreatePlantHealthObservation(observation));
        PlantJournalEntry entry;
        entry.PlantUUID = plant.UUID;
        entry.EntryDate = entry.Details = text;
        EXPECT_TRUE(Repository.CreatePlantJournalEntry(entry));
        Options.Title = text;
        Options.Plants.UUIDs = {plant.UUID};
        EXPECT_TRUE(Page().Named("script").empty());
    }
    Options.Plants.UUIDs.clear();
    const ReportPage page = Page();
    EXPECT_TRUE(page.Named("script").empty());
    EXPECT_TRUE(page.Named("i").empty());
    EXPECT_LT(page.HTML().size(), 400'000U) << "texts of 10,000 letters are cut";
}

TEST_F(PageTest, TheStyleHasRulesForEachMedium)
{
    const std::string style = Page().Texts("style").at(0);
    EXPECT_TRUE(Contains(style, PlantReportStyle()));
    for (const char* rule : {"@media print", "@media screen and (max-width:46rem)", "prefers-color-scheme:dark",
                             "--ground:#ffffff", "--ground:#15191d", "details-content"})
        EXPECT_TRUE(Contains(style, rule)) << rule;
    EXPECT_FALSE(Contains(PlantReportStyle(), "body")) << "for front ends";
}

} // namespace

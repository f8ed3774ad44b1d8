// Tests of the page of one plant, and of photos.

#include "report/report_page.h"

#include <string>
#include <vector>

using namespace support;

namespace
{

using Texts = std::vector<std::string>;

class PlantPageTest : public ReportTest
{
  protected:
    void Note(const Plant& plant, const std::string& date, const std::string& details)
    {
        PlantJournalEntry entry;
        entry.PlantUUID = plant.UUID;
        entry.EntryDate = date;
        entry.Details = details;
        EXPECT_TRUE(Repository.CreatePlantJournalEntry(entry));
    }

    // The sources of the images, in their order.
    Texts Images()
    {
        Texts sources;
        for (const Element& image : Page().Named("img"))
            sources.push_back(image["src"]);
        return sources;
    }
};

TEST_F(PlantPageTest, ThePageOfOnePlantStatesItsFacts)
{
    Plant basil = Sown("Basil", "Genovese");
    basil.Tent = "South";
    basil.PotSize = "11 l";
    basil.Medium = "soil";
    basil.Sex = PlantSex::Female;
    basil.CloneDate = "spring";
    basil.TransplantDate = "2025-03-20";
    basil.FlipDate = "2025-05-01";
    basil.HarvestDate = "2025-07-01";
    basil.FlipHeightCm = 40.5;
    basil.Notes = "first line\nsecond <line>";
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    const ReportPage page = Page();
    EXPECT_EQ(page.Texts("dt"), (Texts{"Strain", "Stage", "Sex", "Tent", "Pot", "Medium", "Sown", "Cut", "Transplanted",
                                       "Flipped", "Harvested", "Height at flip", "Notes"}));
    EXPECT_EQ(page.Texts("dd"),
              (Texts{"Genovese", "Veg", "Female", "South", "11 l", "soil", "1 Mar 2025", "spring", "20 Mar 2025",
                     "1 May 2025", "1 Jul 2025", "40.5 cm", "first line\nsecond <line>"}));
    Sown("Mint");
    EXPECT_TRUE(Page().Named("dl").empty()) << "of two plants";
    Options.Plants.UUIDs = {basil.UUID};
    EXPECT_EQ(Page().Named("dl").size(), 1U);
}

TEST_F(PlantPageTest, TheHistoryFollowsTheStagesOldestFirstByMonth)
{
    const Plant basil = Sown("Basil");
    Note(basil, "2025-04-02", "second");
    Note(basil, "2025-03-20", "first");
    Note(basil, "2025-04-03", "third");
    Note(basil, "some day", "fourth");
    const ReportPage page = Page();
    EXPECT_EQ(page.Sections().at(0), "stages");
    EXPECT_EQ(page.Sections().at(1), "history");
    EXPECT_EQ(page.Texts("h3"), (Texts{"Mar 2025", "Apr 2025", "Without a complete date"}));
    EXPECT_EQ(page.Texts("time"), (Texts{"1 Mar 2025", "20 Mar 2025", "2 Apr 2025", "3 Apr 2025"}));
    const std::string history = page.Section("history");
    EXPECT_TRUE(Contains(history, "<time datetime=\"2025-03-20\">20 Mar 2025</time>"
                                  "<div><b>Observation</b><p>first</p></div>"));
    EXPECT_TRUE(Contains(history, "<span>some day</span><div><b>Observation</b><p>fourth</p>"));
    EXPECT_TRUE(Contains(history, "<b>Sown</b></div>"));
}

TEST_F(PlantPageTest, CareOfTheHistoryIsCountedByMonth)
{
    const Plant basil = Sown("Basil");
    Care(basil, "2025-03-02");
    Care(basil, "2025-03-03");
    Care(basil, "2025-03-04", PlantCareAction::Feed);
    Care(basil, "2025-04-04", PlantCareAction::Feed);
    Care(basil, "2025-05-04");
    const std::string history = Page().Section("history");
    EXPECT_TRUE(Contains(history, "<h3>Mar 2025</h3>\n<p>1 feeding and 2 waterings</p>"));
    EXPECT_TRUE(Contains(history, "<h3>Apr 2025</h3>\n<p>1 feeding</p>"));
    EXPECT_TRUE(Contains(history, "<h3>May 2025</h3>\n<p>1 watering</p>"));
    EXPECT_FALSE(Contains(history, "<b>Water</b>"));
}

TEST_F(PlantPageTest, TheHistoryHoldsThePhotosOfEachMonth)
{
    const Plant basil = Sown("Basil");
    Photo(basil, "2025-04-02", "b.jpg", "later");
    Photo(basil, "2025-03-02", "a.jpg");
    Photo(basil, "2025-04-20", "c.jpg");
    EXPECT_EQ(Images(), (Texts{"a.jpg", "b.jpg", "c.jpg"}));
    const ReportPage page = Page();
    EXPECT_EQ(page.Section("photos"), "");
    const std::string history = page.Section("history");
    EXPECT_LT(history.find("Mar 2025"), history.find("a.jpg"));
    EXPECT_LT(history.find("a.jpg"), history.find("<h3>Apr 2025"));
    EXPECT_TRUE(Contains(history, "<figcaption><span>2 Apr 2025: later</span>"));
    EXPECT_FALSE(Contains(history, "<b>Photo</b>")) << "not among the entries, too";
}

TEST_F(PlantPageTest, AMonthOfOnlyPhotosThatAreLeftOutIsNotNamed)
{
    Photo(Sown("Basil"), "2025-04-02", "a.jpg");
    EXPECT_EQ(Page().Texts("h3"), (Texts{"Mar 2025", "Apr 2025"}));
    Options.PhotoSource = nullptr;
    EXPECT_EQ(Page().Texts("h3"), Texts{"Mar 2025"});
}

TEST_F(PlantPageTest, TheHistoryKeepsToTheDates)
{
    const Plant basil = Sown("Basil");
    Note(basil, "2025-03-20", "early");
    Note(basil, "2025-04-20", "right");
    Note(basil, "2025-05-20", "late");
    Options.From = Options.To = "2025-04";
    const std::string history = Page().Section("history");
    EXPECT_TRUE(Contains(history, "right"));
    EXPECT_FALSE(Contains(history, "early"));
    EXPECT_FALSE(Contains(history, "late"));
}

TEST_F(PlantPageTest, ALongHistoryKeepsTheNewestAndSaysSo)
{
    const Plant basil = Sown("Basil");
    RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<1001) INSERT INTO PlantJournalEntries"
           "(PlantUUID,EntryDate,Type,Details) SELECT '" +
           basil.UUID +
           "',date('2025-03-01','+'||(i/10)||' days'),"
           "'Observation','note '||i||'.' FROM n;");
    const std::string history = Page().Section("history");
    EXPECT_TRUE(Contains(history, "<p>3 older entries are left out, so that the page stays small.</p>"));
    EXPECT_TRUE(Contains(history, "note 1001."));
    EXPECT_FALSE(Contains(history, "note 1."));
    EXPECT_TRUE(Contains(history, "note 2."));
}

TEST_F(PlantPageTest, LongTextsAreCut)
{
    Plant basil = Sown("Basil");
    basil.Notes = std::string(10'000, 'a');
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    Note(basil, "2025-03-20", basil.Notes);
    Photo(basil, "2025-04-02", "a.jpg", basil.Notes);
    const ReportPage page = Page();
    EXPECT_EQ(page.Texts("dd").back(), std::string(999, 'a') + "\xE2\x80\xA6");
    EXPECT_TRUE(Contains(page.HTML(), "<p>" + std::string(999, 'a') + "\xE2\x80\xA6</p>"));
    EXPECT_TRUE(Contains(page.HTML(), "<span>2 Apr 2025: " + std::string(499, 'a') + "\xE2\x80\xA6</span>"));
}

TEST_F(PlantPageTest, AMonthHoldsSixtyPhotos)
{
    const Plant basil = Sown("Basil");
    for (int i = 0; i < 61; ++i)
        Photo(basil, "2025-04-02", "p" + std::to_string(i));
    Photo(basil, "2025-05-02", "later");
    EXPECT_EQ(Images().size(), 61U);
    EXPECT_TRUE(Contains(Page().Section("history"), "<p>Shown: 60 of 61 photos.</p>"));
}

TEST_F(PlantPageTest, OneOlderEntryIsCounted)
{
    const Plant basil = Sown("Basil");
    RunSQL("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1000) INSERT INTO PlantJournalEntries"
           "(PlantUUID,EntryDate,Type,Details) SELECT '" +
           basil.UUID + "','2025-04-01','Observation',i FROM n;");
    const std::string history = Page().Section("history");
    EXPECT_TRUE(Contains(history, "<p>1 older entry is left out, so that the page stays small.</p>"));
    EXPECT_FALSE(Contains(history, "Sown"));
}

TEST_F(PlantPageTest, APlantWithoutAHistoryHasNone)
{
    NewPlant("Basil");
    EXPECT_EQ(Page().Sections(), Texts{"missing"});
    EXPECT_EQ(Page().Texts("dt"), Texts{"Stage"});
}

TEST_F(PlantPageTest, ThePhotosOfASeasonAreAStripNewestFirst)
{
    const Plant basil = Sown("Basil");
    const Plant mint = Sown("Mint");
    Photo(basil, "2025-04-02", "b.jpg");
    Photo(mint, "2025-05-02", "c.jpg", "a <caption>");
    Photo(basil, "2025-03-02", "a \"quoted\".jpg");
    Photo(basil, "", "d.jpg", "no day");
    EXPECT_EQ(Images(), (Texts{"c.jpg", "b.jpg", "a \"quoted\".jpg", "d.jpg"}));
    const std::string photos = Page().Section("photos");
    EXPECT_TRUE(Contains(photos, "<p>4 photos from 2 Mar 2025 to 2 May 2025, the newest first.</p>")) << photos;
    EXPECT_TRUE(Contains(photos, "alt=\"Photo of Mint\" loading=\"lazy\""));
    EXPECT_TRUE(Contains(photos, "<b>Mint</b> <span>2 May 2025: a &lt;caption&gt;</span>"));
    EXPECT_TRUE(Contains(photos, "<b>Basil</b> <span>no day</span>"));
    EXPECT_FALSE(Contains(photos, "Shown:"));
    Options.From = "2025-04";
    EXPECT_EQ(Images(), (Texts{"c.jpg", "b.jpg"}));
}

TEST_F(PlantPageTest, AStripOfOnePhotoNamesItsDayOrNone)
{
    Photo(Sown("Basil"), "2025-04-02", "a.jpg");
    Photo(Sown("Mint"), "some day", "b.jpg");
    Options.To = "2025-04-02";
    EXPECT_TRUE(Contains(Page().Section("photos"), "<p>1 photo on 2 Apr 2025.</p>"));
    Options.From = "3";
    Options.To.clear();
    EXPECT_TRUE(Contains(Page().Section("photos"), "<p>1 photo.</p>"));
    EXPECT_TRUE(Contains(Page().Section("photos"), "<span>some day</span>"));
}

TEST_F(PlantPageTest, APhotoWithoutASourceIsLeftOut)
{
    const Plant basil = Sown("Basil");
    Sown("Mint");
    Photo(basil, "2025-04-02", "missing.jpg");
    Photo(basil, "2025-04-03", "a.jpg");
    Options.PhotoSource = [](const PlantPhoto& photo)
    { return photo.FilePath == "missing.jpg" ? std::string() : "data:image/jpeg;base64,QQ=="; };
    EXPECT_EQ(Images(), Texts{"data:image/jpeg;base64,QQ=="});
    EXPECT_TRUE(Contains(Page().Section("photos"), "<p>Shown: 1 of 2 photos.</p>"));
    Options.PhotoSource = [](const PlantPhoto&) { return std::string(); };
    EXPECT_EQ(Page().Section("photos"), "");
    Options.PhotoSource = nullptr;
    EXPECT_EQ(Page().Section("photos"), "");
}

TEST_F(PlantPageTest, AStripHoldsTheSixtyNewestPhotos)
{
    const Plant basil = Sown("Basil");
    Sown("Mint");
    for (int i = 10; i < 72; ++i)
        Photo(basil, "2025-04-02", "p" + std::to_string(i));
    EXPECT_EQ(Images().size(), 60U);
    EXPECT_EQ(Images().front(), "p71");
    EXPECT_TRUE(Contains(Page().Section("photos"), "<p>Shown: 60 of 62 photos.</p>"));
}

} // namespace

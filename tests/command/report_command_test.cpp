// `report`: the page that it writes, its photos and what it refuses.

#include "command/basil_test.h"
#include "command/four_fields.h"
#include "record/picture.h"
#include "testing/plain_connection.h"

#include <filesystem>
#include <string>

#include <sys/resource.h>

using namespace support;

namespace
{

namespace fs = std::filesystem;

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class ReportCommandTest : public BasilTest
{
  protected:
    std::string Page(const std::string& name = "season.html") const { return FileBytes(Scratch.File(name)); }
};

TEST_F(ReportCommandTest, AReportSaysInOneLineWhatItWrote)
{
    const std::string line = DoneLine({"report", "season.html"});
    const std::string kilobytes = std::to_string((Page().size() + 999) / 1000);
    EXPECT_EQ(line, "Wrote season.html: 1 plant, " + kilobytes + " kB");
    Done({"plant", "add", "Mint"});
    EXPECT_TRUE(DoneLine({"report", "two.html"}).starts_with("Wrote two.html: 2 plants, "));
    EXPECT_TRUE(Page("two.html").starts_with("<!DOCTYPE html>"));
    EXPECT_EQ(Done({"report", "quiet.html", "--quiet"}), "quiet.html\n");
    const JSON json = Parsed({"report", "json.html"});
    EXPECT_EQ(json.at("File"), "json.html");
    EXPECT_EQ(json.at("Plants"), 2);
    EXPECT_EQ(json.at("Bytes"), Page("json.html").size());
}

TEST_F(ReportCommandTest, AnExistingFileIsOnlyReplacedWhenAsked)
{
    Write("season.html", "mine");
    EXPECT_EQ(Refused({"report", "season.html"}), "plantjournal: season.html exists; --overwrite replaces it\n");
    EXPECT_EQ(Page(), "mine");
    Done({"report", "season.html", "--overwrite"});
    EXPECT_TRUE(Page().starts_with("<!DOCTYPE html>"));
}

TEST_F(ReportCommandTest, TheJournalIsNeverReplaced)
{
    EXPECT_TRUE(Contains(Refused({"report", Journal, "--overwrite"}), "this is the journal; name another file"));
}

TEST_F(ReportCommandTest, ADestinationThatCannotBeWrittenIsRefused)
{
    EXPECT_TRUE(Contains(Refused({"report", "missing/season.html"}), "No such file or directory"));
    EXPECT_TRUE(Contains(Refused({"report", "data", "--overwrite"}), "data: "));
    EXPECT_TRUE(fs::is_directory(Scratch.File("data")));
}

TEST_F(ReportCommandTest, ADashIsStandardOutput)
{
    const std::string page = Done({"report", "-"});
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
    EXPECT_TRUE(page.ends_with("</html>\n"));
    EXPECT_FALSE(fs::exists(Scratch.File("-")));
}

TEST_F(ReportCommandTest, PlantsAreNamedOrSelected)
{
    Done({"plant", "add", "Mint", "--strain", "Moroccan", "--tent", "South"});
    Done({"plant", "add", "Sage", "--strain", "Moroccan", "--stage", "Flower"});
    const auto titled = [&](Words words)
    {
        words.insert(words.begin(), {"report", "-"});
        const std::string page = Done(words);
        const std::size_t begin = page.find("<h1>") + 4;
        const std::size_t count = page.find("<p>", begin) + 3;
        return page.substr(begin, page.find("</h1>") - begin) + ": " +
               page.substr(count, page.find(',', count) - count);
    };
    EXPECT_EQ(titled({}), "Plant journal: 3 plants");
    EXPECT_EQ(titled({"mint"}), "Mint: 1 plant");
    EXPECT_EQ(titled({"--plant", "basil"}), "Basil: 1 plant");
    EXPECT_EQ(titled({"mint", "sage"}), "Plant journal: 2 plants");
    EXPECT_EQ(titled({"--strain", "moroccan"}), "Plant journal: 2 plants");
    EXPECT_EQ(titled({"--tent", "south"}), "Mint: 1 plant");
    EXPECT_EQ(titled({"--stage", "flower"}), "Sage: 1 plant");
    EXPECT_EQ(titled({"--title", "My <season>"}), "My &lt;season&gt;: 3 plants");
    EXPECT_TRUE(Contains(Refused({"report", "x.html", "nobody"}), "no plant has this name"));
    EXPECT_TRUE(Contains(Refused({"report", "x.html", "--stage", "Dry"}), "no plant matches the options"));
    EXPECT_TRUE(Contains(Mistaken({"report", "x.html", "--from", "someday"}), "someday"));
    EXPECT_FALSE(fs::exists(Scratch.File("x.html")));
}

TEST_F(ReportCommandTest, DatesAreThoseOfTheOtherCommands)
{
    Done({"water", "Basil", "500ml", "--date", "2025-04-30"});
    Done({"water", "Basil", "500ml", "--date", "2025-05-01"});
    Done({"water", "Basil", "500ml", "--date", "2025-06-01"});
    const std::string page = Done({"report", "-", "--from", "2025-05-01", "--to", "2025-05"});
    EXPECT_TRUE(Contains(page, "1 entry on 1 May 2025"));
    EXPECT_TRUE(Contains(page, "From 2025-05-01 to 2025-05"));
}

TEST_F(ReportCommandTest, AJournalWithoutPlantsIsAPage)
{
    Done({"plant", "delete", "Basil", "--yes"});
    EXPECT_TRUE(DoneLine({"report", "season.html"}).starts_with("Wrote season.html: 0 plants, "));
    EXPECT_TRUE(Contains(Page(), "Nothing to draw yet"));
}

TEST_F(ReportCommandTest, AMissingJournalIsRefusedAndNotCreated)
{
    const std::string message = Refused({"--file", "none.db", "report", "season.html"});
    EXPECT_TRUE(Contains(message, "none.db"));
    EXPECT_FALSE(fs::exists(Scratch.File("none.db")));
    EXPECT_FALSE(fs::exists(Scratch.File("season.html")));
}

TEST_F(ReportCommandTest, PhotosAreLinkedRelativeToThePage)
{
    Left = {"journal.db", "photos"};
    Write("data/plantjournal/photos/a b#1.jpg", "a picture");
    Write("elsewhere/\xC3\xA9?.jpg", "a picture");
    Done({"photo", "add", "Basil", "data/plantjournal/photos/a b#1.jpg"});
    Done({"photo", "add", "Basil", "elsewhere/\xC3\xA9?.jpg"});
    fs::create_directory(Scratch.File("pages"));
    Done({"report", "pages/season.html"});
    EXPECT_TRUE(Contains(Page("pages/season.html"), "src=\"../data/plantjournal/photos/a%20b%231.jpg\""));
    EXPECT_TRUE(Contains(Page("pages/season.html"), "src=\"../elsewhere/%C3%A9%3F.jpg\""));
    fs::create_directory_symlink(Scratch.File("pages"), Scratch.File("data/shortcut"));
    Done({"report", "data/shortcut/linked.html"});
    EXPECT_TRUE(Contains(Page("pages/linked.html"), "src=\"../elsewhere/%C3%A9%3F.jpg\""));
    EXPECT_TRUE(Contains(Done({"report", "-"}), "src=\"elsewhere/%C3%A9%3F.jpg\""));
}

TEST_F(ReportCommandTest, PhotosAreEmbeddedWhenAsked)
{
    Write("elsewhere/a.png", FourFields(64, 32));
    Done({"photo", "add", "Basil", "elsewhere/a.png"});
    Done({"report", "season.html", "--embed-photos"});
    EXPECT_TRUE(Contains(Page(), "src=\"" + DataURI(SmallJPEG(Scratch.File("elsewhere/a.png"), 1200)) + "\""));
    fs::remove_all(Scratch.File("elsewhere"));
    Sound = false; // `check` misses the file
}

TEST_F(ReportCommandTest, APhotoThatCannotBeReadIsANotice)
{
    Write("a.jpg", "a picture");
    Write("b.jpg", "a picture");
    Done({"photo", "add", "Basil", "a.jpg"});
    Done({"photo", "add", "Basil", "b.jpg"});
    EXPECT_EQ(NoticesOf({"report", "embedded.html", "--embed-photos"}),
              "notice: photo \"" + Scratch.File("a.jpg") +
                  "\" and 1 more: the file is not a JPEG or PNG picture; "
                  "the page is without it\n");
    fs::remove(Scratch.File("a.jpg"));
    EXPECT_EQ(NoticesOf({"report", "linked.html"}), "notice: photo \"" + Scratch.File("a.jpg") +
                                                        "\": the file cannot be found: No such file or directory; "
                                                        "the page is without it\n");
    EXPECT_FALSE(Contains(Page("linked.html"), "a.jpg"));
    EXPECT_TRUE(Contains(Page("linked.html"), "src=\"b.jpg\""));
    Sound = false;
}

// The user and system time that the programs of this test have taken so far.
double SecondsOfPrograms()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    constexpr double microsecond = 1e-6;
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           microsecond * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

TEST_F(ReportCommandTest, AReportTakesAtMostTenTimesTheTimeOfAnExport)
{
    Keep(
        [](PlantRepository& repository)
        {
            for (int i = 0; i < 100; ++i)
            {
                Plant plant;
                plant.Name = "P" + std::to_string(i);
                ASSERT_TRUE(repository.CreatePlant(plant));
            }
        });
    PlainConnection(Journal).RunSQL(
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<199) INSERT INTO PlantCareEntries"
        "(PlantUUID,CareDate,Action,AmountMl,EC) SELECT UUID,date('2016-01-01','+'||(ID*30+i)||' days'),'Feed',500,1.5 "
        "FROM Plants,n;");
    const double begin = SecondsOfPrograms();
    Done({"export", "journal.json"});
    const double afterExport = SecondsOfPrograms();
    Done({"report", "season.html"});
    const double ratio = (SecondsOfPrograms() - afterExport) / (afterExport - begin);
    EXPECT_LE(ratio, 10);
    RecordProperty("Ratio", std::to_string(ratio));
    Sound = false; // the entries have no events
}

TEST_F(ReportCommandTest, AReportChangesNothing)
{
    const std::string before = Content();
    Done({"report", "season.html"});
    EXPECT_EQ(Content(), before);
}

} // namespace

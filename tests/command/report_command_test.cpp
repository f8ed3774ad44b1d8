// `report`: the page that it writes, its photos and what it refuses.

#include "command/basil_test.h"
#include "command/four_fields.h"
#include "record/picture.h"
#include "testing/plain_connection.h"

#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

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

class InterruptedReportTest : public BasilTest
{
  protected:
    InterruptedReportTest()
    {
        fs::create_directory(Scratch.File("pages"));
        Write("pages/kept.html", "mine");
    }

    // Expects a command that Ctrl-C ended, and the files from before.
    void ExpectNothingWritten(const ProgramResult& outcome) const
    {
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed; run the command again\n");
        EXPECT_EQ(outcome.Out, "");
        EXPECT_EQ(FileBytes(Scratch.File("pages/kept.html")), "mine");
        EXPECT_EQ(Pages(), 1);
    }

    std::ptrdiff_t Pages() const
    {
        return std::distance(fs::directory_iterator(Scratch.File("pages")), fs::directory_iterator());
    }
};

TEST_F(InterruptedReportTest, CtrlCDuringAReportLeavesNothing)
{
    for (const Words& words :
         {Words{"report", "pages/new.html"}, {"report", "pages/kept.html", "--overwrite"}, {"report", "-"}})
    {
        OtherProgram other(Journal, "BEGIN EXCLUSIVE;"); // so that there is time for it
        RunningProgram program(Line(words), Around);
        program.Interrupt();
        other.Finish();
        ExpectNothingWritten(program.End());
    }
}

TEST_F(InterruptedReportTest, CtrlCAtAnyMomentLeavesNothingOrTheWholePage)
{
    PlainConnection(Journal).RunSQL(
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<19999) INSERT INTO PlantCareEntries"
        "(PlantUUID,CareDate,Action,AmountMl) SELECT UUID,date('2016-01-01','+'||i||' days'),'Feed',500 FROM Plants,n;");
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    const std::string page = Done({"report", "-"});
    const auto whole = Clock::now() - begin;
    constexpr int moments = 10;
    int interrupted = 0;
    for (int moment = 0; moment < moments; ++moment)
    {
        RunningProgram program(Line({"report", "pages/new.html"}), Around);
        std::this_thread::sleep_for(whole * moment / (moments - 1));
        program.Interrupt();
        const ProgramResult outcome = program.End();
        interrupted += outcome.Status;
        if (outcome.Status != 0)
        {
            ExpectNothingWritten(outcome);
            continue;
        }
        EXPECT_EQ(FileBytes(Scratch.File("pages/new.html")), page);
        fs::remove(Scratch.File("pages/new.html"));
        EXPECT_EQ(Pages(), 1);
    }
    EXPECT_GT(interrupted, 0); // the first one for certain
    Sound = false;             // the entries have no events
}

TEST_F(ReportCommandTest, AReportChangesNothing)
{
    const std::string before = Content();
    Done({"report", "season.html"});
    EXPECT_EQ(Content(), before);
}

} // namespace

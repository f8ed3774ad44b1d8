// `report`: the page that it writes, its photos and what it refuses.

#include "record/picture.h"

#include "command/basil_test.h"
#include "record/photo_file.h"
#include "testing/plain_connection.h"

#include <array>
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

std::string BigEndian(std::size_t value, int bytes)
{
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * static_cast<unsigned>(i)) & 0xFF);
    return text;
}

// A PNG file of four fields of one colour each, written byte by byte: red and green above, blue and white below.
std::string FourFields(std::size_t width, std::size_t height)
{
    std::string rows;
    for (std::size_t y = 0; y < height; ++y)
    {
        rows += '\0'; // no filter
        for (std::size_t x = 0; x < width; ++x)
        {
            const bool right = x >= width / 2;
            const bool below = y >= height / 2;
            rows += {static_cast<char>(right == below ? 0xFF : 0), static_cast<char>(right ? 0xFF : 0),
                     static_cast<char>(below ? 0xFF : 0)};
        }
    }
    std::string stored = "\x78\x01"; // a zlib stream without compression
    for (std::size_t begin = 0; begin < rows.size(); begin += 0xFFFF)
    {
        const std::string part = rows.substr(begin, 0xFFFF);
        const auto low = [](std::size_t n) {
            return std::string{static_cast<char>(n & 0xFF), static_cast<char>(n >> 8)};
        };
        stored += static_cast<char>(begin + part.size() == rows.size());
        stored += low(part.size()) + low(0xFFFF - part.size()) + part;
    }
    const auto chunk = [](const std::string& name, const std::string& data)
    { return BigEndian(data.size(), 4) + name + data + BigEndian(0, 4); }; // the checksums are not read
    return "\x89PNG\r\n\x1A\n" +
           chunk("IHDR", BigEndian(width, 4) + BigEndian(height, 4) + std::string("\x08\x02\0\0\0", 5)) +
           chunk("IDAT", stored + BigEndian(0, 4)) + chunk("IEND", "");
}

// A JPEG with the EXIF orientation.
std::string WithOrientation(const std::string& jpeg, int orientation)
{
    const std::string tiff = std::string("MM\0*\0\0\0\x08\0\x01", 10) + std::string("\x01\x12\0\x03\0\0\0\x01\0", 9) +
                             static_cast<char>(orientation) + std::string(6, '\0');
    const std::string segment = std::string("Exif\0\0", 6) + tiff;
    return jpeg.substr(0, 2) + "\xFF\xE1" + BigEndian(segment.size() + 2, 2) + segment + jpeg.substr(2);
}

// "64x32": the size in the header of a JPEG.
std::string SizeOf(const std::string& jpeg)
{
    const std::size_t header = jpeg.find("\xFF\xC0");
    if (header == std::string::npos)
        return "not a JPEG";
    const auto number = [&](std::size_t at)
    { return static_cast<unsigned char>(jpeg[at]) * 256 + static_cast<unsigned char>(jpeg[at + 1]); };
    return std::to_string(number(header + 7)) + "x" + std::to_string(number(header + 5));
}

class ReportCommandTest : public BasilTest
{
  protected:
    std::string Page(const std::string& name = "season.html") const { return FileBytes(Scratch.File(name)); }

    // The picture that a photo with these bytes becomes.
    std::string Small(const std::string& bytes, int longestEdge = 1200) const
    {
        Write("picture", bytes);
        return SmallJPEG(Scratch.File("picture"), longestEdge);
    }

    std::string Problem(const std::string& bytes) const
    {
        try
        {
            return SizeOf(Small(bytes));
        }
        catch (const BadPicture& bad)
        {
            return bad.what();
        }
    }
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
    fs::remove_all(Scratch.File("elsewhere"));
    const std::string source = "src=\"" + DataURI(Small(FourFields(64, 32))) + "\"";
    EXPECT_TRUE(source.starts_with("src=\"data:image/jpeg;base64,/9j/"));
    EXPECT_TRUE(Contains(Page(), source));
    Sound = false; // `check` misses the file
}

TEST_F(ReportCommandTest, APhotoThatCannotBeReadIsANotice)
{
    Write("a.jpg", "a picture");
    Write("b.jpg", "a picture");
    Done({"photo", "add", "Basil", "a.jpg"});
    Done({"photo", "add", "Basil", "b.jpg"});
    EXPECT_EQ(NoticesOf({"report", "embedded.html", "--embed-photos"}),
              "notice: photo \"" + Scratch.File("b.jpg") +
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

TEST_F(ReportCommandTest, APictureIsScaledToItsLongestEdge)
{
    EXPECT_EQ(SizeOf(Small(FourFields(64, 32))), "64x32");
    EXPECT_EQ(SizeOf(Small(FourFields(64, 32), 32)), "32x16");
    EXPECT_EQ(SizeOf(Small(FourFields(32, 64), 32)), "16x32");
    EXPECT_EQ(SizeOf(Small(FourFields(400, 1), 20)), "20x1");
}

TEST_F(ReportCommandTest, APictureIsTurnedAsItsEXIFDataSays)
{
    const std::string upright = Small(FourFields(64, 32));
    EXPECT_EQ(SizeOf(Small(WithOrientation(upright, 3))), "64x32");
    EXPECT_EQ(SizeOf(Small(WithOrientation(upright, 6))), "32x64");
    std::array<std::string, 9> turned;
    for (int orientation = 1; orientation <= 8; ++orientation)
    {
        EXPECT_EQ(OrientationOf(WithOrientation(upright, orientation)), orientation);
        turned.at(static_cast<std::size_t>(orientation)) = Small(WithOrientation(upright, orientation));
        for (int other = 1; other < orientation; ++other)
            EXPECT_NE(turned.at(static_cast<std::size_t>(orientation)), turned.at(static_cast<std::size_t>(other)));
    }
    const auto back = [&](std::size_t orientation, int undone)
    { return Small(WithOrientation(turned.at(orientation), undone)); };
    EXPECT_EQ(turned.at(1), Small(upright));
    for (const int own : {2, 3, 4, 5, 7}) // each of these undoes itself, 6 and 8 undo each other
        EXPECT_EQ(SizeOf(back(static_cast<std::size_t>(own), own)), "64x32");
    EXPECT_EQ(back(6, 8), Small(Small(upright)));
    EXPECT_EQ(back(8, 6), Small(Small(upright)));
}

TEST_F(ReportCommandTest, APictureWithoutOrientationIsUpright)
{
    const std::string upright = Small(FourFields(64, 32));
    EXPECT_EQ(OrientationOf(upright), 1);
    EXPECT_EQ(OrientationOf(WithOrientation(upright, 0)), 1);
    EXPECT_EQ(OrientationOf(WithOrientation(upright, 9)), 1);
    EXPECT_EQ(OrientationOf(""), 1);
}

TEST_F(ReportCommandTest, ABrokenPictureIsAProblemOrAPicture)
{
    EXPECT_EQ(Problem(""), "the file is not a JPEG or PNG picture");
    EXPECT_EQ(Problem("GIF89a"), "the file is not a JPEG or PNG picture");
    EXPECT_EQ(Problem(FourFields(64, 32).substr(0, 200)), "the picture is damaged");
    std::string large = FourFields(2, 2);
    large.replace(16, 8, BigEndian(16'000, 4) + BigEndian(16'000, 4));
    EXPECT_EQ(Problem(large), "the picture has more than 100 million pixels");
    const std::string whole = Small(FourFields(64, 32));
    for (std::size_t length = 0; length < whole.size(); length += 7)
        EXPECT_FALSE(Problem(whole.substr(0, length)).empty());
    EXPECT_THROW(SmallJPEG(Scratch.File("data"), 10), BadPicture);
    EXPECT_THROW(SmallJPEG(Scratch.File("missing"), 10), BadPicture);
}

TEST_F(ReportCommandTest, AnURIHoldsTheBytesInBase64)
{
    EXPECT_EQ(DataURI(""), "data:image/jpeg;base64,");
    EXPECT_EQ(DataURI("f"), "data:image/jpeg;base64,Zg==");
    EXPECT_EQ(DataURI("fo"), "data:image/jpeg;base64,Zm8=");
    EXPECT_EQ(DataURI("foo"), "data:image/jpeg;base64,Zm9v");
    EXPECT_EQ(DataURI("\xFF\xFE\xFD"), "data:image/jpeg;base64,//79");
}

} // namespace

#include "plant_file.h"

#include "support/rotation_test.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <utility>

using namespace support;

namespace
{

using std::chrono::sys_days;

std::string DatedName(sys_days day, const std::string& time = "120000")
{
    const std::chrono::year_month_day date = day;
    std::ostringstream name;
    name << std::setfill('0') << std::setw(4) << static_cast<int>(date.year()) << '-' << std::setw(2)
         << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day()) << '-'
         << time << "-journal.db";
    return name.str();
}

// The newest name of each of the last `most` periods, by another way than the library's: a map of all periods.
template <typename PeriodOf>
void AddKept(const std::map<sys_days, Names>& days, int most, const PeriodOf& periodOf, Names& kept)
{
    std::map<std::int64_t, std::string> newest;
    for (const auto& [day, names] : days)
        newest[periodOf(day)] = *names.rbegin();
    for (auto period = newest.rbegin(); period != newest.rend() && most > 0; ++period, --most)
        kept.insert(period->second);
}

Names KeptOf(const std::map<sys_days, Names>& days, const PlantBackUpPolicy& policy)
{
    Names kept = {*days.rbegin()->second.rbegin()};
    AddKept(
        days, policy.Days, [](sys_days day) { return day.time_since_epoch().count(); }, kept);
    const auto monday = [](sys_days day)
    { return (day - (std::chrono::weekday(day) - std::chrono::Monday)).time_since_epoch().count(); };
    AddKept(days, policy.Weeks, monday, kept);
    const auto firstOfMonth = [](sys_days day)
    {
        const std::chrono::year_month_day date = day;
        return sys_days(date.year() / date.month() / 1).time_since_epoch().count();
    };
    AddKept(days, policy.Months, firstOfMonth, kept);
    return kept;
}

// ---- Names

TEST_F(RotationTest, ABackupIsNamedByDateAndTime)
{
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(Rotation.Path, Place + "/2026-05-01-140307-journal.db");
    EXPECT_TRUE(Rotation.Dropped.empty());
    EXPECT_EQ(There(), Names{"2026-05-01-140307-journal.db"});
    Destination = Rotation.Path;
    ExpectWhole();
}

TEST_F(RotationTest, BackupsOfOneSecondHaveDifferentNames)
{
    const auto made = [&] { return std::filesystem::path(Rotation.Path).filename().string(); };
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(made(), "2026-05-01-140307_02-journal.db");
    EXPECT_EQ(Rotation.Dropped, std::vector<std::string>{Place + "/2026-05-01-140307-journal.db"});
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(made(), "2026-05-01-140307_03-journal.db"); // the first name is free, but sorts before the second
    Put("2026-05-01-140307_04-journal.db-journal");       // SQLite would apply it to a backup of this name
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(made(), "2026-05-01-140307_05-journal.db");
}

TEST_F(RotationTest, ASecondHasAtMost99Backups)
{
    Put("2026-05-01-140307-journal.db");
    for (int number = 2; number <= 98; ++number)
        Put("2026-05-01-140307_" + std::string(number < 10 ? "0" : "") + std::to_string(number) + "-journal.db");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(There(), Names{"2026-05-01-140307_99-journal.db"}); // the newest of the day
    const Names before = There();
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), Place + ": a directory has at most 99 backups of one second; try again");
    EXPECT_EQ(There(), before);
}

TEST_F(RotationTest, TheListHasTheNewestBackupFirst)
{
    std::vector<PlantBackUpFile> files = {{}};
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, "");
    EXPECT_TRUE(files.empty()); // the directory does not exist
    ASSERT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    ASSERT_EQ(RotateAt("2026-05-02 00:00:00"), "");
    Put("notes.txt");
    std::filesystem::remove(Path);
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, ""); // without the journal
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(WithSlash(files[0].Path), Place + "/2026-05-02-000000-journal.db");
    EXPECT_EQ(files[0].Time, "2026-05-02 00:00:00");
    EXPECT_EQ(files[1].Time, "2026-05-01 14:03:07");
    EXPECT_EQ(files[1].Bytes, static_cast<std::int64_t>(std::filesystem::file_size(files[1].Path)));
}

TEST_F(RotationTest, ALinkedJournalHasTheNameOfItsTarget)
{
    const std::string link = Scratch.File("link.db");
    std::filesystem::create_symlink(Path, link);
    ASSERT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    const FixedTime now(LocalTime("2026-05-01 15:00:00"));
    EXPECT_EQ(RotatePlantBackUps(link, Place, {}, Rotation).Error, "");
    EXPECT_EQ(There(), Names{"2026-05-01-150000-journal.db"});
}

// ---- The policy

TEST_F(RotationTest, TheNewestOf7Days4WeeksAnd12MonthsStay)
{
    const sys_days today = std::chrono::year(2026) / 11 / 22; // a Sunday
    for (int ago = 1; ago <= 800; ++ago)
        for (const char* time : {"090000", "210000"})
            Put(DatedName(today - std::chrono::days(ago), time));
    EXPECT_EQ(RotateAt("2026-11-22 12:00:00"), "");
    const Names expected = {
        "2026-11-22-120000-journal.db", "2026-11-21-210000-journal.db", "2026-11-20-210000-journal.db",
        "2026-11-19-210000-journal.db", "2026-11-18-210000-journal.db", "2026-11-17-210000-journal.db",
        "2026-11-16-210000-journal.db",                                                                 // days
        "2026-11-15-210000-journal.db", "2026-11-08-210000-journal.db", "2026-11-01-210000-journal.db", // weeks
        "2026-10-31-210000-journal.db", "2026-09-30-210000-journal.db", "2026-08-31-210000-journal.db",
        "2026-07-31-210000-journal.db", "2026-06-30-210000-journal.db", "2026-05-31-210000-journal.db",
        "2026-04-30-210000-journal.db", "2026-03-31-210000-journal.db", "2026-02-28-210000-journal.db",
        "2026-01-31-210000-journal.db", "2025-12-31-210000-journal.db"}; // months
    EXPECT_EQ(There(), expected);
    EXPECT_EQ(Rotation.Dropped.size(), 1601 - expected.size());
    EXPECT_EQ(Rotation.Dropped.front(), Place + "/2026-11-21-090000-journal.db");
}

TEST_F(RotationTest, AnyPolicyKeepsWhatItCounts)
{
    std::mt19937_64 random(20260501);
    const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    for (int round = 0; round < 200; ++round)
    {
        std::filesystem::remove_all(Place);
        const sys_days today = sys_days(std::chrono::year(2023) / 1 / 1) + std::chrono::days(upTo(1500));
        std::map<sys_days, Names> days = {{today, {DatedName(today)}}};
        for (int i = upTo(60); i > 0; --i)
        {
            const sys_days day = today - std::chrono::days(1 + (i % 3 == 0 ? upTo(600) : upTo(20)));
            days[day].insert(DatedName(day, i % 2 == 0 ? "000000" : "235959"));
            Put(DatedName(day, i % 2 == 0 ? "000000" : "235959"));
        }
        const PlantBackUpPolicy policy = {upTo(8), upTo(5), upTo(13)};
        const std::string now = DatedName(today).substr(0, 10) + " 12:00:00";
        EXPECT_EQ(RotateAt(now, policy), "");
        ASSERT_EQ(There(), KeptOf(days, policy))
            << now << ' ' << policy.Days << ' ' << policy.Weeks << ' ' << policy.Months;
    }
}

TEST_F(RotationTest, AfterALongBreakTheBackupsBeforeItStay)
{
    const sys_days then = std::chrono::year(2021) / 3 / 10;
    for (int day = 0; day < 6; ++day)
        Put(DatedName(then + std::chrono::days(day)));
    EXPECT_EQ(RotateAt("2026-11-22 12:00:00"), "");
    EXPECT_TRUE(Rotation.Dropped.empty());
    EXPECT_EQ(There().size(), 7U);
}

TEST_F(RotationTest, APolicyOfZerosKeepsTheNewBackup)
{
    Put("2026-04-30-120000-journal.db");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07", {0, 0, 0}), "");
    EXPECT_EQ(There(), Names{"2026-05-01-140307-journal.db"});
    EXPECT_EQ(Rotation.Dropped, std::vector<std::string>{Place + "/2026-04-30-120000-journal.db"});
}

TEST_F(RotationTest, ANegativeNumberIsAnErrorAndChangesNothing)
{
    for (const PlantBackUpPolicy& policy : {PlantBackUpPolicy{-1, 4, 12}, {7, -1, 12}, {7, 4, -1}})
    {
        EXPECT_EQ(Rotate(policy), Place + ": the policy has a negative number");
        EXPECT_EQ(Rotation.Path, "");
        EXPECT_FALSE(std::filesystem::exists(Place));
    }
}

TEST_F(RotationTest, BackupsOfALaterTimeStayAndDoNotCount)
{
    Put("2099-01-01-000000-journal.db");
    Put("2026-05-01-150000-journal.db");
    Put("2026-05-01-100000-journal.db");
    Put("2026-04-30-100000-journal.db");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07", {2, 0, 0}), "");
    EXPECT_EQ(There(), (Names{"2099-01-01-000000-journal.db", "2026-05-01-150000-journal.db",
                              "2026-05-01-140307-journal.db", "2026-04-30-100000-journal.db"}));
}

TEST_F(RotationTest, AClockThatStartsIn1970IsGoodEnough)
{
    const FixedTime now(-3600);
    EXPECT_EQ(Rotate(), "");
    EXPECT_EQ(Rotate({0, 0, 0}), "");
    EXPECT_EQ(There().size(), 1U);
    EXPECT_EQ(GoodBackUps(), 1);
}

// ---- Files that no rotation made

TEST_F(RotationTest, FilesWithNearlySuchNamesStay)
{
    const Names others = {"2020-01-01-120000-other.db",
                          "2020-01-01-120000-journal.db.part-abcdef",
                          "2020-01-01-120000-journal.db~",
                          "2020-01-01-120000-journal.dbx",
                          "2020-01-01-120000-Journal.db",
                          "2020-01-01-120000journal.db",
                          "2020-01-01-120000_1-journal.db",
                          "2020-01-01-120000_01-journal.db",
                          "2020-01-01-120000_00-journal.db",
                          "2020-01-01-120000_002-journal.db",
                          "2020-01-01-120000_ab-journal.db",
                          "2020-01-01-1200-journal.db",
                          "2020-01-01-12000a-journal.db",
                          "2020-13-01-120000-journal.db",
                          "2020-00-01-120000-journal.db",
                          "2020-01-00-120000-journal.db",
                          "2020-01-32-120000-journal.db",
                          "2021-02-29-120000-journal.db",
                          "2020-01-01-240000-journal.db",
                          "2020-01-01-126000-journal.db",
                          "2020-01-01-120061-journal.db",
                          "0000-01-01-120000-journal.db",
                          "20200101-120000-journal.db",
                          "2020-01-01.db",
                          "2020-01-01-120000 (copy)-journal.db",
                          "copy of 2020-01-01-120000-journal.db",
                          "1900-02-29-120000-journal.db",
                          "2020-01-01-120000-journal.db-journal",
                          "journal.db",
                          "notes.txt"};
    for (const std::string& name : others)
        Put(name);
    for (const char* name : {"2020-02-29-235960-journal.db", "2000-02-29-000000_02-journal.db"}) // these are such names
        Put(name);
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07", {0, 0, 0}), "");
    Names expected = others;
    expected.insert("2026-05-01-140307-journal.db");
    EXPECT_EQ(There(), expected);
    EXPECT_EQ(Rotation.Dropped.size(), 2U);
}

// A killed rotation can leave one where the file system has no hard links.
TEST_F(RotationTest, AnEmptyFileDoesNotCountAndIsRemoved)
{
    ASSERT_EQ(RotateAt("2026-05-01 10:00:00"), "");
    std::ofstream(Place + "/2026-05-01-110000-journal.db").close();
    ASSERT_EQ(RotateAt("2026-05-02 10:00:00", {2, 0, 0}), "");
    EXPECT_EQ(There(), (Names{"2026-05-01-100000-journal.db", "2026-05-02-100000-journal.db"}));
}

TEST_F(RotationTest, SymbolicLinksAndDirectoriesStay)
{
    Put("mine.txt");
    std::filesystem::create_symlink("mine.txt", Place + "/2020-01-01-120000-journal.db");
    std::filesystem::create_symlink("nowhere", Place + "/2020-01-02-120000-journal.db");
    std::filesystem::create_symlink("nowhere", Place + "/2026-05-01-140307-journal.db");
    std::filesystem::create_directory(Place + "/2020-01-03-120000-journal.db");
    Names expected = There();
    expected.insert("2026-05-01-140307_02-journal.db");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07", {0, 0, 0}), "");
    EXPECT_EQ(There(), expected);
    EXPECT_TRUE(Rotation.Dropped.empty());
    std::vector<PlantBackUpFile> files;
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, "");
    EXPECT_EQ(files.size(), 1U);
}

TEST_F(RotationTest, JournalsOfTwoNamesShareADirectory)
{
    const std::string other = Scratch.File("greenhouse.db");
    std::filesystem::copy_file(Path, other);
    const FixedTime now(LocalTime("2026-05-01 14:03:07"));
    EXPECT_EQ(RotatePlantBackUps(other, Place, {0, 0, 0}, Rotation).Error, "");
    EXPECT_EQ(Rotate({0, 0, 0}), "");
    EXPECT_EQ(There(), (Names{"2026-05-01-140307-greenhouse.db", "2026-05-01-140307-journal.db"}));
}

// ---- The directory

TEST_F(RotationTest, ADirectoryIsCreatedWithThoseAboveIt)
{
    Place = Scratch.File("stick/garden/backups");
    EXPECT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    EXPECT_EQ(There().size(), 1U);
}

TEST_F(RotationTest, ADirectoryThatCannotBeUsedIsAnError)
{
    Place = Path; // a file
    EXPECT_TRUE(Rotate().starts_with(Path + ": creating a temporary file: Not a directory")) << Rotate();
    std::vector<PlantBackUpFile> files;
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, Path + ": opening the directory: Not a directory");
    Place = Path + "/below";
    EXPECT_EQ(Rotate(), Place + ": creating the directory: Not a directory");
    Place = "";
    EXPECT_EQ(Rotate(), ": the path is empty or contains a zero byte");
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, ": the path is empty or contains a zero byte");
    EXPECT_EQ(ListPlantBackUps("", Scratch.File("backups"), files).Error,
              Scratch.File("backups") + ": the path is empty or contains a zero byte");
}

// ---- The journal

TEST_F(RotationTest, WithoutAGoodBackupNoneIsRemoved)
{
    ASSERT_EQ(RotateAt("2026-05-01 14:03:07"), "");
    const Names before = There();
    std::filesystem::resize_file(Path, 4096);
    EXPECT_EQ(RotateAt("2026-05-01 15:00:00"), Path + ": reading the schema: database disk image is malformed");
    EXPECT_EQ(Rotation.Path, "");
    EXPECT_EQ(There(), before);
    std::filesystem::remove(Path);
    EXPECT_EQ(RotateAt("2026-05-01 15:00:00"), Path + ": no such file");
    EXPECT_EQ(There(), before);
    EXPECT_EQ(GoodBackUps(), 1);
}

} // namespace

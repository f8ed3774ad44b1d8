// What a person writes for a date. The words are compared with a calendar of the standard library.

#include "record/dates.h"

#include "command/basil_test.h"
#include "record/text.h"

#include <chrono>
#include <map>

using namespace support;

namespace
{

using DateTest = BasilTest;

// What each word means on the day `today`, a Friday.
TEST(DateWordTest, WordsStandForADateSoLongAgo)
{
    const std::string today = "2026-05-22";
    const std::map<std::string, std::string> words = {{"today", "2026-05-22"},
                                                      {"yesterday", "2026-05-21"},
                                                      {"tomorrow", "2026-05-23"},
                                                      {"Today", "2026-05-22"},
                                                      {"YESTERDAY", "2026-05-21"},
                                                      {"0d", "2026-05-22"},
                                                      {"3d", "2026-05-19"},
                                                      {"30d", "2026-04-22"},
                                                      {"2w", "2026-05-08"},
                                                      {"1m", "2026-04-22"},
                                                      {"12m", "2025-05-22"},
                                                      {"fri", "2026-05-22"},
                                                      {"Friday", "2026-05-22"},
                                                      {"SAT", "2026-05-16"},
                                                      {"saturday", "2026-05-16"},
                                                      {"sun", "2026-05-17"},
                                                      {"sunday", "2026-05-17"},
                                                      {"mon", "2026-05-18"},
                                                      {"Monday", "2026-05-18"},
                                                      {"Tue", "2026-05-19"},
                                                      {"tuesday", "2026-05-19"},
                                                      {"wed", "2026-05-20"},
                                                      {"wednesday", "2026-05-20"},
                                                      {"thu", "2026-05-21"},
                                                      {"thursday", "2026-05-21"},
                                                      {"2026-05-01", "2026-05-01"},
                                                      {"2026-05", "2026-05"},
                                                      {"2026", "2026"},
                                                      {"", ""}};
    for (const auto& [word, date] : words)
        EXPECT_EQ(DateFrom(word, today), date) << word;
    EXPECT_EQ(DateFrom("1m", "2026-03-31"), "2026-02-28");
    EXPECT_EQ(DateFrom("1m", "2024-03-31"), "2024-02-29");
    EXPECT_EQ(DateFrom("yesterday", "2026-01-01"), "2025-12-31");
    EXPECT_EQ(DateFrom("sunday", "0001-01-03"), "0000-12-31");
    EXPECT_EQ(DateFrom("tomorrow", "2024-02-28"), "2024-02-29");
}

TEST(DateWordTest, AWeekdayIsTheLastOneTodayIncluded)
{
    using namespace std::chrono;
    const std::vector<std::string> names = {"sunday",   "monday", "tuesday", "wednesday",
                                            "thursday", "friday", "saturday"};
    const auto text = [](const sys_days& day)
    {
        const year_month_day date = day;
        return std::to_string(static_cast<int>(date.year())) + "-" +
               (static_cast<unsigned>(date.month()) < 10 ? "0" : "") +
               std::to_string(static_cast<unsigned>(date.month())) + "-" +
               (static_cast<unsigned>(date.day()) < 10 ? "0" : "") + std::to_string(static_cast<unsigned>(date.day()));
    };
    for (sys_days today = 2024y / December / 20; today < sys_days(2025y / January / 10); today += days(1))
        for (unsigned i = 0; i < 7; ++i)
        {
            sys_days last = today;
            while (weekday(last) != weekday(i))
                last -= days(1);
            EXPECT_EQ(DateFrom(names.at(i), text(today)), text(last)) << text(today);
            EXPECT_EQ(DateFrom(names.at(i).substr(0, 3), text(today)), text(last)) << text(today);
        }
}

TEST(DateWordTest, OtherWordsAreNotDates)
{
    for (const char* text : {"mo", "mond", "mondays", "d", "3", "3x", "3 d", "-3d", "+3d", "3D", "1.5d", "d3", "3dd",
                             "99999999d", "99999999999999999999d", "99999999m", "now", "to day", "2026-02-30"})
        EXPECT_THROW(DateFrom(text, "2026-05-22"), BadValue) << text;
}

// The present date, as the system's own command prints it.
std::string SystemDate(const std::string& description, const std::string& zone)
{
    const ProgramResult result =
        RunningProgram({"/bin/date", "-d", description, "+%Y-%m-%d"}, {.Directory = "/", .Environment = {"TZ=" + zone}})
            .End();
    EXPECT_EQ(result.Status, 0) << result.Error;
    return result.Out.substr(0, result.Out.find('\n'));
}

TEST_F(DateTest, TheWordsAreDaysOfTheLocalTimeZone)
{
    for (const char* zone : {"UTC", "XXX-14", "XXX12"}) // the date differs between the last two at every hour
    {
        Around.Environment.emplace_back(std::string("TZ=") + zone);
        for (const auto& [word, description] : std::map<std::string, std::string>{
                 {"today", "today"}, {"yesterday", "yesterday"}, {"3d", "3 days ago"}, {"2w", "14 days ago"}})
        {
            const std::string before = SystemDate(description, zone);
            const std::string date = Parsed({"note", "add", "b1", "--date", word}).at("EntryDate");
            // Midnight may have passed.
            EXPECT_TRUE(date == before || date == SystemDate(description, zone)) << date << ' ' << word << ' ' << zone;
        }
        Around.Environment.pop_back();
    }
}

TEST_F(DateTest, EveryDateTakesTheForms)
{
    for (const auto& [text, date] : std::vector<std::pair<std::string, std::string>>{{"today", PlantEventCurrentDate()},
                                                                                     {"2024-02-29", "2024-02-29"},
                                                                                     {"0001-01-01", "0001-01-01"},
                                                                                     {"2025-12", "2025-12"},
                                                                                     {"1999", "1999"},
                                                                                     {"", ""}})
        EXPECT_EQ(Parsed({"plant", "edit", "b1", "--seed-date", text}).at("SeedDate"), date);

    const std::vector<std::pair<Words, std::string>> commands = {
        {{"plant", "edit", "b1"}, "--seed-date"},       {{"plant", "edit", "b1"}, "--clone-date"},
        {{"plant", "edit", "b1"}, "--transplant-date"}, {{"plant", "edit", "b1"}, "--flip-date"},
        {{"plant", "add", "x"}, "--harvest-date"},      {{"feed", "b1"}, "--care-date"},
        {{"event", "add", "b1"}, "--event-date"},       {{"harvest", "add", "b1"}, "--harvest-date"},
        {{"photo", "add", "b1", "x"}, "--photo-date"},  {{"health", "add", "b1", "x"}, "--observation-date"},
        {{"note", "add", "b1"}, "--entry-date"}};
    for (const auto& [words, flag] : commands)
    {
        Words line = words;
        line.insert(line.end(), {flag, "2026-02-30"});
        const std::string message = Mistaken(line);
        EXPECT_NE(message.find(flag + ": \"2026-02-30\" is not a date; write today, yesterday, tomorrow, a weekday, "
                                      "3d, 2w or 1m (so long ago), YYYY-MM-DD, YYYY-MM or YYYY"),
                  std::string::npos)
            << message;
    }
}

TEST_F(DateTest, DateIsAnAliasOfEachRecordsOwnDate)
{
    Sound = false; // the photo has no file
    const std::vector<std::tuple<std::string, Words, std::string>> families = {
        {"care", {}, "CareDate"},
        {"event", {}, "EventDate"},
        {"harvest", {"--wet-weight-g", "9"}, "HarvestDate"},
        {"photo", {"x.jpg"}, "PhotoDate"},
        {"health", {"mites"}, "ObservationDate"},
        {"note", {}, "EntryDate"}};
    for (const auto& [family, words, field] : families)
    {
        Words add = {family, "add", "b1", "--date", "2026-05-01"};
        add.insert(add.end(), words.begin(), words.end());
        const ProgramResult added = Run(
            [&]
            {
                Words json = add;
                json.emplace_back("--json");
                return json;
            }());
        EXPECT_EQ(added.Status, 0) << added.Error;
        const JSON record = JSON::parse(added.Out);
        EXPECT_EQ(record.at(field), "2026-05-01");
        Words edit = {family, "edit", "b1"};
        if (family != "harvest")
            edit.push_back(record.at("ID").dump());
        edit.insert(edit.end(), {"--date", "2026-05-02"});
        EXPECT_EQ(Parsed(edit).at(field), "2026-05-02");
    }
    for (const char* command : {"feed", "water"})
        EXPECT_EQ(Parsed({command, "b1", "--date", "2026-05-03"}).at("CareDate"), "2026-05-03");
    EXPECT_NE(Mistaken({"plant", "edit", "b1", "--date", "2026-05-03"}).find("--date"), std::string::npos);
}

} // namespace

// The texts that flags accept for names, dates, numbers and texts.

#include "command/basil_test.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <tuple>

using namespace support;

namespace
{

TEST_F(BasilTest, NamesAreAcceptedInAnyLetterCase)
{
    const std::vector<std::tuple<Words, std::string, Words>> flags = {
        {{"plant", "edit", "b1", "--stage"},
         "Stage",
         {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"}},
        {{"plant", "edit", "b1", "--sex"}, "Sex", {"Unknown", "Female", "Male", "Hermaphrodite"}},
        {{"care", "add", "b1", "--action"}, "Action", {"Feed", "Water"}},
        {{"event", "add", "b1", "--type"},
         "Type",
         {"Clone", "Transplant", "Flip", "Harvest", "Feed", "Water", "Stage", "Topped", "LST Trained", "Defoliated",
          "Note"}},
        {{"note", "add", "b1", "--type"},
         "Type",
         {"Observation", "Training", "Pruning", "Topping", "Defoliation", "Milestone"}}};
    for (const auto& [words, field, names] : flags)
    {
        for (const std::string& name : names)
            for (const bool upper : {false, true})
            {
                Words line = words;
                std::transform(name.begin(), name.end(), std::back_inserter(line.emplace_back()),
                               [&](char letter)
                               { return static_cast<char>(upper ? std::toupper(letter) : std::tolower(letter)); });
                EXPECT_EQ(Parsed(line).at(field), name);
            }
        for (const char* other : {"", "other", "1", "veg ", "lsttrained"})
        {
            Words line = words;
            line.emplace_back(other);
            const std::string message = Mistaken(line);
            EXPECT_NE(
                message.find(words.back() + ": \"" + other + "\" is not one of " + names.at(0) + ", " + names.at(1)),
                std::string::npos)
                << message;
        }
    }
}

std::string Yesterday()
{
    const std::time_t now = std::time(nullptr);
    std::tm day = *std::localtime(&now);
    day.tm_hour = 12;
    --day.tm_mday;
    EXPECT_NE(std::mktime(&day), -1);
    std::ostringstream text;
    text << std::put_time(&day, "%Y-%m-%d");
    return text.str();
}

TEST_F(BasilTest, DatesAreCalendarDatesTodayOrYesterday)
{
    for (const auto& [text, date] : std::vector<std::pair<std::string, std::string>>{{"today", PlantEventCurrentDate()},
                                                                                     {"yesterday", Yesterday()},
                                                                                     {"2024-02-29", "2024-02-29"},
                                                                                     {"0001-01-01", "0001-01-01"},
                                                                                     {"2026-12", "2026-12"},
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
        EXPECT_EQ(
            message.find(flag + ": \"2026-02-30\" is not a date; write today, yesterday, YYYY-MM-DD, YYYY-MM or YYYY"),
            0U)
            << message;
    }
    for (const char* text :
         {"2025-02-29", "2026-13",    "2026-00", "2026-01-00", "2026-1-1",   "26",         "20260101",
          "01.02.2026", "2026-04-31", "2026-",   "2026-04-",   "2026/04",    "tomorrow",   "Today",
          " 2026",      "20265",      "-026",    "2026-0x",    "2026-04/01", "2026-01-1x", "٢٠٢٦"})
        EXPECT_NE(Mistaken({"plant", "edit", "b1", "--seed-date=" + std::string(text)}).find("--seed-date: "),
                  std::string::npos)
            << text;
}

TEST_F(BasilTest, NumbersAreFiniteAndTakeTheWholeText)
{
    for (const char* text : {"", "1,5", "1.5x", "x", "0x10", "nan", "inf", "-inf", "1e999", " 1", "1 ", "+1", "١"})
        EXPECT_NE(Mistaken({"feed", "b1", "--ec=" + std::string(text)}).find("--ec: "), std::string::npos) << text;
    for (const char* text : {"1.5", "3000000000", "", "1e2"})
        EXPECT_NE(Mistaken({"harvest", "add", "b1", "--seed-yield=" + std::string(text)}).find("--seed-yield: "),
                  std::string::npos)
            << text;
    for (const char* text : {"0", "6", "-1", "x", "2.5"})
        EXPECT_NE(Mistaken({"health", "add", "b1", "x", "--severity=" + std::string(text)}).find("--severity: "),
                  std::string::npos)
            << text;
    EXPECT_EQ(Parsed({"feed", "b1", "--ec", ".5"}).at("EC"), 0.5);
    EXPECT_EQ(Parsed({"feed", "b1", "--ec", "0.1"}).at("EC"), 0.1);
    EXPECT_NE(Done({"care", "list", "b1", "--newest", "1"}).find(" 0.1 "), std::string::npos); // the shortest digits
}

TEST_F(BasilTest, TextsAreStoredByteForByte)
{
    for (const std::string text : {"-x", "--", "=", "紅", "\xFF\xFE", "two\nlines\r", "'; DROP TABLE Plants; --"})
    {
        Done({"plant", "edit", "b1", "--notes=" + text});
        Keep(
            [&](PlantRepository& repository)
            {
                Plant plant;
                EXPECT_TRUE(repository.GetPlant("b1", plant));
                EXPECT_EQ(plant.Notes, text);
            });
    }
}

} // namespace

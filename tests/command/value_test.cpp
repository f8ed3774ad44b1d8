// The texts that flags accept for names, dates, numbers and texts.

#include "command/basil_test.h"

#include <algorithm>
#include <cctype>
#include <iterator>
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
    EXPECT_NE(Done({"care", "list", "b1", "--newest", "1"}).find(" 0.1\n"), std::string::npos); // the shortest digits
}

TEST_F(BasilTest, ADecimalCommaIsAnsweredWithTheDecimalPoint)
{
    EXPECT_EQ(Mistaken({"feed", "Basil", "--ec", "1,2"}), "plantjournal: feed: --ec: \"1,2\" is not a number; write a "
                                                          "decimal point, not a comma\n");
    for (const char* text : {"1,", "1,2x", "1,2,3", ","})
        EXPECT_EQ(Mistaken({"feed", "Basil", "--ec", text}).find("decimal point"), std::string::npos) << text;
    EXPECT_EQ(Mistaken({"health", "add", "Basil", "Rust", "--severity", "1,2"}).find("comma"), std::string::npos);
}

TEST_F(BasilTest, ASeverityIsAWholeNumberFrom1To5)
{
    EXPECT_EQ(Mistaken({"health", "add", "Basil", "Rust", "--severity", "2/5"}),
              "plantjournal: health add: --severity: \"2/5\" is not a whole number; write a whole number from 1 to "
              "5\n");
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

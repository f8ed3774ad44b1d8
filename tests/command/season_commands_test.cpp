// A season of a dozen plants, in as few commands as a grower needs for it.

#include "support/chosen_day.h"
#include "support/command.h"

#include <map>

using namespace support;

namespace
{

class SeasonCommandsTest : public CommandTest
{
  protected:
    SeasonCommandsTest()
    {
        SowAndRaise();
        Tend();
        Harvest();
        Report();
    }

    void On(const std::string& day, Words words)
    {
        ++Commands;
        words.insert(words.begin(), PLANTJOURNAL_ON_A_DAY);
        const ProgramResult outcome = RunningProgram(words, OnDay(day, Around)).End();
        EXPECT_EQ(outcome.Status, 0) << words[1];
        EXPECT_EQ(outcome.Error, "") << words[1];
        Out = outcome.Out;
    }

    void SowAndRaise()
    {
        for (int i = 1; i <= 12; ++i)
        {
            const std::string name = i <= 6 ? "Basil " + std::to_string(i) : "Chili " + std::to_string(i - 6);
            On("2025-03-01", {"plant", "add", name, "--strain", i <= 6 ? "Genovese" : "Cayenne", "--stage", "seed",
                              "--seed-date", "today", "--tent", "Window"});
        }
        On("2025-03-15", {"water", "--all", "100ml"});
        On("2025-03-22", {"stage", "--tent", "Window", "veg"});
        On("2025-03-29",
           {"transplant", "--strain", "Genovese", "--pot", "3 l", "--medium", "soil", "--to-tent", "Big"});
        On("2025-03-29", {"transplant", "--strain", "Cayenne", "--pot", "5 l", "--medium", "coco", "--to-tent", "Big"});
        On("2025-04-05", {"clone", "Basil 1", "--count", "2"});
    }

    void Tend()
    {
        for (const char* week : {"2025-04-07", "2025-04-14", "2025-04-21", "2025-04-28"})
        {
            On(week, {"feed", "--all", "0.25l", "--product", "Grow", "--ec", "1.2", "--ph", "6.2"});
            On(week, {"water", "--tent", "Big", "0.4l", "--date", "2d"});
        }
        On("2025-04-12", {"top", "--strain", "Cayenne"});
        On("2025-04-13", {"train", "Chili 1", "Chili 2", "--details", "tied to canes", "--date", "yesterday"});
        On("2025-04-19", {"defoliate", "--strain", "Genovese"});
        On("2025-04-20", {"note", "Basil 1", "Chili 1", "The first warm week"});
        Write("chili.jpg", "not read by the command");
        On("2025-04-26", {"photo", "add", "Chili 1", Scratch.File("chili.jpg"), "--date", "today"});
        On("2025-04-26", {"health", "add", "Chili 2", "Aphids", "--severity", "2", "--treatment", "soap water"});
        On("2025-05-03", {"health", "edit", "Chili 2", "1", "--notes", "gone"});
        On("2025-05-03", {"stage", "--strain", "Cayenne", "flower"});
        for (const char* week : {"2025-05-05", "2025-05-12", "2025-05-19", "2025-05-26"})
        {
            On(week, {"feed", "--stage", "flower", "0.5l", "--product", "Bloom", "--ec", "1.8", "--ph", "6.0"});
            On(week, {"water", "--all", "0.6l"});
        }
    }

    void Harvest()
    {
        for (int i = 1; i <= 6; ++i)
            On("2025-06-28", {"harvest", "add", "Basil " + std::to_string(i), "--date", "14d", "--wet-weight-g",
                              std::to_string(200 + 10 * i), "--dry-weight-g", std::to_string(30 + i)});
        for (int i = 1; i <= 6; ++i)
            On("2025-07-26", {"harvest", "add", "Chili " + std::to_string(i), "--date", "2w", "--wet-weight-g",
                              std::to_string(400 + 10 * i), "--dry-weight-g", std::to_string(80 + i)});
    }

    void Report()
    {
        On("2025-07-26", {"strain", "show", "Genovese", "--json"});
        Genovese = JSON::parse(Out);
        On("2025-07-26", {"strain", "show", "Cayenne", "--json"});
        Cayenne = JSON::parse(Out);
        On("2025-07-26", {"backup", "backup.db"});
    }

    // The number of timeline events of each type.
    std::map<std::string, int> Events() const
    {
        std::map<std::string, int> events;
        for (const JSON& event : Parsed({"event", "list"}))
            ++events[event.at("Type")];
        return events;
    }

    int Commands = 0;
    std::string Out; // of the last command
    JSON Genovese;
    JSON Cayenne;
};

TEST_F(SeasonCommandsTest, ASeasonOfADozenPlantsTakesAtMost60Commands)
{
    EXPECT_LE(Commands, 60);
    const JSON counts = Parsed({"info"}).at("Tables");
    const std::map<std::string, int> events = Events();
    // Each of these rows would need a command of its own if a command stored one row.
    int rows = counts.at("Plants").get<int>() + counts.at("PlantCareEntries").get<int>() +
               counts.at("HarvestRecords").get<int>();
    for (const char* type : {"Stage", "Flip", "Transplant", "Topped", "LST Trained", "Defoliated"})
        rows += events.at(type);
    EXPECT_GT(rows, 150);
}

TEST_F(SeasonCommandsTest, TheJournalHoldsEveryRowOfTheSeason)
{
    const JSON counts = Parsed({"info"}).at("Tables");
    const std::map<std::string, int> expected = {{"Strains", 2},
                                                 {"Plants", 14},
                                                 {"PlantCareEntries", 204},
                                                 {"HarvestRecords", 12},
                                                 {"PlantPhotos", 1},
                                                 {"PlantHealthObservations", 1},
                                                 {"PlantJournalEntries", 2}};
    for (const auto& [table, count] : expected)
        EXPECT_EQ(counts.at(table), count) << table;
    const std::map<std::string, int> events = {
        {"Feed", 80},  {"Water", 124},     {"Stage", 12},     {"Flip", 6},  {"Transplant", 12},
        {"Topped", 6}, {"LST Trained", 2}, {"Defoliated", 8}, {"Clone", 4}, {"Harvest", 12}};
    EXPECT_EQ(Events(), events);
}

TEST_F(SeasonCommandsTest, ThePlantsHaveTheFieldsThatTheStepsSet)
{
    const JSON chili = Parsed({"plant", "show", "Chili 1"});
    for (const auto& [field, value] : std::map<std::string, std::string>{{"Strain", "Cayenne"},
                                                                         {"Stage", "Harvested"},
                                                                         {"Tent", "Big"},
                                                                         {"PotSize", "5 l"},
                                                                         {"Medium", "coco"},
                                                                         {"SeedDate", "2025-03-01"},
                                                                         {"TransplantDate", "2025-03-29"},
                                                                         {"FlipDate", "2025-05-03"},
                                                                         {"HarvestDate", "2025-07-12"}})
        EXPECT_EQ(chili.at(field), value) << field;
    const JSON basil = Parsed({"plant", "show", "Basil 1"});
    EXPECT_EQ(basil.at("Medium"), "soil");
    EXPECT_EQ(basil.at("HarvestDate"), "2025-06-14");
    const JSON clone = Parsed({"plant", "show", "Basil 1 clone 2"});
    EXPECT_EQ(clone.at("MotherPlantUUID"), basil.at("UUID"));
    EXPECT_EQ(clone.at("CloneDate"), "2025-04-05");
    EXPECT_EQ(clone.at("Stage"), "Clone");
    EXPECT_EQ(clone.at("Strain"), "Genovese");
    EXPECT_EQ(clone.at("Medium"), "soil");
    EXPECT_EQ(clone.at("Tent"), "Big");
}

TEST_F(SeasonCommandsTest, TheStrainsAreComparedByTheirHarvests)
{
    EXPECT_EQ(Genovese.at("TotalPlants"), 8);
    EXPECT_EQ(Genovese.at("HarvestCount"), 6);
    EXPECT_DOUBLE_EQ(Genovese.at("AverageDryWeightG"), 33.5);
    EXPECT_EQ(Cayenne.at("TotalPlants"), 6);
    EXPECT_EQ(Cayenne.at("HarvestCount"), 6);
    EXPECT_DOUBLE_EQ(Cayenne.at("AverageDryWeightG"), 83.5);
}

TEST_F(SeasonCommandsTest, TheBackupHoldsTheWholeSeason)
{
    Done({"export", "journal.json"});
    Done({"export", "backup.json", "--file", "backup.db"});
    EXPECT_EQ(FileBytes(Scratch.File("journal.json")), FileBytes(Scratch.File("backup.json")));
}

} // namespace

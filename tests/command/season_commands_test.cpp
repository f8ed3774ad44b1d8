// A season of a dozen plants, in the commands of a grower who had read only the help and the grower's guide.

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

    void Enter(const Words& words)
    {
        ++Commands;
        Done(words);
    }

    void SowAndRaise()
    {
        for (int i = 1; i <= 12; ++i)
            Enter({"plant", "add", i <= 6 ? "Basil " + std::to_string(i) : "Chili " + std::to_string(i - 6), "--strain",
                   i <= 6 ? "Genovese" : "Cayenne", "--stage", "seed", "--seed-date", "2025-03-01", "--tent",
                   "Window"});
        Enter({"water", "--all", "100ml", "--date", "2025-03-15"});
        Enter({"stage", "--all", "veg", "--date", "2025-03-22"});
        Enter({"transplant", "--strain", "Genovese", "--pot", "3 l", "--medium", "soil", "--to-tent", "Big", "--date",
               "2025-03-29"});
        Enter({"transplant", "--strain", "Cayenne", "--pot", "5 l", "--medium", "coco", "--to-tent", "Big", "--date",
               "2025-03-29"});
        Enter({"clone", "Basil 1", "--count", "2", "--date", "2025-04-05"});
    }

    void Tend()
    {
        for (const auto& [fed, watered] : std::map<std::string, std::string>{{"2025-04-07", "2025-04-05"},
                                                                             {"2025-04-14", "2025-04-12"},
                                                                             {"2025-04-21", "2025-04-19"},
                                                                             {"2025-04-28", "2025-04-26"}})
        {
            Enter({"feed", "--all", "0.25l", "--product", "Grow", "--ec", "1.2", "--ph", "6.2", "--date", fed});
            Enter({"water", "--tent", "Big", "0.4l", "--date", watered});
        }
        Enter({"top", "--strain", "Cayenne", "--date", "2025-04-12"});
        Enter({"train", "Chili 1", "Chili 2", "--details", "tied to canes", "--date", "2025-04-12"});
        Enter({"defoliate", "--strain", "Genovese", "--date", "2025-04-19"});
        Enter({"note", "Basil 1", "Chili 1", "The first warm week", "--date", "2025-04-20"});
        Write("chili.jpg", "not read by the command");
        Enter({"photo", "add", "Chili 1", Scratch.File("chili.jpg"), "--date", "2025-04-26"});
        Enter({"health", "add", "Chili 2", "Aphids", "--severity", "2", "--treatment", "Soap water", "--date",
               "2025-04-26"});
        Enter({"health", "edit", "Chili 2", "1", "--notes", "Gone on 2025-05-03"});
        Enter({"stage", "--strain", "Cayenne", "flower", "--date", "2025-05-03"});
        for (const char* day : {"2025-05-05", "2025-05-12", "2025-05-19", "2025-05-26"})
        {
            Enter({"feed", "--stage", "flower", "0.5l", "--product", "Bloom", "--ec", "1.8", "--ph", "6.0", "--date",
                   day});
            Enter({"water", "--all", "0.6l", "--date", day});
        }
        Enter({"feed", "Basil 2", "2l", "--product", "Bloom", "--ec", "1.8", "--ph", "6.0", "--date", "2025-05-08"});
        Enter({"undo", "--yes"});
    }

    void Harvest()
    {
        for (int i = 1; i <= 6; ++i)
            Enter({"harvest", "add", "Basil " + std::to_string(i), "--wet-weight-g", std::to_string(200 + 10 * i),
                   "--dry-weight-g", std::to_string(30 + i), "--date", "2025-06-14"});
        for (int i = 1; i <= 6; ++i)
            Enter({"harvest", "add", "Chili " + std::to_string(i), "--wet-weight-g", std::to_string(400 + 10 * i),
                   "--dry-weight-g", std::to_string(80 + i), "--date", "2025-07-12"});
    }

    void Report()
    {
        Enter({"timeline", "Chili 1"});
        Enter({"strain", "show", "Genovese"});
        Enter({"strain", "show", "Cayenne"});
        Enter({"backup", "backup.db"});
        Enter({"check"});
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
    const JSON genovese = Parsed({"strain", "show", "Genovese"});
    EXPECT_EQ(genovese.at("TotalPlants"), 8);
    EXPECT_EQ(genovese.at("HarvestCount"), 6);
    EXPECT_DOUBLE_EQ(genovese.at("AverageDryWeightG"), 33.5);
    const JSON cayenne = Parsed({"strain", "show", "Cayenne"});
    EXPECT_EQ(cayenne.at("TotalPlants"), 6);
    EXPECT_EQ(cayenne.at("HarvestCount"), 6);
    EXPECT_DOUBLE_EQ(cayenne.at("AverageDryWeightG"), 83.5);
}

TEST_F(SeasonCommandsTest, TheBackupHoldsTheWholeSeason)
{
    Done({"export", "journal.json"});
    Done({"export", "backup.json", "--file", "backup.db"});
    EXPECT_EQ(FileBytes(Scratch.File("journal.json")), FileBytes(Scratch.File("backup.json")));
}

} // namespace

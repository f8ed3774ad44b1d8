#include "watch/watch_test.h"

std::ostream& operator<<(std::ostream& out, const PlantChanges& changes)
{
    for (const PlantRecordFamily family : changes.Families)
        out << PlantRecordFamilyName(family) << ' ';
    for (const std::string& plant : changes.Plants)
        out << plant << ' ';
    return out << (changes.AnyPlant ? "any plant " : "") << (changes.OthersChanged ? "others " : "")
               << (changes.AskAgain ? "ask again" : "");
}

namespace support
{

Families EveryFamily()
{
    return {Family::Plant,
            Family::Strain,
            Family::Event,
            Family::CareEntry,
            Family::HarvestRecord,
            Family::Photo,
            Family::HealthObservation,
            Family::JournalEntry};
}

PlantChanges WatchTest::Poll(PlantWatcher& watcher)
{
    PlantChanges changes;
    EXPECT_EQ(watcher.Poll(changes).Error, "");
    return changes;
}

void WatchTest::ExpectOwn(PlantWatcher& watcher, const Families& families, const std::set<std::string>& plants)
{
    const PlantChanges changes = Poll(watcher);
    EXPECT_FALSE(changes.OthersChanged || changes.AskAgain) << changes;
    if (PlantWatcher::NamesPlants())
    {
        EXPECT_EQ(changes.Families, families) << changes;
        EXPECT_EQ(changes.Plants, std::vector<std::string>(plants.begin(), plants.end()));
        EXPECT_FALSE(changes.AnyPlant);
    }
    else
    {
        std::set<Family> expected(families.begin(), families.end());
        expected.insert(Family::Strain);
        EXPECT_EQ(changes.Families, Families(expected.begin(), expected.end())) << changes;
        EXPECT_EQ(changes.AnyPlant, expected.size() > 1);
        EXPECT_TRUE(changes.Plants.empty()) << changes;
    }
}

void WatchTest::ExpectNothing(PlantWatcher& watcher)
{
    const PlantChanges changes = Poll(watcher);
    EXPECT_TRUE(changes.Families.empty() && changes.Plants.empty()) << changes;
    EXPECT_FALSE(changes.AnyPlant || changes.OthersChanged || changes.AskAgain) << changes;
}

void WatchTest::ExpectEverything(const PlantChanges& changes)
{
    EXPECT_EQ(changes.Families, EveryFamily());
    EXPECT_TRUE(changes.Plants.empty());
    EXPECT_TRUE(changes.AnyPlant && changes.OthersChanged);
    EXPECT_FALSE(changes.AskAgain);
}

} // namespace support

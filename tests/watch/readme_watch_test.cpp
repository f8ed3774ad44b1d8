// The example of the README, compiled and run.
#include "support/page.h"
#include "watch/watch_test.h"

#include <algorithm>
#include <functional>
#include <iostream>

using namespace support;

namespace
{

int Watch(PlantDatabase& journal, const std::function<void()>& change)
{
    // clang-format off
    // [watch]
    PlantWatcher watcher(journal);                  // before the first read, so that no change is missed

    PlantChanges changes;                           // from a timer, and after a write
    // [end]
    change();
    // [poll]
    if (PlantWatchResult result = watcher.Poll(changes); !result)
        return std::cerr << result.Error << '\n', 1; // watching the journal: disk I/O error
    if (changes.OthersChanged)
        std::cout << "Another program changed the journal.\n";
    for (const PlantRecordFamily family : changes.Families)
        std::cout << PlantRecordFamilyName(family) << '\n';
    for (const std::string& uuid : changes.Plants)
        std::cout << uuid << '\n';
    // [end]
    // clang-format on
    return 0;
}

using ReadmeWatchTest = WatchTest;

TEST_F(ReadmeWatchTest, TheExampleIsThatOfTheReadme)
{
    const std::vector<std::string> blocks = CodeBlocks("README.md", "cpp");
    EXPECT_EQ(std::count(blocks.begin(), blocks.end(), Region(__FILE__, "watch") + Region(__FILE__, "poll")), 1);
}

TEST_F(ReadmeWatchTest, TheExamplePrintsWhatChanged)
{
    Plant basil = NewPlant("Basil");
    testing::internal::CaptureStdout();
    EXPECT_EQ(Watch(Database,
                    [&]
                    {
                        RunElsewhere("UPDATE Plants SET Notes='x';");
                        EXPECT_TRUE(Repository.UpdatePlant(basil));
                    }),
              0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Another program changed the journal.\nPlant\n" +
                  (PlantWatcher::NamesPlants() ? basil.UUID : std::string("Strain")) + "\n");
    PlantDatabase closed;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Watch(closed, [] {}), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "watching the journal: the database is closed\n");
}

} // namespace

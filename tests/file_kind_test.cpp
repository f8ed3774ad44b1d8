// The permissions of files, and files that are neither regular files nor directories, as POSIX systems have them.

#include "plant_file.h"

#include "support/restore_test.h"

#include <cstdint>
#include <filesystem>

#include <sys/stat.h>

using namespace support;

namespace
{

TEST_F(BackUpTest, TheCopyHasTheSourcesPermissions)
{
    for (const auto mode : {0600, 0640, 0664, 0400})
    {
        ASSERT_EQ(chmod(Path.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
        EXPECT_EQ(static_cast<int>(std::filesystem::status(Destination).permissions()), mode);
    }
}

TEST_F(BackUpTest, AnUnfinishedCopyIsReadableByItsOwnerOnly)
{
    ASSERT_EQ(chmod(Path.c_str(), 0600), 0);
    const mode_t mask = umask(0);
    int seen = 0;
    const auto look = [&](std::int64_t /*done*/, std::int64_t /*total*/)
    {
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(Path).parent_path()))
        {
            ++seen;
            EXPECT_EQ(static_cast<int>(entry.status().permissions()), 0600) << entry.path();
        }
        return true;
    };
    EXPECT_EQ(BackUp(look), "");
    umask(mask);
    EXPECT_EQ(seen, 3); // the journal and the two files of the unfinished copy
}

TEST_F(RestoreTest, AReplacedJournalKeepsItsPermissions)
{
    ASSERT_EQ(chmod(Destination.c_str(), 0644), 0);
    for (const auto mode : {0600, 0640, 0664})
    {
        Damage();
        ASSERT_EQ(chmod(Path.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(Restore(), "");
        EXPECT_EQ(static_cast<int>(std::filesystem::status(Path).permissions()), mode);
        EXPECT_EQ(static_cast<int>(std::filesystem::status(Restoration.KeptPath).permissions()), mode);
    }
}

TEST_F(RestoreTest, AJournalThatIsCreatedHasTheBackupsPermissions)
{
    std::filesystem::remove(Path);
    ASSERT_EQ(chmod(Destination.c_str(), 0640), 0);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(static_cast<int>(std::filesystem::status(Path).permissions()), 0640);
}

TEST_F(BackUpTest, APipeAndACycleOfLinksAreErrorsOfInspection)
{
    PlantFileInspection found;
    const std::string pipe = Scratch.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(InspectPlantDatabase(pipe, found).Error, pipe + ": not a regular file");
    std::filesystem::remove(pipe);
    const std::string cycle = Scratch.File("cycle");
    std::filesystem::create_symlink(cycle, cycle);
    EXPECT_EQ(InspectPlantDatabase(cycle, found).Error, cycle + ": Too many levels of symbolic links");
    std::filesystem::remove(cycle);
}

} // namespace

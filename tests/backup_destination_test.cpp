#include "plant_file.h"

#include "support/backup_test.h"
#include "support/file_calls.h"

#include <filesystem>
#include <fstream>
#include <map>

using namespace support;

namespace
{

using BackUpDestinationTest = BackUpTest;

TEST_F(BackUpDestinationTest, AnExistingFileIsReplacedInTheModeOverwriteOnly)
{
    std::ofstream(Destination) << "an older copy";
    EXPECT_EQ(BackUp(), Destination + ": already exists");
    EXPECT_EQ(FileBytes(Destination), "an older copy");
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpDestinationTest, AFileThatIsCreatedMeanwhileIsNotReplaced)
{
    const auto meddle = [&](std::int64_t, std::int64_t)
    {
        std::ofstream(Destination) << "another program's";
        return true;
    };
    EXPECT_EQ(BackUp(meddle), Destination + ": already exists");
    EXPECT_EQ(FileBytes(Destination), "another program's");
    std::filesystem::remove(Destination);

    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(BackUpDestinationTest, ABrokenLinkIsAnErrorAndStays)
{
    const std::string expected = Destination + ": a symbolic link to a file that does not exist";
    const auto linkTo = [&](std::int64_t, std::int64_t)
    {
        std::filesystem::create_symlink("nowhere", Destination);
        return true;
    };
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
    {
        EXPECT_EQ(BackUp(linkTo, mode), expected);
        EXPECT_EQ(BackUp({}, mode), expected);
        EXPECT_EQ(std::filesystem::read_symlink(Destination), "nowhere");
        std::filesystem::remove(Destination);
        EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
    }
}

TEST_F(BackUpDestinationTest, ABackupNeedsNoHardLinks)
{
    {
        const FileCallFailure noLinks({FileCall::Link}, 1);
        EXPECT_EQ(BackUp(), "");
        EXPECT_TRUE(noLinks.Happened());
    }
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpDestinationTest, TheSourceAsTheDestinationIsAnError)
{
    const std::string before = FileBytes(Path);
    const std::string expected = ": the source and the destination are the same file";
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
    {
        EXPECT_EQ(BackUpPlantDatabase(Path, Path, {}, mode).Error, Path + expected);
        std::filesystem::create_symlink(Path, Destination);
        EXPECT_EQ(BackUp({}, mode), Destination + expected);
        std::filesystem::remove(Destination);
        std::filesystem::create_hard_link(Path, Destination);
        EXPECT_EQ(BackUp({}, mode), Destination + expected);
        std::filesystem::remove(Destination);
    }
    EXPECT_EQ(Scratch.Files(), (std::map<std::string, std::string>{{"journal.db", before}}));
}

TEST_F(BackUpDestinationTest, ASymbolicLinkStaysAndLeadsToTheNewCopy)
{
    const std::string target = Scratch.File("target.db");
    std::ofstream(target) << "an older copy";
    std::filesystem::create_symlink("target.db", Destination);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    EXPECT_TRUE(std::filesystem::is_symlink(Destination));
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    ExpectWhole();
}

TEST_F(BackUpDestinationTest, AnSQLiteLogNextToTheDestinationIsAnError)
{
    for (const char* suffix : {"-journal", "-wal"})
        for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        {
            const std::string expected = Destination + ": copy.db" + suffix +
                                         " exists, and SQLite would apply it to the copy; move it away first";
            std::ofstream(Destination + suffix) << "left";
            EXPECT_EQ(BackUp({}, mode), expected);
            std::filesystem::remove(Destination + suffix);
            const auto meddle = [&](std::int64_t, std::int64_t)
            {
                std::ofstream(Destination + suffix) << "left";
                return true;
            };
            EXPECT_EQ(BackUp(meddle, mode), expected);
            EXPECT_EQ(FileBytes(Destination + suffix), "left");
            std::filesystem::remove(Destination + suffix);
            EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
        }
}

TEST_F(BackUpDestinationTest, ADestinationThatCannotBeCreatedIsAnError)
{
    Destination = Scratch.File("no/copy.db");
    EXPECT_EQ(BackUp(), Destination + ": creating a temporary file: No such file or directory");
    std::filesystem::create_directory(Scratch.File("no"));
    Destination = Scratch.File("no");
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        EXPECT_EQ(BackUp({}, mode), Destination + ": not a regular file");
    std::filesystem::remove(Destination);
    Destination = "";
    EXPECT_EQ(BackUp(), ": the path is empty or contains a zero byte");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(BackUpDestinationTest, APathThatIsTooLongForSQLiteIsAnError)
{
    std::string directory = "deep";
    for (int i = 0; i < 3; ++i)
        directory += '/' + std::string(200, 'd');
    std::filesystem::create_directories(Scratch.File(directory));
    Destination = Scratch.File(directory + "/copy.db");
    EXPECT_EQ(BackUp(), Destination + ": opening: the path is too long for SQLite");
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File(directory)));
}

} // namespace

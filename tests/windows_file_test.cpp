// What differs on Windows: names that it refuses, long paths, and files that another program has open. And what file/
// needs of every system.

#include "plant_file.h"
#include "system.h"

#include "support/backup_test.h"
#include "support/file_calls.h"
#include "support/fixed_time.h"
#include "support/utf8_path.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include <windows.h>

using namespace support;

namespace
{

class WindowsFileTest : public BackUpTest
{
  protected:
    // The error of a backup to a name in the scratch directory
    std::string BackUpTo(const std::string& name) const
    {
        const std::string destination = Scratch.File("") + name;
        const std::string error = BackUpPlantDatabase(Path, destination).Error;
        EXPECT_EQ(error.substr(0, destination.size() + 2), destination + ": ");
        return error.size() < destination.size() + 2 ? error : error.substr(destination.size() + 2);
    }
};

// A file that this program has open so that no other can use it, as some programs do.
class ExclusiveFile
{
  public:
    explicit ExclusiveFile(const std::string& path)
        : Handle(CreateFileW(std::filesystem::path(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr))
    {
        EXPECT_NE(Handle, INVALID_HANDLE_VALUE);
    }
    ~ExclusiveFile() { CloseHandle(Handle); }
    ExclusiveFile(const ExclusiveFile&) = delete;
    ExclusiveFile& operator=(const ExclusiveFile&) = delete;

  private:
    HANDLE Handle;
};

TEST_F(WindowsFileTest, ANameThatWindowsRefusesIsAnErrorThatNamesTheReason)
{
    EXPECT_EQ(BackUpTo("NUL"), "Windows reserves the name NUL for a device");
    EXPECT_EQ(BackUpTo("con.db"), "Windows reserves the name con.db for a device");
    EXPECT_EQ(BackUpTo("LPT1.backup.db"), "Windows reserves the name LPT1.backup.db for a device");
    EXPECT_EQ(BackUpTo("aux .db"), "Windows reserves the name aux .db for a device");
    EXPECT_EQ(BackUpTo("nul/copy.db"), "Windows reserves the name nul for a device");
    EXPECT_EQ(BackUpTo("a?b.db"), "Windows does not allow the character ? in a file name");
    EXPECT_EQ(BackUpTo("a|b.db"), "Windows does not allow the character | in a file name");
    EXPECT_EQ(BackUpTo("a:b.db"), "Windows does not allow the character : in a file name");
    EXPECT_EQ(BackUpTo("copy.db "), "Windows does not allow a blank or a dot at the end of a file name");
    EXPECT_EQ(BackUpTo("copy."), "Windows does not allow a blank or a dot at the end of a file name");
    EXPECT_EQ(BackUpTo("a\tb.db"), "Windows does not allow a control character in a file name");
    EXPECT_EQ(BackUpTo("\xE4.db"), "the path is not UTF-8");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(WindowsFileTest, ANameThatOnlyLooksLikeADeviceIsAllowed)
{
    for (const char* name : {"COM0.db", "nully.db", "my NUL.db", ".con"})
        EXPECT_EQ(BackUpPlantDatabase(Path, Scratch.File(name)).Error, "") << name;
}

TEST_F(WindowsFileTest, PathsInEveryScriptAreUsed)
{
    for (const char* name : {"Gärtchen.db", "植物 日記.db", "Basil 🌿.db", "Ζ\u0301.db"})
    {
        const std::string copy = Scratch.File(name);
        PlantFileInspection found;
        EXPECT_EQ(BackUpPlantDatabase(Path, copy).Error, "");
        EXPECT_TRUE(InspectPlantDatabase(copy, found));
        EXPECT_EQ(found.Kind, PlantFileKind::Current);
        EXPECT_TRUE(Database.Open(copy));
        EXPECT_EQ(BackUpPlantDatabase(copy, copy + ".2").Error, ""); // a journal in use
        Database.Close();
        EXPECT_TRUE(std::filesystem::remove(UTF8Path(copy)));
        EXPECT_TRUE(std::filesystem::remove(UTF8Path(copy + ".2")));
    }
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(WindowsFileTest, APathMayHaveAPrefixBackslashesAndADriveLetter)
{
    std::string path = Path;
    std::replace(path.begin(), path.end(), '/', '\\');
    ASSERT_EQ(path.substr(1, 2), ":\\");
    for (const std::string& form : {path, "\\\\?\\" + path, static_cast<char>(std::tolower(path[0])) + path.substr(1)})
    {
        PlantFileInspection found;
        EXPECT_EQ(InspectPlantDatabase(form, found).Error, "");
        EXPECT_EQ(found.Kind, PlantFileKind::Current) << form;
        EXPECT_EQ(BackUpPlantDatabase(form, Destination, {}, PlantBackUpMode::Overwrite).Error, "") << form;
        ExpectWhole();
        EXPECT_NE(BackUpPlantDatabase(form, Path, {}, PlantBackUpMode::Overwrite).Error, "")
            << "the same file: " << form;
    }
}

TEST_F(WindowsFileTest, ALongPathIsUsed)
{
    std::string directory = Scratch.File("");
    while (directory.size() < 400)
        directory += "a directory of a garden/";
    const std::string copy = directory + "copy.db";
    const std::string second = directory + "second.db";
    ASSERT_TRUE(Database.Open(copy));
    Plant basil;
    basil.Name = "Basil";
    EXPECT_TRUE(Repository.CreatePlant(basil));
    EXPECT_EQ(BackUpPlantDatabase(copy, second).Error, "");
    Database.Close();
    PlantFileInspection found;
    EXPECT_EQ(InspectPlantDatabase(second, found).Error, "");
    EXPECT_EQ(found.Kind, PlantFileKind::Current);
    PlantRestoration restoration;
    EXPECT_EQ(RestorePlantDatabase(second, copy, restoration).Error, "");
    PlantBackUpRotation rotation;
    EXPECT_EQ(RotatePlantBackUps(copy, directory + "backups", {}, rotation).Error, "");
}

TEST_F(WindowsFileTest, AnOpenDestinationIsAnErrorThatSaysWhatToDo)
{
    ASSERT_EQ(BackUp(), "");
    const std::string before = FileBytes(Destination);
    const std::string refused = Destination + ": renaming the copy: access is denied: another program may have the "
                                              "file open, or the file or its directory is write-protected";
    {
        const ExclusiveFile open(Destination);
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), refused);
    }
    {
        const PlainConnection open(Destination);
        EXPECT_EQ(open.Value("SELECT COUNT(*)>0 FROM Plants;"), "1");
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), refused);
    }
    EXPECT_EQ(FileBytes(Destination) == before, true);
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
}

TEST_F(WindowsFileTest, AnOpenJournalThatIsDamagedIsNotReplaced)
{
    ASSERT_EQ(BackUp(), "");
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary) << "not a database";
    const std::string damaged = FileBytes(Path);
    PlantRestoration restoration;
    {
        const ExclusiveFile open(Path);
        EXPECT_NE(RestorePlantDatabase(Destination, Path, restoration).Error, "");
    }
    EXPECT_EQ(FileBytes(Path) == damaged, true);
    EXPECT_EQ(RestorePlantDatabase(Destination, Path, restoration).Error, "");
    ExpectWhole();
}

TEST_F(WindowsFileTest, AReadOnlyJournalHasAReadOnlyBackup)
{
    std::filesystem::permissions(Path, std::filesystem::perms::owner_read);
    EXPECT_EQ(BackUp(), "");
    EXPECT_NE(GetFileAttributesW(std::filesystem::path(Destination).c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
    for (const std::string& path : {Path, Destination})
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST_F(WindowsFileTest, ARotationRemovesAReadOnlyBackup)
{
    std::filesystem::permissions(Path, std::filesystem::perms::owner_read);
    PlantBackUpRotation rotation;
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(RotatePlantBackUps(Path, Scratch.File("backups"), {0, 0, 0}, rotation).Error, "");
    EXPECT_EQ(rotation.Dropped.size(), 1U);
    EXPECT_NE(GetFileAttributesW(std::filesystem::path(rotation.Path).c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
    for (const std::string& path : {Path, rotation.Path})
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST_F(WindowsFileTest, ACanonicalPathHasTheCaseOfLettersOnTheDisk)
{
    const std::filesystem::path directory = plant_file::PathOfText(Scratch.File(""));
    for (const char* name : {"journal.db", "JOURNAL.DB", "Journal.Db"})
        EXPECT_EQ(plant_file::CanonicalPath(directory / name).filename(), "journal.db") << name;
    EXPECT_EQ(plant_file::CanonicalPath(directory / "Missing.db").filename(), "Missing.db");
}

TEST_F(WindowsFileTest, AJournalCannotBeOpenedByAPathThatIsNotUTF8)
{
    std::string error;
    EXPECT_FALSE(Database.Open(Scratch.File("") + "\xE4.db", &error));
    EXPECT_NE(error, "");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

// ---- What file/ needs of every system

TEST_F(WindowsFileTest, TheLocalTimeIsThatOfTheTimeZoneByNow)
{
    for (const int hours : {2, 5})
    {
        const TimeZone zone("XXX" + std::to_string(-hours)); // the hours to the west
        std::tm local = {};
        plant_file::ToLocalTime(0, local);
        EXPECT_EQ(local.tm_hour, hours);
    }
}

TEST_F(WindowsFileTest, OtherProgramsMayRenameAndRemoveAnOpenFile)
{
    const std::filesystem::path path = Scratch.File("open");
    const std::filesystem::path other = Scratch.File("other");
    const plant_file::OpenedFile file(path, plant_file::Opening::CreateNew, plant_file::Access::Owner);
    EXPECT_TRUE(file.IsOpen());
    std::error_code error;
    std::filesystem::rename(path, other, error);
    EXPECT_EQ(error, std::error_code());
    EXPECT_TRUE(std::filesystem::remove(other, error)) << error.message();
}

TEST_F(WindowsFileTest, AFileIsAtItsOwnPathOnly)
{
    const std::filesystem::path path = Scratch.File("first");
    const plant_file::OpenedFile first(path, plant_file::Opening::CreateNew, plant_file::Access::Owner);
    const plant_file::OpenedFile second(Scratch.File("second"), plant_file::Opening::CreateNew,
                                        plant_file::Access::Owner);
    EXPECT_TRUE(first.IsAt(path));
    EXPECT_FALSE(first.IsAt(Scratch.File("second")));
    EXPECT_FALSE(first.IsAt(Scratch.File("missing")));
    std::filesystem::rename(path, Scratch.File("third"));
    EXPECT_FALSE(first.IsAt(path));
    EXPECT_TRUE(first.IsAt(Scratch.File("third")));
}

TEST_F(WindowsFileTest, ALockIsTakenUntilItsFileIsClosed)
{
    using namespace plant_file;
    const std::filesystem::path path = Scratch.File("lock");
    OpenedFile first(path, Opening::CreateOrOpen, Access::Owner);
    const OpenedFile second(path, Opening::CreateOrOpen, Access::Owner);
    EXPECT_EQ(first.TryLock(), FileLock::Held);
    EXPECT_EQ(second.TryLock(), FileLock::Taken);
    EXPECT_TRUE(second.IsLockedByAnother());
    EXPECT_TRUE(first.Close());
    EXPECT_EQ(second.TryLock(), FileLock::Held);
    EXPECT_EQ(first.TryLock(), FileLock::Unavailable);
}

TEST_F(WindowsFileTest, AnOpeningCreatesKeepsOrEmptiesAFile)
{
    using namespace plant_file;
    const std::string path = Scratch.File("file");
    std::ofstream(path) << "text";
    EXPECT_FALSE(OpenedFile(path, Opening::CreateNew, Access::Owner).IsOpen());
    EXPECT_EQ(LastSystemError(), std::errc::file_exists);
    EXPECT_TRUE(OpenedFile(path, Opening::CreateOrOpen, Access::Owner).IsOpen());
    EXPECT_EQ(FileBytes(path), "text");
    EXPECT_TRUE(OpenedFile(path, Opening::CreateOrTruncate, Access::Owner).IsOpen());
    EXPECT_EQ(FileBytes(path), "");
}

TEST_F(WindowsFileTest, ARenameReplacesAFileOnlyWhereItMay)
{
    const std::string from = Scratch.File("from");
    const std::string destination = Scratch.File("destination");
    std::ofstream(from) << "new";
    std::ofstream(destination) << "old";
    EXPECT_FALSE(plant_file::RenameWithoutReplacing(from, destination));
    EXPECT_EQ(plant_file::LastSystemError(), std::errc::file_exists);
    EXPECT_EQ(FileBytes(destination), "old");
    EXPECT_TRUE(plant_file::RenameReplacing(from, destination));
    EXPECT_EQ(FileBytes(destination), "new");
}

TEST_F(WindowsFileTest, ASyncReachesTheSystem)
{
    const plant_file::OpenedFile file(Scratch.File("file"), plant_file::Opening::CreateNew, plant_file::Access::Owner);
    EXPECT_TRUE(file.Sync());
    const FileCallFailure failure({FileCall::Sync}, 1);
    EXPECT_FALSE(file.Sync());
}

TEST_F(WindowsFileTest, TheErrorOfAFileThatAnotherProgramHasOpenSaysSo)
{
    const ExclusiveFile open(Path);
    EXPECT_FALSE(plant_file::OpenedFile(Path, plant_file::Opening::Read, plant_file::Access::Owner).IsOpen());
    EXPECT_EQ(plant_file::LastSystemError().message(), "another program has the file open; close it there");
}

TEST_F(WindowsFileTest, ASizeHasMoreThan32Bits)
{
    constexpr std::int64_t size = 0x1'0000'0003;
    const std::filesystem::path path = Scratch.File("sparse");
    std::ofstream(path).close();
    std::filesystem::resize_file(path, size);
    EXPECT_EQ(plant_file::SizeOfRegularFile(path), size);
    EXPECT_EQ(plant_file::SizeOfRegularFile(Scratch.File("")), std::nullopt);
    EXPECT_EQ(plant_file::SizeOfRegularFile(Scratch.File("missing")), std::nullopt);
}

TEST_F(WindowsFileTest, AMissingFileIsNotRemovedAndIsNoError)
{
    std::ofstream(Scratch.File("file")).close();
    EXPECT_EQ(plant_file::RemoveFile(Scratch.File("file")), true);
    EXPECT_EQ(plant_file::RemoveFile(Scratch.File("file")), false);
    EXPECT_EQ(plant_file::RemoveFile(Scratch.File("")), std::nullopt); // a directory
}

TEST_F(WindowsFileTest, ThePrefixOfALongPathIsRemoved)
{
    EXPECT_EQ(plant_file::PathOfText(R"(\\?\C:\garden\basil.db)"), LR"(C:\garden\basil.db)");
    EXPECT_EQ(plant_file::PathOfText(R"(\\?\UNC\server\garden\basil.db)"), LR"(\\server\garden\basil.db)");
}

TEST_F(WindowsFileTest, AnEmptyDriveIsAnEmptyDirectory)
{
    const FileCallFailure nothingFound({FileCall::OpenDirectory}, 1, ENOENT);
    const plant_file::OpenedDirectory root(Scratch.File(""));
    EXPECT_TRUE(nothingFound.Happened());
    EXPECT_TRUE(root.IsOpen());
    EXPECT_EQ(root.NextName(), std::filesystem::path());
}

TEST_F(WindowsFileTest, ADirectoryBelowAFileIsAnErrorOfItsOwn)
{
    for (const std::string& path : {Path, Path + "/below", Path + "/below/below"})
    {
        const plant_file::OpenedDirectory directory(path);
        const std::error_code error = plant_file::LastSystemError();
        EXPECT_FALSE(directory.IsOpen());
        EXPECT_EQ(error, std::errc::not_a_directory) << path << ": " << error.message();
    }
    const plant_file::OpenedDirectory missing(Scratch.File("missing/below"));
    EXPECT_EQ(plant_file::LastSystemError(), std::errc::no_such_file_or_directory);
}

} // namespace

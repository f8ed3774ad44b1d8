// What the libraries and the command need of a POSIX system, called directly.

#include "system.h"

#include "support/child_process.h"
#include "support/damage_file.h"
#include "support/file_calls.h"
#include "support/fixed_time.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

using namespace plant_file;
using support::FileBytes;

namespace
{

class SystemTest : public testing::Test
{
  protected:
    std::filesystem::path Named(const std::string& name) const { return Scratch.File(name); }
    std::filesystem::path Written(const std::string& name, const std::string& text) const
    {
        support::WriteBytes(Scratch.File(name), text);
        return Named(name);
    }
    static unsigned ModeOf(const std::filesystem::path& path)
    {
        return static_cast<unsigned>(std::filesystem::symlink_status(path).permissions());
    }

    support::ScratchDirectory Scratch;
};

// ---- Files

TEST_F(SystemTest, AFileIsOpenedInTheGivenWay)
{
    const std::filesystem::path file = Named("file");
    EXPECT_FALSE(OpenedFile(file, Opening::Read, Access::Owner).IsOpen());
    EXPECT_FALSE(OpenedFile(file, Opening::ReadWrite, Access::Owner).IsOpen());
    EXPECT_EQ(OpenedFile(file, Opening::CreateNew, Access::Owner).Write("text"), 4U);
    EXPECT_FALSE(OpenedFile(file, Opening::CreateNew, Access::Owner).IsOpen());
    EXPECT_EQ(LastSystemError(), std::errc::file_exists);
    EXPECT_EQ(OpenedFile(file, Opening::Read, Access::Owner).Write("T"), std::nullopt);
    EXPECT_EQ(OpenedFile(file, Opening::ReadWrite, Access::Owner).Write("T"), 1U);
    EXPECT_EQ(OpenedFile(file, Opening::CreateOrOpen, Access::Owner).Write("TE"), 2U);
    EXPECT_EQ(FileBytes(file.string()), "TExt");
    EXPECT_TRUE(OpenedFile(file, Opening::CreateOrTruncate, Access::Owner).IsOpen());
    EXPECT_EQ(FileBytes(file.string()), "");
    EXPECT_TRUE(OpenedFile(Named("other"), Opening::CreateOrOpen, Access::Owner).IsOpen());
}

TEST_F(SystemTest, ANewFileIsForItsOwnerOrForEveryone)
{
    const mode_t before = umask(0022);
    const OpenedFile owned(Named("owned"), Opening::CreateNew, Access::Owner);
    const OpenedFile shared(Named("shared"), Opening::CreateNew, Access::Everyone);
    std::filesystem::path path = Named("temporary-");
    const OpenedFile temporary = OpenedFile::CreateTemporary(path);
    EXPECT_TRUE(AddDirectory(Named("owned directory"), Access::Owner));
    EXPECT_TRUE(AddDirectory(Named("shared directory"), Access::Everyone));
    umask(before);
    EXPECT_EQ(ModeOf(Named("owned")), 0600U);
    EXPECT_EQ(ModeOf(Named("shared")), 0644U);
    EXPECT_EQ(ModeOf(path), 0600U);
    EXPECT_EQ(ModeOf(Named("owned directory")), 0700U);
    EXPECT_EQ(ModeOf(Named("shared directory")), 0755U);
    EXPECT_FALSE(AddDirectory(Named("shared directory"), Access::Everyone));
}

TEST_F(SystemTest, NoOpeningFollowsALinkOrWaitsForAPipe)
{
    std::filesystem::create_symlink(Written("file", "text"), Named("link"));
    EXPECT_FALSE(OpenedFile(Named("link"), Opening::Read, Access::Owner).IsOpen());
    EXPECT_EQ(LastSystemError(), std::errc::too_many_symbolic_link_levels);
    EXPECT_FALSE(OpenedFile(Named("link"), Opening::CreateOrTruncate, Access::Owner).IsOpen());
    EXPECT_EQ(FileBytes(Scratch.File("file")), "text");
    ASSERT_EQ(mkfifo(Scratch.File("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(OpenedFile(Named("pipe"), Opening::Read, Access::Owner).IsOpen());
    EXPECT_FALSE(OpenedFile(Named("pipe"), Opening::CreateOrTruncate, Access::Owner).IsOpen());
}

TEST_F(SystemTest, AChildProcessDoesNotInheritAFile)
{
    // A new file has the lowest number that is free.
    const int opened = dup(STDERR_FILENO);
    ASSERT_EQ(close(opened), 0);
    const OpenedFile file(Written("file", "text"), Opening::Read, Access::Owner);
    EXPECT_EQ(fcntl(opened, F_GETFD), FD_CLOEXEC);
    const int temporary = dup(STDERR_FILENO);
    ASSERT_EQ(close(temporary), 0);
    std::filesystem::path path = Named("temporary-");
    const OpenedFile created = OpenedFile::CreateTemporary(path);
    EXPECT_EQ(fcntl(temporary, F_GETFD), FD_CLOEXEC);
}

TEST_F(SystemTest, AFileHasOneOwner)
{
    OpenedFile first(Written("file", "text"), Opening::Read, Access::Owner);
    OpenedFile second(std::move(first));
    EXPECT_FALSE(first.IsOpen()); // NOLINT(bugprone-use-after-move): a file that was moved is not open
    char letter = 0;
    EXPECT_EQ(second.Read(&letter, 1), 1U);
    EXPECT_EQ(letter, 't');
    OpenedFile& same = second;
    second = std::move(same);
    EXPECT_TRUE(second.IsOpen());
    EXPECT_TRUE(second.Close());
    EXPECT_TRUE(second.Close()); // nothing is open
}

TEST_F(SystemTest, AFailedCallIsReported)
{
    const OpenedFile full("/dev/full", Opening::CreateOrTruncate, Access::Owner);
    EXPECT_EQ(full.Write("text"), std::nullopt);
    EXPECT_EQ(LastSystemError(), std::errc::no_space_on_device);
    const OpenedFile directory(Scratch.File(""), Opening::Read, Access::Owner);
    char letter = 0;
    EXPECT_EQ(directory.Read(&letter, 1), std::nullopt);
    EXPECT_EQ(LastSystemError(), std::errc::is_a_directory);

    const int number = dup(STDERR_FILENO);
    ASSERT_EQ(close(number), 0);
    OpenedFile file(Written("file", "text"), Opening::ReadWrite, Access::Owner); // has that number
    ASSERT_EQ(close(number), 0);
    EXPECT_FALSE(file.Sync());
    EXPECT_FALSE(file.SetPermissions(std::filesystem::perms::owner_read));
    EXPECT_FALSE(file.IsLockedByAnother());
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(LastSystemError(), std::errc::bad_file_descriptor);
}

TEST_F(SystemTest, AFileIsAtItsPathUntilAnotherHasTheName)
{
    const std::filesystem::path path = Written("file", "text");
    const OpenedFile file(path, Opening::Read, Access::Owner);
    EXPECT_TRUE(file.IsAt(path));
    EXPECT_FALSE(file.IsAt("/dev/null")); // on another device
    std::filesystem::rename(path, Named("renamed"));
    EXPECT_FALSE(file.IsAt(path));
    Written("file", "another");
    EXPECT_FALSE(file.IsAt(path));
    EXPECT_TRUE(file.IsAt(Named("renamed")));
    EXPECT_FALSE(OpenedFile().IsAt(path));
}

TEST_F(SystemTest, OnlyRegularFilesHaveASize)
{
    EXPECT_EQ(SizeOfRegularFile(Written("file", "text")), 4);
    EXPECT_EQ(SizeOfRegularFile(Written("empty", "")), 0);
    EXPECT_EQ(SizeOfRegularFile(Named("none")), std::nullopt);
    EXPECT_EQ(SizeOfRegularFile(Scratch.File("")), std::nullopt);
    std::filesystem::create_symlink(Named("file"), Named("link"));
    EXPECT_EQ(SizeOfRegularFile(Named("link")), std::nullopt);
}

// ---- Locks

TEST_F(SystemTest, OneDescriptorHoldsTheLockOfAFile)
{
    const std::filesystem::path path = Written("file", "text");
    const OpenedFile other(path, Opening::Read, Access::Owner);
    {
        const OpenedFile file(path, Opening::Read, Access::Owner);
        EXPECT_EQ(file.TryLock(), FileLock::Held);
        EXPECT_EQ(file.TryLock(), FileLock::Held);
        EXPECT_EQ(other.TryLock(), FileLock::Taken);
        EXPECT_TRUE(OpenedFile(path, Opening::ReadWrite, Access::Owner).IsLockedByAnother());
    }
    EXPECT_FALSE(OpenedFile(path, Opening::ReadWrite, Access::Owner).IsLockedByAnother());
    EXPECT_EQ(other.TryLock(), FileLock::Held);
    EXPECT_EQ(OpenedFile().TryLock(), FileLock::Unavailable);
    EXPECT_FALSE(OpenedFile().IsLockedByAnother());
}

TEST_F(SystemTest, AFileThatAnotherProcessReadsWithSQLiteIsLocked)
{
    const std::filesystem::path path = Named("journal.db");
    support::PlainConnection(path.string()).RunSQL("CREATE TABLE Any(X);");
    support::ChildProcess reader(
        [&](const support::ParentProcess& parent)
        {
            const support::PlainConnection connection(path.string());
            connection.RunSQL("BEGIN; SELECT * FROM Any;");
            parent.Send("reading");
            parent.Wait();
        });
    ASSERT_EQ(reader.ReadLine(), "reading");
    EXPECT_TRUE(OpenedFile(path, Opening::ReadWrite, Access::Owner).IsLockedByAnother());
    reader.Continue();
    EXPECT_EQ(reader.End(), "done");
    EXPECT_FALSE(OpenedFile(path, Opening::ReadWrite, Access::Owner).IsLockedByAnother());
}

// ---- Names

TEST_F(SystemTest, ARenamedDirectoryReplacesNothing)
{
    const std::filesystem::path from = Named("from");
    std::filesystem::create_directory(from);
    Written("from/file", "text");
    std::filesystem::create_directory(Named("taken"));
    std::filesystem::create_symlink("nothing", Named("link"));
    for (const std::filesystem::path& taken : {Named("taken"), Written("file", ""), Named("link")})
    {
        EXPECT_FALSE(RenameWithoutReplacing(from, taken)) << taken;
        EXPECT_EQ(LastSystemError(), std::errc::file_exists);
    }
    EXPECT_TRUE(RenameWithoutReplacing(from, Named("to")));
    EXPECT_FALSE(std::filesystem::exists(from));
    EXPECT_EQ(FileBytes(Scratch.File("to/file")), "text");
    EXPECT_FALSE(RenameWithoutReplacing(Named("to"), Named("none/to")));
    EXPECT_EQ(LastSystemError(), std::errc::no_such_file_or_directory);
}

TEST_F(SystemTest, ARenamingThatFailsReportsItsOwnError)
{
    const auto takeName = [&]
    {
        std::filesystem::remove(Named("to"));
        std::filesystem::create_directory(Named("to")); // then removing the file fails, too
    };
    const support::AfterFileCall afterwards(support::FileCall::Rename, takeName);
    EXPECT_FALSE(RenameWithoutReplacing(Named("none"), Named("to")));
    EXPECT_EQ(LastSystemError(), std::errc::no_such_file_or_directory);
    EXPECT_TRUE(afterwards.Happened());
}

// ---- Time

TEST_F(SystemTest, TheLocalTimeIsThatOfTheTimeZoneByNow)
{
    constexpr std::time_t noon = 1777636800; // in Greenwich, 1 May 2026
    std::tm local = {};
    for (const int hours : {0, 5, -3})
    {
        const support::TimeZone zone("XXX" + std::to_string(-hours)); // POSIX counts the hours to the west
        ToLocalTime(noon, local);
        EXPECT_EQ(local.tm_hour, 12 + hours);
        EXPECT_EQ(local.tm_mday, 1);
    }
}

// ---- Signals

OpenedFile* toBeWritten = nullptr; // by the third signal, if it is set
volatile std::sig_atomic_t signalsSeen = 0;

void CountSignal(int /*signal*/)
{
    signalsSeen = signalsSeen + 1;
    if (signalsSeen == 3 && toBeWritten != nullptr)
        static_cast<void>(toBeWritten->Write("x"));
}

// While in scope, a signal arrives every 20 milliseconds, and a system call that waits returns.
class Signals
{
  public:
    Signals()
    {
        signalsSeen = 0;
        struct sigaction action = {};
        action.sa_handler = CountSignal;
        sigaction(SIGALRM, &action, &Former);
        const itimerval often = {{0, 20'000}, {0, 20'000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Signals()
    {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &Former, nullptr);
        toBeWritten = nullptr;
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    struct sigaction Former = {};
};

TEST_F(SystemTest, ASignalDoesNotEndARead)
{
    ASSERT_EQ(mkfifo(Scratch.File("pipe").c_str(), 0600), 0);
    const OpenedFile file(Named("pipe"), Opening::ReadWrite, Access::Owner);
    OpenedFile writer(Named("pipe"), Opening::ReadWrite, Access::Owner);
    toBeWritten = &writer;
    const Signals signals;
    char letter = 0;
    EXPECT_EQ(file.Read(&letter, 1), 1U);
    EXPECT_EQ(letter, 'x');
    EXPECT_GE(signalsSeen, 3);
}

TEST_F(SystemTest, ASignalEndsAWriteWithoutAnError)
{
    ASSERT_EQ(mkfifo(Scratch.File("pipe").c_str(), 0600), 0);
    const int full = open(Scratch.File("pipe").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (write(full, "x", 1) == 1)
    {
    }
    const OpenedFile file(Named("pipe"), Opening::ReadWrite, Access::Owner);
    const Signals signals;
    EXPECT_EQ(file.Write("text"), 0U);
    EXPECT_GE(signalsSeen, 1);
    close(full);
}

} // namespace

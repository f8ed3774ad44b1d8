// A process without the permission to read or write the journal or its directory.

#include "support/child_process.h"
#include "support/journal_files.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <grp.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

using namespace support;

namespace
{

constexpr auto CannotOpen = "unable to open database file";
constexpr auto ReadOnly = "attempt to write a readonly database";

// Runs `work` as a user without privileges. Returns the lines that it sent.
std::vector<std::string> RunAsUser(const std::function<void(const ParentProcess&)>& work)
{
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
                throw std::runtime_error("privileges could not be given up");
            work(parent);
        });
    std::vector<std::string> lines = child.ReadLines();
    EXPECT_EQ(child.End(), "done");
    return lines;
}

void SetMode(const std::string& path, unsigned mode)
{
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(mode));
}

// The missing permissions.
struct Restriction
{
    std::string Name;
    unsigned FileMode;
    unsigned DirectoryMode;
    bool MayRead;
};

class PermissionTest : public testing::Test
{
  protected:
    PermissionTest()
    {
        SetMode(Scratch.File(""), 0755);
        std::filesystem::create_directory(Directory);
        SetMode(Directory, 0777);
    }
    ~PermissionTest() override { SetMode(Directory, 0777); }

    // Runs `work` as a user under the restriction, and expects that it changes no byte of the file. Returns the lines
    // that it sent.
    std::vector<std::string> RunRestricted(const Restriction& restriction,
                                           const std::function<void(const ParentProcess&)>& work) const
    {
        const std::string bytes = FileBytes(Path);
        SetMode(Path, restriction.FileMode);
        SetMode(Directory, restriction.DirectoryMode);
        std::vector<std::string> lines = RunAsUser(work);
        SetMode(Directory, 0777);
        SetMode(Path, 0666);
        EXPECT_TRUE(FileBytes(Path) == bytes);
        return lines;
    }

    void ExpectOpening(const Restriction& restriction, const OldFile& file) const
    {
        WriteOldFile(Path, file);
        const std::string whole = ContentOnceOpen(Path);
        WriteOldFile(Path, file);
        std::string result = CannotOpen;
        if (restriction.MayRead)
            result = HasCurrentSchema(file) ? "open" : ReadOnly;
        EXPECT_EQ(RunRestricted(restriction, [&](const ParentProcess& parent) { parent.Send(OpeningResult(Path)); }),
                  std::vector<std::string>{result});
        EXPECT_EQ(ContentOnceOpen(Path), whole);
    }

    // Only the reading operations succeed, and only if reading is permitted.
    void ExpectOperations(const Restriction& restriction) const
    {
        std::filesystem::remove(Path);
        const SampleRecords sample = CreateSampleJournal(Path);
        const std::string whole = ContentOnceOpen(Path);
        const auto work = [&](const ParentProcess& parent)
        {
            PlantDatabase database;
            if (!database.Open(Path))
                return parent.Send(database.LastError());
            PlantRepository repository(database);
            for (const Operation& operation : Operations())
            {
                SampleRecords copy = sample;
                if (operation.Call(repository, copy) != IsRead(operation))
                    parent.Send(operation.Name);
            }
            parent.Send(Content(database.NativeHandle()) == whole ? "all records" : "some records");
            Strain strain;
            strain.Name = "a new strain";
            repository.CreateStrain(strain);
            parent.Send(sqlite3_errmsg(database.NativeHandle()));
        };
        EXPECT_EQ(RunRestricted(restriction, work), restriction.MayRead
                                                        ? (std::vector<std::string>{"all records", ReadOnly})
                                                        : std::vector<std::string>{CannotOpen});
    }

    ScratchDirectory Scratch;
    std::string Directory = Scratch.File("journals");
    std::string Path = Directory + "/journal.db";
};

TEST_F(PermissionTest, AForbiddenCallFailsAndChangesNothing)
{
    const std::vector<Restriction> restrictions = {
        {"a read-only file", 0444, 0777, true},
        {"a read-only directory", 0666, 0555, true},
        {"a read-only file in a read-only directory", 0444, 0555, true},
        {"a file without permissions", 0, 0777, false},
        {"a directory without permissions", 0666, 0, false},
    };
    for (const Restriction& restriction : restrictions)
    {
        SCOPED_TRACE(restriction.Name);
        for (const OldFile& file : OldFiles())
        {
            SCOPED_TRACE(file.Name);
            ExpectOpening(restriction, file);
        }
        ExpectOperations(restriction);
        CreateNamedPlant(Path, "basil"); // the permissions are restored
    }
}

TEST_F(PermissionTest, AForbiddenDirectoryStaysEmpty)
{
    SetMode(Directory, 0555);
    EXPECT_EQ(RunAsUser(
                  [&](const ParentProcess& parent)
                  {
                      parent.Send(OpeningResult(Path));
                      parent.Send(OpeningResult(Directory + "/further/journal.db"));
                  }),
              (std::vector<std::string>(2, CannotOpen)));
    EXPECT_TRUE(std::filesystem::is_empty(Directory));
}

TEST_F(PermissionTest, ADirectoryInPlaceOfTheFileIsRefusedAndStays)
{
    std::filesystem::create_directory(Path);
    SetMode(Path, 0777);
    const auto open = [&](const ParentProcess& parent) { parent.Send(OpeningResult(Path)); };
    EXPECT_EQ(RunAsUser(open), std::vector<std::string>{CannotOpen});
    EXPECT_EQ(OpeningResult(Path), CannotOpen);
    EXPECT_TRUE(std::filesystem::is_empty(Path));
}

} // namespace

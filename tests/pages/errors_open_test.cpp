// Produces every error text of Open that docs/errors.md lists.

#include "pages/errors_page.h"
#include "support/disk_failure.h"
#include "support/page.h"
#include "testing/old_files.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

using namespace pages;
using namespace support;

namespace
{

// An error text of Open, and how to produce it.
struct OpenError
{
    std::string Text;
    std::function<void(const std::string& path)> Prepare;
    std::function<std::string(const std::string& path)> Open;
};

std::string OpenErrorOf(const std::string& path)
{
    PlantDatabase database;
    std::string text = "opened";
    const bool opened = database.Open(path, &text);
    EXPECT_EQ(opened, text == "opened");
    return text;
}

std::string OpenErrorUnderALock(const std::string& path)
{
    const PlainConnection other(path);
    other.RunSQL("BEGIN IMMEDIATE;");
    return OpenErrorOf(path);
}

std::string OpenErrorOnAFailingDisk(const std::string& path, DiskError error)
{
    const FailingDisk disk;
    const DiskFailure failure({DiskCall::Write, error, true, 1});
    return OpenErrorOf(path);
}

void OldFileWith(const std::string& name, const std::string& path)
{
    for (const OldFile& file : OldFiles())
        if (file.Name.find(name) != std::string::npos)
            return WriteOldFile(path, file);
    FAIL() << name;
}

const std::vector<OpenError>& OpenErrors()
{
    static const std::vector<OpenError> errors = {
        {"unable to open database file", [](auto& path) { std::filesystem::create_directory(path); }, OpenErrorOf},
        {"file is not a database", [](auto& path) { std::ofstream(path) << "a letter"; }, OpenErrorOf},
        {"database is locked", [](auto& path) { OldFileWith("few_tables", path); }, OpenErrorUnderALock},
        {"cannot rollback - no transaction is active", [](auto& path) { OldFileWith("seed_yield", path); },
         OpenErrorUnderALock},
        {"duplicate column name: Sex", [](auto& path) { OldFileWith("current", path); },
         [](auto& path)
         {
             const CallFailure failure(SQLiteCall::Prepare, 4, SQLITE_IOERR, "PRAGMA table_info(Plants);");
             return OpenErrorOf(path);
         }},
        {"database or disk is full", [](auto& path) { OldFileWith("few_tables", path); },
         [](auto& path) { return OpenErrorOnAFailingDisk(path, DiskError::Full); }},
        {"disk I/O error", [](auto& path) { OldFileWith("few_tables", path); },
         [](auto& path) { return OpenErrorOnAFailingDisk(path, DiskError::IO); }},
        {"database disk image is malformed",
         [](auto& path)
         {
             OldFileWith("current", path);
             std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
             file.seekp(100);
             file << std::string(900, '\xFF');
         },
         OpenErrorOf},
        {"no such column: Strain", [](auto& path) { PlainConnection(path).RunSQL("CREATE TABLE Plants(Genus);"); },
         OpenErrorOf},
        {"Could not open database", [](auto&) {},
         [](auto& path) { return OpenErrorOf(path + std::string("\0.db", 4)); }},
    };
    return errors;
}

TEST(OpenErrorsPageTest, OpenReturnsEveryTextOnThePage)
{
    // PermissionTest produces this one, because it needs a user without permissions.
    std::set<std::string> returned = {"attempt to write a readonly database"};
    for (const OpenError& error : OpenErrors())
    {
        const ScratchDirectory scratch;
        const std::string path = scratch.File("journal.db");
        error.Prepare(path);
        EXPECT_EQ(error.Open(path), error.Text);
        returned.insert(error.Text);
    }
    std::set<std::string> shown;
    for (const auto& row : TableRows(ErrorsPage, "## When `Open` returns `false`"))
        shown.insert(Plain(row[0]));
    EXPECT_EQ(shown, returned);
}

TEST(OpenErrorsPageTest, OpenAddsTheTablesToTheDatabaseOfAnotherProgram)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("other.db");
    PlainConnection(path).RunSQL("CREATE TABLE Invoices(Sum);");
    EXPECT_EQ(OpenErrorOf(path), "opened");
    EXPECT_EQ(PlainConnection(path).Value("SELECT COUNT(*) FROM sqlite_master WHERE type='table';"), "10");
}

} // namespace

// Restoring and salvaging as a user who lacks permissions.

#include "plant_file.h"

#include "support/damage_file.h"
#include "support/privileges.h"
#include "support/restore_test.h"

#include <filesystem>
#include <string>

using namespace support;

namespace
{

using UnprivilegedTest = RestoreTest;

TEST_F(UnprivilegedTest, AJournalThatIsWriteProtectedIsNotReplaced)
{
    using std::filesystem::perms;
    std::filesystem::permissions(Scratch.File(""), perms::all);
    std::filesystem::permissions(Destination, perms::all);
    for (const bool damaged : {false, true})
    {
        if (damaged)
            Damage();
        const std::string before = FileBytes(Path);
        std::filesystem::permissions(Path, perms::owner_all | perms::group_read | perms::others_read);
        {
            const WithoutPrivileges user;
            EXPECT_EQ(Restore(), Path + ": no permission to write");
        }
        EXPECT_TRUE(FileBytes(Path) == before);
        EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    }
}

TEST_F(UnprivilegedTest, ARollbackJournalThatCannotBeReadIsAnError)
{
    using std::filesystem::perms;
    const std::string salvaged = Scratch.File("salvaged.db");
    std::filesystem::permissions(Scratch.File(""), perms::all);
    std::filesystem::permissions(Path, perms::all);
    WriteBytes(Path + "-journal", "text");
    std::filesystem::permissions(Path + "-journal", perms::none);
    PlantSalvageReport report;
    {
        const WithoutPrivileges user;
        EXPECT_EQ(SalvagePlantDatabase(Path, salvaged, report).Error,
                  Path + ": reading the rollback journal: it cannot be opened");
    }
    EXPECT_FALSE(std::filesystem::exists(salvaged));
}

TEST_F(UnprivilegedTest, NoDirectoryIsCreatedWhereNoneCanBeListed)
{
    using std::filesystem::perms;
    const std::string hidden = Scratch.File("hidden");
    std::filesystem::create_directory(hidden);
    std::filesystem::permissions(Scratch.File(""), perms::all);
    std::filesystem::permissions(Path, perms::all);
    std::filesystem::permissions(Destination, perms::all);
    std::filesystem::permissions(hidden, perms::owner_write | perms::owner_exec | perms::group_write |
                                             perms::group_exec | perms::others_write | perms::others_exec);
    const std::string place = hidden + "/backups";
    const std::string missing = hidden + "/new/journal.db";
    PlantBackUpRotation rotation;
    {
        const WithoutPrivileges user;
        EXPECT_EQ(RotatePlantBackUps(Path, place, {}, rotation).Error,
                  place + ": creating the directory: Permission denied");
        EXPECT_EQ(RestorePlantDatabase(Destination, missing, Restoration).Error,
                  missing + ": creating the directory: Permission denied");
    }
    EXPECT_TRUE(std::filesystem::is_empty(hidden));
}

} // namespace

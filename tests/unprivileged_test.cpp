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

} // namespace

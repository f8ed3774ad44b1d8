// Files of every form that a journal has had.

#include "support/journal_test.h"
#include "support/old_files.h"
#include "support/soak.h"

namespace
{

TEST(OldFileTest, EveryFormIsSoundAndOpens)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("journal.db");
    for (const OldFile& file : OldFiles())
    {
        SCOPED_TRACE(file.Name);
        WriteOldFile(path, file);
        EXPECT_EQ(Damage(PlainConnection(path).NativeHandle()), "ok");
        PlantDatabase database;
        std::string error;
        EXPECT_TRUE(database.Open(path, &error)) << error;
        EXPECT_EQ(Damage(database.NativeHandle()), "ok");
        Count("forms opened");
    }
    EXPECT_EQ(Count("forms opened", 0), 9);
}

} // namespace

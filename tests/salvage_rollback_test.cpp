// Salvages of files with the rollback journal of an interrupted write.

#include "plant_file.h"

#include "support/salvage_test.h"

#include <filesystem>

using namespace support;

namespace
{

class SalvageRollbackTest : public SalvageTest
{
  protected:
    SalvageRollbackTest()
    {
        Grow();
        Before = RowsOf(Path);
    }

    // Replaces the journal by one with an interrupted write.
    void Interrupt(const std::string& pragmas = {})
    {
        const std::string copy = Scratch.File("copy.db");
        {
            const PlainConnection writer(Path);
            writer.RunSQL("PRAGMA cache_size=2; " + pragmas +
                          "BEGIN; UPDATE PlantEvents SET Details='changed'; DELETE FROM PlantJournalEntries;"
                          "INSERT INTO PlantPhotos VALUES(9,'u','11111111-1111-4111-8111-111111111111','',"
                          "hex(zeroblob(90000)),'');");
            std::filesystem::copy_file(Path, copy);
            std::filesystem::copy_file(Path + "-journal", copy + "-journal");
            writer.RunSQL("ROLLBACK;");
        }
        Path = copy;
        Changed = FileBytes(Path);
        Rollback = FileBytes(Path + "-journal");
    }

    std::string Before;   // all rows before the write
    std::string Changed;  // the bytes of the file after the interruption
    std::string Rollback; // the bytes of the rollback journal
};

TEST_F(SalvageRollbackTest, ASymbolicLinkLeadsToTheRollbackJournalOfItsFile)
{
    Interrupt();
    const std::string link = Scratch.File("link.db");
    std::filesystem::create_symlink(Path, link);
    std::filesystem::permissions(Path, std::filesystem::perms::owner_read);
    Path = link;
    EXPECT_TRUE(Salvage().RolledBack);
    EXPECT_TRUE(RowsOf(Destination) == Before);
    EXPECT_FALSE(std::filesystem::is_symlink(Destination));
    const auto write = std::filesystem::status(Destination).permissions() & std::filesystem::perms::owner_write;
    EXPECT_EQ(write, std::filesystem::perms::none);
}

TEST_F(SalvageRollbackTest, ARollbackJournalThatWasNeverSyncedIsApplied)
{
    Interrupt("PRAGMA synchronous=OFF;"); // then its header has no number of records
    ASSERT_EQ(Rollback.substr(8, 4), "\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(Salvage().RolledBack);
    EXPECT_TRUE(RowsOf(Destination) == Before);
}

TEST_F(SalvageRollbackTest, ARecordThatIsCutShortOrDamagedEndsTheRollback)
{
    constexpr std::size_t header = 512; // the size of a sector
    Interrupt("PRAGMA synchronous=OFF;");
    ASSERT_EQ(Rollback.substr(20, 4), std::string("\0\0\2\0", 4));
    WriteBytes(Path + "-journal", Rollback + Rollback.substr(header, 300));
    EXPECT_TRUE(Salvage().RolledBack);
    EXPECT_TRUE(RowsOf(Destination) == Before);

    WriteBytes(Path + "-journal", Rollback.substr(0, header + 300));
    EXPECT_FALSE(Salvage().RolledBack);
    std::string damaged = Rollback;
    damaged[header + 4 + 512 + 3] ^= 1; // the last byte of the first record's checksum
    WriteBytes(Path + "-journal", damaged);
    EXPECT_FALSE(Salvage().RolledBack);
    EXPECT_FALSE(RowsOf(Destination) == Before);
}

TEST_F(SalvageRollbackTest, ADamagedHeaderOfARollbackJournalIsNotApplied)
{
    Interrupt();
    // The number at 20 is the size of a sector, and the one at 24 the size of a page.
    const std::pair<std::size_t, std::string> damages[] = {
        {0, std::string(8, '\0')},          {20, std::string(4, '\0')},       {20, std::string("\0\0\0\x30", 4)},
        {20, std::string("\0\0\0\x10", 4)}, {20, std::string("\0\2\0\0", 4)}, {24, std::string(4, '\0')},
        {24, std::string("\0\0\2\1", 4)},   {24, std::string("\0\2\0\0", 4)}, {24, std::string("\0\0\4\0", 4)},
    };
    PlantSalvageReport expected;
    std::filesystem::remove(Path + "-journal");
    ASSERT_TRUE(SalvagePlantDatabase(Path, Destination, expected));
    const std::string rows = RowsOf(Destination);
    for (const auto& [at, damage] : damages)
    {
        std::string bytes = Rollback;
        WriteBytes(Path + "-journal", bytes.replace(at, damage.size(), damage));
        const PlantSalvageReport report = Salvage();
        EXPECT_FALSE(report.RolledBack) << at;
        EXPECT_EQ(Printed(report), Printed(expected)) << at;
        EXPECT_TRUE(RowsOf(Destination) == rows) << at;
    }
    for (const std::size_t size : {1U, 27U})
    {
        WriteBytes(Path + "-journal", Rollback.substr(0, size));
        EXPECT_EQ(Printed(Salvage()), Printed(expected)) << size;
    }
}

} // namespace

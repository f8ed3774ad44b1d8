// Salvages of files with the rollback journal of an interrupted write.

#include "plant_file.h"

#include "support/salvage_test.h"
#include "testing/old_files.h"

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
    void Interrupt(const std::string& pragmas = {}, const std::string& write = LongWrite)
    {
        const std::string copy = Scratch.File("copy.db");
        std::filesystem::remove(copy);
        std::filesystem::remove(copy + "-journal");
        {
            const PlainConnection writer(Path);
            writer.RunSQL("PRAGMA cache_size=2; " + pragmas + "BEGIN; " + write);
            std::filesystem::copy_file(Path, copy);
            std::filesystem::copy_file(Path + "-journal", copy + "-journal");
            writer.RunSQL("ROLLBACK;");
        }
        Path = copy;
        Rollback = FileBytes(Path + "-journal");
    }
    PlantSalvageReport SalvageWith(const std::string& rollback) const
    {
        WriteBytes(Path + "-journal", rollback);
        return Salvage();
    }
    // Where the segments of the rollback journal begin. The last one was not synced, and has no magic.
    std::vector<std::size_t> Segments() const
    {
        std::vector<std::size_t> segments;
        for (std::size_t at = 0; at < Rollback.size(); at += 512)
            if (Rollback.compare(at, 8, "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7") == 0)
                segments.push_back(at);
        return segments;
    }
    // The number of pages before the write.
    std::string PageCount() const { return Rollback.substr(16, 4); }

    static constexpr const char* LongWrite =
        "UPDATE PlantEvents SET Details='changed'; DELETE FROM PlantJournalEntries; "
        "INSERT INTO PlantPhotos VALUES(9,'u','11111111-1111-4111-8111-111111111111','',hex(zeroblob(90000)),'');";
    static constexpr std::size_t Header = 512; // the size of a sector
    static constexpr std::size_t Record = 520; // a page, its number, and its checksum
    std::string Before;                        // all rows before the write
    const std::string Original = Path;
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

TEST_F(SalvageRollbackTest, TheRollbackJournalOfARunningWriteIsNotApplied)
{
    const PlainConnection writer(Path);
    writer.RunSQL("PRAGMA journal_mode=TRUNCATE; PRAGMA synchronous=OFF; BEGIN IMMEDIATE; UPDATE PlantEvents SET "
                  "Details='changed';");
    ASSERT_EQ(FileBytes(Path + "-journal").substr(0, 2), "\xD9\xD5"); // it looks like that of an interrupted write
    int calls = 0;
    const auto endTheWrite = [&](std::int64_t /*done*/, std::int64_t /*total*/)
    {
        if (++calls == 2)
            writer.RunSQL("ROLLBACK;");
        return true;
    };
    PlantSalvageReport report;
    const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report, endTheWrite);
    EXPECT_TRUE(result) << result.Error;
    EXPECT_GT(calls, 2);
    EXPECT_FALSE(report.RolledBack);
    EXPECT_FALSE(report.RollbackIsDamaged);
    EXPECT_TRUE(RowsOf(Destination) == Before);
}

TEST_F(SalvageRollbackTest, ARollbackJournalThatIsCutMeanwhileIsReported)
{
    Interrupt();
    int calls = 0;
    const auto cut = [&](std::int64_t /*done*/, std::int64_t /*total*/)
    {
        if (++calls == 2)
            WriteBytes(Path + "-journal", Rollback.substr(0, Header));
        return true;
    };
    PlantSalvageReport report;
    const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report, cut);
    EXPECT_TRUE(result) << result.Error;
    EXPECT_TRUE(report.RolledBack);
    EXPECT_TRUE(report.RollbackIsDamaged);
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

TEST_F(SalvageRollbackTest, AnInterruptedRollbackJournalIsNotDamaged)
{
    Interrupt();
    ASSERT_GT(Segments().size(), 2U);
    const PlantSalvageReport report = Salvage();
    EXPECT_TRUE(report.RolledBack);
    EXPECT_FALSE(report.RollbackIsDamaged);
    EXPECT_TRUE(RowsOf(Destination) == Before);
    // What follows the segments was not synced.
    for (const std::string& rest : {std::string(), std::string(2000, 'x')})
        EXPECT_FALSE(SalvageWith(Rollback.substr(0, Segments().back()) + rest).RollbackIsDamaged);
    const std::size_t unsynced = Rollback.size() - Record;
    ASSERT_GT(unsynced, Segments().back());
    for (const std::string& rest : {std::string(), std::string(300, 'x'), std::string(5000, '\0')})
    {
        EXPECT_FALSE(SalvageWith(Rollback.substr(0, unsynced) + rest).RollbackIsDamaged);
        EXPECT_TRUE(RowsOf(Destination) == Before);
    }
}

TEST_F(SalvageRollbackTest, ARollbackJournalOfAWriteThatChangedNothingIsNotDamaged)
{
    Interrupt();
    WriteBytes(Path, FileBytes(Original));
    // SQLite writes the magic and the number of records before it changes the file.
    for (const std::string& rollback :
         {std::string(), std::string(12, '\0') + Rollback.substr(12), std::string(5, '\0'), std::string(28, '\0')})
    {
        const PlantSalvageReport report = SalvageWith(rollback);
        EXPECT_FALSE(report.RolledBack) << rollback.size();
        EXPECT_FALSE(report.RollbackIsDamaged) << rollback.size();
        EXPECT_TRUE(RowsOf(Destination) == Before);
    }
}

TEST_F(SalvageRollbackTest, RowsOfTheFirstWriteInANewFileAreKeptAndReported)
{
    Path = Scratch.File("new.db"); // its rollback leaves an empty file
    Interrupt({}, OldFiles().back().SQL);
    ASSERT_EQ(Rollback.substr(8, 4) + PageCount(), std::string(8, '\0')); // the first segment has no record
    const PlantSalvageReport report = Salvage();
    EXPECT_FALSE(report.RolledBack);
    EXPECT_TRUE(report.RollbackIsDamaged);
    EXPECT_GT(TableOf(report, "Plants").RowsRead, 0);
}

TEST_F(SalvageRollbackTest, ARollbackJournalThatIsKeptIsNotDamaged)
{
    for (const std::string pragmas : {"PRAGMA synchronous=OFF; ", "PRAGMA synchronous=FULL; "})
    {
        // Behind the records of this write are those of an earlier, longer one.
        PlainConnection(Path).RunSQL("PRAGMA journal_mode=PERSIST; PRAGMA cache_size=2; BEGIN; UPDATE "
                                     "PlantEvents SET Details='changed'; UPDATE PlantJournalEntries SET "
                                     "Details='changed'; COMMIT;");
        EXPECT_FALSE(Salvage().RollbackIsDamaged);
        Before = RowsOf(Path);
        Interrupt("PRAGMA journal_mode=PERSIST; " + pragmas, "UPDATE PlantEvents SET Details='' WHERE ID<60;");
        const PlantSalvageReport report = Salvage();
        EXPECT_FALSE(report.RollbackIsDamaged) << pragmas;
        EXPECT_TRUE(RowsOf(Destination) == Before) << pragmas;
        Path = Original;
    }
}

TEST_F(SalvageRollbackTest, ADamagedRecordIsReported)
{
    for (const std::string pragmas : {"PRAGMA synchronous=FULL; ", "PRAGMA synchronous=OFF; "})
    {
        Interrupt(pragmas);
        const std::vector<std::size_t> segments = Segments();
        for (const std::size_t record : {Header, segments.size() > 1 ? segments[1] + Header : Header + 2 * Record})
        {
            std::string damaged = Rollback;
            damaged[record + 4 + 512 - 200] ^= 1;
            const PlantSalvageReport report = SalvageWith(damaged);
            EXPECT_EQ(report.RolledBack, record != Header) << pragmas;
            EXPECT_TRUE(report.RollbackIsDamaged) << pragmas;
            EXPECT_FALSE(RowsOf(Destination) == Before);
        }
        Path = Original;
    }
}

TEST_F(SalvageRollbackTest, AnyByteOfAHeaderIsRolledBackOrReported)
{
    Interrupt();
    const std::vector<std::size_t> segments = Segments();
    for (const std::size_t segment : {segments[0], segments[1], segments.back()})
        for (std::size_t at = segment; at < segment + 28; ++at)
            for (const char change : {'\x01', '\x80', '\xFF'})
            {
                std::string damaged = Rollback;
                damaged[at] = static_cast<char>(damaged[at] ^ change);
                const PlantSalvageReport report = SalvageWith(damaged);
                EXPECT_TRUE(report.RollbackIsDamaged || (report.RolledBack && RowsOf(Destination) == Before)) << at;
            }
}

TEST_F(SalvageRollbackTest, ARollbackJournalThatIsCutShortIsReported)
{
    Interrupt();
    const std::vector<std::size_t> segments = Segments();
    for (const std::size_t size : {std::size_t{1}, std::size_t{27}, std::size_t{28}, Header, Header + 300,
                                   Header + Record - 1, segments[1] + Header, segments.back() + Header + 1})
        EXPECT_TRUE(SalvageWith(Rollback.substr(0, size)).RollbackIsDamaged) << size;
}

TEST_F(SalvageRollbackTest, AWrongNumberOfPagesCostsNoRow)
{
    Interrupt();
    const int lastByte = static_cast<unsigned char>(PageCount()[3]);
    ASSERT_GT(lastByte, 20);
    ASSERT_LT(lastByte, 0xFF);
    const std::string greater = {0, 0, 0, static_cast<char>(lastByte + 1)};
    const std::string less = {0, 0, 0, static_cast<char>(lastByte - 20)};
    for (const std::string& count :
         {std::string(4, '\0'), std::string("\0\0\0\1", 4), less, greater, std::string(4, '\xFF')})
    {
        std::string damaged = Rollback;
        for (const std::size_t segment : Segments())
            damaged.replace(segment + 16, 4, count);
        const PlantSalvageReport report = SalvageWith(damaged);
        EXPECT_EQ(report.RollbackIsDamaged, count < PageCount());
        for (const PlantSalvageTable& table : report.Tables)
            EXPECT_TRUE(table.IsWhole) << table.Name;
        EXPECT_TRUE(RowsOf(Destination) == Before);
    }
}

TEST_F(SalvageRollbackTest, WithoutAnyNumberOfPagesTheSizeOfTheFileIsUsed)
{
    Interrupt();
    const auto changeCounter = [](std::string bytes) // an earlier SQLite does not count the pages
    {
        const std::string magic = "SQLite format 3";
        for (std::size_t at = bytes.find(magic); at != std::string::npos; at = bytes.find(magic, at + 1))
            bytes[at + 24] = '\x7F';
        return bytes;
    };
    WriteBytes(Path, changeCounter(FileBytes(Path)));
    Rollback = changeCounter(Rollback);
    EXPECT_FALSE(SalvageWith(Rollback).RollbackIsDamaged);
    EXPECT_TRUE(RowsOf(Destination) == Before);
    EXPECT_TRUE(SalvageWith(Rollback.replace(16, 4, 4, '\0')).RollbackIsDamaged);
    EXPECT_TRUE(RowsOf(Destination) == Before);
}

TEST_F(SalvageRollbackTest, ARecordOfAPageThatCannotBeIsReported)
{
    Interrupt();
    for (const std::string& page : {std::string(4, '\0'), std::string("\0\0\x7F\0", 4), std::string(4, '\xFF')})
    {
        std::string damaged = Rollback;
        const PlantSalvageReport report = SalvageWith(damaged.replace(Header, 4, page));
        EXPECT_TRUE(report.RolledBack);
        EXPECT_TRUE(report.RollbackIsDamaged);
    }
}

TEST_F(SalvageRollbackTest, AWriteThatRemovedPagesIsRolledBack)
{
    Interrupt();
    std::size_t kept = FileBytes(Original).size() / 512;
    const auto isInJournal = [&](std::size_t page)
    {
        return Rollback.find(std::string{0, 0, 0, static_cast<char>(page)} +
                             FileBytes(Original).substr(page * 512 - 512, 512)) != std::string::npos;
    };
    const std::size_t pages = kept;
    while (isInJournal(kept))
        --kept;
    ASSERT_LT(kept, pages - 5);
    WriteBytes(Path, FileBytes(Path).substr(0, kept * 512));
    const PlantSalvageReport report = Salvage();
    EXPECT_TRUE(report.RolledBack);
    EXPECT_FALSE(report.RollbackIsDamaged);
    EXPECT_TRUE(RowsOf(Destination) == Before);
}

TEST_F(SalvageRollbackTest, AFileThatIsCutIsRolledBack)
{
    Interrupt({}, "UPDATE PlantEvents SET Details='changed' WHERE ID<60;");
    constexpr std::size_t missing = 20;
    const std::string whole = FileBytes(Path);
    WriteBytes(Path, whole.substr(0, whole.size() - missing * 512 + 100));
    const PlantSalvageReport report = Salvage();
    EXPECT_TRUE(report.RolledBack);
    EXPECT_FALSE(report.RollbackIsDamaged);
    EXPECT_GT(report.MissingPages, 0);
    EXPECT_LE(report.MissingPages, missing);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE Details='changed' OR instr(Details,char(0))"), "0");
    WriteBytes(Path + "-journal", {});
    EXPECT_EQ(Salvage().MissingPages, missing);
}

TEST_F(SalvageRollbackTest, AWriteThatCommittedToSeveralFilesIsKept)
{
    Interrupt();
    const std::string super = Scratch.File("super");
    std::uint32_t sum = 0;
    for (const char letter : super)
        sum += static_cast<unsigned char>(letter);
    const auto number = [](std::uint32_t value)
    {
        return std::string{static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
                           static_cast<char>(value >> 8U), static_cast<char>(value)};
    };
    const std::string end = super + number(static_cast<std::uint32_t>(super.size())) + number(sum);
    const std::string magic = Rollback.substr(0, 8);
    WriteBytes(super, "the names of the rollback journals");
    EXPECT_TRUE(SalvageWith(Rollback + end + magic).RolledBack);
    std::filesystem::remove(super);
    const PlantSalvageReport report = SalvageWith(Rollback + end + magic);
    EXPECT_FALSE(report.RolledBack);
    EXPECT_FALSE(report.RollbackIsDamaged);
    for (const std::string& other : {super + number(0) + number(sum), super + number(5000) + number(sum),
                                     super + number(1'000'000'000) + number(sum), super + number(4) + number(sum)})
    {
        std::string bytes = Rollback;
        EXPECT_TRUE(SalvageWith(bytes.append(other).append(magic)).RolledBack);
    }
    EXPECT_TRUE(SalvageWith(Rollback.substr(0, 40) + number(4000) + number(sum) + magic).RollbackIsDamaged);
}

} // namespace

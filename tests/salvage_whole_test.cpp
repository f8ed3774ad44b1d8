// Salvages of files without damage, compared with what SQLite reads in them.

#include "plant_file.h"

#include "support/copy_over.h"
#include "support/salvage_test.h"
#include "support/test_form.h"
#include "testing/old_files.h"

#include <filesystem>
#include <fstream>
#include <random>

using namespace support;

namespace
{

using SalvageWholeTest = SalvageTest;

// A text in quotes for SQL: letters of one to four bytes, sometimes long enough for overflow pages.
std::string RandomText(std::mt19937_64& random)
{
    const char* const letters[] = {"a", "Z", " ", "''", "\n", "ü", "½", "日", "🌱"};
    const std::size_t lengths[] = {0, 1, 10, 40, 300, 3000};
    std::string text;
    for (std::uint64_t length = random() % (lengths[random() % 6] + 1); length > 0; --length)
        text += letters[random() % 9];
    return '\'' + text + '\'';
}

std::string RandomNumber(std::mt19937_64& random)
{
    const char* const numbers[] = {"0",      "1",    "-1",          "127",    "128",    "32768",      "-8388609",
                                   "1.5",    "9e99", "-0.1",        "1e999",  "1e-310", "2147483648", "140737488355328",
                                   "-1e999", "0.0",  "123456789.5", "1000000"};
    return numbers[random() % 18];
}

std::string RandomRowID(std::mt19937_64& random)
{
    const std::int64_t ids[] = {0, -1, 1'000'000, 9'223'372'036'854'775'000, -9'223'372'036'854'775'000};
    return std::to_string(ids[random() % 5] + static_cast<std::int64_t>(random() % 800));
}

// Adds and deletes rows of three tables.
void FillRandomly(const PlainConnection& journal, std::mt19937_64& random)
{
    const std::string plant = "'0f0f0f0f-0000-4000-8000-000000000005'";
    journal.RunSQL("BEGIN;");
    for (std::uint64_t rows = random() % 300; rows > 0; --rows)
    {
        const std::string begin = "INSERT OR IGNORE INTO ";
        journal.RunSQL(begin + "PlantEvents VALUES(" + RandomRowID(random) + ',' + plant + ',' + RandomText(random) +
                       ",'Topped'," + RandomText(random) + ");" + begin + "PlantCareEntries VALUES(" +
                       RandomRowID(random) + ",NULL," + plant + ",'2024-05-06','Feed'," + RandomText(random) + ',' +
                       RandomNumber(random) + ',' + RandomNumber(random) + ',' + RandomNumber(random) + ',' +
                       RandomNumber(random) + ',' + RandomText(random) + ");" + begin + "Strains VALUES(" +
                       RandomRowID(random) + ',' + RandomText(random) + ',' + RandomText(random) + ',' +
                       std::to_string(random() % 1000) + ',' + RandomText(random) + ");");
    }
    journal.RunSQL("COMMIT; PRAGMA foreign_keys=ON; DELETE FROM PlantEvents WHERE ID%" +
                   std::to_string(1 + random() % 9) + "=0;");
}

TEST_F(SalvageWholeTest, AWholeJournalComesBackUnchanged)
{
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(ContentOf(Destination), ContentOf(Path));
    EXPECT_EQ(Printed(report),
              "Strains 2, Plants 2, PlantEvents 3, PlantCareEntries 2, HarvestRecords 1, PlantPhotos 1, "
              "PlantHealthObservations 1, PlantJournalEntries 1, placeholders 0, cleared links 0, "
              "failed reads 0");
    EXPECT_EQ(report.Tables.size(), 9);
}

TEST_F(SalvageWholeTest, TheNewJournalHasTheCurrentSchema)
{
    Salvage();
    PlantFileInspection file;
    ASSERT_TRUE(InspectPlantDatabase(Destination, file));
    EXPECT_EQ(file.Kind, PlantFileKind::Current);
    EXPECT_FALSE(file.EventTypesUnchecked);
}

TEST_F(SalvageWholeTest, AnEmptyJournalComesBack)
{
    PlainConnection(Path).RunSQL("DELETE FROM Plants; DELETE FROM PlantEvents; DELETE FROM PlantCareEntries; DELETE "
                                 "FROM HarvestRecords; DELETE FROM PlantPhotos; DELETE FROM PlantHealthObservations; "
                                 "DELETE FROM PlantJournalEntries; DELETE FROM Strains;");
    EXPECT_EQ(Printed(Salvage()), "placeholders 0, cleared links 0, failed reads 0");
    EXPECT_EQ(ContentOf(Destination), ContentOf(Path));
}

TEST_F(SalvageWholeTest, RandomJournalsComeBackAsSQLiteReadsThem)
{
    std::mt19937_64 random(Seed());
    const char* const encodings[] = {"UTF-8", "UTF-16le", "UTF-16be"};
    for (unsigned number = 0; number < ShortOrLong(48U, 500U); ++number)
    {
        std::filesystem::remove(Path);
        {
            const PlainConnection journal(Path);
            int reserved = number % 3 == 0 ? static_cast<int>(random() % 33) : 0;
            sqlite3_file_control(journal.NativeHandle(), "main", SQLITE_FCNTL_RESERVE_BYTES, &reserved);
            journal.RunSQL("PRAGMA page_size=" + std::to_string(512U << (number % 8U)) + "; PRAGMA auto_vacuum=" +
                           std::to_string(random() % 3) + "; PRAGMA encoding='" + encodings[random() % 3] +
                           "'; PRAGMA foreign_keys=OFF; BEGIN;" + OldFiles().back().SQL + "COMMIT;");
            FillRandomly(journal, random);
        }
        const PlantSalvageReport report = Salvage();
        ASSERT_TRUE(RowsOf(Destination) == RowsOf(Path)) << "journal " << number << ", seed " << Seed();
        for (const PlantSalvageTable& table : report.Tables)
        {
            EXPECT_TRUE(table.IsWhole) << table.Name;
            EXPECT_EQ(table.RowsMissing, 0) << table.Name;
        }
    }
}

TEST_F(SalvageWholeTest, EarlierSchemasAreMigrated)
{
    for (const OldFile& file : OldFiles())
    {
        SCOPED_TRACE(file.Name);
        WriteOldFile(Path, file);
        const PlantSalvageReport report = Salvage();
        const std::string migrated = Scratch.File("migrated.db");
        CopyOver(Path, migrated);
        ASSERT_TRUE(Database.Open(migrated));
        Database.Close();
        EXPECT_EQ(RowsOf(Destination), RowsOf(migrated));
        for (const PlantSalvageTable& table : report.Tables)
            EXPECT_TRUE(table.IsWhole) << table.Name;
    }
}

TEST_F(SalvageWholeTest, TheDamagedFileMayBeReadOnly)
{
    std::filesystem::permissions(Path, std::filesystem::perms::owner_read);
    Salvage();
    EXPECT_EQ(ContentOf(Destination), ContentOf(Path));
    const auto write = std::filesystem::status(Destination).permissions() & std::filesystem::perms::owner_write;
    EXPECT_EQ(write, std::filesystem::perms::none);
}

TEST_F(SalvageWholeTest, NoOtherFileIsLeft)
{
    Salvage();
    EXPECT_EQ(Scratch.Files().size(), 2);
}

TEST_F(SalvageWholeTest, AnInterruptedWriteIsRolledBack)
{
    Grow();
    const std::string expected = RowsOf(Path);
    const std::string copy = Scratch.File("copy.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=2; BEGIN; UPDATE PlantEvents SET Details='changed'; DELETE FROM "
                      "PlantJournalEntries; INSERT INTO PlantPhotos VALUES(9,'u','11111111-1111-4111-8111-111111111111'"
                      ",'',hex(zeroblob(90000)),'');");
        std::filesystem::copy_file(Path, copy);
        std::filesystem::copy_file(Path + "-journal", copy + "-journal");
        writer.RunSQL("ROLLBACK;");
    }
    Path = copy;
    const std::string before = FileBytes(copy + "-journal");
    EXPECT_TRUE(Salvage().RolledBack);
    EXPECT_TRUE(FileBytes(copy + "-journal") == before);
    EXPECT_EQ(RowsOf(Destination), expected);
    EXPECT_EQ(RowsOf(copy), expected); // SQLite rolls it back likewise
}

TEST_F(SalvageWholeTest, AFinishedRollbackJournalIsNotApplied)
{
    Grow();
    const std::string journal = Path + "-journal";
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA journal_mode=PERSIST; DELETE FROM PlantEvents WHERE ID>100;");
    }
    ASSERT_TRUE(std::filesystem::exists(journal));
    EXPECT_FALSE(Salvage().RolledBack);
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path));
}

TEST_F(SalvageWholeTest, AWriteAheadLogIsReported)
{
    EXPECT_FALSE(Salvage().HasWriteAheadLog);
    WriteBytes(Path + "-wal", "");
    EXPECT_FALSE(Salvage().HasWriteAheadLog); // the last program that closes a journal can leave it empty
    WriteBytes(Path + "-wal", "frames");
    EXPECT_TRUE(Salvage().HasWriteAheadLog);
}

TEST_F(SalvageWholeTest, DeletedRowsStayDeleted)
{
    Grow(500);
    PlainConnection(Path).RunSQL("PRAGMA secure_delete=OFF; DELETE FROM PlantEvents WHERE ID>50 OR ID=20; "
                                 "DELETE FROM PlantJournalEntries;");
    ASSERT_NE(FileBytes(Path).find("event 400"), std::string::npos); // the free pages still have the rows
    ASSERT_NE(FileBytes(Path).find("event 17"), std::string::npos);  // and so do the pages of the table
    Salvage();
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path));
}

} // namespace

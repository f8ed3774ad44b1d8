// Salvages of files whose page size, reserved bytes or encoding are not as the header says.

#include "plant_file.h"

#include "support/salvage_test.h"
#include "testing/old_files.h"

#include <filesystem>

using namespace support;

namespace
{

// A journal with texts of several pages.
class SalvageFormatTest : public SalvageTest
{
  protected:
    // Writes the journal again, with reserved bytes at the end of each page.
    void Reserve(int reserved)
    {
        Grow();
        const PlainConnection journal(Path);
        sqlite3_file_control(journal.NativeHandle(), "main", SQLITE_FCNTL_RESERVE_BYTES, &reserved);
        journal.RunSQL("UPDATE PlantEvents SET Details=printf('%.*c',2000,char(65+ID%26)) WHERE ID%9=0;"
                       "UPDATE Plants SET Notes=printf('%.*c',2000,'n'); VACUUM;");
        Whole = FileBytes(Path);
        Expected = RowsOf(Path);
    }
    void ExpectAllRowsOf(const std::string& damaged) const
    {
        WriteBytes(Path, damaged);
        Salvage();
        EXPECT_TRUE(RowsOf(Destination) == Expected);
    }
    std::string With(std::size_t at, const std::string& bytes) const
    {
        std::string damaged = Whole;
        return damaged.replace(at, bytes.size(), bytes);
    }

    std::string Whole;
    std::string Expected;
};

TEST_F(SalvageFormatTest, ReservedBytesAreFoundInADamagedFile)
{
    for (const int reserved : {1, 12, 32})
    {
        SCOPED_TRACE(reserved);
        Reserve(reserved);
        ASSERT_EQ(Whole[20], reserved);
        ExpectAllRowsOf(Whole);
        ExpectAllRowsOf(Whole.substr(0, Whole.size() - 1)); // a reserved byte
        ExpectAllRowsOf(Whole + 'x');
        ExpectAllRowsOf(With(0, "s"));
        ExpectAllRowsOf(With(0, std::string(100, '\0')));
        ExpectAllRowsOf(With(16, std::string("\x10\0", 2)));
        WriteBytes(Path, Whole);
    }
}

TEST_F(SalvageFormatTest, AWrongNumberOfReservedBytesIsFound)
{
    Reserve(0);
    for (const char* reserved : {"\1", "\x0C", " "})
        ExpectAllRowsOf(With(20, reserved));
}

TEST_F(SalvageFormatTest, AWrongEncodingIsFound)
{
    Reserve(0);
    for (const char* encoding : {"\2", "\3", "\4"})
        ExpectAllRowsOf(With(59, encoding));
}

TEST_F(SalvageFormatTest, AFileThatIsCutKeepsItsEncoding)
{
    for (const char* encoding : {"UTF-16le", "UTF-16be"})
    {
        std::filesystem::remove(Path);
        PlainConnection(Path).RunSQL("PRAGMA page_size=512; PRAGMA encoding='" + std::string(encoding) + "'; BEGIN;" +
                                     OldFiles().back().SQL +
                                     "COMMIT; DELETE FROM Plants; INSERT INTO Strains(Name) VALUES('Bl\u00fcte');");
        std::size_t end = 0;
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == "Strains")
                end = page.Offset + page.Size;
        WriteBytes(Path, FileBytes(Path).substr(0, end));
        Zero(Path, 100, 412); // the schema; no other table has a row with a name by which a text shows its encoding
        Salvage();
        EXPECT_EQ(Salvaged("SELECT count(*) FROM Strains WHERE Name='Bl\u00fcte'"), "1") << encoding;
    }
}

} // namespace

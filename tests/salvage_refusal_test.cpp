// What a salvage refuses.

#include "plant_file.h"

#include "support/salvage_test.h"

#include <filesystem>
#include <fstream>
#include <random>

using namespace support;

namespace
{

class SalvageRefusalTest : public SalvageTest
{
  protected:
    // Expects an error, an empty report, and that no file has changed.
    void ExpectRefusal(const std::string& error) const
    {
        const auto before = Scratch.Files();
        PlantSalvageReport report;
        report.PlaceholderPlants = 17;
        EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error, error);
        EXPECT_TRUE(Scratch.Files() == before);
        EXPECT_TRUE(report.Tables.empty());
        EXPECT_EQ(report.PlaceholderPlants, 0);
    }
    std::string NothingFound() const { return Path + ": no table of a journal was found in it"; }
};

TEST_F(SalvageRefusalTest, AMissingFileIsAnError)
{
    std::filesystem::remove(Path);
    ExpectRefusal(Path + ": no such file");
}

TEST_F(SalvageRefusalTest, AnEmptyFileIsAnError)
{
    WriteBytes(Path, "");
    ExpectRefusal(NothingFound());
}

TEST_F(SalvageRefusalTest, AFileWithoutAJournalIsAnError)
{
    std::mt19937_64 random(1);
    for (const std::size_t size : {1U, 99U, 100U, 511U, 512U, 4096U, 100'000U})
    {
        std::string bytes;
        while (bytes.size() < size)
            bytes += static_cast<char>(random());
        WriteBytes(Path, bytes);
        ExpectRefusal(NothingFound());
        WriteBytes(Path, std::string(size, '\0'));
        ExpectRefusal(NothingFound());
    }
}

TEST_F(SalvageRefusalTest, AWholeHeaderAloneIsAnError)
{
    Zero(Path, 100, FileBytes(Path).size() - 100);
    ExpectRefusal(NothingFound());
}

TEST_F(SalvageRefusalTest, ADatabaseWithoutTablesIsAnError)
{
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("PRAGMA user_version=1;");
    ExpectRefusal(NothingFound());
}

TEST_F(SalvageRefusalTest, ADatabaseOfAnotherProgramIsAnError)
{
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("CREATE TABLE T(A,B,C); INSERT INTO T VALUES(1,2,3);");
    ExpectRefusal(NothingFound());
}

TEST_F(SalvageRefusalTest, AnExistingDestinationIsKept)
{
    WriteBytes(Destination, "another file");
    ExpectRefusal(Destination + ": already exists");
    Destination = Path;
    ExpectRefusal(Destination + ": the source and the destination are the same file");
}

TEST_F(SalvageRefusalTest, ABrokenLinkIsKept)
{
    std::filesystem::create_symlink("nowhere", Destination);
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error,
              Destination + ": a symbolic link to a file that does not exist");
    EXPECT_EQ(std::filesystem::read_symlink(Destination), "nowhere");
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("nowhere")));
}

TEST_F(SalvageRefusalTest, ALogOfTheDestinationIsAnError)
{
    WriteBytes(Destination + "-journal", "old");
    ExpectRefusal(Destination +
                  ": salvaged.db-journal exists, and SQLite would apply it to the copy; move it away first");
}

TEST_F(SalvageRefusalTest, ADestinationInAMissingDirectoryIsAnError)
{
    Destination = Scratch.File("none/salvaged.db");
    ExpectRefusal(Destination + ": creating a temporary file: No such file or directory");
}

TEST_F(SalvageRefusalTest, AnEmptyPathIsAnError)
{
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase("", Destination, report).Error, ": the path is empty or contains a zero byte");
    EXPECT_EQ(SalvagePlantDatabase(Path, "", report).Error, ": the path is empty or contains a zero byte");
}

TEST_F(SalvageRefusalTest, AFileThatAnotherProgramWritesIsLocked)
{
    const PlainConnection writer(Path);
    writer.RunSQL("BEGIN EXCLUSIVE;");
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error, Path + ": opening: database is locked");
}

TEST_F(SalvageRefusalTest, AnOpenJournalCanBeSalvaged)
{
    ASSERT_TRUE(Database.Open(Path));
    Salvage();
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path));
    Plant another;
    another.Name = "later";
    EXPECT_TRUE(Repository.CreatePlant(another)); // no lock is left
}

} // namespace

#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/disk_failure.h"
#include "support/inspect_test.h"
#include "support/sample_records.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <new>

using namespace support;

namespace
{

using Texts = std::vector<std::string>;
using InspectUnreadableTest = InspectTest;

void Write(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

TEST_F(InspectUnreadableTest, AFileOfAnotherFormatIsNotADatabase)
{
    for (const std::size_t size : {2U, 15U, 100U, 511U, 512U, 5000U})
    {
        Write(Path, std::string(size, 'x'));
        const PlantFileInspection found = After("");
        EXPECT_EQ(found.Kind, PlantFileKind::NotADatabase) << size;
        EXPECT_EQ(found.Bytes, static_cast<std::int64_t>(size));
    }
}

TEST_F(InspectUnreadableTest, ATruncatedFileIsDamaged)
{
    std::filesystem::resize_file(Path, std::filesystem::file_size(Path) / 2);
    const auto before = Scratch.Files();
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading the schema: database disk image is malformed."});
    EXPECT_EQ(found.Bytes, static_cast<std::int64_t>(std::filesystem::file_size(Path)));
    EXPECT_TRUE(found.Tables.empty());
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(InspectUnreadableTest, AFileWithAnUnreadableTableIsDamaged)
{
    PlainConnection(Path).RunSQL("INSERT INTO Strains(Name) VALUES('Roma');");
    const int page = std::stoi(PlainConnection(Path).Value("SELECT rootpage FROM sqlite_master WHERE name='Strains';"));
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary).seekp((page - 1) * 4096L).put('\x7F');
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading Strains: database disk image is malformed."});
}

TEST_F(InspectUnreadableTest, AFileWithAnUnsupportedSchemaFormatIsDamaged)
{
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary).seekp(47).put('\x09'); // its format
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading the schema: unsupported file format."});
}

// Makes a tree whose pages each refer 70 times to the next one: reading it visits the last page 70^8 times.
void MakeEndlessTree(const std::string& path)
{
    constexpr int pageSize = 512;
    constexpr int links = 70;
    {
        const PlainConnection file(path);
        file.RunSQL("PRAGMA page_size=512; VACUUM; WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT "
                    "40) INSERT INTO SchemaMeta SELECT X,printf('%.400c','x') FROM N;");
    }
    std::string bytes = FileBytes(path);
    const int root = std::stoi(PlainConnection(path).Value("SELECT rootpage FROM sqlite_master WHERE "
                                                           "name='SchemaMeta';"));
    std::vector<int> chain = {root};
    for (int page = static_cast<int>(bytes.size()) / pageSize; chain.size() < 9; --page)
        if (bytes[static_cast<std::size_t>(page - 1) * pageSize] == '\x0D') // a leaf of the table
            chain.push_back(page);
    for (std::size_t level = 0; level + 1 < chain.size(); ++level)
    {
        const auto number = [&](int value, int count)
        {
            std::string text;
            while (count-- > 0)
                text += static_cast<char>(value >> (8 * count));
            return text;
        };
        std::string page = "\x05" + number(0, 2) + number(links, 2) + number(pageSize - 5 * links, 2) + number(0, 1) +
                           number(chain[level + 1], 4);
        for (int link = 0; link < links; ++link)
            page += number(pageSize - 5 * (link + 1), 2);
        page.resize(static_cast<std::size_t>(pageSize - 5 * links));
        for (int link = 0; link < links; ++link)
            page += number(chain[level + 1], 4) + number(1, 1);
        bytes.replace(static_cast<std::size_t>(chain[level] - 1) * pageSize, pageSize, page);
    }
    Write(path, bytes);
}

TEST_F(InspectUnreadableTest, ReadingAnEndlessTreeIsStopped)
{
    MakeEndlessTree(Path);
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading SchemaMeta: stopped: an undamaged file of this size takes far less work."});
    std::vector<PlantFileFinding> findings;
    EXPECT_EQ(CheckPlantDatabase(Path, findings).Error, "");
    EXPECT_FALSE(findings.empty());
}

TEST_F(InspectUnreadableTest, AFileUnderAnExclusiveLockIsLockedAfterTwoAndAHalfSeconds)
{
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(Path));
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    const auto begin = std::chrono::steady_clock::now();
    const PlantFileInspection found = Inspected(Path);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2400));
    EXPECT_EQ(found.Kind, PlantFileKind::Locked);
    EXPECT_EQ(found.Bytes, bytes);
}

TEST_F(InspectUnreadableTest, AFileInAWriteTransactionIsReadAsItWasBefore)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE; INSERT INTO Strains(Name) VALUES('Roma');");
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Current);
    EXPECT_EQ(found.Tables.at(1).Rows, 0);
    other.RunSQL("COMMIT;");
    EXPECT_EQ(Inspected(Path).Tables.at(1).Rows, 1);
}

TEST_F(InspectUnreadableTest, AnInterruptedWriteIsLeftToTheNextOpen)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT "
                      "100) INSERT INTO Strains(Name,Notes) SELECT X,printf('%.1000c','x') FROM N;");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    const auto before = Scratch.Files();
    const PlantFileInspection found = Inspected(torn);
    EXPECT_EQ(found.Kind, PlantFileKind::Interrupted);
    EXPECT_TRUE(found.Steps.empty() && found.Reasons.empty() && found.Tables.empty());
    EXPECT_GT(found.Bytes, 100'000);
    EXPECT_TRUE(Scratch.Files() == before);
    std::vector<PlantFileFinding> findings;
    EXPECT_EQ(CheckPlantDatabase(torn, findings).Error,
              torn + ": reading the schema: a write was interrupted; the next open rolls it back");
    EXPECT_TRUE(Scratch.Files() == before);
    ASSERT_TRUE(Database.Open(torn));
    Database.Close();
    EXPECT_EQ(InspectedKind(torn), PlantFileKind::Current);
}

// ---- Failures

TEST_F(InspectUnreadableTest, AFailingDiskIsAnErrorAndChangesNothing)
{
    OpenJournal();
    StoreSampleRecords(Repository);
    Database.Close();
    const auto before = Scratch.Files();
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Size, DiskCall::Lock, DiskCall::Access})
        for (int number = 1;; ++number)
        {
            const DiskFailure failure({call, DiskError::IO, false, number});
            PlantFileInspection found;
            std::vector<PlantFileFinding> findings;
            const PlantFileResult inspected = InspectPlantDatabase(Path, found);
            const bool happened = failure.Happened();
            if (!inspected)
            {
                EXPECT_TRUE(inspected.Error.starts_with(Path + ": ")) << inspected.Error;
                EXPECT_TRUE(found.Tables.empty());
            }
            else
                EXPECT_EQ(found.Kind, PlantFileKind::Current) << call << ' ' << number;
            EXPECT_TRUE(Scratch.Files() == before) << call << ' ' << number;
            if (!happened)
                break;
            EXPECT_LT(number, 1000);
        }
    EXPECT_EQ(InspectedKind(Path), PlantFileKind::Current);
}

TEST_F(InspectUnreadableTest, AFailingAllocationIsAnErrorOrAnException)
{
    OpenJournal();
    StoreSampleRecords(Repository);
    Database.Close();
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1;; number += 1 + number / 50)
        {
            PlantFileInspection found;
            bool happened = false;
            PlantFileResult result;
            try
            {
                const AllocationFailure failure(allocator, number);
                result = InspectPlantDatabase(Path, found);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                happened = true;
            }
            EXPECT_TRUE(found.Kind == PlantFileKind::Current || found.Kind == PlantFileKind::Missing) << number;
            if (!happened)
            {
                EXPECT_TRUE(result);
                EXPECT_EQ(found.Kind, PlantFileKind::Current);
                break;
            }
        }
}

} // namespace

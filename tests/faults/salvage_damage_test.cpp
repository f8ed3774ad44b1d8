// Salvages of a real season with random damage, from one byte to ten pages. Each row whose own pages are whole should
// come back unchanged, and no row should be invented.

#include "plant_file.h"

#include "support/damage_file.h"
#include "support/figures.h"
#include "support/program.h"
#include "support/test_form.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include <gtest/gtest.h>

using namespace support;

namespace
{

constexpr const char* Tables[] = {"Strains",
                                  "Plants",
                                  "PlantEvents",
                                  "PlantCareEntries",
                                  "HarvestRecords",
                                  "PlantPhotos",
                                  "PlantHealthObservations",
                                  "PlantJournalEntries"};

// A row by its table and row ID.
using RowName = std::pair<std::string, std::string>;

struct StoredRow
{
    std::string Values; // without the link
    RowName Link;       // the row ID of a mother or an event is empty where there is none
};

using StoredRows = std::map<RowName, StoredRow>;

StoredRows ReadRows(const std::string& path)
{
    const PlainConnection journal(path);
    StoredRows rows;
    for (const std::string table : Tables)
    {
        std::string values = "''";
        RowName link;
        for (const Row& column : journal.QueryRows("PRAGMA table_info(" + table + ");"))
            if (column[1] == "MotherPlantID" || column[1] == "TimelineEventID")
                link = {column[1] == "MotherPlantID" ? "Plants" : "PlantEvents", column[1]};
            else
                values += "||'|'||quote(" + column[1] + ')';
        const std::string target = link.second.empty() ? "''" : "ifnull(" + link.second + ",'')";
        for (const Row& row : journal.QueryRows("SELECT ID," + values + ',' + target + " FROM " + table + ';'))
            rows[{table, row[0]}] = {row[1], {link.first, row[2]}};
    }
    return rows;
}

// The pages of each row: its leaf, and those of its long texts.
std::map<RowName, std::set<std::size_t>> ReadPagesOfRows(const std::string& path)
{
    const PlainConnection journal(path);
    std::map<std::string, std::vector<std::size_t>> overflow; // by the path of the leaf and the number of the cell
    std::vector<UsedPage> leaves;
    for (const UsedPage& page : UsedPages(path))
        if (page.Kind == "overflow")
            overflow[page.Name + page.Path.substr(0, page.Path.find('+'))].push_back(page.Number);
        else if (page.Kind == "leaf")
            leaves.push_back(page);
    std::map<RowName, std::set<std::size_t>> pages;
    for (const std::string table : Tables)
    {
        const Rows rows = journal.QueryRows("SELECT ID FROM " + table + " ORDER BY ID;");
        std::size_t next = 0;
        for (const UsedPage& leaf : leaves)
            for (std::size_t cell = 0; leaf.Name == table && cell < leaf.Cells; ++cell)
            {
                std::set<std::size_t>& own = pages[{table, rows.at(next++).at(0)}];
                own.insert(leaf.Number);
                char number[8];
                std::snprintf(number, sizeof(number), "%03x", static_cast<unsigned>(cell));
                const auto found = overflow.find(table + leaf.Path + number);
                if (found != overflow.end())
                    own.insert(found->second.begin(), found->second.end());
            }
        EXPECT_EQ(next, rows.size()) << table;
    }
    return pages;
}

// A journal to damage.
struct Original
{
    std::string Bytes;
    std::size_t PageSize;
    StoredRows Rows;
    StoredRows DeletedRows; // their bytes are still in the file
    std::map<RowName, std::set<std::size_t>> Pages;
    std::set<std::size_t> FreeList;  // the first page, where the list begins, and the pages that name the free pages
    std::set<std::string> FreePages; // their bytes
};

std::uint32_t NumberAt(const std::string& bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8U | static_cast<unsigned char>(bytes.at(at + i));
    return number;
}

void ReadFreeList(Original& original)
{
    const auto at = [&](std::size_t page) { return (page - 1) * original.PageSize; };
    original.FreeList = {1};
    for (std::size_t page = NumberAt(original.Bytes, 32); page != 0; page = NumberAt(original.Bytes, at(page)))
    {
        original.FreeList.insert(page);
        for (std::uint32_t leaf = 0; leaf < NumberAt(original.Bytes, at(page) + 4); ++leaf)
            original.FreePages.insert(
                original.Bytes.substr(at(NumberAt(original.Bytes, at(page) + 8 + 4 * leaf)), original.PageSize));
    }
    EXPECT_FALSE(original.FreePages.empty());
}

// Counts the rows that the journal before the damage did not have.
void CountOtherRows(const Original& original, const std::string& bytes, const std::set<std::size_t>& damagedPages,
                    const StoredRows& rows)
{
    const bool isFreeListWhole = std::none_of(damagedPages.begin(), damagedPages.end(),
                                              [&](std::size_t page) { return original.FreeList.count(page) != 0; });
    const auto isFreePage = [&](std::size_t page)
    { return original.FreePages.count(bytes.substr((page - 1) * original.PageSize, original.PageSize)) != 0; };
    const bool hasOldPage = std::any_of(damagedPages.begin(), damagedPages.end(), isFreePage);
    for (const auto& [name, row] : rows)
    {
        if (original.Rows.count(name) != 0)
            continue;
        const auto deleted = original.DeletedRows.find(name);
        if (deleted == original.DeletedRows.end() || deleted->second.Values != row.Values)
            AddToFigure("rows with other row IDs");
        else if (!isFreeListWhole)
            AddToFigure("deleted rows that came back with a damaged free list");
        else
            AddToFigure(hasOldPage ? "deleted rows that came back where a free page replaced another page"
                                   : "other deleted rows that came back");
    }
}

class SalvageDamageTest : public testing::Test
{
  protected:
    // The season, after these statements.
    Original Season(const std::string& sql) const
    {
        std::filesystem::remove(Path);
        EXPECT_EQ(RunProgram({PLANTJOURNAL_GREENHOUSE_SEASON, Path}).Status, 0);
        const StoredRows before = ReadRows(Path);
        PlainConnection(Path).RunSQL("PRAGMA secure_delete=OFF; PRAGMA foreign_keys=ON; " + sql);
        Original original;
        original.Bytes = FileBytes(Path);
        original.PageSize = std::stoul(PlainConnection(Path).Value("PRAGMA page_size;"));
        original.Rows = ReadRows(Path);
        original.Pages = ReadPagesOfRows(Path);
        ReadFreeList(original);
        for (const auto& [name, row] : before)
            if (original.Rows.count(name) == 0)
                original.DeletedRows[name] = row;
        return original;
    }

    void DamageAndSalvage(const Original& original, std::mt19937_64& random) const;

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("season.db");
    std::string Destination = Scratch.File("salvaged.db");
};

std::string RandomBytes(std::size_t size, std::mt19937_64& random)
{
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

// Changes one byte, some bytes, or up to ten pages.
std::string Damaged(const Original& original, std::mt19937_64& random)
{
    std::string bytes = original.Bytes;
    const std::size_t pages = bytes.size() / original.PageSize;
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    const auto replace = [&](std::size_t at, const std::string& with)
    { bytes.replace(at, std::min(with.size(), bytes.size() - at), with, 0, std::min(with.size(), bytes.size() - at)); };
    const auto kind = below(8);
    if (kind == 0)
        replace(below(bytes.size()), RandomBytes(1, random));
    else if (kind == 1)
        replace(below(bytes.size()), RandomBytes(1 + below(200), random));
    else if (kind == 2) // a sector
        replace(below(bytes.size() / 512) * 512, below(2) == 0 ? std::string(512, '\0') : RandomBytes(512, random));
    else if (kind == 3) // pages in a row
        replace(below(pages) * original.PageSize, std::string((1 + below(10)) * original.PageSize, '\0'));
    else
        for (std::size_t count = 1 + below(10); count > 0; --count)
        {
            const std::size_t at = below(pages) * original.PageSize;
            if (kind == 4)
                replace(at, std::string(original.PageSize, '\0'));
            else if (kind == 5)
                replace(at, RandomBytes(original.PageSize, random));
            else if (kind == 6) // another page
                replace(at, original.Bytes.substr(below(pages) * original.PageSize, original.PageSize));
            else
                replace(at + below(original.PageSize), RandomBytes(1, random));
        }
    return bytes;
}

void SalvageDamageTest::DamageAndSalvage(const Original& original, std::mt19937_64& random) const
{
    const std::string bytes = Damaged(original, random);
    WriteBytes(Path, bytes);
    std::filesystem::remove(Destination);
    PlantSalvageReport report;
    const auto begin = std::chrono::steady_clock::now();
    const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    ASSERT_TRUE(result) << result.Error;
    ASSERT_TRUE(FileBytes(Path) == bytes);
    ASSERT_EQ(Damage(PlainConnection(Destination).NativeHandle()), "ok");
    std::set<std::size_t> damagedPages;
    for (std::size_t at = 0; at < bytes.size(); ++at)
        if (bytes[at] != original.Bytes[at])
            damagedPages.insert(at / original.PageSize + 1);
    const StoredRows rows = ReadRows(Destination);
    for (const auto& [name, row] : original.Rows)
    {
        const std::set<std::size_t>& pages = original.Pages.at(name);
        const bool isWhole =
            std::none_of(pages.begin(), pages.end(), [&](std::size_t page) { return damagedPages.count(page) != 0; });
        const auto found = rows.find(name);
        const bool isSame =
            found != rows.end() && found->second.Values == row.Values &&
            (found->second.Link == row.Link || (found->second.Link.second.empty() && rows.count(row.Link) == 0));
        AddToFigure(isWhole
                        ? (isSame ? "rows on whole pages that came back" : "rows on whole pages that were lost")
                        : (isSame ? "rows on damaged pages that came back" : "rows on damaged pages that were lost"));
        if (found != rows.end() && !isSame)
            AddToFigure(isWhole ? "rows on whole pages with other values" : "rows on damaged pages with other values");
    }
    CountOtherRows(original, bytes, damagedPages, rows);
    std::uint64_t missing = 0;
    for (const PlantSalvageTable& table : report.Tables)
        missing += static_cast<std::uint64_t>(table.RowsMissing);
    AddToFigure("rows that the reports name as missing", missing);
}

TEST_F(SalvageDamageTest, RowsOnWholePagesComeBack)
{
    std::mt19937_64 random(Seed());
    const Original seasons[] = {
        Season("DELETE FROM PlantPhotos WHERE ID%2=0; DELETE FROM PlantJournalEntries WHERE ID>100;"),
        Season("DELETE FROM PlantCareEntries WHERE ID%7<5; DELETE FROM PlantEvents WHERE ID BETWEEN 300 AND 700;"),
        Season(
            "PRAGMA page_size=1024; VACUUM; UPDATE PlantJournalEntries SET Details=printf('%.*c',2500,'x') WHERE ID%9=0; "
            "DELETE FROM PlantEvents WHERE EventDate<'2024-06-01';")};
    for (int number = 0; number < ShortOrLong(300, 10'000); ++number)
    {
        DamageAndSalvage(seasons[number % 3], random);
        ASSERT_FALSE(HasFailure()) << "damage " << number << ", seed " << Seed();
        AddToFigure("damaged files");
    }
    const std::uint64_t whole = AddToFigure("rows on whole pages that came back", 0);
    const std::uint64_t lost = AddToFigure("rows on whole pages that were lost", 0);
    EXPECT_GE(whole, (whole + lost) / 100 * 99);
    // A damaged row ID can be that of a row on a whole page.
    EXPECT_LE(AddToFigure("rows on whole pages with other values", 0), whole / 100'000);
    EXPECT_EQ(AddToFigure("other deleted rows that came back", 0), 0);
}

} // namespace

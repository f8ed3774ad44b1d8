// A season with a backup a day or with none, and a damaged journal, as a grower lives through it.

#include "support/damage_file.h"
#include "support/dated_command.h"
#include "testing/plain_connection.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace support;

namespace
{

using RestoreDrillTest = DatedCommandTest;

// A season without a backup.
class SalvageDrillTest : public DatedCommandTest
{
  protected:
    // Sets the pages in the middle of the journal to zero, and returns the number of the first one.
    std::size_t LoseTheMiddle() const
    {
        const auto pages = static_cast<std::size_t>(std::filesystem::file_size(Journal)) / PageSize;
        Zero(Journal, pages / 4 * PageSize, pages / 2 * PageSize);
        return pages / 4 + 1;
    }
    // The rows of a table, each as one text, without the links to events: a link to a lost event is cleared.
    static std::vector<std::string> RowsOf(const std::string& journal, const std::string& table)
    {
        const PlainConnection connection(journal);
        std::string query = "SELECT rowid";
        for (const Row& column : connection.QueryRows("PRAGMA table_info(" + table + ");"))
            if (column[1] != "TimelineEventID")
                query += "||'|'||quote(" + column[1] + ')';
        query += " FROM " + table + " ORDER BY rowid;";
        std::vector<std::string> rows;
        for (const Row& row : connection.QueryRows(query))
            rows.push_back(row[0]);
        return rows;
    }
    // Those of the rows that are on pages outside the middle.
    static std::vector<std::string> RowsOnWholePages(const std::vector<std::string>& rows, const std::string& table,
                                                     const std::vector<UsedPage>& pages, std::size_t firstLost,
                                                     std::size_t lostPages)
    {
        std::vector<std::string> whole;
        auto row = rows.begin();
        for (const UsedPage& page : pages)
            if (page.Name == table && page.Kind == "leaf")
            {
                const auto end = row + static_cast<std::ptrdiff_t>(page.Cells);
                if (page.Number < firstLost || page.Number >= firstLost + lostPages)
                    whole.insert(whole.end(), row, end);
                row = end;
            }
        EXPECT_TRUE(row == rows.end());
        return whole;
    }

    static constexpr std::size_t PageSize = 4096;
    static constexpr std::array<const char*, 4> Tables = {"Plants", "PlantEvents", "PlantCareEntries",
                                                          "PlantJournalEntries"};
};

std::string DayText(int day)
{
    const std::chrono::year_month_day date =
        std::chrono::sys_days(std::chrono::year(2026) / 4 / 1) + std::chrono::days(day);
    std::ostringstream text;
    text << static_cast<int>(date.year()) << '-' << std::setfill('0') << std::setw(2)
         << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day());
    return text.str();
}

TEST_F(RestoreDrillTest, AfterADamageTheSeasonGoesOn)
{
    constexpr int days = 60;
    for (const char* name : {"Basil", "Mint", "Thyme"})
        DoneOn(DayText(0), {"plant", "add", name, "--stage", "veg"});
    for (int day = 0; day < days; ++day)
    {
        DoneOn(DayText(day), {"water", "--all", "0.5l"});
        DoneOn(DayText(day), {"note", "Basil", "Day " + std::to_string(day) + std::string(200, '.')});
        DoneOn(DayText(day), {"backup"});
    }
    const JSON kept = JSON::parse(DoneOn(DayText(days - 1), {"backup", "--list", "--json"}));
    EXPECT_EQ(kept.size(), 7U + 2U + 1U); // days, two more weeks, and the end of April
    const std::string before = DoneOn(DayText(days - 1), {"export", "-"});

    DamageJournal();
    const std::string damaged = FileBytes(Journal);
    const std::string today = DayText(days);
    const ProgramResult check = On(today, {"check"});
    EXPECT_EQ(check.Status, 1);
    EXPECT_NE(check.Error.find("database disk image is malformed; restore a backup with `plantjournal restore`"),
              std::string::npos)
        << check.Error;
    EXPECT_EQ(FileBytes(Journal) == damaged, true);

    const ProgramResult restored = On(today, {"restore", "--yes"});
    EXPECT_EQ(restored.Status, 0) << restored.Error;
    EXPECT_EQ(restored.Error, "notice: " + Journal + ": programs that have it open must open it again\n");
    Left.push_back("journal.db.before-restore-" + today);
    EXPECT_EQ(FileBytes(Scratch.File("data/plantjournal/" + Left.back())) == damaged, true);
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
    EXPECT_EQ(DoneOn(today, {"export", "-"}), before);

    DoneOn(today, {"water", "--all", "0.5l"});
    EXPECT_NE(DoneOn(today, {"export", "-"}), before);
    DoneOn(today, {"undo", "--yes"});
    EXPECT_EQ(DoneOn(today, {"export", "-"}), before);
    DoneOn(today, {"water", "Basil", "0.5l"});
    DoneOn(today, {"backup"});
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
}

TEST_F(SalvageDrillTest, WithoutABackupTheRowsOnWholePagesComeBack)
{
    constexpr int days = 60;
    for (const char* name : {"Basil", "Mint", "Thyme"})
        DoneOn(DayText(0), {"plant", "add", name, "--stage", "veg"});
    for (int day = 0; day < days; ++day) // a notice offers a backup, which the grower never makes
    {
        NoticeOn(DayText(day), {"water", "--all", "0.5l"});
        NoticeOn(DayText(day), {"note", "Basil", "Day " + std::to_string(day) + std::string(200, '.')});
    }
    const std::vector<UsedPage> pages = UsedPages(Journal);
    std::map<std::string, std::vector<std::string>> rows;
    for (const std::string table : Tables)
        rows[table] = RowsOf(Journal, table);
    const std::size_t firstLost = LoseTheMiddle();
    const std::string damaged = FileBytes(Journal);

    const std::string today = DayText(days);
    EXPECT_EQ(On(today, {"check"}).Status, 1);
    EXPECT_EQ(On(today, {"restore", "--yes"}).Status, 1); // no backup
    const std::string salvaged = Scratch.File("salvaged.db");
    const JSON report = JSON::parse(DoneOn(today, {"salvage", Journal, salvaged, "--json"}));
    EXPECT_TRUE(FileBytes(Journal) == damaged);
    std::size_t cameBack = 0;
    std::size_t lost = 0;
    for (const std::string table : Tables)
    {
        const std::vector<std::string> whole =
            RowsOnWholePages(rows[table], table, pages, firstLost, damaged.size() / PageSize / 2);
        EXPECT_EQ(RowsOf(salvaged, table), whole) << table;
        cameBack += whole.size();
        lost += rows[table].size() - whole.size();
        for (const JSON& each : report.at("Tables"))
            if (each.at("Name") == table)
            {
                EXPECT_EQ(each.at("RowsRead"), whole.size()) << table;
                EXPECT_LE(each.at("RowsMissing"), rows[table].size() - whole.size()) << table;
            }
    }
    EXPECT_EQ(cameBack + lost, 3U + 180 + 180 + 60);
    EXPECT_GE(cameBack, 100U);
    EXPECT_GE(lost, 100U);

    NoticeOn(today, {"restore", salvaged, "--yes"}); // the salvaged journal takes the place of the damaged one
    NoticeOn(today, {"check", "--repair"});          // the events of care entries are lost, and rebuilt
    Left.insert(Left.end(), {"journal.db.before-repair-" + today, "journal.db.before-restore-" + today});
    EXPECT_TRUE(FileBytes(Scratch.File("data/plantjournal/" + Left.back())) == damaged);
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
    const std::string before = DoneOn(today, {"export", "-"});
    NoticeOn(today, {"water", "--all", "0.5l"});
    EXPECT_NE(DoneOn(today, {"export", "-"}), before);
    NoticeOn(today, {"undo", "--yes"});
    EXPECT_EQ(DoneOn(today, {"export", "-"}), before);
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
}

} // namespace

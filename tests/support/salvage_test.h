#pragma once

#include "plant_file.h"

#include "support/damage_file.h"
#include "support/journal_test.h"
#include "support/sample_records.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace support
{

// The part of a report about a table.
inline const PlantSalvageTable& TableOf(const PlantSalvageReport& report, const std::string& name)
{
    const auto found = std::find_if(report.Tables.begin(), report.Tables.end(),
                                    [&](const PlantSalvageTable& table) { return table.Name == name; });
    EXPECT_NE(found, report.Tables.end()) << name;
    return *found;
}

// All that a report says, in one line: each table with its rows read and missing, the reasons, and the rest.
inline std::string Printed(const PlantSalvageReport& report)
{
    std::string text;
    for (const PlantSalvageTable& table : report.Tables)
    {
        if (table.RowsRead == 0 && table.RowsMissing == 0 && table.IsWhole)
            continue;
        text += table.Name + ' ' + std::to_string(table.RowsRead);
        if (table.RowsMissing != 0)
            text += " without " + std::to_string(table.RowsMissing);
        text += table.IsWhole ? "" : " damaged";
        for (const PlantSalvageLoss& loss : table.Losses)
            text += " (" + std::to_string(loss.Rows) + ": " + loss.Reason + ')';
        text += ", ";
    }
    return text + "placeholders " + std::to_string(report.PlaceholderPlants) + ", cleared links " +
           std::to_string(report.ClearedLinks) + ", failed reads " + std::to_string(report.FailedReads) +
           (report.RolledBack ? ", rolled back" : "");
}

// A closed journal with something in every table, and a destination next to it.
class SalvageTest : public JournalTest
{
  protected:
    SalvageTest()
    {
        StoreSampleRecords(Repository);
        Database.Close();
    }

    // Salvages the journal, which must succeed and change no byte of it.
    PlantSalvageReport Salvage() const
    {
        std::filesystem::remove(Destination);
        const std::string before = FileBytes(Path);
        PlantSalvageReport report;
        report.PlaceholderPlants = 17; // stale
        const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report);
        EXPECT_TRUE(result) << result.Error;
        EXPECT_TRUE(FileBytes(Path) == before);
        if (result)
        {
            EXPECT_EQ(Damage(PlainConnection(Destination).NativeHandle()), "ok");
        }
        return report;
    }
    // The rows and the schema of a journal.
    static std::string ContentOf(const std::string& path)
    {
        return support::Content(PlainConnection(path).NativeHandle());
    }
    // The rows of all tables of a journal, with the columns in the order of a new journal.
    static std::string RowsOf(const std::string& path)
    {
        PlantDatabase pattern;
        EXPECT_TRUE(pattern.Open(":memory:"));
        const PlainConnection journal(path);
        std::string rows;
        for (const Row& table : support::QueryRows(pattern.NativeHandle(),
                                                   "SELECT name FROM sqlite_master WHERE type='table' ORDER BY rowid;"))
        {
            std::string columns = "rowid";
            for (const Row& column : support::QueryRows(pattern.NativeHandle(), "PRAGMA table_info(" + table[0] + ");"))
                columns += "||'|'||quote(" + column[1] + ')';
            rows += table[0] + '\n';
            for (const Row& row : journal.QueryRows("SELECT " + columns + " FROM " + table[0] + " ORDER BY rowid;"))
                rows += row[0] + '\n';
        }
        return rows;
    }
    // A value of the new journal.
    std::string Salvaged(const std::string& query) const { return PlainConnection(Destination).Value(query + ';'); }
    // Replaces the journal by one with several pages in each tree. The page size is 512 bytes.
    void Grow(int rows = 200) const
    {
        const PlainConnection journal(Path);
        journal.RunSQL("PRAGMA page_size=512; VACUUM;");
        const std::string numbers =
            "WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT " + std::to_string(rows) + ") ";
        journal.RunSQL(numbers + "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) SELECT "
                                 "'11111111-1111-4111-8111-111111111111',printf('2024-%02d-%02d',X%12+1,X%28+1),'Note',"
                                 "'event '||X FROM N;");
        journal.RunSQL(numbers + "INSERT INTO PlantJournalEntries(PlantUUID,EntryDate,Details) SELECT "
                                 "'11111111-1111-4111-8111-111111111111',printf('2024-%02d-%02d',X%12+1,X%28+1),"
                                 "'entry '||X FROM N;");
    }

    std::string Destination = Scratch.File("salvaged.db");
};

} // namespace support

#include "commands/backup_comparison.h"

#include "commands/inspected_file.h"
#include "commands/print.h"
#include "system.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace
{

// SQLite changes a number in the header with each change of the file. Empty where the file cannot be read. The command
// has no connection to the journal open: closing the file would drop its locks.
std::string HeaderOf(const std::string& path)
{
    const std::filesystem::path name = plant_file::PathOfText(path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(name, ignored)) // opening a pipe would wait for its other end
        return {};
    std::string header(100, '\0');
    std::ifstream file(name, std::ios::binary);
    file.read(header.data(), static_cast<std::streamsize>(header.size()));
    header.resize(static_cast<std::size_t>(file.gcount()));
    return header;
}

std::string ReplacementError(const std::string& journal, const std::string& backUp, PlantFileInspection& now)
{
    std::error_code ignored;
    const std::filesystem::path file = plant_file::PathOfText(journal);
    if (!file.has_filename())
        return journal + ": the path ends with a separator";
    if (std::filesystem::equivalent(file, plant_file::PathOfText(backUp), ignored))
        return journal + ": the backup and the journal are the same file";
    if (const PlantFileResult result = InspectPlantDatabase(journal, now); !result)
        return result.Error;
    if (now.Kind == PlantFileKind::Foreign)
        return journal + ": reading the schema: not a plantjournal file: " + now.Reasons.front();
    return {};
}

std::optional<std::int64_t> RowsIn(const PlantFileInspection& file, const std::string& table)
{
    const auto found = std::find_if(file.Tables.begin(), file.Tables.end(),
                                    [&](const PlantFileTable& other) { return other.Name == table; });
    return found != file.Tables.end() ? std::optional(found->Rows) : std::nullopt;
}

bool HasNoRows(const PlantFileInspection& file)
{
    return file.Kind == PlantFileKind::Missing || file.Kind == PlantFileKind::Empty;
}

} // namespace

bool IsJournal(const PlantFileInspection& file)
{
    return file.Kind == PlantFileKind::Current || file.Kind == PlantFileKind::Older;
}

std::string DamageIn(const std::string& path)
{
    std::vector<PlantFileFinding> findings;
    const PlantFileResult checked = CheckPlantDatabase(path, findings);
    const auto isDamage = [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::Damage; };
    const auto damage = std::find_if(findings.begin(), findings.end(), isDamage);
    return damage != findings.end() ? path + ": " + damage->Description : checked.Error;
}

BackUpComparison::BackUpComparison(std::string journal, const std::string& backUp, std::string& error)
    : Journal(std::move(journal)), Header(HeaderOf(Journal))
{
    error = ReplacementError(Journal, backUp, Now);
    if (!error.empty())
        return;
    if (const PlantFileResult result = InspectPlantDatabase(backUp, Then); !result)
        error = result.Error;
    else if (!IsJournal(Then))
        error = backUp + ": " + KindInWords(Then.Kind);
    if (!IsJournal(Now))
        return;
    const std::string damage = DamageIn(Journal);
    if (damage.ends_with("database is locked"))
        Now.Kind = PlantFileKind::Locked;
    else if (!damage.empty())
        Now.Kind = PlantFileKind::Damaged;
}

void BackUpComparison::Print(std::ostream& out) const
{
    const auto textOf = [](const std::optional<std::int64_t>& rows) { return rows ? std::to_string(*rows) : ""; };
    std::vector<Row> rows;
    for (const std::string& table : TableNames())
        if (const std::string label = TableLabel(table); !label.empty())
            rows.push_back({label, textOf(RowsNow(table)), std::to_string(RowsThen(table)), Change(table)});
    const bool isRead = !Now.Tables.empty();
    rows.push_back({"Last date", isRead ? Now.LastDate : "", Then.LastDate, ""});
    if (!IsJournal(Now))
        out << "The present file: " << KindInWords(Now.Kind)
            << (isRead || Now.Bytes == 0 ? "" : "; its records are not counted") << '\n';
    PrintTable(out,
               {{"Records", WhenNarrow::Keep},
                {"Now", WhenNarrow::Keep, true},
                {"Backup", WhenNarrow::Keep, true},
                {"Change", WhenNarrow::Keep, true}},
               rows);
}

bool BackUpComparison::ReplacesTheFile() const
{
    return Now.Kind == PlantFileKind::Damaged || Now.Kind == PlantFileKind::NotADatabase;
}

bool BackUpComparison::IsUpToDate() const
{
    return HeaderOf(Journal) == Header;
}

JSON BackUpComparison::AsJSON() const
{
    JSON object = JSON::Object();
    for (const std::string& table : TableNames())
    {
        const std::optional<std::int64_t> now = RowsNow(table);
        JSON counts = JSON::Object();
        counts.Add("Now", now ? JSONOf(*now) : JSON::Null());
        counts.Add("BackUp", JSONOf(RowsThen(table)));
        object.Add(table, std::move(counts));
    }
    return object;
}

JSON BackUpComparison::LastDates() const
{
    JSON dates = JSON::Object();
    dates.Add("Now", Now.Tables.empty() && !HasNoRows(Now) ? JSON::Null() : JSONOf(Now.LastDate));
    dates.Add("BackUp", JSONOf(Then.LastDate));
    return dates;
}

// The tables of either file.
std::vector<std::string> BackUpComparison::TableNames() const
{
    std::vector<std::string> names;
    for (const PlantFileInspection* const file : {&Then, &Now})
        for (const PlantFileTable& table : file->Tables)
            if (std::find(names.begin(), names.end(), table.Name) == names.end())
                names.push_back(table.Name);
    return names;
}

// Nothing where the rows could not be read. Earlier schemas lack some of the tables.
std::optional<std::int64_t> BackUpComparison::RowsNow(const std::string& table) const
{
    if (Now.Tables.empty() && !HasNoRows(Now))
        return {};
    return RowsIn(Now, table).value_or(0);
}

std::int64_t BackUpComparison::RowsThen(const std::string& table) const
{
    return RowsIn(Then, table).value_or(0);
}

std::string BackUpComparison::Change(const std::string& table) const
{
    const std::optional<std::int64_t> now = RowsNow(table);
    const std::int64_t then = RowsThen(table);
    if (!now || *now == then)
        return "";
    return (then > *now ? "+" : "") + std::to_string(then - *now);
}

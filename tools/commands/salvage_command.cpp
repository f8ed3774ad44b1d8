#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/impossible_values.h"
#include "commands/outcome.h"
#include "commands/print.h"
#include "journal/file_result.h"
#include "journal/next_command.h"
#include "plant_file.h"
#include "record/text.h"
#include "terminal/printable.h"
#include "terminal/progress.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr const char* ChangedValues =
    "A changed byte inside a value can stay unnoticed: compare the new journal with what you remember.";

const char* InterruptedWrite(const PlantSalvageReport& report)
{
    if (report.RollbackIsDamaged)
        return report.RolledBack ? "PartlyRolledBack" : "NotRolledBack";
    return report.RolledBack ? "RolledBack" : "None";
}

void PrintSalvageJSON(const std::string& damaged, const std::string& destination, const PlantSalvageReport& report)
{
    JSON tables = JSON::Array();
    for (const PlantSalvageTable& table : report.Tables)
    {
        JSON losses = JSON::Array();
        for (const PlantSalvageLoss& loss : table.Losses)
        {
            JSON object = JSON::Object();
            object.Add("Reason", JSONOf(loss.Reason));
            object.Add("Rows", JSONOf(loss.Rows));
            losses.Add(std::move(object));
        }
        JSON object = JSON::Object();
        object.Add("Name", JSONOf(table.Name));
        object.Add("RowsRead", JSONOf(table.RowsRead));
        object.Add("RowsMissing", JSONOf(table.RowsMissing));
        object.Add("State", JSONOf(std::string(table.IsWhole ? "Whole" : "Damaged")));
        object.Add("Losses", std::move(losses));
        tables.Add(std::move(object));
    }
    JSON object = JSON::Object();
    object.Add("Damaged", JSONOf(damaged));
    object.Add("Destination", JSONOf(destination));
    object.Add("Tables", std::move(tables));
    object.Add("PlaceholderPlants", JSONOf(report.PlaceholderPlants));
    object.Add("ClearedLinks", JSONOf(report.ClearedLinks));
    object.Add("FailedReads", JSONOf(report.FailedReads));
    object.Add("MissingPages", JSONOf(report.MissingPages));
    object.Add("InterruptedWrite", JSONOf(std::string(InterruptedWrite(report))));
    object.Add("WriteAheadLog", JSONOf(std::string(report.HasWriteAheadLog ? "NotRead" : "None")));
    object.Add("Limit", JSONOf(std::string(ChangedValues)));
    PrintJSON(object);
}

std::string ReasonsOf(const PlantSalvageTable& table)
{
    std::vector<std::string> reasons;
    for (const PlantSalvageLoss& loss : table.Losses)
        reasons.push_back(table.Losses.size() == 1 ? loss.Reason : std::to_string(loss.Rows) + ": " + loss.Reason);
    if (reasons.empty() && !table.IsWhole)
        reasons.emplace_back("The table is damaged; more rows may be missing.");
    return Joined(reasons, " ");
}

bool LacksEvents(const PlantSalvageReport& report)
{
    return std::any_of(report.Tables.begin(), report.Tables.end(),
                       [](const PlantSalvageTable& table)
                       { return table.Name == "PlantEvents" && !(table.IsWhole && table.RowsMissing == 0); });
}

void DescribeSalvage(const std::string& destination, const PlantSalvageReport& report)
{
    std::vector<Row> rows;
    for (const PlantSalvageTable& table : report.Tables)
    {
        std::string label = TableLabel(table.Name);
        if (label.empty() && !(table.IsWhole && table.RowsMissing == 0)) // not of records, so only its damage matters
            label = table.Name;
        if (!label.empty())
            rows.push_back(
                {label, std::to_string(table.RowsRead), std::to_string(table.RowsMissing), ReasonsOf(table)});
    }
    PrintTable(std::cout,
               {{"Table"},
                {"Rows read", WhenNarrow::Keep, true},
                {"Known missing", WhenNarrow::Keep, true},
                {"Why", WhenNarrow::Cut}},
               rows);
    if (report.PlaceholderPlants != 0)
        std::cout << "Plants that were added for lost ones, named \"Lost plant\": " << report.PlaceholderPlants << '\n';
    if (report.ClearedLinks != 0)
        std::cout << "Links to lost mothers and events that were cleared: " << report.ClearedLinks << '\n';
    if (report.FailedReads != 0)
        std::cout << "Reads that the disk refused: " << report.FailedReads << "; use another disk\n";
    if (report.MissingPages != 0)
        std::cout << "Pages that the damaged file has lost at its end: " << report.MissingPages << '\n';
    if (report.RollbackIsDamaged)
        std::cout << "An interrupted write was not wholly rolled back: rows can have values from that write.\n";
    else if (report.RolledBack)
        std::cout << "An interrupted write is not part of the new journal.\n";
    std::cout << ChangedValues << '\n'
              << "Next: " << Printable(NextCommand(LacksEvents(report) ? "check --repair" : "check", destination))
              << '\n';
}

PlantFileResult SalvageWithProgress(const std::string& damaged, const std::string& destination,
                                    PlantSalvageReport& report)
{
    Progress bar("Salvaging");
    return SalvagePlantDatabase(damaged, destination, report, ShownOn(bar));
}

void Salvage(const Session& session, const std::string& damaged, const std::string& destination)
{
    PlantSalvageReport report;
    RequireSalvage(SalvageWithProgress(damaged, destination, report), damaged, destination);
    if (report.HasWriteAheadLog)
        std::cerr << "notice: " << Printable(damaged) << ": the changes in its write-ahead log were not read\n";
    PrintImpossibleValues(destination);
    ReportCopy(session, "Salvaged " + damaged + " to " + destination);
    if (session.AsJSON)
        PrintSalvageJSON(damaged, destination, report);
    else if (!session.Quiet)
        DescribeSalvage(destination, report);
}

} // namespace

void AddSalvageCommand(CLI::App& program, Session& session)
{
    struct SalvageArguments
    {
        std::string Damaged;
        std::string Destination;
    };
    auto wanted = std::make_shared<SalvageArguments>();
    CLI::App& salvage =
        AddCommand(program, "salvage", "Read what is left in a damaged journal, and write it to a new journal",
                   "salvage damaged.db new.db\nsalvage damaged.db new.db --json",
                   [&session, wanted] { Salvage(session, wanted->Damaged, wanted->Destination); });
    AddArgument(salvage, "DAMAGED", "the damaged file, which is not changed", wanted->Damaged);
    AddArgument(salvage, "DESTINATION", "the new journal to write", wanted->Destination);
}

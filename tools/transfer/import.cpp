#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/session.h"
#include "record/json.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "terminal/table.h"
#include "transfer/copy_builder.h"
#include "transfer/imported.h"
#include "transfer/rules.h"
#include "transfer/staging.h"

#include <iostream>
#include <memory>
#include <string>

namespace
{

// Reads the source and checks it. Prints every problem, and throws if there is one.
ImportedTables ReadChecked(Session& session, const std::string& source)
{
    ImportMessages messages;
    ImportedTables tables = ReadImportedTables(source, messages);
    if (messages.Readable)
        CheckRules(tables, session, messages);
    for (const std::string& warning : messages.Warnings.Texts())
        std::cerr << "warning: " << warning << '\n';
    if (messages.Warnings.More() > 0)
        std::cerr << "warning: more warnings, not shown: " << messages.Warnings.More() << '\n';
    for (const std::string& error : messages.Errors)
        std::cerr << error << '\n';
    if (!messages.Errors.empty())
        throw Refusal(source + ": errors: " + std::to_string(messages.Errors.size()) +
                      "; nothing was imported; correct them and import again");
    return tables;
}

AddedCounts AddRowsWithProgress(const StagedCopy& copy, ImportedTables& tables)
{
    std::int64_t total = 0;
    ForEachTable(tables, [&](const auto& table) { total += static_cast<std::int64_t>(table.Rows.size()); });
    Progress bar("Importing");
    std::int64_t done = 0;
    return AddRows(copy.Path(), tables,
                   [&]
                   {
                       StopIfInterrupted();
                       bar.Show(++done, total);
                   });
}

void PrintCounts(const Session& session, const AddedCounts& added)
{
    JSON object = JSON::Object();
    std::vector<Row> rows;
    ForEachTable(added,
                 [&]<typename Record>(const AddedRows<Record>& table)
                 {
                     object.Add(Describe<Record>().Table, JSONOf(table.Count));
                     rows.push_back({TableLabel(Describe<Record>().Table), std::to_string(table.Count)});
                 });
    if (session.AsJSON)
        PrintJSON(object);
    else
        PrintTable(std::cout, {{"Imported", WhenNarrow::Keep}, {"Number", WhenNarrow::Keep, true}}, rows);
}

// "1 care entry", "2 care entries".
std::string Counted(std::int64_t count, std::string noun)
{
    if (count != 1 && noun.ends_with('y'))
        noun.replace(noun.size() - 1, 1, "ies");
    else if (count != 1)
        noun += 's';
    return std::to_string(count) + ' ' + noun;
}

// The line that `undo` shows, such as "Imported 2 plants, 1 care entry from journal.json".
std::string Summary(const AddedCounts& added, const std::string& source)
{
    std::vector<std::string> counts;
    ForEachTable(added,
                 [&]<typename Record>(const AddedRows<Record>& table)
                 {
                     if (table.Count > 0)
                         counts.push_back(Counted(table.Count, Describe<Record>().Noun));
                 });
    return "Imported " + (counts.empty() ? "nothing" : Joined(counts, ", ")) + " from " + source;
}

void Import(Session& session, const std::string& source)
{
    ImportedTables tables = ReadChecked(session, source);
    session.Write();
    StagedCopy copy(session);
    const AddedCounts added = AddRowsWithProgress(copy, tables);
    const std::size_t findings = copy.CountNewFindings();
    session.AddSummary(Summary(added, source));
    copy.WriteBack();
    if (findings > 0)
        std::cerr << "warning: new findings of `plantjournal check`: " << findings << "; run it to see them\n";
    PrintCounts(session, added);
}

} // namespace

void AddImportCommand(CLI::App& program, Session& session)
{
    auto source = std::make_shared<std::string>();
    CLI::App& command = AddCommand(
        program, "import", "Add the records of an export or of CSV files; after an error, the journal is unchanged",
        "import journal.json\nimport journal-csv", [&session, source] { Import(session, *source); });
    AddArgument(command, "SOURCE", "JSON file, or directory of CSV files", *source);
}

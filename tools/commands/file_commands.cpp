#include "commands/commands.h"

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "journal/session.h"

#include "plant_file.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"

#include <memory>

namespace
{

void Show(Session& session)
{
    const std::string path = session.Path();
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(path, file); !result)
        throw Refusal(result.Error);
    JSON tables = JSON::object();
    std::vector<Row> rows = {{"File", path},
                             {"Kind", PlantFileKindName(file.Kind)},
                             {"Bytes", std::to_string(file.Bytes)},
                             {"FirstDate", file.FirstDate},
                             {"LastDate", file.LastDate}};
    for (const std::string& step : file.Steps)
        rows.push_back({"Steps", step});
    for (const std::string& reason : file.Reasons)
        rows.push_back({"Reasons", reason});
    for (const PlantFileTable& table : file.Tables)
    {
        tables[table.Name] = table.Rows;
        rows.push_back({table.Name, std::to_string(table.Rows)});
    }
    if (!session.AsJSON)
        return PrintTable(std::cout, {{"Field"}, {"Value"}}, rows);
    session.Print({{"File", JSONOf(path)},
                   {"Kind", PlantFileKindName(file.Kind)},
                   {"Bytes", file.Bytes},
                   {"FirstDate", JSONOf(file.FirstDate)},
                   {"LastDate", JSONOf(file.LastDate)},
                   {"Steps", JSONOf(file.Steps)},
                   {"Reasons", JSONOf(file.Reasons)},
                   {"Tables", tables}});
}

void Check(Session& session)
{
    std::vector<PlantFileFinding> findings;
    if (const PlantFileResult result = CheckPlantDatabase(session.Path(), findings); !result)
        throw Refusal(result.Error);
    JSON array = JSON::array();
    std::vector<Row> rows;
    for (const PlantFileFinding& finding : findings)
    {
        const char* const kind = PlantFindingKindName(finding.Kind);
        array.push_back({{"Kind", kind},
                         {"Table", JSONOf(finding.Table)},
                         {"RowID", finding.RowID},
                         {"Description", JSONOf(finding.Description)}});
        rows.push_back({kind, finding.Table, std::to_string(finding.RowID), finding.Description});
    }
    if (session.AsJSON)
        session.Print(array);
    else if (!rows.empty())
        PrintTable(std::cout, {{"Kind"}, {"Table"}, {"RowID", true}, {"Description"}}, rows);
    if (!findings.empty())
        throw Refusal(session.Path() + ": findings: " + std::to_string(findings.size()) + "; nothing was changed");
}

void BackUp(const std::string& source, const std::string& destination, bool overwrite)
{
    Progress bar("Backing up");
    const PlantFileResult result = BackUpPlantDatabase(
        source, destination,
        [&](std::int64_t done, std::int64_t total)
        {
            bar.Show(done, total);
            return !Interrupted();
        },
        overwrite ? PlantBackUpMode::Overwrite : PlantBackUpMode::Keep);
    if (!result)
        throw Refusal(result.Error);
}

} // namespace

void AddFileCommands(CLI::App& program, Session& session)
{
    AddCommand(program, "info", "Tell what the journal file is, without changing it", "info\ninfo --file old.db --json",
               [&session] { Show(session); });
    AddCommand(program, "check",
               "Look for everything that is wrong in the journal, without changing it; status 1 if so",
               "check\ncheck --json", [&session] { Check(session); });

    struct Wanted
    {
        std::string Destination;
        bool Overwrite = false;
    };
    auto wanted = std::make_shared<Wanted>();
    CLI::App& backUp =
        AddCommand(program, "backup", "Copy the journal, also while others use it",
                   "backup /media/stick/journal.db\nbackup --overwrite journal.bak",
                   [&session, wanted] { BackUp(session.Path(), wanted->Destination, wanted->Overwrite); });
    AddArgument(backUp, "DESTINATION", "the copy", wanted->Destination);
    AddSwitch(backUp, "--overwrite", "replace what is there", wanted->Overwrite);
}

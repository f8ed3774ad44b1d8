#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/outcome.h"
#include "commands/print.h"
#include "journal/backup_name.h"
#include "journal/file_result.h"
#include "journal/repair.h"
#include "plant_file.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace
{

using Findings = std::vector<PlantFileFinding>;

Findings FindingsIn(const std::string& path)
{
    Findings findings;
    RequireRead(CheckPlantDatabase(path, findings), path);
    return findings;
}

void PrintFindings(const Session& session, const Findings& findings)
{
    JSON array = JSON::Array();
    std::vector<Row> rows;
    for (const PlantFileFinding& finding : findings)
    {
        const std::string kind = PlantFindingKindName(finding.Kind);
        JSON object = JSON::Object();
        object.Add("Kind", JSONOf(kind));
        object.Add("Table", JSONOf(finding.Table));
        object.Add("RowID", JSONOf(finding.RowID));
        object.Add("Description", JSONOf(finding.Description));
        array.Add(std::move(object));
        rows.push_back({kind, finding.Table, std::to_string(finding.RowID), finding.Description});
    }
    if (session.AsJSON)
        PrintJSON(array);
    else if (rows.empty())
        std::cout << "No problems found.\n";
    else
        PrintTable(std::cout,
                   {{"Kind"}, {"Table"}, {"Row ID", WhenNarrow::Keep, true}, {"Description", WhenNarrow::Cut}}, rows);
}

// Prints the findings. Throws Refusal where there are any; the message ends with what was done, and what to do next.
void Report(const Session& session, const Findings& findings, const std::string& done)
{
    PrintFindings(session, findings);
    if (!findings.empty())
        throw Refusal(session.Path() + ": findings: " + std::to_string(findings.size()) + "; " + done);
}

constexpr const char* ByHand = "edit the records, or restore a backup";

bool HasDamage(const Findings& findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::Damage; });
}

bool CanRepairAny(const Findings& findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::MissingEvent; });
}

std::string AdviceFor(const std::string& path, const Findings& findings)
{
    PlantFileInspection file;
    if (findings.empty())
        return {};
    if (InspectPlantDatabase(path, file) && file.Kind == PlantFileKind::Foreign) // for its event types
        return AdviceForForeign(path);
    if (HasDamage(findings))
        return AdviceForDamage(path);
    return CanRepairAny(findings) ? "--repair restores the missing events" : ByHand;
}

void Check(const Session& session)
{
    const Findings findings = FindingsIn(session.Path());
    Report(session, findings, "nothing was changed; " + AdviceFor(session.Path(), findings));
}

void BackUpBeforeRepair(const std::string& path)
{
    const std::string backUp = BackUpName(path, "repair");
    RequireBackUp(BackUpPlantDatabase(path, backUp), path, "a journal is not repaired without a backup");
    std::cerr << Printable(path) << ": backed up as " << Printable(backUp) << ", now repairing\n";
}

void Repair(Session& session)
{
    const std::string path = session.Path();
    const Findings findings = FindingsIn(path);
    if (!CanRepairAny(findings))
        return Report(session, findings,
                      "none of them can be repaired; nothing was changed; " + AdviceFor(path, findings));
    BackUpBeforeRepair(path);
    const std::vector<std::string> restored = RestoreMissingEvents(session);
    for (const std::string& line : restored)
        ReportChange(session, line);
    if (!session.AsJSON && !session.Quiet)
        std::cout << "Restored events: " << restored.size() << '\n';
    Report(session, FindingsIn(path), std::string("they cannot be repaired; ") + ByHand);
}

} // namespace

void AddCheckCommand(CLI::App& program, Session& session)
{
    auto repair = std::make_shared<bool>(false);
    CLI::App& check = AddCommand(program, "check", "Check the journal for errors; the exit status is 1 if it finds any",
                                 "check\ncheck --json\ncheck --repair",
                                 [&session, repair]
                                 {
                                     if (*repair)
                                         Repair(session);
                                     else
                                         Check(session);
                                 });
    AddSwitch(check, "--repair",
              "back up the journal, then restore missing events of care entries and harvest records; without it, "
              "nothing is changed",
              *repair);
}

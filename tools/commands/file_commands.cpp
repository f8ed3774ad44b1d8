#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/outcome.h"
#include "commands/print.h"
#include "journal/file_result.h"
#include "plant_file.h"
#include "refusal.h"
#include "terminal/console.h"
#include "terminal/progress.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace
{

void PrintInspectionJSON(const std::string& path, const PlantFileInspection& file)
{
    JSON tables = JSON::Object();
    for (const PlantFileTable& table : file.Tables)
        tables.Add(table.Name, JSONOf(table.Rows));
    JSON object = JSON::Object();
    object.Add("File", JSONOf(path));
    object.Add("Kind", JSONOf(std::string(PlantFileKindName(file.Kind))));
    object.Add("Bytes", JSONOf(file.Bytes));
    object.Add("FirstDate", JSONOf(file.FirstDate));
    object.Add("LastDate", JSONOf(file.LastDate));
    object.Add("Steps", JSONOf(file.Steps));
    object.Add("Reasons", JSONOf(file.Reasons));
    object.Add("Tables", std::move(tables));
    PrintJSON(object);
}

const char* KindInWords(PlantFileKind kind)
{
    switch (kind)
    {
    case PlantFileKind::Missing:
        return "no such file yet";
    case PlantFileKind::Empty:
        return "empty file";
    case PlantFileKind::Current:
        return "journal, current schema";
    case PlantFileKind::Older:
        return "journal, earlier schema";
    case PlantFileKind::Interrupted:
        return "journal with an interrupted write";
    case PlantFileKind::Foreign:
        return "not a plantjournal file";
    case PlantFileKind::NotADatabase:
        return "not an SQLite database";
    case PlantFileKind::Damaged:
        return "damaged file";
    case PlantFileKind::Locked:
        return "file that another program is writing to";
    }
    return "";
}

void DescribeInspection(const std::string& path, const PlantFileInspection& file)
{
    std::vector<Property> properties = {{"File", path},
                                        {"Kind", KindInWords(file.Kind)},
                                        {"Size", std::to_string(file.Bytes) + " bytes"},
                                        {"First date", file.FirstDate},
                                        {"Last date", file.LastDate}};
    for (const std::string& step : file.Steps)
        properties.push_back({"Migration step", step});
    for (const std::string& reason : file.Reasons)
        properties.push_back({"Reason", reason});
    for (const PlantFileTable& table : file.Tables)
        if (const std::string label = TableLabel(table.Name); !label.empty())
            properties.push_back({label, std::to_string(table.Rows)});
    PrintDescription(std::cout, properties);
}

void ShowInspection(const Session& session)
{
    const std::string path = session.Path();
    PlantFileInspection file;
    RequireRead(InspectPlantDatabase(path, file), path);
    if (session.AsJSON)
        PrintInspectionJSON(path, file);
    else
        DescribeInspection(path, file);
}

bool Exists(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

// Whether --overwrite is what a backup of `source` to `destination` lacks.
bool CanReplace(const std::string& source, const std::string& destination)
{
    PlantFileInspection file;
    std::error_code ignored;
    return InspectPlantSchema(source, file) &&
           (file.Kind == PlantFileKind::Current || file.Kind == PlantFileKind::Older) &&
           std::filesystem::is_regular_file(destination, ignored) &&
           !std::filesystem::equivalent(source, destination, ignored);
}

// What to do about a destination that the backup refused.
std::string AdviceForDestination(const std::string& destination)
{
    if (Exists(destination + "-journal") || Exists(destination + "-wal")) // the error says to remove it
        return "or name another destination";
    return Exists(destination) ? "name another destination" : "";
}

void BackUpWithProgress(const std::string& source, const std::string& destination, bool overwrite)
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
    if (!result && !overwrite && CanReplace(source, destination))
        throw Refusal(destination + " exists; --overwrite replaces it");
    RequireBackUp(result, source, {}, AdviceForDestination(destination));
}

void BackUp(const Session& session, const std::string& destination, bool overwrite)
{
    const std::string source = session.Path();
    BackUpWithProgress(source, destination, overwrite);
    ReportCopy(session, "Backed up " + source + " to " + destination);
}

} // namespace

void AddFileCommands(CLI::App& program, Session& session)
{
    AddCommand(program, "info", "Describe the journal file without changing it", "info\ninfo --file old.db --json",
               [&session] { ShowInspection(session); });
    AddCheckCommand(program, session);

    struct BackUpArguments
    {
        std::string Destination;
        bool Overwrite = false;
    };
    auto wanted = std::make_shared<BackUpArguments>();
    CLI::App& backUp = AddCommand(program, "backup", "Back up the journal, even while other programs use it",
                                  "backup /media/stick/journal.db\nbackup --overwrite journal.bak",
                                  [&session, wanted] { BackUp(session, wanted->Destination, wanted->Overwrite); });
    AddArgument(backUp, "DESTINATION", "the backup file to write", wanted->Destination);
    AddSwitch(backUp, "--overwrite", "replace the file if it exists", wanted->Overwrite);
}

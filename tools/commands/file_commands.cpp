#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/inspected_file.h"
#include "commands/print.h"
#include "journal/file_result.h"
#include "plant_file.h"

#include <string>
#include <vector>

namespace
{

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
        PrintJSON(InspectionJSON(path, file));
    else
        DescribeInspection(path, file);
}

} // namespace

void AddFileCommands(CLI::App& program, Session& session)
{
    AddCommand(program, "info", "Describe the journal file without changing it", "info\ninfo --file old.db --json",
               [&session] { ShowInspection(session); });
    AddCheckCommand(program, session);
    AddBackUpCommand(program, session);
    AddRestoreCommand(program, session);
    AddSalvageCommand(program, session);
}

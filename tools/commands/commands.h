#pragma once

namespace CLI
{
class App;
}

class Session;

// Each function adds commands to the program. `session` must live as long as the program.
void AddPlantCommands(CLI::App& program, Session& session);
void AddTimelineCommand(CLI::App& program, Session& session);
void AddStatusCommand(CLI::App& program, Session& session);
void AddDueCommand(CLI::App& program, Session& session);
void AddLogCommand(CLI::App& program, Session& session);
void AddSearchCommand(CLI::App& program, Session& session);
void AddTotalsCommand(CLI::App& program, Session& session);
void AddCompareCommand(CLI::App& program, Session& session);
void AddStrainCommands(CLI::App& program, Session& session);
void AddFeedAndWater(CLI::App& program, Session& session);
void AddCloneCommand(CLI::App& program, Session& session);
void AddStepCommands(CLI::App& program, Session& session);
void AddRecordCommands(CLI::App& program, Session& session);
void AddFileCommands(CLI::App& program, Session& session);
void AddReportCommand(CLI::App& program, Session& session);
void AddExportCommand(CLI::App& program, Session& session);
void AddImportCommand(CLI::App& program, Session& session);
void AddUndoCommand(CLI::App& program, Session& session);

// Each adds one command that AddFileCommands() lists.
void AddCheckCommand(CLI::App& program, Session& session);
void AddBackUpCommand(CLI::App& program, Session& session);
void AddRestoreCommand(CLI::App& program, Session& session);
void AddSalvageCommand(CLI::App& program, Session& session);

// Each adds a command to the group of plant commands.
void AddPlantListCommand(CLI::App& plantGroup, Session& session);
void AddPlantShowCommand(CLI::App& plantGroup, Session& session);
void AddTreeCommand(CLI::App& plantGroup, Session& session);

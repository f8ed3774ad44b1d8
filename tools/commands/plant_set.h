#pragma once

#include "command_line/parser.h"
#include "journal/session.h"

#include <optional>
#include <string>
#include <vector>

// The plants and dates of a command that reads across plants.
struct PlantSetOptions
{
    std::vector<std::string> Named;
    std::optional<std::string> Plant;
    std::optional<std::string> Strain;
    std::optional<std::string> Tent;
    std::optional<std::string> Stage;
    bool All = false; // archived plants, too
    std::optional<std::string> From;
    std::optional<std::string> To;

    bool NamesPlants() const { return !Named.empty() || Plant; }
};

// Adds PLANT. `options` must live as long as the command.
void AddPlantNames(CLI::App& command, PlantSetOptions& options);

// Adds --plant, for a command whose arguments are not plants.
void AddPlantFlag(CLI::App& command, PlantSetOptions& options);

// Adds --strain, --tent and --stage.
void AddPlantOptions(CLI::App& command, PlantSetOptions& options);

// Adds --all. What it adds to the plants is described by `help`.
void AddAllPlants(CLI::App& command, const std::string& help, PlantSetOptions& options);

// Adds --from and --to.
void AddPeriod(CLI::App& command, PlantSetOptions& options);

// The date that was given; empty without one. LastDate() throws an error in the command line where --from is later.
std::string FirstDate(const PlantSetOptions& options);
std::string LastDate(const PlantSetOptions& options);

// The plants that are named, by their UUIDs, and that match each option, regardless of case; plants in all stages.
// Without names and options it is the set of every plant. Throws Refusal where a name does not match exactly one plant,
// and where the journal has no such strain or tent.
PlantSet PlantSetOf(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options);

// Likewise, without archived plants unless plants are named or --all or --stage is given, as `plant list` does.
PlantSet ListedPlantSet(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options);

// Limits a set without stages to these.
void LimitStages(PlantSet& set, bool (*wanted)(PlantStage));

// Whether a plant is in the set.
bool IsIn(const PlantSet& set, const Plant& plant);

// Prints how many archived plants ListedPlantSet() left out, on a terminal: in a script the line would disturb the
// table.
void PrintArchivedLeftOut(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options);

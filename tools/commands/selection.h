#pragma once

#include "command_line/parser.h"
#include "journal/find_record.h"

#include <optional>
#include <string>
#include <vector>

// The plants of a command that takes several: named one by one, or selected by their fields.
struct Selection
{
    std::vector<std::string> Named;
    bool All = false;
    std::optional<std::string> Strain;
    std::optional<std::string> Tent;
    std::optional<std::string> Stage;

    bool HasSelectors() const { return All || Strain || Tent || Stage; }
};

// Adds --all, --strain, --tent and --stage. `selection` must live as long as the command.
void AddSelectors(CLI::App& command, Selection& selection);

// The plants that are named, without duplicates and in the order of their names in the command line, then those that
// match every selector given. Selectors select only growing plants: those in the stages Seed, Clone, Veg and Flower.
// Throws Refusal where a name does not match exactly one plant, where selectors match no plant, or where nothing was
// named or selected.
std::vector<Plant> SelectPlants(Session& session, const Selection& selection);

#pragma once

#include "command_line/parser.h"
#include "commands/outcome.h"
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

    // With --json, the record of one named plant is printed as it is, the records of several as an array.
    Records RecordsStored() const { return Named.size() == 1 && !HasSelectors() ? Records::One : Records::Many; }
};

// Adds --all, --strain, --tent and --stage. `selection` must live as long as the command.
void AddSelectors(CLI::App& command, Selection& selection);

// The plants that are named, without duplicates and in the order of their names in the command line, then those that
// match every selector given. Selectors select only growing plants: those in the stages Seed, Clone, Veg and Flower.
// Throws Refusal where a name does not match exactly one plant or where selectors match no plant, and an error in
// the command line where nothing was named or selected.
std::vector<Plant> SelectPlants(const std::vector<Plant>& plants, const Selection& selection);

// Whether a plant has exactly this name or UUID.
bool IsExactName(const std::vector<Plant>& plants, const std::string& text);

// Whether a field of a plant has the value that an option wants, regardless of case; true without the option.
bool Fits(const std::optional<std::string>& wanted, const std::string& text);

// Whether the stage is Seed, Clone, Veg or Flower.
bool IsGrowing(PlantStage stage);

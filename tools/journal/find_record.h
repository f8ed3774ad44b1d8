#pragma once

#include "journal/session.h"

#include <string>
#include <vector>

// Finds plants and strains by what the user types.

std::vector<Plant> AllPlants(Session& session);
std::vector<Strain> AllStrains(Session& session);

// Finds the plant with this UUID, else with this name, else with this name regardless of case, else with this prefix of
// its UUID, which has at least four characters. The first of these that any plant matches decides. Throws Refusal
// unless exactly one plant matches it.
Plant FindPlant(Session& session, const std::string& named);
Plant FindPlant(const std::vector<Plant>& plants, const std::string& named);

// Finds the strain with this name, else the only one with this name regardless of case. Throws Refusal where there is
// none.
Strain FindStrain(Session& session, const std::string& name);

// How messages and tables name a plant: by its name, or by its UUID where it has no name.
std::string DisplayName(const Plant& plant);

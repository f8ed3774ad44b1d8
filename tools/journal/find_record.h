#pragma once

#include "journal/session.h"

#include <string>
#include <vector>

// Finds plants and strains by what the user types.

std::vector<Plant> AllPlants(Session& session);
std::vector<Strain> AllStrains(Session& session);

// The plant with this UUID, else the one with this name or with this prefix of its UUID. Throws Refusal unless exactly
// one plant matches.
Plant FindPlant(Session& session, const std::string& named);

// The strain with this name. Throws Refusal where it does not exist.
Strain FindStrain(Session& session, const std::string& name);

// How messages and tables name a plant: by its name, or by its UUID where it has no name.
std::string DisplayName(const Plant& plant);

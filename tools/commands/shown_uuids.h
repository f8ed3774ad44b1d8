#pragma once

#include "plant.h"

#include <map>
#include <string>
#include <vector>

// The texts that stand for UUIDs, by UUID.
using UUIDTexts = std::map<std::string, std::string>;

// How tables show the UUIDs of plants. In a pipe or file, they are whole. On a terminal, each is the shortest prefix of
// at least four characters that names its plant in a command. `plants` must be all plants of the journal.
UUIDTexts ShownUUIDs(const std::vector<Plant>& plants);

#pragma once

#include "commands/shown_uuids.h"

// How tables that list several plants name each: by its name, with its UUID where another plant has the same name
// regardless of case, or by its UUID where it has no name. `plants` must be all plants of the journal.
UUIDTexts PlantLabels(const std::vector<Plant>& plants);

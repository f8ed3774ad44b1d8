#pragma once

#include "journal/session.h"

#include <string>
#include <vector>

// Stores a new timeline event for each care entry and harvest record without one, with the date, type and details that
// the repository would write, and links it. Uses one transaction and changes nothing else: saving a harvest record
// through the repository would also move its plant to the stage Harvested. Skips records whose plant does not exist.
// Returns one line for each event. Throws Refusal.
std::vector<std::string> RestoreMissingEvents(Session& session);

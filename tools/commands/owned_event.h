#pragma once

#include "journal/session.h"

#include <string>

// Throws Refusal where the event belongs to a care entry or a harvest record, which would lose it. The message names
// the command that does the `operation`, edit or delete, to both. `plant` is how the user named the plant.
void RefuseOwnedEvent(Session& session, const std::string& plant, const PlantEvent& event,
                      const std::string& operation);

#pragma once

#include "plant_file.h"

#include <string>

// The functions of plant_file.h report an error as a text. These throw Refusal with it and with what to do next, which
// the states of the files decide. `consequence` comes between the two: "nothing was changed".

// After a function that reads the journal at `path`.
void RequireRead(const PlantFileResult& result, const std::string& path, const std::string& consequence = {});

// After a backup of the journal at `path`. `advice` is what to do about the destination; empty for its directory.
void RequireBackUp(const PlantFileResult& result, const std::string& path, const std::string& consequence = {},
                   const std::string& advice = {});

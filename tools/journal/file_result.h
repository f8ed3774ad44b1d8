#pragma once

#include "plant_file.h"

#include <string>

// The functions of plant_file.h report an error as a text. These throw Refusal with it and with what to do next, which
// the states of the files decide. `consequence` comes between the two: "nothing was changed".

// What to do about a damaged journal at `path`.
std::string AdviceForDamage(const std::string& path);

// What to do about a file that is not an SQLite database: it may be another file, or a journal with a damaged header.
std::string AdviceForNoDatabase(const std::string& path);

// What to do about a database that is not a journal: it may be another program's, or a damaged journal.
std::string AdviceForForeign(const std::string& path);

// What to do where no journal is at `path`. It may have been lost, if it has backups.
std::string AdviceForMissing(const std::string& path);

// After a function that reads the journal at `path`.
void RequireRead(const PlantFileResult& result, const std::string& path, const std::string& consequence = {});

// After a backup of the journal at `path`. `advice` is what to do about the destination; empty for its directory.
void RequireBackUp(const PlantFileResult& result, const std::string& path, const std::string& consequence = {},
                   const std::string& advice = {});

// After a salvage of the file `damaged` to `destination`.
void RequireSalvage(const PlantFileResult& result, const std::string& damaged, const std::string& destination);

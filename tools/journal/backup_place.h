#pragma once

#include "plant_file.h"

#include <string>

// What to do about a journal that is a symbolic link to a file that does not exist.
constexpr const char* AdviceForBrokenLink = "remove the link, or name its target with --file";

// The directory of a journal's dated backups: in the directory `parent`, or where that is empty, in the user's state
// directory. Its name has the journal's file name and a hash of its canonical path, so that two journals with the same
// name have two directories. Creates nothing. Throws Refusal.
std::string BackUpDirectory(const std::string& journal, const std::string& parent = {});

// Likewise, to read the backups. `parent` may also be the directory with the backups itself, which can be that of the
// journal before it was moved. Throws Refusal also where `parent` does not exist.
std::string BackUpsToRead(const std::string& journal, const std::string& parent = {});

// Says where the backups of other journals with the name of this one are; empty where there are none. A journal that
// was moved left its backups there. `directory` is that of BackUpDirectory().
std::string OthersOfThisName(const std::string& directory);

// Remembers that the journal was backed up today, to any place. Ignores a failure: a backup needs no state directory.
void RememberBackUp(const std::string& journal);

// Prints a notice on standard error if the journal's last backup is more than seven days old, at most once a day if the
// state directory can be written. For a journal that was never backed up, the days count from the first call. Call it
// after a change. Throws std::exception where the state directory cannot be used.
void OfferBackUp(const std::string& journal);

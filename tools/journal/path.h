#pragma once

#include <filesystem>
#include <optional>
#include <string>

// The path of the journal: `file` (--file), else PLANTJOURNAL_FILE, else journal.db in the user's data directory.
// Throws Refusal where the user has no such directory.
std::string JournalPath(const std::optional<std::string>& file);

// The directory in which `undo` keeps what it needs: in the user's state directory. Throws Refusal where the user has
// no such directory.
std::filesystem::path UndoPath();

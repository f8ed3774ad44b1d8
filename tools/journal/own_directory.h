#pragma once

#include <filesystem>

// Creates a directory of the user's own, and those above it that do not exist. Only the owner may use the new ones.
// Returns once their names are on the disk. The path is absolute. Throws Refusal.
void CreateOwnDirectory(const std::filesystem::path& directory);

#pragma once

#include <filesystem>
#include <functional>
#include <string>

// Files that a command writes for the user: each is whole or not there.

// Writes a new file and syncs it. Throws Refusal.
void WriteFile(const std::filesystem::path& path, const std::string& bytes);

// Makes a new directory. Throws Refusal.
void MakeDirectory(const std::filesystem::path& path);

enum class Existing
{
    Keep,
    Replace
};

// Calls `write` with a temporary name, and then renames what it made to `destination`. Throws Refusal where something
// exists there that is to be kept.
void WriteAtomically(const std::string& destination, Existing existing,
                     const std::function<void(const std::filesystem::path&)>& write);

#pragma once

#include <string>

// A command to run next on the journal at `path`, as a message shows it: "`plantjournal WORDS`", with --file unless a
// command uses this journal without it.
std::string NextCommand(const std::string& words, const std::string& path);

#pragma once

#include "commands/arguments.h"

#include <string>

// What the commands that delete have in common.

void AddYes(CLI::App& command, Arguments& arguments);

// Asks whether to delete, unless --yes was given. Throws Refusal where the answer is not yes.
void ConfirmDeletion(const std::string& what, const Arguments& arguments);

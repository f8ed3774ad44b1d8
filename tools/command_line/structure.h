#pragma once

#include <vector>

#include <CLI/CLI.hpp>

// What a program consists of, for the manual page and for completion.

using CommandList = std::vector<const CLI::App*>;
using OptionList = std::vector<const CLI::Option*>;

inline CommandList CommandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App*) { return true; });
}

// The filter makes CLI11 list every option; without one it also needs a non-const program.
inline OptionList OptionsOf(const CLI::App& app)
{
    return app.get_options([](const CLI::Option*) { return true; });
}

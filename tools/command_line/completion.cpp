#include "command_line/completion.h"

#include "command_line/structure.h"
#include "record/text.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace
{

const CLI::Option* FlagThatAsks(const std::string& word, const CommandList& apps)
{
    for (const CLI::App* app : apps)
        for (const CLI::Option* option : OptionsOf(*app))
            if (word.starts_with("--") && option->check_name(word) && option->get_expected_max() > 0)
                return option;
    return nullptr;
}

// A command and the program that it belongs to may be the same.
std::set<std::string> Candidates(const std::string& begun, const CLI::Option* asked, const CommandList& apps)
{
    std::set<std::string> candidates;
    if (asked != nullptr)
    {
        const std::string type = asked->get_type_name();
        std::istringstream choices(type == "DATE" ? "today|yesterday" : type);
        if (type == "DATE" || type.find('|') != std::string::npos)
            for (std::string choice; std::getline(choices, choice, '|');)
                candidates.insert(choice);
    }
    else if (begun.starts_with("-"))
    {
        for (const CLI::App* app : apps)
            for (const CLI::Option* option : OptionsOf(*app))
                for (const std::string& name : option->get_lnames())
                    candidates.insert("--" + name);
    }
    else
        for (const CLI::App* command : CommandsOf(*apps.front()))
            candidates.insert(command->get_name());
    return candidates;
}

} // namespace

std::vector<std::string> Completions(const CLI::App& program, std::vector<std::string> words)
{
    // The shell cuts --flag=value in three, and --flag= in two, of which the second has the value's place.
    if (!words.empty() && words.back() == "=")
        words.back().clear();
    words.erase(std::remove(words.begin(), words.end(), "="), words.end());
    const std::string begun = words.empty() ? "" : words.back();
    const CLI::App* app = &program;
    const CLI::Option* asked = nullptr; // the flag whose value is to come
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
    {
        const bool isValue = asked != nullptr;
        asked = isValue ? nullptr : FlagThatAsks(words[i], {app, &program});
        if (isValue)
            continue;
        for (const CLI::App* command : CommandsOf(*app))
            if (command->get_name() == words[i])
                app = command;
    }

    std::vector<std::string> fitting;
    for (const std::string& candidate : Candidates(begun, asked, {app, &program}))
        if (EqualIgnoringCase(candidate.substr(0, begun.size()), begun))
            fitting.push_back(candidate);
    return fitting;
}

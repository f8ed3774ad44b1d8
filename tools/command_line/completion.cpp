#include "command_line/completion.h"

#include "command_line/structure.h"
#include "record/dates.h"
#include "record/text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace
{

// The flag that the word is, where it takes a value.
const CLI::Option* FlagWithValue(const std::string& word, const CommandList& apps)
{
    for (const CLI::App* app : apps)
        for (const CLI::Option* option : OptionsOf(*app))
            if (word.starts_with("--") && option->check_name(word) && option->get_expected_max() > 0)
                return option;
    return nullptr;
}

// What can follow: a value of `flag`, else a flag of any of `apps`, else a command of the first.
std::set<std::string> Candidates(const std::string& prefix, const CLI::Option* flag, const CommandList& apps)
{
    std::set<std::string> candidates;
    if (flag != nullptr)
    {
        const std::string type = flag->get_type_name();
        if (type == "DATE")
            candidates.insert(std::begin(DateWords), std::end(DateWords));
        std::istringstream choices(type);
        if (type.find('|') != std::string::npos)
            for (std::string choice; std::getline(choices, choice, '|');)
                candidates.insert(choice);
    }
    else if (prefix.starts_with("-"))
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
    // Bash splits --flag=value into three words, and --flag= into two; the second then stands for the value.
    if (!words.empty() && words.back() == "=")
        words.back().clear();
    words.erase(std::remove(words.begin(), words.end(), "="), words.end());
    const std::string prefix = words.empty() ? "" : words.back();
    const CLI::App* app = &program;
    const CLI::Option* flag = nullptr; // the flag whose value comes next
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
    {
        const bool isValue = flag != nullptr;
        flag = isValue ? nullptr : FlagWithValue(words[i], {app, &program});
        if (isValue)
            continue;
        for (const CLI::App* command : CommandsOf(*app))
            if (command->get_name() == words[i])
                app = command;
    }

    std::vector<std::string> matches;
    for (const std::string& candidate : Candidates(prefix, flag, {app, &program}))
        if (EqualIgnoringCase(candidate.substr(0, prefix.size()), prefix))
            matches.push_back(candidate);
    return matches;
}

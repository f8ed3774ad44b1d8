#include "command_line/reading.h"

#include "terminal/console.h"

#include <algorithm>

namespace
{

const CLI::Option* FlagNamed(const std::string& name, const CLI::App& app)
{
    for (const CLI::Option* option : OptionsOf(app))
        if (name.starts_with('-') && option->check_name(name))
            return option;
    return nullptr;
}

void ReadFlag(const std::string& word, const CLI::App& program, Reading& reading)
{
    const std::size_t sign = word.find('=');
    const std::string name = word.substr(0, sign);
    const CLI::Option* flag = FlagNamed(name, program);
    if (flag == nullptr)
    {
        flag = FlagNamed(name, *reading.Command);
        reading.HasOwnFlags = true;
    }
    if (flag == nullptr)
        return;
    if (flag->check_lname("help"))
        reading.AsksForHelp = true;
    else if (sign != std::string::npos)
        reading.Values[flag] = word.substr(sign + 1);
    else if (flag->get_expected_max() > 0)
        reading.Awaiting = flag;
}

} // namespace

Reading Read(const CLI::App& program, const std::vector<std::string>& words)
{
    Reading reading;
    reading.Command = &program;
    for (const std::string& word : words)
        if (reading.Awaiting != nullptr)
        {
            reading.Values[reading.Awaiting] = word;
            reading.Awaiting = nullptr;
        }
        else if (!reading.OptionsEnded && word == "--")
            reading.OptionsEnded = true;
        else if (!reading.OptionsEnded && word.size() > 1 && word.starts_with('-'))
            ReadFlag(word, program, reading);
        else if (const CLI::App* command = CommandNamed(*reading.Command, word);
                 command != nullptr && reading.Arguments.empty())
            reading.Command = command;
        else
            reading.Arguments.push_back(word);
    return reading;
}

const CLI::Option* NextArgument(const Reading& reading)
{
    std::size_t given = reading.Arguments.size();
    for (const CLI::Option* argument : ArgumentsOf(*reading.Command))
    {
        if (reading.Values.contains(argument))
            continue;
        const auto most = static_cast<std::size_t>(argument->get_items_expected_max());
        if (given < most)
            return argument;
        given -= most;
    }
    return nullptr;
}

std::optional<std::string> FileIn(const Reading& reading)
{
    for (const auto& [flag, value] : reading.Values)
        if (flag->check_lname("file"))
        {
            const std::string home = Environment("HOME");
            return value.starts_with("~/") && !home.empty() ? home + value.substr(1) : value;
        }
    return {};
}

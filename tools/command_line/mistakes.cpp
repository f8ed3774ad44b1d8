#include "command_line/mistakes.h"

#include "command_line/help.h"
#include "command_line/structure.h"
#include "record/nearest.h"
#include "record/text.h"

#include <algorithm>

namespace
{

std::vector<std::string> NamesIn(const CLI::App& group)
{
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(group))
        names.push_back(command->get_name());
    return names;
}

// What can be suggested instead of a command: also a command of a group where the help has it under a heading.
std::vector<std::string> CommandNames(const CLI::App& group)
{
    std::vector<std::string> names = NamesIn(group);
    if (group.get_parent() == nullptr)
        for (const auto& [title, commands] : CommandsUnderHeadings(group))
            for (const CLI::App* command : commands)
                if (command->get_parent() != &group)
                    names.push_back(PathOf(*command));
    return names;
}

// The command line that prints the help of a command.
std::string HelpLine(const CLI::App& app)
{
    return '`' + Joined({"plantjournal help", PathOf(app)}, " ") + '`';
}

// "plant add: " before a message about this command; nothing before one about the program.
std::string Place(const CLI::App& app)
{
    return app.get_parent() == nullptr ? "" : PathOf(app) + ": ";
}

std::string UnknownCommand(const CLI::App& group, const std::string& word, const std::vector<std::string>& nearest)
{
    return Place(group) + "unknown command " + InQuotes(word) + "; " +
           (nearest.empty() ? HelpLine(group) + " lists the commands" : DidYouMean(nearest));
}

// Describes unknown words one by one, and keeps in mind which command they belong to.
class UnknownWords
{
  public:
    explicit UnknownWords(const CLI::App& top) : Program(top), Command(&top), Known(ParsedCommand(top)) {}

    void Add(const std::string& word)
    {
        if (word.size() > 1 && word.starts_with('-') && word != "--")
            AddFlag(word.substr(0, word.find('=')), word.find('=') != std::string::npos);
        else if (!IsValue && word != "--")
            AddWord(word);
        else
            IsValue = false;
    }

    const std::vector<std::string>& Messages() const { return Lines; }

  private:
    void AddFlag(const std::string& flag, bool hasValue)
    {
        if (Lost)
            return;
        // The parser reads flags before it knows their command.
        const CLI::App& of = Command->get_parent() != nullptr ? *Command : Known;
        const std::vector<std::string> known = FlagNames(of, Program);
        const std::vector<std::string> nearest = Nearest(flag, known);
        if (std::find(known.begin(), known.end(), flag) == known.end())
            Lines.push_back(Place(of) + "unknown option " + InQuotes(flag) + "; " +
                            (nearest.empty() ? HelpLine(of) + " lists the options" : DidYouMean(nearest)));
        else if (Command->get_parent() == nullptr)
            Lines.push_back(Place(of) + InQuotes(flag) + " is an option of the command; write it after " +
                            InQuotes(PathOf(of)));
        const CLI::Option* meant = nullptr;
        for (const CLI::App* app : {&of, &Program})
            for (const CLI::Option* option : OptionsOf(*app))
                if (!nearest.empty() && option->check_name(nearest.front()))
                    meant = option;
        IsValue = !hasValue && (meant == nullptr || meant->get_expected_max() > 0);
    }

    void AddWord(const std::string& word)
    {
        if (Lost)
            return;
        const CLI::App& group = Command->get_parent() != nullptr ? *Command : Known;
        if (IsGroup(group))
        {
            const CLI::App* command = CommandNamed(group, word); // known, but after an unknown group
            if (command == nullptr)
            {
                const std::vector<std::string> nearest = Nearest(word, CommandNames(group));
                Lines.push_back(nearest.empty() && CommandNamed(group, "add") != nullptr
                                    ? UnknownCommand(group, word, {InQuotes(PathOf(group) + " add")})
                                    : UnknownCommand(group, word, nearest));
                command = nearest.size() == 1 ? CommandNamed(group, nearest.front()) : nullptr;
                Lost = command == nullptr; // then the other words have no meaning
            }
            if (command != nullptr)
                Command = command;
        }
        else if (&group == &Known)
            Lines.push_back(Place(group) + "unexpected argument " + InQuotes(word) + "; " + UsageLine(group));
    }

    const CLI::App& Program;
    const CLI::App* Command; // that the unknown words seem to name
    const CLI::App& Known;   // that the parser knows
    bool IsValue = false;    // whether the next word can be the value of an unknown flag
    bool Lost = false;
    std::vector<std::string> Lines;
};

// What is missing in a command line without unknown words.
std::string DescribeMissing(const CLI::App& app)
{
    if (IsGroup(app))
        return Place(app) + "a command is missing; " + HelpLine(app) + " describes " +
               (app.get_parent() == nullptr ? "them" : Joined(NamesIn(app), ", "));
    std::vector<std::string> missing;
    for (const CLI::Option* option : OptionsOf(app))
        if (option->get_required() && option->count() == 0)
            missing.push_back(option->get_positional() ? ArgumentName(*option) : "--" + option->get_lnames().front());
    return Place(app) + Joined(missing, ", ") + (missing.size() == 1 ? " is" : " are") + " missing; " + HelpLine(app) +
           " shows examples\n" + UsageLine(app);
}

const CLI::Option* OptionNamed(const std::string& name, const CLI::App& app, const CLI::App& program)
{
    for (const CLI::App* of : {&app, &program})
        for (const CLI::Option* option : OptionsOf(*of))
            if (option->check_name(name) || option->get_name() == name)
                return option;
    return nullptr;
}

// The name of an option as the user typed it, the last one if there are several; `otherwise` where it has no flag.
std::string TypedName(const CLI::Option& option, const std::vector<std::string>& arguments,
                      const std::string& otherwise)
{
    std::string name = otherwise;
    for (const std::string& argument : arguments)
    {
        if (argument == "--")
            break;
        const std::string flag = argument.substr(0, argument.find('='));
        if (flag.starts_with("--") && option.check_name(flag))
            name = flag;
    }
    return name;
}

} // namespace

std::string DescribeUnknownWords(const CLI::App& program)
{
    UnknownWords words(program);
    for (const std::string& word : program.remaining(true))
        words.Add(word);
    std::string message;
    for (const std::string& line : words.Messages())
        message += (message.empty() ? "" : "\n") + line;
    return message;
}

std::string DescribeMistake(const CLI::App& program, const CLI::ParseError& mistake,
                            const std::vector<std::string>& arguments)
{
    const CLI::App& app = ParsedCommand(program);
    const std::string message = mistake.what();
    // The parser's messages begin with the name of the option, except where the value of a switch is wrong.
    const std::size_t dashes = message.find("--");
    const bool isConversion = dynamic_cast<const CLI::ConversionError*>(&mistake) != nullptr;
    const std::string name = isConversion && dashes != std::string::npos
                                 ? message.substr(dashes, message.find_first_of(" :", dashes) - dashes)
                                 : message.substr(0, message.find(':'));
    const CLI::Option* option = OptionNamed(name, app, program);
    if (dynamic_cast<const CLI::RequiredError*>(&mistake) != nullptr)
        return DescribeMissing(app);
    const std::string typed = option == nullptr ? name : TypedName(*option, arguments, name);
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&mistake) != nullptr && option != nullptr)
        return Place(app) + typed +
               (option->results().size() > 1 ? " is given more than once; give it once"
                                             : " has no value; write " + typed + ' ' + ValueName(*option));
    if (isConversion && option != nullptr)
        return Place(app) + typed + " takes no value; write only " + typed;
    return Place(app) + (message.starts_with(name) ? typed + message.substr(name.size()) : message) +
           (message.find("; ") == std::string::npos ? "; " + HelpLine(app) + " describes the values" : "");
}

const CLI::App& CommandToDescribe(const CLI::App& group, const std::vector<std::string>& words)
{
    const CLI::App* app = &group;
    for (const std::string& word : words)
    {
        const CLI::App* below = CommandNamed(*app, word);
        if (below == nullptr && CommandsOf(*app).empty())
            throw Mistake(Place(*app) + "unexpected argument " + InQuotes(word) + "; " + HelpLine(*app) +
                          " describes the command");
        if (below == nullptr)
            throw Mistake(UnknownCommand(*app, word, Nearest(word, CommandNames(*app))));
        app = below;
    }
    return *app;
}

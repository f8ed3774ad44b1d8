#include "command_line/completion.h"

#include "command_line/reading.h"
#include "record/dates.h"
#include "record/letters.h"

#include <algorithm>

namespace
{

bool BeginsWith(const std::string& text, const std::string& prefix)
{
    return WithoutCase(text).starts_with(WithoutCase(prefix));
}

class Collector
{
  public:
    Collector(const CLI::App& top, Reading read, const StoredNames& names)
        : Program(top), Line(std::move(read)), Stored(names)
    {
    }

    std::vector<Offer> Collect(const std::string& word)
    {
        const std::size_t sign = word.find('=');
        const bool isFlag = !Line.OptionsEnded && Line.Awaiting == nullptr && word.starts_with('-');
        if (Line.Awaiting != nullptr)
            AddValues(*Line.Awaiting, "");
        else if (isFlag && sign != std::string::npos)
            AddValuesAfterSign(word.substr(0, sign));
        else if (isFlag)
            AddFlags();
        else
            AddWords();
        Found.erase(std::remove_if(Found.begin(), Found.end(),
                                   [&](const Offer& offer)
                                   { return !offer.Word.empty() && !BeginsWith(offer.Word, word); }),
                    Found.end());
        return Found;
    }

  private:
    void Add(const std::string& word, const std::string& description = {})
    {
        // The shells get one word a line.
        const std::vector<Letter> letters = LettersOf(word);
        if (std::all_of(letters.begin(), letters.end(), [](const Letter& letter) { return letter.Printable; }) &&
            !word.empty())
            Found.push_back({word, description.substr(0, description.find(';'))});
    }

    void AddValues(const CLI::Option& option, const std::string& before)
    {
        const std::string type = option.get_type_name().empty() ? option.get_name() : option.get_type_name();
        if (type == "FILE" || type == "SOURCE" || type == "DESTINATION" || type == "BACKUP" || type == "DIR")
            Found.emplace_back();
        if (type == "DATE")
            for (const char* word : DateWords)
                Add(before + word);
        for (const std::string& value : ValuesOf(option))
            if (value != option.get_name()) // OfferWords() puts the argument's own name before the words
                Add(before + value);
        for (const std::string& name : Stored(type.substr(0, type.find('|')), FileIn(Line)))
            Add(before + name);
    }

    void AddValuesAfterSign(const std::string& flag)
    {
        for (const CLI::App* app : {Line.Command, &Program})
            for (const CLI::Option* option : OptionsOf(*app))
                if (option->check_name(flag) && option->get_expected_max() > 0)
                    return AddValues(*option, flag + '=');
    }

    void AddFlags()
    {
        for (const CLI::App* app : {Line.Command, &Program})
            if (app != &Program || Line.Command != &Program || Found.empty())
                for (const CLI::Option* option : OptionsOf(*app))
                    for (const std::string& name : option->get_lnames())
                        if (std::none_of(Found.begin(), Found.end(),
                                         [&](const Offer& offer) { return offer.Word == "--" + name; }))
                            Add("--" + name, option->get_description());
    }

    void AddWords()
    {
        const CLI::App* group = Line.Command;
        if (!Line.Arguments.empty() && Line.Arguments.front() == "help" && IsGroup(*group))
        {
            for (std::size_t i = 1; i < Line.Arguments.size() && group != nullptr; ++i)
                group = CommandNamed(*group, Line.Arguments[i]);
            if (group != nullptr)
                AddCommands(*group);
            return;
        }
        if (Line.Arguments.empty())
            AddCommands(*group);
        if (const CLI::Option* argument = NextArgument(Line); argument != nullptr)
            AddValues(*argument, "");
    }

    void AddCommands(const CLI::App& group)
    {
        for (const CLI::App* command : CommandsOf(group))
            Add(command->get_name(), command->get_description());
        if (&group == &Program)
            Add("help", "Describe a command");
    }

    const CLI::App& Program;
    const Reading Line;
    const StoredNames& Stored;
    std::vector<Offer> Found;
};

} // namespace

std::vector<Offer> Offers(const CLI::App& program, std::vector<std::string> words, const StoredNames& stored)
{
    const std::string last = words.empty() ? "" : words.back();
    if (!words.empty())
        words.pop_back();
    std::vector<Offer> offers = Collector(program, Read(program, words), stored).Collect(last);
    std::sort(offers.begin(), offers.end(),
              [](const Offer& left, const Offer& right) { return left.Word < right.Word; });
    return offers;
}

#pragma once

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/check_values.h"
#include "journal/find_record.h"
#include "record/amount.h"
#include "record/dates.h"
#include "record/fields.h"
#include "record/text.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <string>
#include <type_traits>

// The flags that set the fields of a record.

// The flag of `FlipHeightCm` is `--flip-height-cm`.
std::string FlagName(const std::string& field);

// The second flag of a field, such as `--date` of `CareDate`; empty without one.
template <typename Record> std::string ShortFlagName(const Field<Record>& field)
{
    const std::string name = field.Name;
    if (name == "WetWeightG" || name == "DryWeightG")
        return name == "WetWeightG" ? "--wet" : "--dry";
    return field.Used == Use::Mother ? "--mother" : field.Used == Use::Day ? "--date" : "";
}

// How help and completion describe a field's value.
std::string FlagType(const std::string& field, Use use, const ConstValueRef& value);

// Sets a field to what its flag says. Throws BadValue.
template <typename Record> void ParseFlag(const std::string& text, const Field<Record>& field, Record& record)
{
    const bool isDate = field.Used == Use::Date || field.Used == Use::Day;
    const bool isWeight = std::string(field.Unit) == "g";
    ParseField(isDate ? DateFrom(text) : isWeight ? WithoutWeightUnit(text) : text, field, record);
    if (IsInfinite(ValueIn(field, record)))
        throw BadValue(InQuotes(text) + " is not a finite number");
    if (field.Used == Use::Title && text.empty())
        throw BadValue("the text is empty");
}

enum class FlagsFor
{
    Add, // sets every field; the title or the words need no flag
    Edit
};

template <typename Record> class FieldFlags
{
  public:
    // Adds the flags to the command. This must live as long as the command. `fixed` is a field that gets no flag.
    FieldFlags(CLI::App& command, FlagsFor purpose, const std::string& fixed = {})
    {
        const Record defaults;
        for (const Field<Record>& field : Describe<Record>().Fields)
        {
            const Use use = field.Used;
            if (use == Use::RowID || use == Use::Link || use == Use::Owner || field.Name == fixed ||
                (use == Use::UUID && purpose == FlagsFor::Edit))
                continue;
            const bool positional = purpose == FlagsFor::Add && (use == Use::Title || use == Use::Words);
            AddFlag(command,
                    {Joined({FlagName(field.Name), ShortFlagName(field), positional ? field.Name : ""}, ","),
                     field.Help, FlagType(field.Name, use, ValueIn(field, defaults)),
                     positional && use == Use::Title ? Need::Required : Need::Optional,
                     [&field](const std::string& text) { return Objection(text, field); },
                     purpose == FlagsFor::Add ? Default(field, defaults) : ""},
                    Given.emplace_back(GivenText{&field, {}}).Text);
        }
    }

    bool Any() const
    {
        return std::any_of(Given.begin(), Given.end(), [](const GivenText& given) { return given.Text.has_value(); });
    }

    // The fields whose flags were given.
    FieldNames Names() const
    {
        FieldNames names;
        for (const GivenText& given : Given)
            if (given.Text)
                names.insert(given.Of->Name);
        return names;
    }

    // Sets the fields whose flags were given. A new record also gets its default date.
    void Apply(Session& session, FlagsFor purpose, Record& record) const
    {
        for (const GivenText& given : Given)
            if (given.Text && given.Of->Used == Use::Mother && !given.Text->empty())
                ParseField(FindPlant(session, *given.Text).UUID, *given.Of, record);
            else if (given.Text)
                ParseFlag(*given.Text, *given.Of, record);
            else if (given.Of->Used == Use::Day && purpose == FlagsFor::Add)
                ParseFlag("today", *given.Of, record);
    }

  private:
    struct GivenText
    {
        const Field<Record>* Of;
        std::optional<std::string> Text;
    };

    // What a new record gets without the flag, where a user cannot guess it.
    static std::string Default(const Field<Record>& field, const Record& defaults)
    {
        if (field.Used == Use::Day)
            return std::is_same_v<Record, PlantPhoto> ? "that in the picture, or today" : "today";
        const ConstValueRef value = ValueIn(field, defaults);
        return EnumerationNames(value).empty() ? "" : TextOf(value);
    }

    static std::string Objection(const std::string& text, const Field<Record>& field)
    {
        try
        {
            Record scratch;
            ParseFlag(text, field, scratch);
            return {};
        }
        catch (const BadValue& bad)
        {
            return bad.what() + std::string(field.Used == Use::Severity ? "; write a whole number from 1 to 5" : "");
        }
    }

    std::deque<GivenText> Given; // the parser keeps references to the texts
};

// The arguments of a command that writes a record.
template <typename Record> struct Request
{
    Arguments Given;
    std::optional<FieldFlags<Record>> Fields;
};

// Refuses an edit that sets no field.
template <typename Record> void RequireAnyField(const Request<Record>& request)
{
    if (!request.Fields->Any())
        RefuseUsage("no field to change; give at least one option that sets a field");
}

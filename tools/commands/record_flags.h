#pragma once

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "journal/session.h"
#include "record/dates.h"
#include "record/fields.h"
#include "record/text.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <string>

// The flags of a record's fields.

// `FlipHeightCm` is set by `--flip-height-cm`.
std::string FlagOf(const std::string& field);

// Reads a flag's text into its field; throws BadValue.
template <typename Record> void SetFromFlag(const Field<Record>& field, const std::string& text, Record& record)
{
    Set(field, field.Used == Use::Date || field.Used == Use::Day ? DateFrom(text) : text, record);
    if (IsInfinite(field.Of.Get(record)))
        throw BadValue(Quoted(text) + " is not a number to be measured");
    if (field.Used == Use::Title && text.empty())
        throw BadValue("it is empty");
}

// What a field's value may be, for the help and for completion.
std::string TypeOf(Use use, const View& value);

enum class Asked
{
    ToAdd, // may set everything; the title or the words stand without their flag, too
    ToEdit
};

template <typename Record> class Flags
{
  public:
    Flags(CLI::App& command, Asked asked, const std::string& fixed = {})
    {
        const Record defaults;
        for (const Field<Record>& field : Describe<Record>().Fields)
        {
            const Use use = field.Used;
            if (use == Use::Number || use == Use::Link || use == Use::Owner || field.Name == fixed ||
                (use == Use::UUID && asked == Asked::ToEdit))
                continue;
            const bool first = asked == Asked::ToAdd && (use == Use::Title || use == Use::Words);
            AddFlag(command,
                    {FlagOf(field.Name) + (use == Use::Mother ? ",--mother" : "") +
                         (first ? std::string(",") + field.Name : ""),
                     field.Help, TypeOf(use, field.Of.Get(defaults)),
                     first && use == Use::Title ? Need::Required : Need::Optional,
                     [&field](const std::string& text) { return Objection(field, text); }},
                    Given.emplace_back(Text{&field, {}}).Value);
        }
    }

    bool Any() const
    {
        return std::any_of(Given.begin(), Given.end(), [](const Text& text) { return text.Value.has_value(); });
    }

    // Sets what was given; for a new record, its day besides.
    void Apply(Session& session, Asked asked, Record& record) const
    {
        for (const Text& text : Given)
            if (text.Value && text.Of->Used == Use::Mother && !text.Value->empty())
                Set(*text.Of, session.Find(*text.Value).UUID, record);
            else if (text.Value)
                SetFromFlag(*text.Of, *text.Value, record);
            else if (text.Of->Used == Use::Day && asked == Asked::ToAdd)
                SetFromFlag(*text.Of, "today", record);
    }

  private:
    struct Text
    {
        const Field<Record>* Of;
        std::optional<std::string> Value;
    };

    static std::string Objection(const Field<Record>& field, const std::string& text)
    {
        try
        {
            Record scratch;
            SetFromFlag(field, text, scratch);
            return {};
        }
        catch (const BadValue& bad)
        {
            return bad.what();
        }
    }

    std::deque<Text> Given; // the options refer to the values
};

// What a command that writes a record was given.
template <typename Record> struct Request
{
    Arguments Given;
    std::optional<Flags<Record>> Fields;
};

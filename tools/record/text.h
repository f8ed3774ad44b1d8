#pragma once

#include "record/fields.h"

#include <stdexcept>
#include <string>
#include <vector>

// Conversion of values to and from texts, for users and for CSV.

// The reason why a text is not a valid value.
class BadValue : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Whether the texts are equal apart from the case of ASCII letters.
bool EqualIgnoringCase(const std::string& left, const std::string& right);

// Whether the text consists of decimal digits only.
bool IsDigits(const std::string& text);

std::string InQuotes(const std::string& text);

// Joins the texts that are not empty.
std::string Joined(const std::vector<std::string>& texts, const std::string& separator);

// Returns the sentence without the full stop at its end, so that a message can go on after it.
std::string WithoutStop(std::string sentence);

// Returns the shortest text that reads back as the same number, or the stored name of an enumeration's value.
std::string TextOf(const ConstValueRef& value);
// Likewise, without an exponent: 200000, not 2e+05. Numbers from 1e15 on, and below 1e-6, keep theirs.
std::string TextWithoutExponent(const ConstValueRef& value);
// As TextWithoutExponent(), with a number rounded to hundredths for people, unless it would be rounded to zero.
std::string RoundedTextOf(const ConstValueRef& value);
// What people read: the rounded value with its unit. Empty where no value was entered.
std::string ShownText(const ConstValueRef& value, Use used, const std::string& unit);

// Sets the value to what the whole text stands for; names may be in any letter case. Throws BadValue.
void ParseValue(const std::string& text, const ValueRef& out);

bool IsNumber(const ConstValueRef& value);
// Whether the value is an infinite number. An import accepts it, a flag does not.
bool IsInfinite(const ConstValueRef& value);
// The names of an enumeration; empty for other types.
std::vector<std::string> EnumerationNames(const ConstValueRef& value);

template <typename Record> std::string TextOf(const Field<Record>& field, const Record& record)
{
    return TextOf(ValueIn(field, record));
}

template <typename Record> std::string TextWithoutExponent(const Field<Record>& field, const Record& record)
{
    return TextWithoutExponent(ValueIn(field, record));
}

template <typename Record> std::string ShownText(const Field<Record>& field, const Record& record)
{
    return ShownText(ValueIn(field, record), field.Used, field.Unit);
}

// Sets the record's field to what the text stands for. Throws BadValue, also where the field's use forbids the value.
template <typename Record> void ParseField(const std::string& text, const Field<Record>& field, Record& record)
{
    ParseValue(text, MutableValueIn(field, record));
    if (field.Used != Use::Severity)
        return;
    const std::string stored = TextOf<Record>(field, record);
    if (stored.size() != 1 || stored < "1" || stored > "5")
        throw BadValue(InQuotes(text) + " is not from 1 to 5");
}

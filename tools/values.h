#pragma once

#include "fields.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Values as people, files and scripts write them.

// Keeps the fields of a record in their order.
using JSON = nlohmann::ordered_json;

// Why a text is no value.
class BadValue : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Without regard to the case of ASCII letters.
bool SameLetters(const std::string& left, const std::string& right);

bool IsDigits(const std::string& text);

std::string Quoted(const std::string& text);

// Those of the texts that are not empty.
std::string Joined(const std::vector<std::string>& texts, const std::string& separator);

// ---- Texts, as in tables and CSV

// A number's text is the shortest that reads back as the same number; an enumeration's is the stored name.
std::string TextOf(const View& value);
// For people: a number is rounded to hundredths, unless nothing would be left of it.
std::string RoundedTextOf(const View& value);
// Sets the value that the whole text stands for, names in any letter case, or throws BadValue.
void Set(const Cell& value, const std::string& text);

bool IsNumber(const View& value);
// The names that an enumeration has; empty for others.
std::vector<std::string> NamesOf(const View& value);
// Whether it is a number without end, which can be stored but not measured.
bool IsInfinite(const View& value);

// As Set, and as the field's use demands.
template <typename Record> void Set(const Field<Record>& field, const std::string& text, Record& record)
{
    Set(field.Of.Set(record), text);
    const std::string stored = TextOf(field.Of.Get(record));
    if (field.Used == Use::Severity && (stored.size() != 1 || stored < "1" || stored > "5"))
        throw BadValue(Quoted(text) + " is not from 1 to 5");
}

template <typename Record> std::string TextOf(const Field<Record>& field, const Record& record)
{
    return TextOf(field.Of.Get(record));
}

// ---- Dates

// Whether this is a date of the calendar, `YYYY-MM-DD`, `YYYY-MM` or `YYYY`: only such sort as dates.
bool IsDate(const std::string& text);
// The date that a person means: one of those, `today` or `yesterday`; empty for none. Throws BadValue.
std::string DateFrom(const std::string& text);

// ---- JSON

// A number that JSON has not is its text. A text that is not UTF-8, which JSON has not, is an object with its bytes in
// hexadecimal digits: {"Hex": "ff"}.
JSON JSONOf(const View& value);
inline JSON JSONOf(const std::string& value)
{
    return JSONOf(View(&value));
}

// The bytes that hexadecimal digits stand for; throws BadValue.
std::string BytesFrom(const std::string& hex);

template <typename Record> JSON JSONOf(const Record& record)
{
    JSON object = JSON::object();
    for (const Field<Record>& field : Describe<Record>().Fields)
        object[field.Name] = JSONOf(field.Of.Get(record));
    return object;
}

template <typename Record> JSON JSONOf(const std::vector<Record>& records)
{
    JSON array = JSON::array();
    for (const Record& record : records)
        array.push_back(JSONOf(record));
    return array;
}

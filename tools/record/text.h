#pragma once

#include "record/fields.h"

#include <stdexcept>
#include <string>
#include <vector>

// Values as people, files and scripts write them.

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

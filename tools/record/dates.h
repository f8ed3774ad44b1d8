#pragma once

#include <string>

// Whether the text is a date of the calendar: `YYYY-MM-DD`, `YYYY-MM` or `YYYY`. Only these sort as dates.
bool IsDate(const std::string& text);

// Reads what a person writes for a date: one of these forms, `today` or `yesterday`; an empty text stays empty. Throws
// BadValue.
std::string DateFrom(const std::string& text);

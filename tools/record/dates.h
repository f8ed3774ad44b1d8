#pragma once

#include <string>

// Whether the text is a date of the calendar: `YYYY-MM-DD`, `YYYY-MM` or `YYYY`. Only these sort as dates.
bool IsDate(const std::string& text);

// The words that stand for a date.
inline constexpr const char* DateWords[] = {"today", "yesterday"};

// Reads what a person writes for a date: one of these forms or words; an empty text stays empty. Throws BadValue.
std::string DateFrom(const std::string& text);

#pragma once

#include <array>
#include <string>

// What a person writes for a date. The forms that are stored are in plant_validation.h.

// The words that completion offers. `3d`, `2w` and `1m` stand for a date so many days, weeks or months ago.
inline constexpr std::array DateWords = {"today",     "yesterday", "tomorrow", "monday",   "tuesday",
                                         "wednesday", "thursday",  "friday",   "saturday", "sunday"};

// Returns the date for one of the stored forms or words; an empty text stays empty. A weekday is the last one, `today`
// included; it may be shortened to three letters. Throws BadValue.
std::string DateFrom(const std::string& text, const std::string& today);

// Likewise, with the present date as today.
std::string DateFrom(const std::string& text);

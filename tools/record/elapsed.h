#pragma once

#include <cstdint>
#include <string>

// The time between two dates, in the words of a person.

// The age at a date, such as "9 d" or "6 w 2 d"; empty where it is not known.
std::string AgeText(const std::string& from, const std::string& until);

// The same for an age in days.
std::string AgeText(std::int64_t days);

// How long ago a date was, such as "3 d ago"; the date itself where it is not a day before `today`.
std::string AgoText(const std::string& date, const std::string& today);

// When a day is, such as "in 3 d" or "3 d overdue"; the date itself where it is not a day.
std::string DueText(const std::string& date, const std::string& today);

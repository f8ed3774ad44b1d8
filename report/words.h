// Words that several charts use in sentences, labels and tables.
#pragma once

#include "plant_report.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace plant_report
{

// A chart without a picture and figures: its heading, the sentence that says what is missing, and the headings of the
// figures.
PlantChart EmptyChart(const char* heading, const char* missing, std::initializer_list<const char*> columns);

// Adds a row of figures.
void AddRow(PlantChart& chart, std::initializer_list<std::string_view> cells);

// The number for a table; empty where it was not entered.
std::string EnteredLabel(double number);

// A count for a label or a table.
std::string CountLabel(std::int64_t count);

// "1 plant", "2 plants", "1,000 plants".
std::string Counted(std::int64_t number, const char* one, const char* many);
std::string Counted(std::size_t number, const char* one, const char* many);

// A day as in "16 Dec 2019", counted from 1970-01-01.
std::string DayLabel(std::int64_t day);

// "from 16 Dec 2019 to 29 May 2020", or "on 16 Dec 2019".
std::string DaysLabel(std::int64_t first, std::int64_t last);

// A name for a title or a table, short enough that a thousand of them fit in a page; `unnamed` for an empty one.
std::string ShownName(const std::string& name, const char* unnamed);

// The first day of a period as QueryPlantTotals() writes it: a day, or a month as `YYYY-MM`.
std::optional<std::int64_t> FirstDayOf(const std::string& period);

// The first day of the period after the one that begins on `first`.
std::int64_t NextPeriod(std::int64_t first, PlantPeriod period);

// The period that begins on `first`, as QueryPlantTotals() writes it.
std::string PeriodText(std::int64_t first, PlantPeriod period);

// The first day of the month of `day`.
std::int64_t FirstOfMonth(std::int64_t day);

// "day", "week" or "month".
const char* PeriodName(PlantPeriod period);

// Whether a number was entered: 0 means that it was not, and numbers below 0 or without end are mistakes.
bool IsEntered(double number);

} // namespace plant_report

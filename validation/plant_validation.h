/// @file plant_validation.h
/// Rules for the values of the records, and the dates that the rules compare.
///
/// The functions read only their arguments: no file, no clock and no environment. They may be called from any thread.
///
/// @code
/// for (const PlantProblem& problem : Validate(entry, plant, PlantEventCurrentDate()))
///     if (problem.Kind == PlantProblemKind::Impossible)
///         ShowError(problem.Field, problem.Description);
/// @endcode
#pragma once

#include "plant.h"

#include <cstdint>
#include <string>
#include <vector>

/// @name Dates
/// A date of a record is a text: `YYYY`, `YYYY-MM` or `YYYY-MM-DD`, of the Gregorian calendar. The years are 0000 to
/// 9999.
/// @{

/// A date, in numbers.
struct PlantDate
{
    int Year = 0;  ///< From 0 to 9999.
    int Month = 0; ///< From 1 to 12; 0 for none.
    int Day = 0;   ///< From 1 to 31; 0 for none.
};

/// Reads a date into `out`. After `false`, the text is not a date of the calendar, and `out` is unchanged. The empty
/// text is not a date.
bool ReadPlantDate(const std::string& text, PlantDate& out);

/// Returns whether the first date is certainly before the second. Only the parts that both have are compared:
/// `2026-04` is before `2026-05-01`, and `2026` is not. Returns `false` if either text is not a date.
bool PlantDateIsBefore(const std::string& first, const std::string& second);

/// Writes to `out` how many days the second date is after the first; the number is negative if it is before. After
/// `false`, one of the texts is not a day (`YYYY-MM-DD`), and `out` is unchanged.
bool DaysBetweenPlantDates(const std::string& first, const std::string& second, std::int64_t& out);

/// Returns the day that is `days` days after `day`; `days` may be negative. Returns the empty text if `day` is not a
/// day (`YYYY-MM-DD`), or if the result is outside the years 0000 to 9999.
std::string PlantDatePlusDays(const std::string& day, std::int64_t days);

/// Likewise in months. If the month is too short for the day, returns its last day: one month before `2026-03-31` is
/// `2026-02-28`.
std::string PlantDatePlusMonths(const std::string& day, std::int64_t months);

/// @}

/// How serious a problem is.
enum class PlantProblemKind
{
    Impossible, ///< The value has no meaning, for example a pH of 15. A front end should refuse it.
    Unlikely    ///< The value is possible, but probably a mistake. A front end should show a notice and store it.
};

/// A problem with one value of a record.
struct PlantProblem
{
    std::string Field;       ///< Name of the field, as in the record: `DryWeightG`.
    PlantProblemKind Kind;   ///< How serious the problem is.
    std::string Description; ///< The reason as a statement, without the value: "the wet weight cannot be negative".
    std::string OtherField;  ///< Another field of the same record that the problem depends on; empty for none.
};

/// @name Rules
/// `Validate` returns the problems of a record, in the order of its fields. `today` is the present date in local time,
/// as `PlantEventCurrentDate()` returns it; a later date is in the future. `plant` is the plant of the record: its seed
/// date and clone date say when it began.
///
/// Impossible are:
/// - a date that is neither empty nor one of the forms above,
/// - a number that is not finite,
/// - a negative amount, electrical conductivity, weight, height or count,
/// - a pH outside 0 to 14, a severity outside 1 to 5, a quality rating outside 0 to 10.
///
/// Unlikely are:
/// - a date in the future,
/// - a date of a record before the plant began,
/// - a transplant, flip or harvest before the plant was sown or cut as a clone, and a harvest before the flip,
/// - an amount or runoff above 100 litres (the unit is the millilitre), and a runoff above the amount,
/// - an electrical conductivity above 20 (the expected unit is mS/cm),
/// - a dry weight above the wet weight,
/// - a final height below the height at the flip,
/// - a flowering time above 52 weeks.
///
/// A 0 that stands for a missing value takes part in no comparison.
/// @{
std::vector<PlantProblem> Validate(const Strain& strain);
std::vector<PlantProblem> Validate(const Plant& plant, const std::string& today);
std::vector<PlantProblem> Validate(const PlantEvent& event, const Plant& plant, const std::string& today);
std::vector<PlantProblem> Validate(const PlantCareEntry& entry, const Plant& plant, const std::string& today);
std::vector<PlantProblem> Validate(const HarvestRecord& record, const Plant& plant, const std::string& today);
std::vector<PlantProblem> Validate(const PlantPhoto& photo, const Plant& plant, const std::string& today);
std::vector<PlantProblem> Validate(const PlantHealthObservation& observation, const Plant& plant,
                                   const std::string& today);
std::vector<PlantProblem> Validate(const PlantJournalEntry& entry, const Plant& plant, const std::string& today);
/// @}

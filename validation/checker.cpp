#include "checker.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace plant_validation
{

Checker::Checker(std::string today) : Today(std::move(today)) {}

Problems Checker::Take()
{
    std::stable_partition(Found.begin(), Found.end(),
                          [](const PlantProblem& problem) { return problem.Kind == PlantProblemKind::Refused; });
    return std::move(Found);
}

void Checker::Add(PlantProblemKind kind, const char* field, std::string description, const char* otherField)
{
    Found.push_back({field, kind, std::move(description), otherField});
}

void Checker::Refuse(const char* field, std::string description, const char* otherField)
{
    Add(PlantProblemKind::Refused, field, std::move(description), otherField);
}

void Checker::RefuseEmpty(const char* field, const std::string& value, const char* description)
{
    if (value.empty())
        Refuse(field, description);
}

void Checker::StoresNoRow()
{
    KindOfNaN = PlantProblemKind::Impossible;
}

void Checker::Date(const char* field, const std::string& date)
{
    PlantDate read;
    if (!date.empty() && !ReadPlantDate(date, read))
        Add(PlantProblemKind::Impossible, field, "the text is not a date; write YYYY-MM-DD, YYYY-MM or YYYY");
    else if (PlantDateIsBefore(Today, date))
        Add(PlantProblemKind::Unlikely, field, "the date is in the future");
}

void Checker::DateOfRecord(const char* field, const std::string& date, const Plant& plant)
{
    Date(field, date);
    const bool beforeSeed = PlantDateIsBefore(date, plant.SeedDate);
    const bool beforeClone = PlantDateIsBefore(date, plant.CloneDate);
    PlantDate read;
    // With both dates, the plant began at the earlier one.
    if (beforeSeed && (beforeClone || !ReadPlantDate(plant.CloneDate, read)))
        Add(PlantProblemKind::Unlikely, field, "the date is before the plant was sown (" + plant.SeedDate + ')');
    else if (beforeClone && !ReadPlantDate(plant.SeedDate, read))
        Add(PlantProblemKind::Unlikely, field,
            "the date is before the plant was cut as a clone (" + plant.CloneDate + ')');
}

void Checker::NotBefore(const char* field, const std::string& date, const std::string& earlier, const char* what,
                        const char* otherField)
{
    if (PlantDateIsBefore(date, earlier))
        Add(PlantProblemKind::Unlikely, field, std::string("the date is before ") + what + " (" + earlier + ')',
            otherField);
}

bool Checker::NotNegative(const char* field, double value, const char* what)
{
    if (!Finite(field, value))
        return false;
    if (value < 0)
        Add(PlantProblemKind::Impossible, field, std::string("the ") + what + " cannot be negative");
    return value >= 0;
}

void Checker::Between(const char* field, double value, double least, double most, const char* range)
{
    if (Finite(field, value) && (value < least || value > most))
        Add(PlantProblemKind::Impossible, field, range);
}

void Checker::Amount(const char* field, double value, const char* what)
{
    if (NotNegative(field, value, what) && value > 100'000)
        Add(PlantProblemKind::Unlikely, field, std::string("the ") + what + " is above 100 l; the journal expects ml");
}

bool Checker::Finite(const char* field, double value)
{
    if (std::isnan(value))
        Add(KindOfNaN, field, "the value is not a number");
    else if (std::isinf(value))
        Add(PlantProblemKind::Impossible, field, "the number is not finite");
    return std::isfinite(value);
}

} // namespace plant_validation

// Collects the problems of one record, for the other files of this library.
#pragma once

#include "plant_validation.h"

#include <string>
#include <vector>

namespace plant_validation
{

using Problems = std::vector<PlantProblem>;

class Checker
{
  public:
    // Without `today`, no date is in the future.
    explicit Checker(std::string today);

    // The refused values first; otherwise in the order in which they were added.
    Problems Take();

    void Add(PlantProblemKind kind, const char* field, std::string description, const char* otherField = "");

    // ---- Values that the repository refuses

    void Refuse(const char* field, std::string description, const char* otherField = "");
    void RefuseEmpty(const char* field, const std::string& value, const char* description);
    // After this, NaN counts as impossible and not as refused: the operation stores no row.
    void StoresNoRow();

    // ---- Values that are impossible or unlikely

    void Date(const char* field, const std::string& date);
    // The date of a record of `plant`.
    void DateOfRecord(const char* field, const std::string& date, const Plant& plant);
    // `earlier` is a date that another field of the same record may have; `what` describes it.
    void NotBefore(const char* field, const std::string& date, const std::string& earlier, const char* what,
                   const char* otherField = "");
    // Returns whether the value is a number that is not negative. `what` names it, as in "wet weight".
    bool NotNegative(const char* field, double value, const char* what);
    void Between(const char* field, double value, double least, double most, const char* range);
    void Amount(const char* field, double value, const char* what);

  private:
    bool Finite(const char* field, double value);

    std::string Today;
    Problems Found;
    PlantProblemKind KindOfNaN = PlantProblemKind::Refused;
};

} // namespace plant_validation

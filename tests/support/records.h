#pragma once

#include "plant.h"

#include <concepts>
#include <ostream>
#include <string>

// Comparing and printing whole records, field by field, for EXPECT_EQ. Doubles compare exactly; two that are not
// numbers count as equal.
std::string Print(const Plant& p);
std::string Print(const Strain& s);
std::string Print(const PlantEvent& e);
std::string Print(const PlantCareEntry& e);
std::string Print(const HarvestRecord& r);
std::string Print(const StrainSummary& s);
std::string Print(const PlantPhoto& p);
std::string Print(const PlantHealthObservation& o);
std::string Print(const PlantJournalEntry& e);

template <typename Type>
concept Record = requires(const Type& record)
{
    {
        Print(record)
        } -> std::same_as<std::string>;
};

bool operator==(const Record auto& left, const Record auto& right)
{
    return Print(left) == Print(right);
}

std::ostream& operator<<(std::ostream& out, const Record auto& record)
{
    return out << Print(record);
}

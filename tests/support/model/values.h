#pragma once

#include "plant.h"
#include "testing/records.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>

// How a journal file changes the values that are stored in it.
namespace support::model
{

// A number outside an enumeration is stored as the default.
template <typename Enum> Enum InRange(Enum value, Enum last, Enum otherwise)
{
    return value < Enum{} || value > last ? otherwise : value;
}

inline PlantStage AsStored(PlantStage value)
{
    return InRange(value, PlantStage::Archived, PlantStage::Veg);
}

inline PlantSex AsStored(PlantSex value)
{
    return InRange(value, PlantSex::Hermaphrodite, PlantSex::Unknown);
}

inline PlantEventType AsStored(PlantEventType value)
{
    return InRange(value, PlantEventType::Note, PlantEventType::Note);
}

inline PlantCareAction AsStored(PlantCareAction value)
{
    return InRange(value, PlantCareAction::Water, PlantCareAction::Water);
}

inline PlantJournalType AsStored(PlantJournalType value)
{
    return InRange(value, PlantJournalType::Milestone, PlantJournalType::Observation);
}

// SQLite stores a real number without a fraction as an integer, which has no negative zero:
// https://www.sqlite.org/datatype3.html#type_affinity
inline double AsStored(double value)
{
    return value == 0 ? 0 : value;
}

inline std::int64_t AsStored(std::int64_t value)
{
    return value;
}

inline int AsStored(int value)
{
    return value;
}

inline std::string AsStored(const std::string& value)
{
    return value;
}

// A record as the file stores it.
template <Record Type> Type AsStored(Type record)
{
    std::apply([](auto&... fields) { ((fields = AsStored(fields)), ...); }, Fields(record));
    return record;
}

// A text is read up to its first zero byte.
inline std::string AsRead(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

// A record as it is read from the file.
template <Record Type> Type AsRead(Type record)
{
    const auto read = []<typename Field>(Field& field)
    {
        if constexpr (std::is_same_v<Field, std::string>)
            field = AsRead(field);
    };
    std::apply([&](auto&... fields) { (read(fields), ...); }, Fields(record));
    return record;
}

// Whether the table refuses the record: SQLite stores a NaN as NULL, and the columns are NOT NULL.
template <Record Type> bool IsRefused(const Type& record)
{
    const auto isNaN = []<typename Field>(const Field& field)
    {
        if constexpr (std::is_same_v<Field, double>)
            return std::isnan(field);
        else
            return false;
    };
    return std::apply([&](const auto&... fields) { return (isNaN(fields) || ...); }, Fields(record));
}

} // namespace support::model

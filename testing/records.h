#pragma once

#include "plant.h"

#include <cmath>
#include <concepts>
#include <cstdint>
#include <iomanip>
#include <ios>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace support
{

template <typename Type, typename Other>
concept Is = std::same_as<std::remove_const_t<Type>, Other>;

// The fields of a record, as a tuple of references.
auto Fields(Is<Plant> auto& p)
{
    return std::tie(p.ID, p.UUID, p.Name, p.Strain, p.MotherPlantUUID, p.Stage, p.Sex, p.Tent, p.PotSize, p.Medium,
                    p.SeedDate, p.FlipHeightCm, p.FinalHeightCm, p.CloneDate, p.TransplantDate, p.FlipDate,
                    p.HarvestDate, p.Notes);
}

auto Fields(Is<Strain> auto& s)
{
    return std::tie(s.ID, s.Name, s.Breeder, s.FloweringWeeks, s.Notes);
}

auto Fields(Is<PlantEvent> auto& e)
{
    return std::tie(e.ID, e.PlantUUID, e.EventDate, e.Type, e.Details);
}

auto Fields(Is<PlantCareEntry> auto& e)
{
    return std::tie(e.ID, e.TimelineEventID, e.PlantUUID, e.CareDate, e.Action, e.Product, e.AmountMl, e.EC, e.PH,
                    e.RunoffMl, e.Notes);
}

auto Fields(Is<HarvestRecord> auto& r)
{
    return std::tie(r.ID, r.TimelineEventID, r.PlantUUID, r.HarvestDate, r.WetWeightG, r.DryWeightG, r.QualityRating,
                    r.SeedYield, r.CureOutcome, r.Notes);
}

auto Fields(Is<StrainSummary> auto& s)
{
    return std::tie(s.StrainID, s.StrainName, s.TotalPlants, s.Seed, s.Clone, s.Veg, s.Flower, s.Dry, s.Cure,
                    s.Harvested, s.Archived, s.HarvestCount, s.AverageDryWeightG, s.AverageQuality);
}

auto Fields(Is<PlantPhoto> auto& p)
{
    return std::tie(p.ID, p.UUID, p.PlantUUID, p.PhotoDate, p.FilePath, p.Caption);
}

auto Fields(Is<PlantHealthObservation> auto& o)
{
    return std::tie(o.ID, o.PlantUUID, o.ObservationDate, o.Issue, o.Severity, o.Treatment, o.Notes);
}

auto Fields(Is<PlantJournalEntry> auto& e)
{
    return std::tie(e.ID, e.PlantUUID, e.EntryDate, e.Type, e.Details);
}

template <typename Type>
concept Record = requires(const Type& record)
{
    Fields(record);
};

std::string Print(const Record auto& record)
{
    std::ostringstream text;
    text << std::hexfloat;
    const auto print = [&]<typename Value>(const Value& value)
    {
        if constexpr (std::is_enum_v<Value>)
            text << static_cast<std::int32_t>(value) << '|';
        else if constexpr (std::is_same_v<Value, std::string>)
            text << std::quoted(value) << '|';
        else
            text << value << '|';
    };
    std::apply([&](const auto&... fields) { (print(fields), ...); }, Fields(record));
    return text.str();
}

} // namespace support

// The operators are in the global namespace, as the records are, so that GoogleTest finds them.

// Compare and print whole records for EXPECT_EQ. Doubles are equal if they have the same value and the same sign of a
// zero. Two NaNs are equal.
template <support::Record Type> bool operator==(const Type& left, const Type& right)
{
    const auto same = []<typename Value>(const Value& l, const Value& r)
    {
        if constexpr (std::is_same_v<Value, double>)
            return (std::isnan(l) && std::isnan(r)) || (l == r && std::signbit(l) == std::signbit(r));
        else
            return l == r;
    };
    const auto l = support::Fields(left);
    const auto r = support::Fields(right);
    return [&]<std::size_t... Index>(std::index_sequence<Index...>)
    {
        return (same(std::get<Index>(l), std::get<Index>(r)) && ...);
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(l)>>());
}

std::ostream& operator<<(std::ostream& out, const support::Record auto& record)
{
    return out << support::Print(record);
}

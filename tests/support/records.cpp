#include "support/records.h"

#include <cstdint>
#include <iomanip>
#include <ios>
#include <sstream>

namespace
{

template <typename... Values> std::string Fields(const Values&... values)
{
    std::ostringstream text;
    text << std::hexfloat;
    const auto add = [&](const auto& value)
    {
        if constexpr (std::is_enum_v<std::decay_t<decltype(value)>>)
            text << static_cast<std::int32_t>(value) << '|';
        else if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>)
            text << std::quoted(value) << '|';
        else
            text << value << '|';
    };
    (add(values), ...);
    return text.str();
}

} // namespace

std::string Print(const Plant& p)
{
    return Fields(p.ID, p.UUID, p.Name, p.Strain, p.MotherPlantUUID, p.Stage, p.Sex, p.Tent, p.PotSize, p.Medium,
                  p.SeedDate, p.FlipHeightCm, p.FinalHeightCm, p.CloneDate, p.TransplantDate, p.FlipDate, p.HarvestDate,
                  p.Notes);
}

std::string Print(const Strain& s)
{
    return Fields(s.ID, s.Name, s.Breeder, s.FloweringWeeks, s.Notes);
}

std::string Print(const PlantEvent& e)
{
    return Fields(e.ID, e.PlantUUID, e.EventDate, e.Type, e.Details);
}

std::string Print(const PlantCareEntry& e)
{
    return Fields(e.ID, e.TimelineEventID, e.PlantUUID, e.CareDate, e.Action, e.Product, e.AmountMl, e.EC, e.PH,
                  e.RunoffMl, e.Notes);
}

std::string Print(const HarvestRecord& r)
{
    return Fields(r.ID, r.TimelineEventID, r.PlantUUID, r.HarvestDate, r.WetWeightG, r.DryWeightG, r.QualityRating,
                  r.SeedYield, r.CureOutcome, r.Notes);
}

std::string Print(const StrainSummary& s)
{
    return Fields(s.StrainID, s.StrainName, s.TotalPlants, s.Seed, s.Clone, s.Veg, s.Flower, s.Dry, s.Cure, s.Harvested,
                  s.Archived, s.HarvestCount, s.AverageDryWeightG, s.AverageQuality);
}

std::string Print(const PlantPhoto& p)
{
    return Fields(p.ID, p.UUID, p.PlantUUID, p.PhotoDate, p.FilePath, p.Caption);
}

std::string Print(const PlantHealthObservation& o)
{
    return Fields(o.ID, o.PlantUUID, o.ObservationDate, o.Issue, o.Severity, o.Treatment, o.Notes);
}

std::string Print(const PlantJournalEntry& e)
{
    return Fields(e.ID, e.PlantUUID, e.EntryDate, e.Type, e.Details);
}

#include "rules.h"

#include <cmath>

namespace plant_validation
{

void CheckValues(Checker& check, const Strain& strain)
{
    if (check.NotNegative("FloweringWeeks", strain.FloweringWeeks, "flowering time") && strain.FloweringWeeks > 52)
        check.Add(PlantProblemKind::Unlikely, "FloweringWeeks", "the flowering time is above 52 weeks");
}

void CheckValues(Checker& check, const Plant& plant)
{
    const auto notBeforeBeginning = [&](const char* field, const std::string& date)
    {
        check.NotBefore(field, date, plant.SeedDate, "the sowing", "SeedDate");
        check.NotBefore(field, date, plant.CloneDate, "the cutting of the clone", "CloneDate");
    };
    check.Date("SeedDate", plant.SeedDate);
    check.NotNegative("FlipHeightCm", plant.FlipHeightCm, "height");
    if (check.NotNegative("FinalHeightCm", plant.FinalHeightCm, "height") && plant.FinalHeightCm != 0 &&
        plant.FinalHeightCm < plant.FlipHeightCm && std::isfinite(plant.FlipHeightCm))
        check.Add(PlantProblemKind::Unlikely, "FinalHeightCm", "the final height is below the height at the flip",
                  "FlipHeightCm");
    check.Date("CloneDate", plant.CloneDate);
    check.Date("TransplantDate", plant.TransplantDate);
    notBeforeBeginning("TransplantDate", plant.TransplantDate);
    check.Date("FlipDate", plant.FlipDate);
    notBeforeBeginning("FlipDate", plant.FlipDate);
    check.Date("HarvestDate", plant.HarvestDate);
    notBeforeBeginning("HarvestDate", plant.HarvestDate);
    check.NotBefore("HarvestDate", plant.HarvestDate, plant.FlipDate, "the flip to flower", "FlipDate");
}

void CheckValues(Checker& check, const PlantEvent& event, const Plant& plant)
{
    check.DateOfRecord("EventDate", event.EventDate, plant);
}

void CheckValues(Checker& check, const PlantCareEntry& entry, const Plant& plant)
{
    check.DateOfRecord("CareDate", entry.CareDate, plant);
    check.Amount("AmountMl", entry.AmountMl, "amount");
    if (check.NotNegative("EC", entry.EC, "EC") && entry.EC > 20)
        check.Add(PlantProblemKind::Unlikely, "EC", "the EC is above 20; the journal expects mS/cm");
    check.Between("PH", entry.PH, 0, 14, "the pH must be from 0 to 14");
    check.Amount("RunoffMl", entry.RunoffMl, "runoff");
    if (entry.AmountMl > 0 && entry.RunoffMl > entry.AmountMl && std::isfinite(entry.RunoffMl))
        check.Add(PlantProblemKind::Unlikely, "RunoffMl", "the runoff is above the amount given", "AmountMl");
}

void CheckValues(Checker& check, const HarvestRecord& record, const Plant& plant)
{
    check.DateOfRecord("HarvestDate", record.HarvestDate, plant);
    check.NotBefore("HarvestDate", record.HarvestDate, plant.FlipDate, "the flip to flower");
    check.NotNegative("WetWeightG", record.WetWeightG, "wet weight");
    if (check.NotNegative("DryWeightG", record.DryWeightG, "dry weight") && record.WetWeightG > 0 &&
        record.DryWeightG > record.WetWeightG)
        check.Add(PlantProblemKind::Unlikely, "DryWeightG", "the dry weight is above the wet weight", "WetWeightG");
    check.Between("QualityRating", record.QualityRating, 0, 10, "the quality rating must be from 0 to 10");
    check.NotNegative("SeedYield", record.SeedYield, "number of seeds");
}

void CheckValues(Checker& check, const PlantPhoto& photo, const Plant& plant)
{
    check.DateOfRecord("PhotoDate", photo.PhotoDate, plant);
}

void CheckValues(Checker& check, const PlantHealthObservation& observation, const Plant& plant)
{
    check.DateOfRecord("ObservationDate", observation.ObservationDate, plant);
    check.Between("Severity", observation.Severity, 1, 5, "the severity must be from 1 to 5");
}

void CheckValues(Checker& check, const PlantJournalEntry& entry, const Plant& plant)
{
    check.DateOfRecord("EntryDate", entry.EntryDate, plant);
}

} // namespace plant_validation

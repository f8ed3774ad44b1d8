#include "plant_validation.h"

#include <cmath>
#include <utility>

namespace
{

using PlantProblems = std::vector<PlantProblem>;

// Collects the problems of one record.
class Checker
{
  public:
    explicit Checker(std::string today) : Today(std::move(today)) {}

    PlantProblems Take() { return std::move(Found); }

    void Add(PlantProblemKind kind, const char* field, std::string description, const char* otherField = "")
    {
        Found.push_back({field, kind, std::move(description), otherField});
    }

    void Date(const char* field, const std::string& date)
    {
        PlantDate read;
        if (!date.empty() && !ReadPlantDate(date, read))
            Add(PlantProblemKind::Impossible, field, "the text is not a date; write YYYY-MM-DD, YYYY-MM or YYYY");
        else if (PlantDateIsBefore(Today, date))
            Add(PlantProblemKind::Unlikely, field, "the date is in the future");
    }

    // The date of a record of `plant`.
    void DateOfRecord(const char* field, const std::string& date, const Plant& plant)
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

    // `earlier` is a date that another field of the same record may have; `what` describes it.
    void NotBefore(const char* field, const std::string& date, const std::string& earlier, const char* what,
                   const char* otherField = "")
    {
        if (PlantDateIsBefore(date, earlier))
            Add(PlantProblemKind::Unlikely, field, std::string("the date is before ") + what + " (" + earlier + ')',
                otherField);
    }

    // Returns whether the value is a number that is not negative. `what` names it, as in "wet weight".
    bool NotNegative(const char* field, double value, const char* what)
    {
        if (!Finite(field, value))
            return false;
        if (value < 0)
            Add(PlantProblemKind::Impossible, field, std::string("the ") + what + " cannot be negative");
        return value >= 0;
    }

    void Between(const char* field, double value, double least, double most, const char* range)
    {
        if (Finite(field, value) && (value < least || value > most))
            Add(PlantProblemKind::Impossible, field, range);
    }

    void Amount(const char* field, double value, const char* what)
    {
        if (NotNegative(field, value, what) && value > 100'000)
            Add(PlantProblemKind::Unlikely, field,
                std::string("the ") + what + " is above 100 l; the journal expects ml");
    }

  private:
    bool Finite(const char* field, double value)
    {
        if (!std::isfinite(value))
            Add(PlantProblemKind::Impossible, field, "the number is not finite");
        return std::isfinite(value);
    }

    std::string Today;
    PlantProblems Found;
};

} // namespace

PlantProblems Validate(const Strain& strain)
{
    Checker check({});
    if (check.NotNegative("FloweringWeeks", strain.FloweringWeeks, "flowering time") && strain.FloweringWeeks > 52)
        check.Add(PlantProblemKind::Unlikely, "FloweringWeeks", "the flowering time is above 52 weeks");
    return check.Take();
}

PlantProblems Validate(const Plant& plant, const std::string& today)
{
    Checker check(today);
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
    return check.Take();
}

PlantProblems Validate(const PlantEvent& event, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("EventDate", event.EventDate, plant);
    return check.Take();
}

PlantProblems Validate(const PlantCareEntry& entry, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("CareDate", entry.CareDate, plant);
    check.Amount("AmountMl", entry.AmountMl, "amount");
    if (check.NotNegative("EC", entry.EC, "EC") && entry.EC > 20)
        check.Add(PlantProblemKind::Unlikely, "EC", "the EC is above 20; the journal expects mS/cm");
    check.Between("PH", entry.PH, 0, 14, "the pH must be from 0 to 14");
    check.Amount("RunoffMl", entry.RunoffMl, "runoff");
    if (entry.AmountMl > 0 && entry.RunoffMl > entry.AmountMl && std::isfinite(entry.RunoffMl))
        check.Add(PlantProblemKind::Unlikely, "RunoffMl", "the runoff is above the amount given", "AmountMl");
    return check.Take();
}

PlantProblems Validate(const HarvestRecord& record, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("HarvestDate", record.HarvestDate, plant);
    check.NotBefore("HarvestDate", record.HarvestDate, plant.FlipDate, "the flip to flower");
    check.NotNegative("WetWeightG", record.WetWeightG, "wet weight");
    if (check.NotNegative("DryWeightG", record.DryWeightG, "dry weight") && record.WetWeightG > 0 &&
        record.DryWeightG > record.WetWeightG)
        check.Add(PlantProblemKind::Unlikely, "DryWeightG", "the dry weight is above the wet weight", "WetWeightG");
    check.Between("QualityRating", record.QualityRating, 0, 10, "the quality rating must be from 0 to 10");
    check.NotNegative("SeedYield", record.SeedYield, "number of seeds");
    return check.Take();
}

PlantProblems Validate(const PlantPhoto& photo, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("PhotoDate", photo.PhotoDate, plant);
    return check.Take();
}

PlantProblems Validate(const PlantHealthObservation& observation, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("ObservationDate", observation.ObservationDate, plant);
    check.Between("Severity", observation.Severity, 1, 5, "the severity must be from 1 to 5");
    return check.Take();
}

PlantProblems Validate(const PlantJournalEntry& entry, const Plant& plant, const std::string& today)
{
    Checker check(today);
    check.DateOfRecord("EntryDate", entry.EntryDate, plant);
    return check.Take();
}

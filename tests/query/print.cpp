#include "query/print.h"

#include "testing/records.h"

#include <iomanip>
#include <sstream>

namespace support
{

namespace
{

std::string Printed(double value)
{
    std::ostringstream text;
    text << std::setprecision(12) << value;
    return text.str();
}

template <typename Value> std::string Printed(const std::optional<Value>& value)
{
    return value ? Printed(static_cast<double>(*value)) : "unknown";
}

} // namespace

std::string Printed(const PlantActivity& activity)
{
    std::ostringstream text;
    text << activity.Date << ' ' << std::quoted(activity.Kind) << ' ' << std::quoted(activity.Text) << " of "
         << activity.PlantUUID << ' ' << std::quoted(activity.PlantName) << ", "
         << static_cast<std::int32_t>(activity.Record) << ' ' << activity.RowID;
    return text.str();
}

std::string Printed(const PlantCalendarDay& day)
{
    std::ostringstream text;
    text << day.Date << ' ' << std::quoted(day.Kind) << ' ' << day.Number;
    return text.str();
}

std::string Printed(const PlantFigures& figures)
{
    return std::to_string(figures.Number) + " (" + Printed(figures.Mean) + ", " + Printed(figures.Least) + " to " +
           Printed(figures.Most) + ')';
}

std::string Printed(const PlantStatus& status)
{
    std::ostringstream text;
    text << status.PlantUUID << ' ' << std::quoted(status.Name) << ' ' << std::quoted(status.Strain) << ' '
         << std::quoted(status.Tent) << ' ' << PlantStageName(status.Stage) << ", age " << Printed(status.AgeDays)
         << ", stage " << std::quoted(status.StageDate) << ' ' << Printed(status.StageDays) << ", flip "
         << Printed(status.FlipDays) << ", fed " << std::quoted(status.LastFeedDate) << ", watered "
         << std::quoted(status.LastWaterDate) << ", gap " << Printed(status.CareGapDays) << ", due " << status.DueDate;
    for (const PlantHealthObservation& observation : status.Health)
        text << "\n  " << Print(observation);
    return text.str();
}

std::string Printed(const PlantTotal& total)
{
    std::ostringstream text;
    text << std::quoted(total.Period) << ' ' << std::quoted(total.Key) << ' ' << std::quoted(total.Name) << ' '
         << total.Feedings << " fed, " << total.Waterings << " watered, " << Printed(total.AmountMl) << " ml, "
         << Printed(total.RunoffMl) << " ml runoff, EC " << Printed(total.EC) << ", pH " << Printed(total.PH);
    return text.str();
}

std::string Printed(const PlantComparison& comparison)
{
    std::ostringstream text;
    text << std::quoted(comparison.Name) << ' ' << comparison.Plants << " plants, " << comparison.Harvested
         << " harvested; seed " << Printed(comparison.DaysFromSeed) << "; clone " << Printed(comparison.DaysFromClone)
         << "; transplant " << Printed(comparison.DaysFromTransplant) << "; flip " << Printed(comparison.DaysFromFlip)
         << "; wet " << Printed(comparison.WetWeightG) << "; dry " << Printed(comparison.DryWeightG) << "; loss "
         << Printed(comparison.DryingLossPercent) << "; quality " << Printed(comparison.Quality) << "; ml/g "
         << Printed(comparison.MlPerGram);
    return text.str();
}

std::string Printed(const PlantRelative& relative)
{
    std::ostringstream text;
    text << relative.Generation << ' ' << relative.UUID << ' ' << std::quoted(relative.Name) << ' '
         << std::quoted(relative.Strain) << " of " << relative.MotherPlantUUID << ' ' << PlantStageName(relative.Stage);
    if (relative.Harvest)
        text << ' ' << Print(*relative.Harvest);
    return text.str();
}

std::string Printed(const PlantLineage& lineage)
{
    return Printed(lineage.Ancestors) + "of these:\n" + Printed(lineage.Descendants);
}

} // namespace support

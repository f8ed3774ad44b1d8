#include "answer_rows.h"

#include <iomanip>
#include <ios>
#include <optional>
#include <sstream>

namespace
{

// Nothing for no value, which is NULL in the shell.
std::string Number(std::optional<std::int64_t> value)
{
    return value ? std::to_string(*value) : "";
}

void WriteFigures(std::ostream& rows, const PlantFigures& figures)
{
    rows << '\t' << figures.Number << '\t' << figures.Mean << '\t' << figures.Least << '\t' << figures.Most;
}

std::string HealthText(const std::vector<PlantHealthObservation>& observations)
{
    std::string text;
    for (const PlantHealthObservation& observation : observations)
        text += (text.empty() ? "" : ", ") + observation.Issue + ' ' + std::to_string(observation.Severity) + ' ' +
                observation.ObservationDate;
    return text;
}

} // namespace

std::string TabbedRows(const std::vector<PlantActivity>& activities)
{
    std::ostringstream rows;
    for (const PlantActivity& activity : activities)
        rows << activity.Date << '\t' << activity.Kind << '\t' << activity.Text << '\t' << activity.PlantUUID << '\t'
             << activity.PlantName << '\t' << PlantActivityRecordName(activity.Record) << '\t' << activity.RowID
             << '\n';
    return rows.str();
}

std::string TabbedRows(const std::vector<PlantStatus>& statuses)
{
    std::ostringstream rows;
    rows << std::fixed << std::setprecision(1);
    for (const PlantStatus& plant : statuses)
    {
        rows << plant.PlantUUID << '\t' << plant.Name << '\t' << plant.Strain << '\t' << plant.Tent << '\t'
             << PlantStageName(plant.Stage) << '\t' << Number(plant.AgeDays) << '\t' << plant.StageDate << '\t'
             << Number(plant.StageDays) << '\t' << Number(plant.FlipDays) << '\t' << plant.LastFeedDate << '\t'
             << plant.LastWaterDate << '\t' << HealthText(plant.Health) << '\t';
        if (plant.CareGapDays)
            rows << *plant.CareGapDays;
        rows << '\t' << plant.DueDate << '\n';
    }
    return rows.str();
}

std::string TabbedRows(const std::vector<PlantTotal>& totals)
{
    std::ostringstream rows;
    rows << std::fixed << std::setprecision(3);
    for (const PlantTotal& total : totals)
    {
        rows << total.Period << '\t' << total.Key << '\t' << total.Name << '\t' << total.Feedings << '\t'
             << total.Waterings << '\t' << total.AmountMl << '\t' << total.RunoffMl;
        WriteFigures(rows, total.EC);
        WriteFigures(rows, total.PH);
        rows << '\n';
    }
    return rows.str();
}

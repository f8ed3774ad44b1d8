#include "transfer/value_warnings.h"

#include "plant_validation.h"
#include "record/text.h"
#include "terminal/printable.h"

#include <algorithm>

namespace
{

template <typename Record>
std::string WarningText(const ImportedTable<Record>& table, const ImportedRow<Record>& row, const PlantProblem& problem)
{
    const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [&](const Field<Record>& known) { return known.Name == problem.Field; });
    return table.Place(row, problem.Field) + InQuotes(Printable(TextWithoutExponent(*field, row.Value))) + ": " +
           Printable(problem.Description);
}

std::vector<PlantProblem> ProblemsOf(const Strain& strain, const KnownPlants&, const std::string&)
{
    return Validate(strain);
}

std::vector<PlantProblem> ProblemsOf(const Plant& plant, const KnownPlants&, const std::string& today)
{
    return Validate(plant, today);
}

template <typename Record>
std::vector<PlantProblem> ProblemsOf(const Record& record, const KnownPlants& plants, const std::string& today)
{
    static const Plant unknown;
    const Plant* const plant = plants.WithUUID(record.PlantUUID);
    return Validate(record, plant == nullptr ? unknown : *plant, today);
}

} // namespace

void WarnOfValues(const ImportedTables& tables, const KnownPlants& plants, ImportWarnings& warnings)
{
    const std::string today = PlantEventCurrentDate();
    ForEachTable(tables,
                 [&]<typename Record>(const ImportedTable<Record>& table)
                 {
                     for (const ImportedRow<Record>& row : table.Rows)
                         for (const PlantProblem& problem : ProblemsOf(row.Value, plants, today))
                             if (problem.Kind != PlantProblemKind::Refused) // transfer/rules.h refuses these rows
                                 warnings.Add([&] { return WarningText(table, row, problem); });
                 });
}

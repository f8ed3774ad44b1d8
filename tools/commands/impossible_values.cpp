#include "commands/impossible_values.h"

#include "journal/find_record.h"
#include "plant_validation.h"
#include "record/fields.h"
#include "record/operations.h"
#include "record/text.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"
#include "transfer/tables.h"
#include "transfer/warnings.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <type_traits>
#include <vector>

namespace
{

template <typename Record> using ListOf = std::vector<Record>;

template <typename Record>
void AddImpossible(const std::vector<PlantProblem>& problems, const Record& record, const std::string& what,
                   ImportWarnings& found)
{
    const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
    for (const PlantProblem& problem : problems)
        if (problem.Kind == PlantProblemKind::Impossible)
            found.Add(
                [&]
                {
                    const auto field =
                        std::find_if(fields.begin(), fields.end(),
                                     [&](const Field<Record>& known) { return known.Name == problem.Field; });
                    return what + ": " + problem.Field + ' ' + InQuotes(TextWithoutExponent(*field, record)) + ": " +
                           problem.Description;
                });
}

void AddImpossibleOf(const Plant& plant, PlantRepository& repository, ImportWarnings& found)
{
    const std::string today = PlantEventCurrentDate();
    AddImpossible(Validate(plant, today), plant, "plant " + DisplayName(plant), found);
    Tables<ListOf> lists;
    ForEachTable(lists,
                 [&]<typename Record>(ListOf<Record>& records)
                 {
                     if constexpr (BelongsToPlant<Record>)
                     {
                         static_cast<void>(ListRecords(repository, plant.UUID, records));
                         for (const Record& record : records)
                             AddImpossible(Validate(record, plant, today), record,
                                           std::string(Describe<Record>().Noun) + ' ' + std::to_string(record.ID) +
                                               " of " + DisplayName(plant),
                                           found);
                     }
                 });
}

} // namespace

void PrintImpossibleValues(const std::string& path)
{
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(plant_file::TextOfPath(std::filesystem::absolute(plant_file::PathOfText(path))), &error))
    {
        std::cerr << "notice: " << Printable(path) << ": its values were not checked: " << error << '\n';
        return;
    }
    PlantRepository repository(journal);
    ImportWarnings found;
    std::vector<Strain> strains;
    static_cast<void>(repository.ListStrains(strains));
    for (const Strain& strain : strains)
        AddImpossible(Validate(strain), strain, "strain " + strain.Name, found);
    std::vector<Plant> plants;
    static_cast<void>(repository.ListPlants(plants));
    for (const Plant& plant : plants)
        if (!Interrupted()) // the journal is complete: only the notices end
            AddImpossibleOf(plant, repository, found);
    for (const std::string& text : found.Texts())
        std::cerr << "notice: " << Printable(text) << '\n';
    if (found.More() > 0)
        std::cerr << "notice: more impossible values, not shown: " << found.More() << '\n';
}

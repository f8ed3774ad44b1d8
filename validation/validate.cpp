#include "validate.h"

#include "reading.h"
#include "refusals.h"
#include "rules.h"
#include "texts.h"

#include <type_traits>
#include <utility>

namespace plant_validation
{

namespace
{

template <typename Record> constexpr bool IsOfPlant = !std::is_same_v<Record, Plant> && !std::is_same_v<Record, Strain>;

// The field by which an update finds the row.
template <typename Record>
constexpr const char* KeyOf = std::is_same_v<Record, Plant> || std::is_same_v<Record, PlantPhoto> ? "UUID" : "ID";

template <typename Record>
Problems ProblemsByThemselves(const Record& record, const Plant& plant, const std::string& today)
{
    Checker check(today);
    RefuseByItself(check, record);
    if constexpr (IsOfPlant<Record>)
        CheckValues(check, record, plant);
    else
        CheckValues(check, record);
    return check.Take();
}

// The dates of the plant with this UUID; none if it does not exist.
Plant DatesOfPlant(sqlite3* journal, const std::string& uuid)
{
    Statement row(journal, "reading the plants", "SELECT SeedDate,CloneDate,FlipDate FROM Plants WHERE UUID=?;");
    Plant plant;
    if (row.Bind(uuid).Step())
    {
        plant.SeedDate = row.Text(0);
        plant.CloneDate = row.Text(1);
        plant.FlipDate = row.Text(2);
    }
    return plant;
}

template <typename Record>
PlantValidationResult ValidateInJournal(const Record& record, PlantDatabase& database, Problems& out)
{
    out.clear();
    PlantValidationResult result;
    try
    {
        if (!database.IsOpen())
            throw Failure{"reading the journal", "the database is closed"};
        const ReadTransaction transaction(database.NativeHandle());
        out = ProblemsInJournal(record, database.NativeHandle(), PlantEventCurrentDate());
    }
    catch (const Failure& failure)
    {
        result.Error = failure.Step + ": " + failure.Reason;
    }
    return result;
}

} // namespace

template <typename Record> Problems ProblemsInJournal(const Record& record, sqlite3* journal, const std::string& today)
{
    Checker check(today);
    RefuseByItself(check, record);
    const auto longest = static_cast<std::size_t>(sqlite3_limit(journal, SQLITE_LIMIT_LENGTH, -1));
    const bool isTooLong = RefuseLongTexts(check, record, longest); // for a statement that looks for it, too
    if (!isTooLong && record.ID != 0 && !HasRow(journal, record))
    {
        check.StoresNoRow();
        if constexpr (!std::is_same_v<Record, Strain>) // refused
            check.Add(PlantProblemKind::Unlikely, KeyOf<Record>,
                      "the journal has no such record; an update would not store it");
    }
    if constexpr (IsOfPlant<Record>)
        CheckValues(check, record, isTooLong ? Plant() : DatesOfPlant(journal, record.PlantUUID));
    else
        CheckValues(check, record);
    if (!isTooLong)
        RefuseByJournal(check, journal, record);
    return check.Take();
}

// For Explain.
template Problems ProblemsInJournal(const Strain&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const Plant&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const PlantEvent&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const PlantCareEntry&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const HarvestRecord&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const PlantPhoto&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const PlantHealthObservation&, sqlite3*, const std::string&);
template Problems ProblemsInJournal(const PlantJournalEntry&, sqlite3*, const std::string&);

} // namespace plant_validation

using namespace plant_validation;

std::vector<PlantProblem> Validate(const Strain& strain)
{
    return ProblemsByThemselves(strain, {}, {});
}

std::vector<PlantProblem> Validate(const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(plant, {}, today);
}

std::vector<PlantProblem> Validate(const PlantEvent& event, const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(event, plant, today);
}

std::vector<PlantProblem> Validate(const PlantCareEntry& entry, const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(entry, plant, today);
}

std::vector<PlantProblem> Validate(const HarvestRecord& record, const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(record, plant, today);
}

std::vector<PlantProblem> Validate(const PlantPhoto& photo, const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(photo, plant, today);
}

std::vector<PlantProblem> Validate(const PlantHealthObservation& observation, const Plant& plant,
                                   const std::string& today)
{
    return ProblemsByThemselves(observation, plant, today);
}

std::vector<PlantProblem> Validate(const PlantJournalEntry& entry, const Plant& plant, const std::string& today)
{
    return ProblemsByThemselves(entry, plant, today);
}

PlantValidationResult Validate(const Strain& strain, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(strain, database, out);
}

PlantValidationResult Validate(const Plant& plant, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(plant, database, out);
}

PlantValidationResult Validate(const PlantEvent& event, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(event, database, out);
}

PlantValidationResult Validate(const PlantCareEntry& entry, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(entry, database, out);
}

PlantValidationResult Validate(const HarvestRecord& record, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(record, database, out);
}

PlantValidationResult Validate(const PlantPhoto& photo, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(photo, database, out);
}

PlantValidationResult Validate(const PlantHealthObservation& observation, PlantDatabase& database,
                               std::vector<PlantProblem>& out)
{
    return ValidateInJournal(observation, database, out);
}

PlantValidationResult Validate(const PlantJournalEntry& entry, PlantDatabase& database, std::vector<PlantProblem>& out)
{
    return ValidateInJournal(entry, database, out);
}

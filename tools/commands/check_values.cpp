#include "commands/check_values.h"

#include "command_line/parser.h"
#include "commands/field_flags.h"
#include "journal/find_record.h"
#include "plant_validation.h"
#include "record/fields.h"
#include "record/text.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iostream>
#include <iterator>

namespace
{

// The flag of a field as it was typed. A date that was not typed has --date.
template <typename Record> std::string FlagOf(const Field<Record>& field, const TypedFlags& typed)
{
    const std::string shortName = ShortFlagName(field);
    const std::string name = FlagName(field.Name);
    const bool isShort = typed.contains(shortName) || (field.Used == Use::Day && !typed.contains(name));
    return isShort ? shortName : name;
}

// The flag and the value, as in `--ph "15"`.
template <typename Record>
std::string FlagAndValue(const std::string& name, const Record& record, const TypedFlags& typed)
{
    const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
    const auto field =
        std::find_if(fields.begin(), fields.end(), [&](const Field<Record>& known) { return known.Name == name; });
    return FlagOf(*field, typed) + ' ' + InQuotes(TextWithoutExponent(*field, record));
}

template <typename Record>
Notices Check(const std::vector<PlantProblem>& problems, const Record& record, const std::string& what,
              const TypedFlags& typed, const std::optional<FieldNames>& sets)
{
    Notices notices;
    for (const PlantProblem& problem : problems)
    {
        if (sets && !sets->contains(problem.Field) && !sets->contains(problem.OtherField))
            continue;
        if (problem.Kind == PlantProblemKind::Refused) // the command refuses it in its own words
            continue;
        const std::string text = Printable(FlagAndValue(problem.Field, record, typed) + ": " + problem.Description);
        if (problem.Kind == PlantProblemKind::Impossible)
            RefuseUsage(Printable(what) + ": " + text);
        notices.push_back({Printable(what), text});
    }
    return notices;
}

} // namespace

template <typename Record>
Notices CheckValues(const Record& record, const Plant& plant, const TypedFlags& typed,
                    const std::optional<FieldNames>& sets)
{
    return Check(Validate(record, plant, PlantEventCurrentDate()), record,
                 std::string(Describe<Record>().Command) + " of " + DisplayName(plant), typed, sets);
}

template Notices CheckValues(const PlantEvent&, const Plant&, const TypedFlags&, const std::optional<FieldNames>&);
template Notices CheckValues(const PlantCareEntry&, const Plant&, const TypedFlags&, const std::optional<FieldNames>&);
template Notices CheckValues(const HarvestRecord&, const Plant&, const TypedFlags&, const std::optional<FieldNames>&);
template Notices CheckValues(const PlantPhoto&, const Plant&, const TypedFlags&, const std::optional<FieldNames>&);
template Notices CheckValues(const PlantHealthObservation&, const Plant&, const TypedFlags&,
                             const std::optional<FieldNames>&);
template Notices CheckValues(const PlantJournalEntry&, const Plant&, const TypedFlags&,
                             const std::optional<FieldNames>&);

Notices CheckValues(const Plant& plant, const std::optional<FieldNames>& sets)
{
    return Check(Validate(plant, PlantEventCurrentDate()), plant, "plant " + DisplayName(plant), {}, sets);
}

Notices CheckValues(const Strain& strain, const std::optional<FieldNames>& sets)
{
    return Check(Validate(strain), strain, "strain " + strain.Name, {}, sets);
}

void Append(Notices& notices, const Notices& more)
{
    notices.insert(notices.end(), more.begin(), more.end());
}

void PrintNotices(const Notices& notices)
{
    std::set<std::string> printed;
    for (const Notice& notice : notices)
    {
        if (!printed.insert(notice.Problem).second)
            continue;
        const auto count = std::count_if(notices.begin(), notices.end(),
                                         [&](const Notice& other) { return other.Problem == notice.Problem; });
        std::cerr << "notice: " << notice.What;
        if (count > 1)
            std::cerr << " and " << count - 1 << " more";
        std::cerr << ": " << notice.Problem << '\n';
    }
}

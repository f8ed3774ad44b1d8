#include "commands/summary.h"

#include "commands/care_summary.h"
#include "journal/find_record.h"
#include "record/text.h"
#include "terminal/printable.h"

#include <cctype>

namespace
{

constexpr std::size_t LongestText = 60; // a longer text would hide the rest of the line

// The label as it is written within a sentence: "Pot size" becomes "pot size", "EC" stays.
std::string LabelInSentence(std::string label)
{
    if (label.size() < 2 || std::isupper(static_cast<unsigned char>(label[1])) == 0)
        label[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(label[0])));
    return label;
}

std::string Excerpt(const std::string& text)
{
    return CutToWidth(Printable(text), LongestText);
}

// The labelled value of a field that was set, also where it is empty.
template <typename Record> std::string SetField(const Field<Record>& field, const Record& record)
{
    const std::string text = Excerpt(RoundedTextOf(ValueIn(field, record)));
    return LabelInSentence(field.Label) + ' ' + (text.empty() ? "cleared" : Joined({text, field.Unit}, " "));
}

template <typename Record> std::string SetFields(const Record& record, const FieldNames& names)
{
    std::vector<std::string> fields;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (names.count(field.Name) != 0)
            fields.push_back(SetField(field, record));
    return Joined(fields, ", ");
}

// The fields with a value, without the day. A number has a label; texts and names explain themselves.
template <typename Record> std::string ValuesInWords(const Record& record)
{
    std::vector<std::string> values;
    for (const Field<Record>& field : Describe<Record>().Fields)
    {
        const ConstValueRef value = ValueIn(field, record);
        const std::string text = Excerpt(ShownText(field, record));
        if (field.Displayed == Display::Always && field.Used != Use::RowID && field.Used != Use::Day && !text.empty())
            values.push_back(IsNumber(value) ? LabelInSentence(field.Label) + ' ' + text : text);
    }
    return Joined(values, ", ");
}

template <> std::string ValuesInWords(const PlantCareEntry& record)
{
    return Joined({PlantCareActionName(record.Action), CareInWords(record)}, ", ");
}

template <typename Record> std::string OnDay(const Record& record)
{
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Used == Use::Day)
            return OnDate(TextOf(field, record));
    return {};
}

template <typename Record> std::string Deed(const Plant& plant, const Record&)
{
    return std::string("Added ") + Describe<Record>().Noun + " to " + DisplayName(plant);
}

std::string Deed(const Plant& plant, const HarvestRecord&)
{
    return "Harvested " + DisplayName(plant);
}

// The words of the line after what was done.
template <typename Record> std::string NewValues(const Record& record)
{
    return ValuesInWords(record);
}

std::string NewValues(const HarvestRecord& record)
{
    const bool weighed = record.WetWeightG != 0 || record.DryWeightG != 0;
    return Joined({weighed ? "" : "not weighed", ValuesInWords(record)}, ", ");
}

std::string After(const std::string& separator, const std::string& text)
{
    return text.empty() ? "" : separator + text;
}

// "care entry 17 of Basil", "the harvest record of Basil"
template <typename Record> std::string NameOf(const Plant& plant, const Record& record)
{
    const std::string noun = Describe<Record>().Noun;
    return (OnePerPlant<Record> ? "the " + noun : noun + ' ' + std::to_string(record.ID)) + " of " + DisplayName(plant);
}

} // namespace

template <> std::string SummaryOfNew(const Plant& plant, const PlantCareEntry& record)
{
    return CareSummary(plant, record);
}

template <typename Record> std::string SummaryOfNew(const Plant& plant, const Record& record)
{
    std::string line = Deed(plant, record) + OnDay(record) + After(": ", NewValues(record));
    if (!OnePerPlant<Record>)
        line += std::string(" (") + Describe<Record>().Command + ' ' + std::to_string(record.ID) + ')';
    return line;
}

std::string SummaryOfNew(const Plant& plant)
{
    return "Added " + DisplayName(plant) + ": " +
           Joined({plant.Strain, std::string("stage ") + PlantStageName(plant.Stage)}, ", ") + " (" + plant.UUID + ')';
}

std::string SummaryOfNew(const Strain& strain)
{
    return "Added strain " + strain.Name;
}

template <typename Record>
std::string SummaryOfChanged(const Plant& plant, const Record& record, const FieldNames& fields)
{
    return "Changed " + NameOf(plant, record) + ": " + SetFields(record, fields);
}

std::string SummaryOfChanged(const Plant& before, const Plant& plant, const FieldNames& fields)
{
    return "Changed " + DisplayName(before) + ": " + SetFields(plant, fields);
}

std::string SummaryOfChanged(const Strain& before, const Strain& strain, const FieldNames& fields)
{
    return "Changed strain " + before.Name + ": " + SetFields(strain, fields);
}

template <typename Record> std::string RecordInWords(const Plant& plant, const Record& record)
{
    return NameOf(plant, record) + OnDay(record) + After(": ", ValuesInWords(record));
}

template std::string SummaryOfNew(const Plant& plant, const PlantEvent& record);
template std::string SummaryOfNew(const Plant& plant, const HarvestRecord& record);
template std::string SummaryOfNew(const Plant& plant, const PlantPhoto& record);
template std::string SummaryOfNew(const Plant& plant, const PlantHealthObservation& record);
template std::string SummaryOfNew(const Plant& plant, const PlantJournalEntry& record);

template std::string SummaryOfChanged(const Plant& plant, const PlantEvent& record, const FieldNames& fields);
template std::string SummaryOfChanged(const Plant& plant, const PlantCareEntry& record, const FieldNames& fields);
template std::string SummaryOfChanged(const Plant& plant, const HarvestRecord& record, const FieldNames& fields);
template std::string SummaryOfChanged(const Plant& plant, const PlantPhoto& record, const FieldNames& fields);
template std::string SummaryOfChanged(const Plant& plant, const PlantHealthObservation& record,
                                      const FieldNames& fields);
template std::string SummaryOfChanged(const Plant& plant, const PlantJournalEntry& record, const FieldNames& fields);

template std::string RecordInWords(const Plant& plant, const PlantEvent& record);
template std::string RecordInWords(const Plant& plant, const PlantCareEntry& record);
template std::string RecordInWords(const Plant& plant, const HarvestRecord& record);
template std::string RecordInWords(const Plant& plant, const PlantPhoto& record);
template std::string RecordInWords(const Plant& plant, const PlantHealthObservation& record);
template std::string RecordInWords(const Plant& plant, const PlantJournalEntry& record);

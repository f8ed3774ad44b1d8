#include "commands/care_summary.h"

#include "journal/find_record.h"
#include "record/text.h"

#include <array>
#include <charconv>

namespace
{

// What was measured, or nothing for 0, which stands for not measured.
std::string Measured(const std::string& name, double number)
{
    return number == 0 ? "" : name + ' ' + Hundredths(number);
}

std::string Millilitres(const std::string& name, double number)
{
    return number == 0 ? "" : name + RoundedTextOf(&number) + " ml";
}

} // namespace

std::string Hundredths(double number)
{
    std::array<char, 400> text{}; // enough for the largest number
    const std::to_chars_result result = std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed, 2);
    return {text.begin(), result.ptr};
}

std::string OnDate(const std::string& date)
{
    return date.empty() || date == PlantEventCurrentDate() ? "" : " on " + date;
}

std::string CareInWords(const PlantCareEntry& entry)
{
    return Joined({entry.Product, Millilitres("", entry.AmountMl), Measured("EC", entry.EC), Measured("pH", entry.PH),
                   Millilitres("runoff ", entry.RunoffMl)},
                  ", ");
}

std::string CareSummary(const Plant& plant, const PlantCareEntry& entry)
{
    const std::string values = CareInWords(entry);
    return (entry.Action == PlantCareAction::Feed ? "Fed " : "Watered ") + DisplayName(plant) + OnDate(entry.CareDate) +
           (values.empty() ? "" : ": " + values) + " (care " + std::to_string(entry.ID) + ")";
}

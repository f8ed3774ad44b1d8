#include "record/amount.h"

#include "record/text.h"

#include <algorithm>
#include <cmath>

namespace
{

struct AmountParts
{
    std::string Number;
    std::string Unit;
};

AmountParts PartsOf(const std::string& text)
{
    const std::size_t end = std::min(text.find_first_not_of("0123456789.,"), text.size());
    const std::size_t unit = std::min(text.find_first_not_of(' ', end), text.size());
    return {text.substr(0, end), text.substr(unit)};
}

} // namespace

bool IsAmountUnit(const std::string& text)
{
    return EqualIgnoringCase(text, "ml") || EqualIgnoringCase(text, "l");
}

bool LooksLikeAmount(const std::string& text)
{
    const AmountParts parts = PartsOf(text);
    return !parts.Number.empty() && IsAmountUnit(parts.Unit);
}

double MillilitresFrom(const std::string& text)
{
    const AmountParts parts = PartsOf(text);
    const std::string reason = InQuotes(text) + " is not an amount; write an amount like 500ml or 0.5l";
    if (!LooksLikeAmount(text))
        throw BadValue(reason);
    double millilitres = 0;
    try
    {
        // With the exponent, 1.005l is read as exactly the number that 1005ml is.
        ParseValue(parts.Number + (EqualIgnoringCase(parts.Unit, "l") ? "e3" : ""), &millilitres);
    }
    catch (const BadValue&)
    {
        throw BadValue(reason);
    }
    return millilitres;
}

std::string SumText(double millilitres)
{
    constexpr double mostInMillilitres = 9999;
    constexpr double perLitre = 1000;
    if (millilitres == 0)
        return {};
    const double rounded = std::fabs(millilitres) < 10 ? millilitres : std::round(millilitres);
    if (std::fabs(rounded) <= mostInMillilitres)
        return RoundedTextOf(&rounded) + " ml";
    const double litres = std::round(millilitres / perLitre * 10) / 10;
    return RoundedTextOf(&litres) + " l";
}

std::string WithoutWeightUnit(const std::string& text)
{
    const auto endsWith = [](const std::string& part, const char* unit)
    { return !part.empty() && EqualIgnoringCase(part.substr(part.size() - 1), unit); };
    if (!endsWith(text, "g"))
        return text;
    std::string number = text.substr(0, text.size() - 1);
    const bool inKilograms = endsWith(number, "k");
    if (inKilograms)
        number.pop_back();
    number.erase(number.find_last_not_of(' ') + 1);
    if (inKilograms)
        number += "e3"; // as for millilitres, 0.21kg is exactly 210
    try
    {
        double grams = 0;
        ParseValue(number, &grams);
    }
    catch (const BadValue&)
    {
        throw BadValue(InQuotes(text) + " is not a weight; write it like 210, 210g or 0.21kg");
    }
    return number;
}

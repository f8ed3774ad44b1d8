#include "figures.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace plant_query
{

namespace
{

// On 32-bit x86, a result can have more digits than a double until it is stored.
double WithoutExtraDigits(double result)
{
    if constexpr (FLT_EVAL_METHOD == 0)
        return result;
    else
    {
        const volatile double stored = result;
        return stored;
    }
}

} // namespace

void Sum::Add(double value)
{
    const double sum = WithoutExtraDigits(Rounded + value);
    if (std::isfinite(sum))
        Lost += std::abs(Rounded) >= std::abs(value) ? (Rounded - sum) + value : (value - sum) + Rounded;
    Rounded = sum;
}

bool IsMeasured(double value)
{
    return value > 0 && std::isfinite(value);
}

void Figures::Add(double value)
{
    Seen.Least = Seen.Number == 0 ? value : std::min(Seen.Least, value);
    Seen.Most = Seen.Number == 0 ? value : std::max(Seen.Most, value);
    ++Seen.Number;
    Values.Add(value);
}

void Figures::AddMeasured(double value)
{
    if (IsMeasured(value))
        Add(value);
}

PlantFigures Figures::Result() const
{
    PlantFigures figures = Seen;
    if (figures.Number > 0) // the mean of equal values may be rounded to another value
        figures.Mean = std::clamp(Values.Total() / static_cast<double>(figures.Number), figures.Least, figures.Most);
    return figures;
}

} // namespace plant_query

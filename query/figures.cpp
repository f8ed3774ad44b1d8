#include "figures.h"

#include <algorithm>
#include <cmath>

namespace plant_query
{

void Sum::Add(double value)
{
    const double sum = Rounded + value;
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

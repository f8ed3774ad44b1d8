// Sums and means.
#pragma once

#include "plant_query.h"

namespace plant_query
{

// A sum that does not lose the low digits of its terms, so that ten times 0.1 is 1 and the order of the terms does not
// show (Neumaier's summation).
class Sum
{
  public:
    void Add(double value);
    double Total() const { return Rounded + Lost; }

  private:
    double Rounded = 0;
    double Lost = 0;
};

// Whether a number was measured: 0 means that it was not entered, and a file may hold any number.
bool IsMeasured(double value);

// Collects the values of a PlantFigures.
class Figures
{
  public:
    void Add(double value);
    // Adds a value that IsMeasured().
    void AddMeasured(double value);
    PlantFigures Result() const;

  private:
    PlantFigures Seen; // without its mean
    Sum Values;
};

} // namespace plant_query

// Scales: from the grower's units to places in a picture, with round ticks.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace plant_report
{

// The short names of the months.
constexpr std::array<const char*, 12> MonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct Tick
{
    double Value = 0;
    std::string Label;
};

// A scale of numbers. Its ends and ticks are round: multiples of 1, 2 or 5 times a power of ten. Values outside of it,
// and those that are not finite, have their place at an end.
class NumberScale
{
  public:
    // `least` to `most` of the values, drawn from `begin` to `end`, with about `ticks` ticks. Equal values get a range
    // around them.
    NumberScale(double least, double most, double begin, double end, int ticks = 5);

    double operator()(double value) const;
    const std::vector<Tick>& Ticks() const { return Round; }

  private:
    double First, Last, Begin, End;
    std::vector<Tick> Round;
};

// A scale of days. Its ticks are days, Mondays, months or years, as many as fit; the year is named where it changes. A
// range shorter than a week becomes a week. Days outside of the range have their place at an end.
class DayScale
{
  public:
    // Days are counted from 1970-01-01.
    DayScale(std::int64_t first, std::int64_t last, double begin, double end);

    double operator()(double day) const;
    const std::vector<Tick>& Ticks() const { return Round; }

  private:
    double First, Last, Begin, End;
    std::vector<Tick> Round;
};

} // namespace plant_report

#pragma once

#include "bars.h"

#include <fstream>
#include <string>

// Compares figures with their bars: prints each comparison, and writes it to a file from which report.py reads it.
class BarCheck
{
  public:
    // `figures` is a heading: what the figures are. `output` is the file's path.
    BarCheck(const std::string& figures, const std::string& output);

    void Compare(const bars::Bar& bar, double figure);

    // Whether every figure was within its bar and the file is written.
    bool Passed();

  private:
    std::ofstream Output;
    bool Within = true;
};

#include "bar_check.h"

#include <iomanip>
#include <iostream>

BarCheck::BarCheck(const std::string& figures, const std::string& output) : Output(output)
{
    Output << "operation\tfigure\tbar\n";
    std::cout << std::left << std::setw(60) << figures << std::right << std::setw(12) << "figure" << std::setw(12)
              << "bar" << '\n';
}

void BarCheck::Compare(const bars::Bar& bar, double figure)
{
    const bool within = figure <= bar.Most;
    Within = Within && within;
    Output << std::setprecision(12) << bar.Operation << '\t' << figure << '\t' << bar.Most << '\n';
    std::cout << std::left << std::setw(60) << bar.Operation << std::right << std::fixed << std::setprecision(4)
              << std::setw(12) << figure << std::setw(12) << bar.Most << (within ? "\n" : "  TOO HIGH\n");
}

bool BarCheck::Passed()
{
    return Output.flush() && Within;
}

#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// One property of a thing that a person looks at.
struct Property
{
    std::string Label;
    std::string Value;
};

// Prints the properties that have a value, each with its label. A value of several lines stays so. On a terminal, long
// values are wrapped between words, next to their label.
void PrintDescription(std::ostream& out, const std::vector<Property>& properties);

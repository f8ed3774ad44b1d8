#pragma once

#include <string>

// Amounts of liquid as people write them: 500ml, "500 ml", 0.5l, 1.5L. Weights likewise: 210, 210g, 0.21kg.

// Whether the text is a unit of an amount.
bool IsAmountUnit(const std::string& text);

// Whether the text looks like an amount: digits, points and commas, then a unit.
bool LooksLikeAmount(const std::string& text);

// Returns the amount in millilitres. Throws BadValue.
double MillilitresFrom(const std::string& text);

// How people read a sum in millilitres: "9999 ml", "10.2 l"; empty for 0.
std::string SumText(double millilitres);

// Returns the number of grams in a text that ends with a unit, such as "0.21e3" for 0.21kg; another text stays as it
// is. Throws BadValue.
std::string WithoutWeightUnit(const std::string& text);

#pragma once

#include "plant_database.h"

#include <string>

// What was given: "Bloom A, 500 ml, EC 1.80, pH 6.20".
std::string CareInWords(const PlantCareEntry& entry);

// How messages describe a stored care entry: "Fed Basil: 500 ml, EC 1.80, pH 6.20 (care 17)". A date other than today
// is included.
std::string CareSummary(const Plant& plant, const PlantCareEntry& entry);

// " on 2026-05-01", or nothing for today.
std::string OnDate(const std::string& date);

// A number with two decimals: "1.80".
std::string Hundredths(double number);

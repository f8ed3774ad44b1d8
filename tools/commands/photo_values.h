#pragma once

#include "commands/check_values.h"

// What the commands for photos find out from the image file.

// Replaces the path that the user gave by the path to store. A new photo without a given date gets the date on which it
// was taken, if the image has one. Returns a notice if the file is missing.
[[nodiscard]] Notices TakeValuesFromFile(PlantPhoto& photo, const Plant& plant, const std::string& journal,
                                         const FieldNames& given);

#pragma once

#include "support/model/choices.h"
#include "support/model/side_by_side.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace support
{

// The steps in `data`, one after the other. Missing bytes at the end are 0.
std::vector<StepBytes> StepsFrom(const std::uint8_t* data, std::size_t size);

// The operation that a step called, and whether it returned true.
struct StepResult
{
    std::string Operation;
    bool Done;
};

// Runs the steps on an empty journal and on its model. Throws Mismatch.
std::vector<StepResult> RunSteps(const std::vector<StepBytes>& steps);

// The names of all operations that a step can call.
std::set<std::string> StepOperationNames();

} // namespace support

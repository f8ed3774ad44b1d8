#pragma once

#include "implementation.h"
#include "seed.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// One step of a workload; false where the implementation failed.
using Step = std::function<bool()>;

// An action of a front end and how it is measured: `Steps` times in a row, after `Prepare` and before `Restore`, which
// are not measured.
struct Workload
{
    std::string Name;
    int Size = 0; // the number of records that grows; 0 where none does
    Seed Holds;
    int Steps = 1;
    // Prepares `Steps` steps, and returns the step.
    std::function<Step(Implementation&, const std::string& path)> Prepare;
    // Statements that undo the steps, so that the next steps find the same journal.
    std::string Restore;
    bool InMemory = true;
    bool OnDisk = true;
    int Rounds = 0; // for a workload that takes seconds; 0 for the usual number

    std::string Title() const; // "list events, 1,000"
};

const std::vector<Workload>& Workloads();
// Throws std::invalid_argument where no workload has that title.
const Workload& WorkloadTitled(std::string_view title);

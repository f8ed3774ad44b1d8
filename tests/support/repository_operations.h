#pragma once

#include "support/sample_records.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace support
{

// One operation of the repository, with arguments that let it succeed on a journal of sample records. It may change the
// records that it gets.
struct Operation
{
    std::string Name;
    std::function<bool(PlantRepository&, SampleRecords&)> Call;
};

std::ostream& operator<<(std::ostream& out, const Operation& operation);

// Every operation of the repository, in the order of the header. An operation with several branches occurs several
// times.
const std::vector<Operation>& Operations();

// Operations that SQLite refuses after their transaction has written something, which they must roll back.
const std::vector<Operation>& RefusedOperations();

} // namespace support

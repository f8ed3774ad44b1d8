#pragma once

#include "checker.h"

#include <sqlite3.h>

namespace plant_validation
{

// The problems of the record by itself and in the journal. Without `today`, no date is in the future. Throws Failure.
template <typename Record> Problems ProblemsInJournal(const Record& record, sqlite3* journal, const std::string& today);

} // namespace plant_validation

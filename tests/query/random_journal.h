#pragma once

#include <random>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace support
{

// The dates of random journals. Some are not days of the calendar.
const std::vector<std::string>& RandomDates();

// The names of strains, tents and plants in random journals.
const std::vector<std::string>& RandomNames();

// The UUIDs of the plants in random journals, and one that none has.
const std::vector<std::string>& RandomUUIDs();

// Replaces the content of a journal with random rows, as other programs can write them, too: with texts that contain
// zero bytes, unknown names of types, records of unknown plants, events that several records own, and cycles of
// mothers.
void FillAtRandom(sqlite3* journal, std::mt19937_64& random);

} // namespace support

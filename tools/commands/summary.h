#pragma once

#include "record/fields.h"

#include <string>
#include <type_traits>

// Whether a plant has at most one record of this kind.
template <typename Record> constexpr bool OnePerPlant = std::is_same_v<Record, HarvestRecord>;

// The lines in which a command reports what it did, such as "Fed Basil: 500 ml, EC 1.80, pH 6.20 (care 17)". The
// parentheses contain what later commands take to name the record. Defined for every kind of record of a plant.

template <typename Record> std::string SummaryOfNew(const Plant& plant, const Record& record);
std::string SummaryOfNew(const Plant& plant);
std::string SummaryOfNew(const Strain& strain);

// `fields` are those that were set.
template <typename Record>
std::string SummaryOfChanged(const Plant& plant, const Record& record, const FieldNames& fields);
// `before` is the record before the change, which may rename it.
std::string SummaryOfChanged(const Plant& before, const Plant& plant, const FieldNames& fields);
std::string SummaryOfChanged(const Strain& before, const Strain& strain, const FieldNames& fields);

// Names a record of a plant and says what it contains, for a deletion: "health observation 4 of Basil: Spider mites".
template <typename Record> std::string RecordInWords(const Plant& plant, const Record& record);

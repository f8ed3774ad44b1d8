#pragma once

#include "plant_validation.h"
#include "support/sample_records.h"
#include "validation/random_record.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace support
{

// A record for the journal of sample records, with the functions of the library and of the repository on it.
struct StoredRecord
{
    std::string Name;
    bool UsesTransaction; // the operation that stores it
    std::function<PlantValidationResult(PlantDatabase&, std::vector<PlantProblem>&)> Validate;
    std::function<bool(PlantRepository&)> Store;
    std::function<std::string(PlantDatabase&)> Explain;
};

std::ostream& operator<<(std::ostream& out, const StoredRecord& record);

template <typename Record> StoredRecord StoredRecordOf(std::string name, bool usesTransaction, const Record& record)
{
    return {std::move(name), usesTransaction,
            [=](PlantDatabase& database, std::vector<PlantProblem>& out) { return Validate(record, database, out); },
            [=](PlantRepository& repository) { return Store(repository, record); },
            [=](PlantDatabase& database) { return Explain(database, record); }};
}

// For each kind of record one to create and one to update, all of which a journal of sample records accepts.
const std::vector<StoredRecord>& AcceptedRecords();

// Likewise, records that the journal of sample records refuses, each for one reason that is found by reading it.
const std::vector<StoredRecord>& RecordsRefusedByTheJournal();

// Records that are refused without the file.
const std::vector<StoredRecord>& RecordsRefusedByThemselves();

inline std::string NameOfStoredRecord(const testing::TestParamInfo<StoredRecord>& test)
{
    return test.param.Name;
}

} // namespace support

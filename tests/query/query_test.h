#pragma once

#include "plant_query.h"
#include "query/print.h"
#include "support/journal_test.h"
#include "support/sample_records.h"

namespace support
{

// An open journal and what the tests of queries need besides.
class QueryTest : public JournalTest
{
  protected:
    // Stores a copy of a record of a plant and returns it as stored.
    template <typename Record>
    Record Stored(Record record, const Plant& plant, bool (PlantRepository::*create)(Record&))
    {
        record.PlantUUID = plant.UUID;
        EXPECT_TRUE((Repository.*create)(record));
        return record;
    }

    // The answer of a query that must succeed. Fills `out` before, since a query replaces what it contains.
    template <typename Out, typename... Arguments, typename... Parameters>
    Out AnswerOf(PlantQueryResult (*query)(PlantDatabase&, Parameters...), const Arguments&... arguments)
    {
        Out out(2);
        const PlantQueryResult result = query(Database, arguments..., out);
        EXPECT_TRUE(result) << result.Error;
        return out;
    }
};

} // namespace support

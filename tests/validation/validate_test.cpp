// What holds for the validation of every kind of record in a journal.

#include "support/reading_call.h"
#include "validation/stored_records.h"

using namespace support;

namespace support
{

// A validation of each record.
const std::vector<ReadingCall>& ReadingCalls()
{
    using Problems = std::vector<PlantProblem>;
    const auto print = [](const Problems& problems)
    {
        std::string text;
        for (const PlantProblem& problem : problems)
            text += problem.Field + ": " + problem.Description + '\n';
        return text;
    };
    static const std::vector<ReadingCall> calls = [&]
    {
        std::vector<ReadingCall> all;
        for (const auto& records : {AcceptedRecords(), RecordsRefusedByTheJournal()})
            for (const StoredRecord& record : records)
                all.push_back(ReadingCallOf(record.Name, Problems(3), record.Validate, print));
        return all;
    }();
    return calls;
}

} // namespace support

namespace
{

class EveryValidationTest : public ReadingCallTest
{
};

TEST_P(EveryValidationTest, AValidationReadsInTheTransactionOfTheCaller)
{
    RunSQL("BEGIN;");
    RunSQL("DELETE FROM Plants; DELETE FROM Strains;");
    const std::string uncommitted = Ask().Answer;
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("COMMIT;");
    EXPECT_EQ(Ask().Answer, uncommitted);
}

INSTANTIATE_TEST_SUITE_P(Of, EveryValidationTest, testing::ValuesIn(ReadingCalls()), NameOfReadingCall);

} // namespace

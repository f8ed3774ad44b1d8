// What holds for every function of the library and not for every function that reads a journal.

#include "support/reading_call.h"

using namespace support;

namespace
{

class EveryQueryTest : public ReadingCallTest
{
};

TEST_P(EveryQueryTest, TheSampleHasAnAnswer)
{
    EXPECT_NE(Whole, GetParam().EmptyAnswer);
}

TEST_P(EveryQueryTest, AnAnswerReadsInTheTransactionOfTheCaller)
{
    RunSQL("BEGIN;");
    RunSQL("DELETE FROM Plants;");
    EXPECT_NE(Ask().Answer, Whole) << "rows that are not committed yet";
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("ROLLBACK;");
    EXPECT_EQ(Ask().Answer, Whole);
}

INSTANTIATE_TEST_SUITE_P(Of, EveryQueryTest, testing::ValuesIn(ReadingCalls()), NameOfReadingCall);

} // namespace

// The texts and numbers of every type of record.

#include "support/record_kinds.h"

#include <limits>
#include <string>

using namespace support;

namespace
{

using namespace std::string_literals;

template <typename Type> class TextTest : public RecordKindTest<Type>
{
};

using EveryKind = testing::Types<Plant, Strain, PlantEvent, PlantCareEntry, HarvestRecord, PlantPhoto,
                                 PlantHealthObservation, PlantJournalEntry>;
TYPED_TEST_SUITE(TextTest, EveryKind, TableName);

TYPED_TEST(TextTest, AnEmptyTextIsStoredAsAnEmptyText)
{
    const TypeParam record = this->New();
    for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
        EXPECT_EQ(this->Value("typeof("s + column + ")", record), "text") << column;
}

TYPED_TEST(TextTest, ANullTextReadsAsAnEmptyText)
{
    this->ReplaceInDefinitions(" NOT NULL", "");
    const TypeParam record = this->New();
    for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
    {
        this->RunSQL("UPDATE "s + RecordKind<TypeParam>::Table + " SET " + column + "=NULL;");
        EXPECT_EQ(this->Stored(record).*field, "") << column;
    }
}

TYPED_TEST(TextTest, ATextIsStoredWholeAndReadUpToItsFirstZeroByte)
{
    TypeParam created = this->Bare();
    for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
        created.*field = column + "\0 and\0more"s;
    ASSERT_TRUE(this->Create(created));
    TypeParam updated = created;
    for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
        updated.*field = column + "\0 and less"s;

    for (const TypeParam& record : {created, updated})
    {
        TypeParam written = record;
        ASSERT_TRUE(this->Update(written));
        for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
        {
            EXPECT_EQ(this->Value(column, record), record.*field);
            EXPECT_EQ(this->Value("length(CAST("s + column + " AS BLOB))", record),
                      std::to_string((record.*field).size()));
            EXPECT_EQ(this->Stored(record).*field, column);
        }
    }
}

TYPED_TEST(TextTest, TextsOfAnyLengthAndAnyBytesAreKept)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    for (const std::string& text : {bytes, std::string(100'000, 'x'), "'; DROP TABLE Plants; --"s, "NULL"s, "0"s})
    {
        TypeParam record = this->Bare();
        for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
            record.*field = text;
        ASSERT_TRUE(this->Create(record));
        for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
            EXPECT_EQ(this->Stored(record).*field, text) << column;
        this->RunSQL("DELETE FROM HarvestRecords;");
    }
}

template <typename Type> class NumberTest : public RecordKindTest<Type>
{
};

using EveryKindWithNumbers = testing::Types<Plant, PlantCareEntry, HarvestRecord>;
TYPED_TEST_SUITE(NumberTest, EveryKindWithNumbers, TableName);

TYPED_TEST(NumberTest, NaNIsRefused)
{
    const std::string empty = this->Content();
    for (const auto& [column, field] : RecordKind<TypeParam>::Numbers)
    {
        TypeParam record = this->Bare();
        record.*field = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(this->Create(record)) << column;
        EXPECT_EQ(this->Content(), empty);
    }
    const TypeParam stored = this->New();
    const std::string before = this->Content();
    for (const auto& [column, field] : RecordKind<TypeParam>::Numbers)
    {
        TypeParam record = stored;
        record.*field = -std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(this->Update(record)) << column;
        EXPECT_EQ(this->Content(), before);
    }
}

TYPED_TEST(NumberTest, EveryOtherNumberIsKeptExactly)
{
    using Limits = std::numeric_limits<double>;
    for (const double number : {0.1, -1.0 / 3, Limits::infinity(), -Limits::infinity(), Limits::max(), Limits::lowest(),
                                Limits::min(), Limits::denorm_min(), 9007199254740993.0})
        for (const auto& [column, field] : RecordKind<TypeParam>::Numbers)
        {
            TypeParam record = this->Bare();
            record.*field = number;
            ASSERT_TRUE(this->Create(record)) << column << ' ' << number;
            EXPECT_EQ(this->Stored(record).*field, number) << column;
            EXPECT_EQ(this->Value("typeof("s + column + ")", record), "real");
            this->RunSQL("DELETE FROM HarvestRecords;");
        }
}

} // namespace

// The records of which a plant has many: timeline events, care entries, photos, health observations and journal
// entries.

#include "support/record_kinds.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

using namespace std::string_literals;

template <typename Type> class PlantRecordTest : public RecordKindTest<Type>
{
  protected:
    Type Dated(const std::string& date)
    {
        Type record = this->Bare();
        record.*RecordKind<Type>::Date = date;
        EXPECT_TRUE(this->Create(record));
        return record;
    }

    std::vector<Type> ListOf(const std::string& plantUUID)
    {
        std::vector<Type> records(3); // the list must empty it
        EXPECT_TRUE(RecordKind<Type>::List(this->Repository, plantUUID, records));
        return records;
    }

    // The row IDs in the order of the list.
    std::vector<std::int64_t> ListedIDs()
    {
        std::vector<std::int64_t> ids;
        for (const Type& record : ListOf(this->Basil.UUID))
            ids.push_back(record.ID);
        return ids;
    }
};

using EveryPlantRecord =
    testing::Types<PlantEvent, PlantCareEntry, PlantPhoto, PlantHealthObservation, PlantJournalEntry>;
TYPED_TEST_SUITE(PlantRecordTest, EveryPlantRecord, TableName);

TYPED_TEST(PlantRecordTest, AListIsSortedByDateThenByRowIDNewestFirst)
{
    for (const char* date : {"2024-01-31", "", "2024-10-01", "2023-12-31", "2024-10-01", "2024-02-01", ""})
        this->Dated(date);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{5, 3, 6, 1, 4, 7, 2}));
}

TYPED_TEST(PlantRecordTest, DatesAreComparedAsTexts)
{
    for (const char* date : {"10", "9", "2024-1-5", "2024-01-05", "Monday", "monday"})
        this->Dated(date);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{6, 5, 2, 3, 4, 1}));
}

TYPED_TEST(PlantRecordTest, AListHoldsOnlyTheRecordsOfThePlant)
{
    const TypeParam own = this->New();
    TypeParam other = this->Bare();
    other.PlantUUID = this->Mint.UUID;
    ASSERT_TRUE(this->Create(other));
    EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{own});
    EXPECT_EQ(this->ListOf(this->Mint.UUID), std::vector{other});
}

TYPED_TEST(PlantRecordTest, AListOfAPlantWithoutRecordsIsEmpty)
{
    this->New();
    std::string otherCase = this->Basil.UUID;
    std::transform(otherCase.begin(), otherCase.end(), otherCase.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const std::string& uuid : {this->Mint.UUID, "unknown"s, ""s, otherCase})
        EXPECT_TRUE(this->ListOf(uuid).empty()) << uuid;
}

TYPED_TEST(PlantRecordTest, AListThatCannotStartIsEmptyAndFalse)
{
    this->New();
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind})
    {
        std::vector<TypeParam> records(3);
        const CallFailure failure(call, 1, SQLITE_NOMEM);
        EXPECT_FALSE(RecordKind<TypeParam>::List(this->Repository, this->Basil.UUID, records));
        EXPECT_TRUE(failure.Happened());
        EXPECT_TRUE(records.empty());
    }
    std::vector<TypeParam> records(3);
    this->Database.Close();
    EXPECT_FALSE(RecordKind<TypeParam>::List(this->Repository, this->Basil.UUID, records));
    EXPECT_TRUE(records.empty());
}

TYPED_TEST(PlantRecordTest, AnErrorWhileReadingEndsTheListEarly)
{
    for (int i = 0; i < 4; ++i)
        this->New();
    const CallFailure failure(SQLiteCall::Step, 3, SQLITE_CORRUPT);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{4, 3}));
}

TYPED_TEST(PlantRecordTest, AnInterruptEndsTheListEarly)
{
    for (int i = 0; i < 4; ++i)
        this->New();
    struct
    {
        sqlite3* DB = nullptr;
        int Rows = 0;
    } seen{this->Database.NativeHandle()};
    const auto interruptAtTheSecondRow = [](unsigned /*event*/, void* context, void* /*statement*/, void* /*unused*/)
    {
        auto* rows = static_cast<decltype(seen)*>(context);
        if (++rows->Rows == 2)
            sqlite3_interrupt(rows->DB);
        return 0;
    };
    sqlite3_trace_v2(seen.DB, SQLITE_TRACE_ROW, interruptAtTheSecondRow, &seen);
    const std::vector<std::int64_t> ids = this->ListedIDs();
    EXPECT_EQ(sqlite3_errcode(seen.DB), SQLITE_INTERRUPT);
    sqlite3_trace_v2(seen.DB, 0, nullptr, nullptr);
    EXPECT_EQ(ids, (std::vector<std::int64_t>{4, 3}));
}

TYPED_TEST(PlantRecordTest, ARecordWithoutAPlantIsRefusedAtOnce)
{
    TypeParam record = this->New();
    record.PlantUUID.clear();
    const TypeParam before = record;
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Create(record); }));
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Update(record); }));
    EXPECT_EQ(record, before);
}

TYPED_TEST(PlantRecordTest, ARecordOfAnUnknownPlantIsRefused)
{
    const std::string before = this->Content();
    TypeParam record = this->Bare();
    record.ID = 77;
    record.PlantUUID = "unknown";
    EXPECT_FALSE(this->Create(record));
    EXPECT_EQ(record.ID, 77);
    EXPECT_EQ(record.PlantUUID, "unknown");
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(PlantRecordTest, AnUpdateOrDeleteWithoutAnIdentifierIsRefusedAtOnce)
{
    TypeParam record = this->New();
    record.ID = 0;
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Update(record); }));
    EXPECT_TRUE(
        this->RefusedWithoutACall([&] { return RecordKind<TypeParam>::Delete(this->Repository, TypeParam()); }));
}

TYPED_TEST(PlantRecordTest, AnUpdateNeverMovesARecordToAnotherPlant)
{
    TypeParam record = this->New();
    const std::string before = this->Content();
    record.PlantUUID = this->Mint.UUID;
    for (const auto& [column, field] : RecordKind<TypeParam>::Texts)
        record.*field = "changed";
    EXPECT_TRUE(this->Update(record));
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(PlantRecordTest, UpdatingOrDeletingADeletedRecordChangesNothing)
{
    TypeParam record = this->New();
    ASSERT_TRUE(RecordKind<TypeParam>::Delete(this->Repository, record));
    const std::string before = this->Content();
    EXPECT_TRUE(this->Update(record));
    const bool isCareEntry = std::is_same_v<TypeParam, PlantCareEntry>; // its event is looked up first
    EXPECT_EQ(RecordKind<TypeParam>::Delete(this->Repository, record), !isCareEntry);
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(PlantRecordTest, DeleteRemovesOnlyThatRecord)
{
    this->New();
    const TypeParam second = this->New();
    this->New();
    EXPECT_TRUE(RecordKind<TypeParam>::Delete(this->Repository, second));
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{3, 1}));
}

TYPED_TEST(PlantRecordTest, RowIDsOfEverySizeAreKept)
{
    for (const std::int64_t id : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{1} << 32,
                                  std::numeric_limits<std::int64_t>::max()})
    {
        TypeParam record = this->New();
        this->RunSQL("UPDATE "s + RecordKind<TypeParam>::Table + " SET ID=" + std::to_string(id) + ';');
        record.ID = id;
        EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{record});
        record.*RecordKind<TypeParam>::Date = "2024-06-01";
        EXPECT_TRUE(this->Update(record));
        EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{record});
        EXPECT_TRUE(RecordKind<TypeParam>::Delete(this->Repository, record));
        EXPECT_TRUE(this->ListOf(this->Basil.UUID).empty());
    }
}

} // namespace

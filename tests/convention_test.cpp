// What holds for every operation, or for every kind of record.

#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/operation_statements.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <regex>
#include <type_traits>

#include <sqlite3.h>

using namespace support;

namespace
{

using namespace std::string_literals;

// ---- Every operation

class OperationTest : public JournalTest, public testing::WithParamInterface<Operation>
{
  protected:
    OperationTest() : Planted(StoreSampleRecords(Repository)), Before(Content()) {}

    // Runs the operation.
    bool Run()
    {
        const CallRecorder recorder;
        const bool done = GetParam().Call(Repository, Planted);
        Calls = recorder.Calls();
        Ran = recorder.Statements();
        return done;
    }

    bool RanATransaction() const { return Ran.end() != std::find(Ran.begin(), Ran.end(), SQL::Begin); }
    bool RanReadsOnly() const
    {
        return std::all_of(Ran.begin(), Ran.end(), [](const std::string& sql) { return sql.starts_with("SELECT"); });
    }

    SampleRecords Planted;
    std::string Before;
    std::vector<RecordedCall> Calls;
    Statements Ran;
};

TEST_P(OperationTest, PreparesBindsStepsAndFinalizesOneStatementAfterTheOther)
{
    ASSERT_TRUE(Run());
    std::string shape;
    std::ptrdiff_t values = 0;
    for (const RecordedCall& call : Calls)
    {
        switch (call.Call)
        {
        case SQLiteCall::Prepare:
            shape += call.SQL.starts_with("SELECT") ? 'R' : 'W';
            values += std::count(call.SQL.begin(), call.SQL.end(), '?');
            break;
        case SQLiteCall::Bind:
            shape += 'B';
            --values;
            break;
        case SQLiteCall::Step:
            shape += 'S';
            break;
        case SQLiteCall::Finalize:
            shape += 'F';
            EXPECT_EQ(values, 0) << call.SQL;
            break;
        default:
            shape += call.SQL == SQL::Begin ? '(' : call.SQL == SQL::Commit ? ')' : '?';
        }
    }
    const std::string statements = "(RB*S+F|WB*SF)+";
    EXPECT_TRUE(std::regex_match(shape, std::regex("(" + statements + ")?(\\(" + statements + "\\))?"))) << shape;
    ExpectNothingOpen();
}

TEST_P(OperationTest, TakesARowFromAWriteForAFailure)
{
    for (const char* write : {"INSERT", "UPDATE", "DELETE"})
    {
        const CallFailure row(SQLiteCall::Step, 1, SQLITE_ROW, write);
        const bool done = Run();
        EXPECT_FALSE(done && row.Happened()) << write;
    }
}

TEST_P(OperationTest, LeavesTheLastErrorAlone)
{
    Database.Close();
    ASSERT_FALSE(Database.Open(Path + "/in a file"));
    const std::string older = Database.LastError();
    ASSERT_NE(older, "");
    OpenJournal();

    EXPECT_TRUE(Run());
    EXPECT_EQ(Database.LastError(), older);
    {
        const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_IOERR);
        EXPECT_FALSE(Run());
    }
    EXPECT_EQ(Database.LastError(), older);
    Database.Close();
    EXPECT_FALSE(Run());
    EXPECT_EQ(Database.LastError(), older);
}

TEST_P(OperationTest, OnAClosedDatabaseIsRefusedAtOnce)
{
    Database.Close();
    EXPECT_FALSE(Run());
    EXPECT_TRUE(Calls.empty());

    PlantDatabase neverOpened;
    PlantRepository repository(neverOpened);
    EXPECT_FALSE(GetParam().Call(repository, Planted));
}

TEST_P(OperationTest, WaitsForNoMoreThanTheReadsWhileAnotherConnectionWrites)
{
    sqlite3_busy_timeout(Database.NativeHandle(), 0);
    bool done = false;
    {
        const PlainConnection other(Path);
        other.RunSQL(SQL::Begin);
        done = Run();
    }
    EXPECT_EQ(done, RanReadsOnly());
    EXPECT_EQ(std::count(Ran.begin(), Ran.end(), SQL::Rollback), 0);
    if (RanATransaction())
    {
        EXPECT_EQ(Ran.back(), SQL::Begin);
    }
    EXPECT_EQ(Content(), Before);
}

TEST_P(OperationTest, RollsBackWhenACommitFailsForAnotherConnectionThatReads)
{
    sqlite3_busy_timeout(Database.NativeHandle(), 0);
    bool done = false;
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN;");
        other.QueryRows("SELECT * FROM Strains;");
        done = Run();
    }
    EXPECT_EQ(done, RanReadsOnly());
    if (RanATransaction())
    {
        ASSERT_GE(Ran.size(), 2U);
        EXPECT_EQ(Ran[Ran.size() - 2], SQL::Commit);
        EXPECT_EQ(Ran.back(), SQL::Rollback);
    }
    ExpectNothingOpen();
    EXPECT_EQ(Content(), Before);
}

TEST_P(OperationTest, RollsBackWhenACommitIsVetoed)
{
    sqlite3_commit_hook(
        Database.NativeHandle(), [](void*) { return 1; }, nullptr);
    const bool done = Run();
    sqlite3_commit_hook(Database.NativeHandle(), nullptr, nullptr);
    EXPECT_EQ(done, RanReadsOnly());
    if (RanATransaction())
    {
        EXPECT_EQ(Ran.back(), SQL::Rollback);
    }
    ExpectNothingOpen();
    EXPECT_EQ(Content(), Before);
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, OperationTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

// ---- Every kind of record

template <typename Type> struct TextColumn
{
    const char* Name;
    std::string Type::*Field;
};

template <typename Type> struct NumberColumn
{
    const char* Name;
    double Type::*Field;
};

// How the records of a kind are stored and read, and their columns of free text and of real numbers.
template <typename Type> struct Kind;

template <> struct Kind<Plant>
{
    static constexpr auto Table = "Plants";
    static constexpr TextColumn<Plant> Texts[] = {
        {"Name", &Plant::Name},           {"Strain", &Plant::Strain},
        {"Tent", &Plant::Tent},           {"PotSize", &Plant::PotSize},
        {"Medium", &Plant::Medium},       {"SeedDate", &Plant::SeedDate},
        {"CloneDate", &Plant::CloneDate}, {"TransplantDate", &Plant::TransplantDate},
        {"FlipDate", &Plant::FlipDate},   {"HarvestDate", &Plant::HarvestDate},
        {"Notes", &Plant::Notes}};
    static constexpr NumberColumn<Plant> Numbers[] = {{"FlipHeightCm", &Plant::FlipHeightCm},
                                                      {"FinalHeightCm", &Plant::FinalHeightCm}};

    static bool Create(PlantRepository& repository, Plant& plant) { return repository.CreatePlant(plant); }
    static bool Update(PlantRepository& repository, Plant& plant) { return repository.UpdatePlant(plant); }
    static bool Read(PlantRepository& repository, Plant& plant) { return repository.GetPlant(plant.UUID, plant); }
};

template <> struct Kind<Strain>
{
    static constexpr auto Table = "Strains";
    static constexpr TextColumn<Strain> Texts[] = {
        {"Name", &Strain::Name}, {"Breeder", &Strain::Breeder}, {"Notes", &Strain::Notes}};

    static bool Create(PlantRepository& repository, Strain& strain) { return repository.CreateStrain(strain); }
    static bool Update(PlantRepository& repository, Strain& strain) { return repository.UpdateStrain(strain); }
    static bool Read(PlantRepository& repository, Strain& strain) { return repository.GetStrain(strain.ID, strain); }
};

template <> struct Kind<HarvestRecord>
{
    static constexpr auto Table = "HarvestRecords";
    static constexpr TextColumn<HarvestRecord> Texts[] = {{"HarvestDate", &HarvestRecord::HarvestDate},
                                                          {"CureOutcome", &HarvestRecord::CureOutcome},
                                                          {"Notes", &HarvestRecord::Notes}};
    static constexpr NumberColumn<HarvestRecord> Numbers[] = {{"WetWeightG", &HarvestRecord::WetWeightG},
                                                              {"DryWeightG", &HarvestRecord::DryWeightG},
                                                              {"QualityRating", &HarvestRecord::QualityRating}};

    static bool Create(PlantRepository& repository, HarvestRecord& record)
    {
        Plant plant;
        return repository.GetPlant(record.PlantUUID, plant) && repository.SaveHarvestRecord(plant, record);
    }
    static bool Update(PlantRepository& repository, HarvestRecord& record) { return Create(repository, record); }
    static bool Read(PlantRepository& repository, HarvestRecord& record)
    {
        return repository.GetHarvestRecord(record.PlantUUID, record);
    }
};

// The kinds of which a plant has many.
template <typename Type, auto ListOperation, auto CreateOperation, auto UpdateOperation> struct KindOfAPlant
{
    static bool List(PlantRepository& repository, const std::string& plantUUID, std::vector<Type>& out)
    {
        return (repository.*ListOperation)(plantUUID, out);
    }
    static bool Create(PlantRepository& repository, Type& record) { return (repository.*CreateOperation)(record); }
    static bool Update(PlantRepository& repository, Type& record) { return (repository.*UpdateOperation)(record); }
    static bool Read(PlantRepository& repository, Type& record)
    {
        std::vector<Type> records;
        if (!List(repository, record.PlantUUID, records))
            return false;
        const auto found = std::find_if(records.begin(), records.end(),
                                        [&](const Type& candidate) { return candidate.ID == record.ID; });
        if (found == records.end())
            return false;
        record = *found;
        return true;
    }
};

template <>
struct Kind<PlantEvent> : KindOfAPlant<PlantEvent, &PlantRepository::ListPlantEvents,
                                       &PlantRepository::CreatePlantEvent, &PlantRepository::UpdatePlantEvent>
{
    static constexpr auto Table = "PlantEvents";
    static constexpr auto Date = &PlantEvent::EventDate;
    static constexpr TextColumn<PlantEvent> Texts[] = {{"EventDate", &PlantEvent::EventDate},
                                                       {"Details", &PlantEvent::Details}};

    static bool Delete(PlantRepository& repository, const PlantEvent& event)
    {
        return repository.DeletePlantEvent(event.ID);
    }
};

template <>
struct Kind<PlantCareEntry>
    : KindOfAPlant<PlantCareEntry, &PlantRepository::ListPlantCareEntries, &PlantRepository::CreatePlantCareEntry,
                   &PlantRepository::UpdatePlantCareEntry>
{
    static constexpr auto Table = "PlantCareEntries";
    static constexpr auto Date = &PlantCareEntry::CareDate;
    static constexpr TextColumn<PlantCareEntry> Texts[] = {{"CareDate", &PlantCareEntry::CareDate},
                                                           {"Product", &PlantCareEntry::Product},
                                                           {"Notes", &PlantCareEntry::Notes}};
    static constexpr NumberColumn<PlantCareEntry> Numbers[] = {{"AmountMl", &PlantCareEntry::AmountMl},
                                                               {"EC", &PlantCareEntry::EC},
                                                               {"PH", &PlantCareEntry::PH},
                                                               {"RunoffMl", &PlantCareEntry::RunoffMl}};

    static bool Delete(PlantRepository& repository, const PlantCareEntry& entry)
    {
        return repository.DeletePlantCareEntry(entry.ID);
    }
};

template <>
struct Kind<PlantPhoto> : KindOfAPlant<PlantPhoto, &PlantRepository::ListPlantPhotos,
                                       &PlantRepository::CreatePlantPhoto, &PlantRepository::UpdatePlantPhoto>
{
    static constexpr auto Table = "PlantPhotos";
    static constexpr auto Date = &PlantPhoto::PhotoDate;
    static constexpr TextColumn<PlantPhoto> Texts[] = {
        {"PhotoDate", &PlantPhoto::PhotoDate}, {"FilePath", &PlantPhoto::FilePath}, {"Caption", &PlantPhoto::Caption}};

    static bool Delete(PlantRepository& repository, const PlantPhoto& photo)
    {
        return repository.DeletePlantPhoto(photo.UUID);
    }
};

template <>
struct Kind<PlantHealthObservation>
    : KindOfAPlant<PlantHealthObservation, &PlantRepository::ListPlantHealthObservations,
                   &PlantRepository::CreatePlantHealthObservation, &PlantRepository::UpdatePlantHealthObservation>
{
    static constexpr auto Table = "PlantHealthObservations";
    static constexpr auto Date = &PlantHealthObservation::ObservationDate;
    static constexpr TextColumn<PlantHealthObservation> Texts[] = {
        {"ObservationDate", &PlantHealthObservation::ObservationDate},
        {"Issue", &PlantHealthObservation::Issue},
        {"Treatment", &PlantHealthObservation::Treatment},
        {"Notes", &PlantHealthObservation::Notes}};

    static bool Delete(PlantRepository& repository, const PlantHealthObservation& observation)
    {
        return repository.DeletePlantHealthObservation(observation.ID);
    }
};

template <>
struct Kind<PlantJournalEntry>
    : KindOfAPlant<PlantJournalEntry, &PlantRepository::ListPlantJournalEntries,
                   &PlantRepository::CreatePlantJournalEntry, &PlantRepository::UpdatePlantJournalEntry>
{
    static constexpr auto Table = "PlantJournalEntries";
    static constexpr auto Date = &PlantJournalEntry::EntryDate;
    static constexpr TextColumn<PlantJournalEntry> Texts[] = {{"EntryDate", &PlantJournalEntry::EntryDate},
                                                              {"Details", &PlantJournalEntry::Details}};

    static bool Delete(PlantRepository& repository, const PlantJournalEntry& entry)
    {
        return repository.DeletePlantJournalEntry(entry.ID);
    }
};

// Names the instances of a test after the tables.
struct TableName
{
    template <typename Type> static std::string GetName(int /*index*/) { return Kind<Type>::Table; }
};

template <typename Type> class KindTest : public JournalTest
{
  protected:
    KindTest() : Basil(NewPlant("Basil")), Mint(NewPlant("Mint")) {}

    // A record with no more than it must have.
    Type Bare() const
    {
        Type record;
        if constexpr (requires { record.PlantUUID; })
            record.PlantUUID = Basil.UUID;
        if constexpr (requires { record.FilePath; })
            record.FilePath = "leaf.jpg";
        if constexpr (requires { record.Issue; })
            record.Issue = "Aphids";
        if constexpr (std::is_same_v<Type, Strain>)
            record.Name = "Genovese";
        return record;
    }

    bool Create(Type& record) { return Kind<Type>::Create(Repository, record); }
    bool Update(Type& record) { return Kind<Type>::Update(Repository, record); }

    Type New()
    {
        Type record = Bare();
        EXPECT_TRUE(Create(record));
        return record;
    }

    Type Stored(Type record)
    {
        EXPECT_TRUE(Kind<Type>::Read(Repository, record));
        return record;
    }

    // A column of the record's row.
    std::string Value(const std::string& column, const Type& record) const
    {
        return QueryRows("SELECT " + column + " FROM " + Kind<Type>::Table + " WHERE ID=" + std::to_string(record.ID) +
                         ";")
            .at(0)
            .at(0);
    }

    Plant Basil;
    Plant Mint;
};

using EveryKind = testing::Types<Plant, Strain, PlantEvent, PlantCareEntry, HarvestRecord, PlantPhoto,
                                 PlantHealthObservation, PlantJournalEntry>;
TYPED_TEST_SUITE(KindTest, EveryKind, TableName);

TYPED_TEST(KindTest, KeepsAnEmptyTextAsAnEmptyText)
{
    const TypeParam record = this->New();
    for (const auto& [column, field] : Kind<TypeParam>::Texts)
        EXPECT_EQ(this->Value("typeof("s + column + ")", record), "text") << column;
}

TYPED_TEST(KindTest, ReadsAMissingTextAsAnEmptyText)
{
    this->ReplaceInDefinitions(" NOT NULL", "");
    const TypeParam record = this->New();
    for (const auto& [column, field] : Kind<TypeParam>::Texts)
    {
        this->RunSQL("UPDATE "s + Kind<TypeParam>::Table + " SET " + column + "=NULL;");
        EXPECT_EQ(this->Stored(record).*field, "") << column;
    }
}

TYPED_TEST(KindTest, StoresATextWholeAndReadsItUpToItsFirstZeroByte)
{
    TypeParam created = this->Bare();
    for (const auto& [column, field] : Kind<TypeParam>::Texts)
        created.*field = column + "\0 and\0more"s;
    ASSERT_TRUE(this->Create(created));
    TypeParam updated = created;
    for (const auto& [column, field] : Kind<TypeParam>::Texts)
        updated.*field = column + "\0 and less"s;

    for (const TypeParam& record : {created, updated})
    {
        TypeParam written = record;
        ASSERT_TRUE(this->Update(written));
        for (const auto& [column, field] : Kind<TypeParam>::Texts)
        {
            EXPECT_EQ(this->Value(column, record), record.*field);
            EXPECT_EQ(this->Value("length(CAST("s + column + " AS BLOB))", record),
                      std::to_string((record.*field).size()));
            EXPECT_EQ(this->Stored(record).*field, column);
        }
    }
}

TYPED_TEST(KindTest, KeepsTextsOfAnyLengthAndAnyBytes)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    for (const std::string& text : {bytes, std::string(100'000, 'x'), "'; DROP TABLE Plants; --"s, "NULL"s, "0"s})
    {
        TypeParam record = this->Bare();
        for (const auto& [column, field] : Kind<TypeParam>::Texts)
            record.*field = text;
        ASSERT_TRUE(this->Create(record));
        for (const auto& [column, field] : Kind<TypeParam>::Texts)
            EXPECT_EQ(this->Stored(record).*field, text) << column;
        this->RunSQL("DELETE FROM HarvestRecords;");
    }
}

// ---- Every kind with real numbers

template <typename Type> class NumberTest : public KindTest<Type>
{
};

using EveryKindWithNumbers = testing::Types<Plant, PlantCareEntry, HarvestRecord>;
TYPED_TEST_SUITE(NumberTest, EveryKindWithNumbers, TableName);

TYPED_TEST(NumberTest, RefusesANumberThatIsNone)
{
    const std::string empty = this->Content();
    for (const auto& [column, field] : Kind<TypeParam>::Numbers)
    {
        TypeParam record = this->Bare();
        record.*field = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(this->Create(record)) << column;
        EXPECT_EQ(this->Content(), empty);
    }
    const TypeParam stored = this->New();
    const std::string before = this->Content();
    for (const auto& [column, field] : Kind<TypeParam>::Numbers)
    {
        TypeParam record = stored;
        record.*field = -std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(this->Update(record)) << column;
        EXPECT_EQ(this->Content(), before);
    }
}

TYPED_TEST(NumberTest, KeepsEveryOtherNumberExactly)
{
    using Limits = std::numeric_limits<double>;
    for (const double number : {0.1, -1.0 / 3, Limits::infinity(), -Limits::infinity(), Limits::max(), Limits::lowest(),
                                Limits::min(), Limits::denorm_min(), 9007199254740993.0})
        for (const auto& [column, field] : Kind<TypeParam>::Numbers)
        {
            TypeParam record = this->Bare();
            record.*field = number;
            ASSERT_TRUE(this->Create(record)) << column << ' ' << number;
            EXPECT_EQ(this->Stored(record).*field, number) << column;
            EXPECT_EQ(this->Value("typeof("s + column + ")", record), "real");
            this->RunSQL("DELETE FROM HarvestRecords;");
        }
}

// ---- Every kind of which a plant has many

template <typename Type> class KindOfAPlantTest : public KindTest<Type>
{
  protected:
    Type Dated(const std::string& date)
    {
        Type record = this->Bare();
        record.*Kind<Type>::Date = date;
        EXPECT_TRUE(this->Create(record));
        return record;
    }

    std::vector<Type> ListOf(const std::string& plantUUID)
    {
        std::vector<Type> records(3); // nothing of it may remain
        EXPECT_TRUE(Kind<Type>::List(this->Repository, plantUUID, records));
        return records;
    }

    // The row numbers, in the order of the list.
    std::vector<std::int64_t> ListedIDs()
    {
        std::vector<std::int64_t> ids;
        for (const Type& record : ListOf(this->Basil.UUID))
            ids.push_back(record.ID);
        return ids;
    }
};

using EveryKindOfAPlant =
    testing::Types<PlantEvent, PlantCareEntry, PlantPhoto, PlantHealthObservation, PlantJournalEntry>;
TYPED_TEST_SUITE(KindOfAPlantTest, EveryKindOfAPlant, TableName);

TYPED_TEST(KindOfAPlantTest, ListsTheNewestDateFirstThenTheNewestRowAndTheUndatedLast)
{
    for (const char* date : {"2024-01-31", "", "2024-10-01", "2023-12-31", "2024-10-01", "2024-02-01", ""})
        this->Dated(date);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{5, 3, 6, 1, 4, 7, 2}));
}

TYPED_TEST(KindOfAPlantTest, ComparesDatesAsTexts)
{
    for (const char* date : {"10", "9", "2024-1-5", "2024-01-05", "Monday", "monday"})
        this->Dated(date);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{6, 5, 2, 3, 4, 1}));
}

TYPED_TEST(KindOfAPlantTest, ListsThePlantsOwnRecordsOnly)
{
    const TypeParam own = this->New();
    TypeParam other = this->Bare();
    other.PlantUUID = this->Mint.UUID;
    ASSERT_TRUE(this->Create(other));
    EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{own});
    EXPECT_EQ(this->ListOf(this->Mint.UUID), std::vector{other});
}

TYPED_TEST(KindOfAPlantTest, ListsNothingForAPlantWithoutRecordsOrAnUnknownOne)
{
    this->New();
    std::string otherCase = this->Basil.UUID;
    std::transform(otherCase.begin(), otherCase.end(), otherCase.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const std::string& uuid : {this->Mint.UUID, "nobody"s, ""s, otherCase})
        EXPECT_TRUE(this->ListOf(uuid).empty()) << uuid;
}

TYPED_TEST(KindOfAPlantTest, AListThatCannotBeginIsEmptyAndFalse)
{
    this->New();
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind})
    {
        std::vector<TypeParam> records(3);
        const CallFailure failure(call, 1, SQLITE_NOMEM);
        EXPECT_FALSE(Kind<TypeParam>::List(this->Repository, this->Basil.UUID, records));
        EXPECT_TRUE(failure.Happened());
        EXPECT_TRUE(records.empty());
    }
    std::vector<TypeParam> records(3);
    this->Database.Close();
    EXPECT_FALSE(Kind<TypeParam>::List(this->Repository, this->Basil.UUID, records));
    EXPECT_TRUE(records.empty());
}

TYPED_TEST(KindOfAPlantTest, AnErrorOnTheWayEndsTheListEarly)
{
    for (int i = 0; i < 4; ++i)
        this->New();
    const CallFailure failure(SQLiteCall::Step, 3, SQLITE_CORRUPT);
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{4, 3}));
}

TYPED_TEST(KindOfAPlantTest, AnInterruptEndsTheListEarly)
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

TYPED_TEST(KindOfAPlantTest, ARecordWithoutAPlantIsRefusedAtOnce)
{
    TypeParam record = this->New();
    record.PlantUUID.clear();
    const TypeParam before = record;
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Create(record); }));
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Update(record); }));
    EXPECT_EQ(record, before);
}

TYPED_TEST(KindOfAPlantTest, ARecordOfAnUnknownPlantIsRefused)
{
    const std::string before = this->Content();
    TypeParam record = this->Bare();
    record.ID = 77;
    record.PlantUUID = "nobody";
    EXPECT_FALSE(this->Create(record));
    EXPECT_EQ(record.ID, 77);
    EXPECT_EQ(record.PlantUUID, "nobody");
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(KindOfAPlantTest, AnUpdateWithoutARowNumberAndADeleteWithoutAnIdentifierAreRefusedAtOnce)
{
    TypeParam record = this->New();
    record.ID = 0;
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return this->Update(record); }));
    EXPECT_TRUE(this->RefusedWithoutACall([&] { return Kind<TypeParam>::Delete(this->Repository, TypeParam()); }));
}

TYPED_TEST(KindOfAPlantTest, ARecordNeverMovesToAnotherPlant)
{
    TypeParam record = this->New();
    const std::string before = this->Content();
    record.PlantUUID = this->Mint.UUID;
    for (const auto& [column, field] : Kind<TypeParam>::Texts)
        record.*field = "changed";
    EXPECT_TRUE(this->Update(record));
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(KindOfAPlantTest, UpdateAndDeleteOfARecordThatIsGoneChangeNothing)
{
    TypeParam record = this->New();
    ASSERT_TRUE(Kind<TypeParam>::Delete(this->Repository, record));
    const std::string before = this->Content();
    EXPECT_TRUE(this->Update(record));
    const bool isCareEntry = std::is_same_v<TypeParam, PlantCareEntry>; // whose event is looked up first
    EXPECT_EQ(Kind<TypeParam>::Delete(this->Repository, record), !isCareEntry);
    EXPECT_EQ(this->Content(), before);
}

TYPED_TEST(KindOfAPlantTest, DeleteTakesThatRecordOnly)
{
    this->New();
    const TypeParam second = this->New();
    this->New();
    EXPECT_TRUE(Kind<TypeParam>::Delete(this->Repository, second));
    EXPECT_EQ(this->ListedIDs(), (std::vector<std::int64_t>{3, 1}));
}

TYPED_TEST(KindOfAPlantTest, RowNumbersOfEverySizeAreKept)
{
    for (const std::int64_t id : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{1} << 32,
                                  std::numeric_limits<std::int64_t>::max()})
    {
        TypeParam record = this->New();
        this->RunSQL("UPDATE "s + Kind<TypeParam>::Table + " SET ID=" + std::to_string(id) + ';');
        record.ID = id;
        EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{record});
        record.*Kind<TypeParam>::Date = "2024-06-01";
        EXPECT_TRUE(this->Update(record));
        EXPECT_EQ(this->ListOf(this->Basil.UUID), std::vector{record});
        EXPECT_TRUE(Kind<TypeParam>::Delete(this->Repository, record));
        EXPECT_TRUE(this->ListOf(this->Basil.UUID).empty());
    }
}

// ---- The records that an operation on a closed database was given

class ClosedTest : public JournalTest
{
  protected:
    ClosedTest() : Sample(StoreSampleRecords(Repository)) { Database.Close(); }

    SampleRecords Sample;
};

TEST_F(ClosedTest, AListIsEmptied)
{
    std::vector<Plant> plants(3);
    EXPECT_FALSE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());
    std::vector<Strain> strains(3);
    EXPECT_FALSE(Repository.ListStrains(strains));
    EXPECT_TRUE(strains.empty());
}

TEST_F(ClosedTest, APlantAndAStrainThatWereAskedForAreLeftAlone)
{
    Plant plant = Sample.Clone;
    EXPECT_FALSE(Repository.GetPlant(Sample.Mother.UUID, plant));
    EXPECT_EQ(plant, Sample.Clone);
    Strain strain = Sample.Unused;
    EXPECT_FALSE(Repository.GetStrain(Sample.Kind.ID, strain));
    EXPECT_EQ(strain, Sample.Unused);
}

TEST_F(ClosedTest, ASummaryAndAHarvestRecordAreEmptied)
{
    StrainSummary summary;
    summary.StrainName = "Stale";
    summary.Veg = 3;
    EXPECT_FALSE(Repository.GetStrainSummary(Sample.Kind.ID, summary));
    EXPECT_EQ(summary, StrainSummary());
    HarvestRecord record = Sample.Harvest;
    EXPECT_FALSE(Repository.GetHarvestRecord(Sample.Mother.UUID, record));
    EXPECT_EQ(record, HarvestRecord());
}

TEST_F(ClosedTest, NewRecordsGetNoNumbers)
{
    const auto expectUnchanged = [&](const auto& given, const auto& create)
    {
        auto record = given;
        EXPECT_FALSE((Repository.*create)(record));
        EXPECT_EQ(record, given);
    };
    expectUnchanged(Sample.Mother, &PlantRepository::CreatePlant);
    expectUnchanged(Sample.Kind, &PlantRepository::CreateStrain);
    expectUnchanged(Sample.Event, &PlantRepository::CreatePlantEvent);
    expectUnchanged(Sample.Care, &PlantRepository::CreatePlantCareEntry);
    expectUnchanged(Sample.Unlinked, &PlantRepository::UpdatePlantCareEntry);
    expectUnchanged(Sample.Photo, &PlantRepository::CreatePlantPhoto);
    expectUnchanged(Sample.Observation, &PlantRepository::CreatePlantHealthObservation);
    expectUnchanged(Sample.Entry, &PlantRepository::CreatePlantJournalEntry);
}

TEST_F(ClosedTest, WhatIsFilledInBeforehandStays)
{
    Plant plant;
    EXPECT_FALSE(Repository.CreatePlant(plant));
    EXPECT_EQ(plant.UUID.size(), 36U);

    Plant copy;
    EXPECT_FALSE(Repository.DuplicatePlant(Sample.Clone, copy));
    EXPECT_EQ(copy.Name, "Clone copy");
    EXPECT_EQ(copy.UUID.size(), 36U);
    EXPECT_EQ(copy.ID, 0);

    PlantPhoto photo = Sample.Photo;
    photo.UUID.clear();
    EXPECT_FALSE(Repository.CreatePlantPhoto(photo));
    EXPECT_EQ(photo.UUID.size(), 36U);

    PlantHealthObservation observation = Sample.Observation;
    observation.Severity = 9;
    EXPECT_FALSE(Repository.CreatePlantHealthObservation(observation));
    EXPECT_EQ(observation.Severity, 5);

    plant = Sample.Clone;
    HarvestRecord record;
    EXPECT_FALSE(Repository.SaveHarvestRecord(plant, record));
    EXPECT_EQ(plant, Sample.Clone);
    EXPECT_EQ(record.PlantUUID, Sample.Clone.UUID);
    EXPECT_EQ(record.HarvestDate.size(), 10U);
    EXPECT_EQ(record.TimelineEventID, 0);
    EXPECT_EQ(record.ID, 0);
}

} // namespace

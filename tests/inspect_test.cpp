#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/old_files.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <optional>
#include <ostream>

#include <sqlite3.h>
#include <sys/stat.h>

using namespace support;

std::ostream& operator<<(std::ostream& out, PlantFileKind kind); // found by GoogleTest

std::ostream& operator<<(std::ostream& out, PlantFileKind kind)
{
    return out << PlantFileKindName(kind);
}

namespace
{

using namespace std::string_literals;

PlantFileInspection Inspected(const std::string& path)
{
    PlantFileInspection found;
    found.Steps = {"stale"};
    const PlantFileResult result = InspectPlantDatabase(path, found);
    EXPECT_TRUE(result) << result.Error;
    return found;
}

PlantFileKind KindOf(const std::string& path)
{
    return Inspected(path).Kind;
}

std::string ErrorOf(const std::string& path)
{
    PlantFileInspection found;
    found.Kind = PlantFileKind::Damaged;
    found.Steps = {"stale"};
    const PlantFileResult result = InspectPlantDatabase(path, found);
    EXPECT_FALSE(result);
    EXPECT_EQ(found.Kind, PlantFileKind::Missing);
    EXPECT_TRUE(found.Steps.empty());
    return result.Error;
}

void Write(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

class InspectTest : public JournalTest
{
  protected:
    InspectTest() { Database.Close(); }

    // What is found in the journal after these statements, with nothing changed and nothing left beside it.
    PlantFileInspection After(const std::string& sql)
    {
        PlainConnection(Path).RunSQL(sql);
        const auto before = Scratch.Files();
        PlantFileInspection found = Inspected(Path);
        EXPECT_TRUE(Scratch.Files() == before) << sql;
        return found;
    }
    // Sets a column of every row.
    void Set(const std::string& table, const std::string& column, const std::string& text) const
    {
        PlainConnection(Path).RunSQL("UPDATE " + table + " SET " + column + "='" + text + "';");
    }
    std::vector<std::string> ReasonsAfter(const std::string& sql)
    {
        const PlantFileInspection found = After(sql);
        EXPECT_EQ(found.Kind, PlantFileKind::Foreign) << sql;
        EXPECT_TRUE(found.Steps.empty() && found.Tables.empty() && found.FirstDate.empty());
        return found.Reasons;
    }
};

using Texts = std::vector<std::string>;

TEST_F(InspectTest, NothingIsMissingAndStaysAway)
{
    EXPECT_EQ(KindOf(Scratch.File("no.db")), PlantFileKind::Missing);
    EXPECT_EQ(KindOf(Scratch.File("no/such/place.db")), PlantFileKind::Missing);
    EXPECT_EQ(Scratch.Files().size(), 1U);
}

TEST_F(InspectTest, AFileWithoutAByteAndADatabaseWithoutATableAreEmpty)
{
    Write(Scratch.File("empty.db"), "");
    EXPECT_EQ(KindOf(Scratch.File("empty.db")), PlantFileKind::Empty);
    PlainConnection(Scratch.File("bare.db")).RunSQL("CREATE TABLE T(X); DROP TABLE T;");
    const PlantFileInspection bare = Inspected(Scratch.File("bare.db"));
    EXPECT_EQ(bare.Kind, PlantFileKind::Empty);
    EXPECT_GT(bare.Bytes, 0);
    EXPECT_TRUE(bare.Steps.empty() && bare.Reasons.empty() && bare.Tables.empty());
}

TEST_F(InspectTest, ACurrentJournalIsToldWithItsSizeItsRowsAndItsDates)
{
    OpenJournal();
    const Plant basil = NewPlant("Basil", "Genovese");
    Plant mint = NewPlant("Mint");
    mint.CloneDate = "2023-04-05";
    ASSERT_TRUE(Repository.UpdatePlant(mint));
    PlantCareEntry care;
    care.PlantUUID = basil.UUID;
    care.CareDate = "2023-12-01";
    ASSERT_TRUE(Repository.CreatePlantCareEntry(care));
    PlantJournalEntry entry;
    entry.PlantUUID = basil.UUID;
    entry.EntryDate = "2024-06-07";
    ASSERT_TRUE(Repository.CreatePlantJournalEntry(entry));
    Database.Close();

    const PlantFileInspection found = After("SELECT 1;");
    EXPECT_EQ(found.Kind, PlantFileKind::Current);
    EXPECT_TRUE(found.Steps.empty());
    EXPECT_TRUE(found.Reasons.empty());
    EXPECT_EQ(found.Bytes, static_cast<std::int64_t>(std::filesystem::file_size(Path)));
    std::string tables;
    for (const PlantFileTable& table : found.Tables)
        tables += table.Name + ' ' + std::to_string(table.Rows) + '\n';
    EXPECT_EQ(tables, "SchemaMeta 0\nStrains 1\nPlants 2\nPlantEvents 1\nPlantCareEntries 1\nHarvestRecords 0\n"
                      "PlantPhotos 0\nPlantHealthObservations 0\nPlantJournalEntries 1\n");
    EXPECT_EQ(found.FirstDate, "2023-04-05");
    EXPECT_EQ(found.LastDate, "2024-06-07");
}

TEST_F(InspectTest, EveryDateColumnCounts)
{
    const std::map<std::string, Texts> columns = {
        {"Plants", {"SeedDate", "CloneDate", "TransplantDate", "FlipDate", "HarvestDate"}},
        {"PlantEvents", {"EventDate"}},
        {"PlantCareEntries", {"CareDate"}},
        {"HarvestRecords", {"HarvestDate"}},
        {"PlantPhotos", {"PhotoDate"}},
        {"PlantHealthObservations", {"ObservationDate"}},
        {"PlantJournalEntries", {"EntryDate"}},
    };
    OpenJournal();
    StoreSampleRecords(Repository);
    Database.Close();
    int number = 1000;
    for (const auto& [table, names] : columns)
        for (const std::string& column : names)
        {
            const std::string first = std::to_string(number);
            const std::string last = std::to_string(9000 - number++);
            Set(table, column, first);
            EXPECT_EQ(Inspected(Path).FirstDate, first) << column;
            Set(table, column, last);
            EXPECT_EQ(Inspected(Path).LastDate, last) << column;
            Set(table, column, "");
        }
    const PlantFileInspection found = After("SELECT 1;");
    EXPECT_EQ(found.FirstDate, "");
    EXPECT_EQ(found.LastDate, "");
}

// ---- Older forms

// A statement of opening as the step it is.
std::string StepOf(const std::string& sql)
{
    const auto word = [&](std::size_t number)
    {
        std::istringstream words(sql);
        std::string text;
        while (words >> text && number-- > 0)
            ;
        return text;
    };
    if (sql.starts_with("CREATE TABLE"))
        return "create table " + word(5);
    if (sql.starts_with("CREATE INDEX"))
        return "create index " + word(5);
    if (sql.starts_with("ALTER TABLE"))
        return "add column " + word(2) + '.' + word(5);
    return "rebuild table PlantEvents"; // its COMMIT
}

TEST_F(InspectTest, TheStepsOfEveryOlderFormAreTheStatementsThatOpeningRunsAndThatChangeSomething)
{
    const std::string copy = Scratch.File("copy.db");
    for (const OldFile& old : OldFiles())
    {
        SCOPED_TRACE(old.Name);
        WriteOldFile(Path, old);
        const Statements statements = StatementsOf([&] { OpenJournal(); });
        Database.Close();

        // The same statements again, with a look after each that stands alone: what was taken is no longer announced.
        WriteOldFile(copy, old);
        const PlantFileInspection first = Inspected(copy);
        EXPECT_EQ(first.Kind, HasCurrentSchema(old) ? PlantFileKind::Current : PlantFileKind::Older);
        std::size_t taken = 0;
        const auto expectTheRest = [&]
        {
            const PlantFileInspection now = Inspected(copy);
            EXPECT_EQ(now.Steps, Texts(first.Steps.begin() + static_cast<std::ptrdiff_t>(taken), first.Steps.end()));
            EXPECT_EQ(now.Kind, now.Steps.empty() ? PlantFileKind::Current : PlantFileKind::Older);
        };
        std::string version;
        const std::optional<PlainConnection> file(copy);
        for (const std::string& sql : statements)
        {
            version = file->Value("PRAGMA schema_version;");
            const bool inTransaction = sqlite3_get_autocommit(file->NativeHandle()) == 0;
            file->RunSQL(sql);
            if (sqlite3_get_autocommit(file->NativeHandle()) == 0)
                continue;
            if (inTransaction || version != file->Value("PRAGMA schema_version;"))
            {
                ASSERT_LT(taken, first.Steps.size()) << sql;
                EXPECT_EQ(first.Steps[taken++], StepOf(sql));
            }
            expectTheRest();
        }
        EXPECT_EQ(taken, first.Steps.size());
    }
}

TEST_F(InspectTest, AnInterruptedFirstOpeningIsAnOlderJournalAtEveryStatement)
{
    const Statements statements = OpeningStatements();
    const std::string path = Scratch.File("begun.db");
    const PlainConnection file(path);
    Texts rest;
    for (const std::string& sql : statements)
        if (sql.starts_with("CREATE"))
            rest.push_back(StepOf(sql));
    for (const std::string& sql : statements)
    {
        file.RunSQL(sql);
        if (!sql.starts_with("CREATE"))
            continue;
        rest.erase(rest.begin());
        EXPECT_EQ(Inspected(path).Steps, rest);
        EXPECT_EQ(KindOf(path), rest.empty() ? PlantFileKind::Current : PlantFileKind::Older);
    }
}

TEST_F(InspectTest, AnOlderJournalIsToldWithItsRowsAndItsDatesAndNotChanged)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Path, old);
        const PlantFileInspection found = After("SELECT 1;");
        EXPECT_EQ(found.FirstDate, old.Name < "04" ? "2019-03-01" : "2019-02-03") << old; // when plants had seed dates
        EXPECT_EQ(found.LastDate, old.Name == "10_unchecked" ? "2019-05-10" : "2019-05-09") << old;
        const PlainConnection file(Path);
        for (const PlantFileTable& table : found.Tables)
            EXPECT_EQ(std::to_string(table.Rows), file.Value("SELECT COUNT(*) FROM " + table.Name + ';')) << table.Name;
        EXPECT_EQ(std::to_string(found.Tables.size()), file.Value("SELECT COUNT(*) FROM sqlite_master WHERE "
                                                                  "type='table';"));
    }
}

// ---- Foreign files

TEST_F(InspectTest, WhatIsNotOursIsForeign)
{
    EXPECT_EQ(ReasonsAfter("CREATE TABLE \"Bees\n\"(X);"), Texts{"The table \"Bees?\" is not ours."});
    EXPECT_EQ(ReasonsAfter("DROP TABLE \"Bees\n\"; CREATE INDEX Quick ON Plants(Name);"),
              Texts{"The index \"Quick\" is not ours."});
    EXPECT_EQ(ReasonsAfter("DROP INDEX Quick; CREATE VIEW Seen AS SELECT 1;"), Texts{"The view \"Seen\" is not ours."});
    EXPECT_EQ(ReasonsAfter("DROP VIEW Seen; CREATE TRIGGER Late AFTER INSERT ON Plants BEGIN SELECT 1; END;"),
              Texts{"The trigger \"Late\" is not ours."});
    EXPECT_EQ(ReasonsAfter("DROP TRIGGER Late; ALTER TABLE Plants ADD COLUMN Colour;"),
              Texts{"The column \"Colour\" of Plants is not ours."});
    EXPECT_EQ(ReasonsAfter("ALTER TABLE Plants DROP COLUMN Colour; ALTER TABLE Plants DROP COLUMN Tent;"),
              Texts{"The table Plants has no column Tent."});
}

TEST_F(InspectTest, AllReasonsAreGiven)
{
    EXPECT_EQ(ReasonsAfter("CREATE TABLE Bees(X); CREATE TABLE Hives(X);").size(), 2U);
}

TEST_F(InspectTest, AnotherDatabaseIsForeign)
{
    const std::string other = Scratch.File("other.db");
    PlainConnection(other).RunSQL("CREATE TABLE Bees(X); INSERT INTO Bees VALUES(1);");
    const PlantFileInspection found = Inspected(other);
    EXPECT_EQ(found.Kind, PlantFileKind::Foreign);
    EXPECT_EQ(found.Reasons, Texts{"The table \"Bees\" is not ours."});
}

TEST_F(InspectTest, AnotherThingInTheNameOfATableIsForeignAndNotRead)
{
    EXPECT_EQ(
        ReasonsAfter("DROP TABLE SchemaMeta; CREATE VIEW SchemaMeta AS WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL "
                     "SELECT X FROM N) SELECT X AS Key,X AS Value FROM N;"),
        Texts{"The view \"SchemaMeta\" is not ours."});
    const Texts reasons = ReasonsAfter("DROP VIEW SchemaMeta; CREATE VIRTUAL TABLE SchemaMeta USING fts4(Key,Value);");
    EXPECT_EQ(reasons.front(), "The virtual table \"SchemaMeta\" is not ours.");
}

TEST_F(InspectTest, AnIndexOfOurNameOnAnotherTableIsForeign)
{
    EXPECT_EQ(ReasonsAfter("DROP INDEX PlantsByStrain; CREATE INDEX PlantsByStrain ON Strains(Notes);"),
              Texts{"The index \"PlantsByStrain\" is not ours."});
}

TEST_F(InspectTest, WhatSQLiteKeepsForItselfIsNotForeign)
{
    EXPECT_EQ(After("INSERT INTO Strains(Name) VALUES('Roma'); ANALYZE;").Kind, PlantFileKind::Current);
}

TEST_F(InspectTest, AnEventTypeThatAnEventTableOfTodayListsAndWeDoNotKnowIsForeign)
{
    OpenJournal();
    ReplaceInDefinitions("'Defoliated'", "'Defoliated','Repotted','it''s'");
    Database.Close();
    EXPECT_EQ(ReasonsAfter("SELECT 1;"),
              (Texts{"The event type \"Repotted\" is not ours.", "The event type \"it\" is not ours.",
                     "The event type \"s\" is not ours."}));
}

TEST_F(InspectTest, AnEventTypeInARowThatWeDoNotKnowIsForeign)
{
    EXPECT_EQ(ReasonsAfter("PRAGMA ignore_check_constraints=ON; INSERT INTO PlantEvents(PlantUUID,EventType) "
                           "VALUES('p','Repotted'),('p','Repotted'),('p','water'),('p','Water');"),
              (Texts{"The event type \"Repotted\" is not ours.", "The event type \"water\" is not ours."}));
}

TEST_F(InspectTest, AnUnknownEventTypeInAnOldEventTableIsNotForeignSinceOpeningMakesANoteOfIt)
{
    const auto form = std::find_if(OldFiles().begin(), OldFiles().end(),
                                   [](const OldFile& file) { return file.Name == "10_unchecked"; });
    WriteOldFile(Path, *form);
    EXPECT_EQ(After("PRAGMA ignore_check_constraints=ON; UPDATE PlantEvents SET EventType='Repotted';").Kind,
              PlantFileKind::Older);
}

TEST_F(InspectTest, AWriteAheadLogIsForeignAndLeftAlone)
{
    const Texts reasons = {"The file keeps a write-ahead log, which no journal does."};
    EXPECT_EQ(ReasonsAfter("PRAGMA journal_mode=WAL;"), reasons);
    PlainConnection(Path).RunSQL("PRAGMA journal_mode=DELETE;");
    EXPECT_EQ(KindOf(Path), PlantFileKind::Current);
    Write(Path + "-wal", "a log");
    const auto before = Scratch.Files();
    EXPECT_EQ(Inspected(Path).Reasons, reasons);
    EXPECT_TRUE(Scratch.Files() == before);
}

// ---- Files that cannot be read

TEST_F(InspectTest, SomethingElseIsNotADatabase)
{
    for (const std::size_t size : {2U, 15U, 100U, 511U, 512U, 5000U})
    {
        Write(Path, std::string(size, 'x'));
        const PlantFileInspection found = After("");
        EXPECT_EQ(found.Kind, PlantFileKind::NotADatabase) << size;
        EXPECT_EQ(found.Bytes, static_cast<std::int64_t>(size));
    }
}

TEST_F(InspectTest, AFileCutShortIsDamaged)
{
    std::filesystem::resize_file(Path, std::filesystem::file_size(Path) / 2);
    const auto before = Scratch.Files();
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading the schema: database disk image is malformed."});
    EXPECT_EQ(found.Bytes, static_cast<std::int64_t>(std::filesystem::file_size(Path)));
    EXPECT_TRUE(found.Tables.empty());
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(InspectTest, ATableThatCannotBeReadIsDamaged)
{
    PlainConnection(Path).RunSQL("INSERT INTO Strains(Name) VALUES('Roma');");
    const int page = std::stoi(PlainConnection(Path).Value("SELECT rootpage FROM sqlite_master WHERE name='Strains';"));
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary).seekp((page - 1) * 4096L).put('\x7F');
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading Strains: database disk image is malformed."});
}

TEST_F(InspectTest, ASchemaThatSQLiteDoesNotUnderstandIsDamaged)
{
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary).seekp(47).put('\x09'); // its format
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading the schema: unsupported file format."});
}

// A tree whose pages each lead 70 times to the next: to read it is to visit the last one 70^8 times.
void GrowWithoutEnd(const std::string& path)
{
    constexpr int pageSize = 512;
    constexpr int links = 70;
    {
        const PlainConnection file(path);
        file.RunSQL("PRAGMA page_size=512; VACUUM; WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT "
                    "40) INSERT INTO SchemaMeta SELECT X,printf('%.400c','x') FROM N;");
    }
    std::string bytes = FileBytes(path);
    const int root = std::stoi(PlainConnection(path).Value("SELECT rootpage FROM sqlite_master WHERE "
                                                           "name='SchemaMeta';"));
    std::vector<int> chain = {root};
    for (int page = static_cast<int>(bytes.size()) / pageSize; chain.size() < 9; --page)
        if (bytes[static_cast<std::size_t>(page - 1) * pageSize] == '\x0D') // a leaf of the table
            chain.push_back(page);
    for (std::size_t level = 0; level + 1 < chain.size(); ++level)
    {
        const auto number = [&](int value, int count)
        {
            std::string text;
            while (count-- > 0)
                text += static_cast<char>(value >> (8 * count));
            return text;
        };
        std::string page = "\x05" + number(0, 2) + number(links, 2) + number(pageSize - 5 * links, 2) + number(0, 1) +
                           number(chain[level + 1], 4);
        for (int link = 0; link < links; ++link)
            page += number(pageSize - 5 * (link + 1), 2);
        page.resize(static_cast<std::size_t>(pageSize - 5 * links));
        for (int link = 0; link < links; ++link)
            page += number(chain[level + 1], 4) + number(1, 1);
        bytes.replace(static_cast<std::size_t>(chain[level] - 1) * pageSize, pageSize, page);
    }
    Write(path, bytes);
}

TEST_F(InspectTest, ATreeWithoutEndIsGivenUp)
{
    GrowWithoutEnd(Path);
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Damaged);
    EXPECT_EQ(found.Reasons, Texts{"reading SchemaMeta: it takes far longer than a sound file of its size."});
    std::vector<PlantFileFinding> findings;
    EXPECT_EQ(CheckPlantDatabase(Path, findings).Error, "");
    EXPECT_FALSE(findings.empty());
}

TEST_F(InspectTest, AFileThatAnotherHoldsIsLockedAfterTwoAndAHalfSeconds)
{
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(Path));
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    const auto begin = std::chrono::steady_clock::now();
    const PlantFileInspection found = Inspected(Path);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2400));
    EXPECT_EQ(found.Kind, PlantFileKind::Locked);
    EXPECT_EQ(found.Bytes, bytes);
}

TEST_F(InspectTest, AFileThatAnotherWritesIsReadAsItWas)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE; INSERT INTO Strains(Name) VALUES('Roma');");
    const PlantFileInspection found = Inspected(Path);
    EXPECT_EQ(found.Kind, PlantFileKind::Current);
    EXPECT_EQ(found.Tables.at(1).Rows, 0);
    other.RunSQL("COMMIT;");
    EXPECT_EQ(Inspected(Path).Tables.at(1).Rows, 1);
}

TEST_F(InspectTest, AnInterruptedWriteIsToldAndLeftToTheNextOpening)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT "
                      "100) INSERT INTO Strains(Name,Notes) SELECT X,printf('%.1000c','x') FROM N;");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    const auto before = Scratch.Files();
    const PlantFileInspection found = Inspected(torn);
    EXPECT_EQ(found.Kind, PlantFileKind::Interrupted);
    EXPECT_TRUE(found.Steps.empty() && found.Reasons.empty() && found.Tables.empty());
    EXPECT_GT(found.Bytes, 100'000);
    EXPECT_TRUE(Scratch.Files() == before);
    std::vector<PlantFileFinding> findings;
    EXPECT_EQ(CheckPlantDatabase(torn, findings).Error,
              torn + ": reading the schema: its last writer died amid a write, which the next opening takes back");
    EXPECT_TRUE(Scratch.Files() == before);
    ASSERT_TRUE(Database.Open(torn));
    Database.Close();
    EXPECT_EQ(KindOf(torn), PlantFileKind::Current);
}

// ---- Paths

TEST_F(InspectTest, WhatIsNoFileIsAnError)
{
    EXPECT_EQ(ErrorOf(Scratch.File("")), Scratch.File("") + ": finding it: it is no regular file");
    const std::string pipe = Scratch.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(ErrorOf(pipe), pipe + ": finding it: it is no regular file");
    std::filesystem::remove(pipe);
    const std::string circle = Scratch.File("circle");
    std::filesystem::create_symlink(circle, circle);
    EXPECT_EQ(ErrorOf(circle), circle + ": finding it: Too many levels of symbolic links");
    std::filesystem::remove(circle);
}

TEST_F(InspectTest, APathThatNamesNoFileIsAnError)
{
    EXPECT_EQ(ErrorOf(""), ": finding it: a path that is empty or holds a zero byte names no file");
    EXPECT_EQ(ErrorOf(Path + "\0x"s),
              Path + "\0x: finding it: a path that is empty or holds a zero byte names no file"s);
}

TEST_F(InspectTest, APathIsNothingButAPath)
{
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(Path).parent_path());
    for (const char* name : {":memory:", "file:journal.db", "file::memory:", "file:journal.db?mode=memory", "ä %41?#"})
    {
        EXPECT_EQ(KindOf(name), PlantFileKind::Missing) << name;
        std::filesystem::copy_file("journal.db", name);
        EXPECT_EQ(KindOf(name), PlantFileKind::Current) << name;
    }
    EXPECT_EQ(KindOf("journal.db"), PlantFileKind::Current);
    std::filesystem::current_path(here);
}

TEST_F(InspectTest, AKindHasItsName)
{
    const Texts names = {"Missing", "Empty",        "Current", "Older", "Interrupted",
                         "Foreign", "NotADatabase", "Damaged", "Locked"};
    for (std::size_t number = 0; number < names.size(); ++number)
        EXPECT_EQ(PlantFileKindName(static_cast<PlantFileKind>(number)), names[number]);
    EXPECT_EQ(PlantFileKindName(PlantFileKind::Locked), "Locked"s);
    EXPECT_EQ(PlantFileKindName(static_cast<PlantFileKind>(9)), "Missing"s);
    EXPECT_EQ(PlantFileKindName(static_cast<PlantFileKind>(-1)), "Missing"s);
}

// ---- Failures

TEST_F(InspectTest, AFailingDiskIsAnErrorOrDamageAndChangesNothing)
{
    OpenJournal();
    StoreSampleRecords(Repository);
    Database.Close();
    const auto before = Scratch.Files();
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Size, DiskCall::Lock, DiskCall::Access})
        for (int number = 1;; ++number)
        {
            const DiskFailure failure({call, DiskError::IO, false, number});
            PlantFileInspection found;
            std::vector<PlantFileFinding> findings;
            const PlantFileResult inspected = InspectPlantDatabase(Path, found);
            const bool happened = failure.Happened();
            if (!inspected)
            {
                EXPECT_TRUE(inspected.Error.starts_with(Path + ": ")) << inspected.Error;
                EXPECT_TRUE(found.Tables.empty());
            }
            else
                EXPECT_EQ(found.Kind, PlantFileKind::Current) << call << ' ' << number;
            EXPECT_TRUE(Scratch.Files() == before) << call << ' ' << number;
            if (!happened)
                break;
            EXPECT_LT(number, 1000);
        }
    EXPECT_EQ(KindOf(Path), PlantFileKind::Current);
}

TEST_F(InspectTest, WithoutMemoryThereIsAnErrorOrAnException)
{
    OpenJournal();
    StoreSampleRecords(Repository);
    Database.Close();
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1;; number += 1 + number / 50)
        {
            PlantFileInspection found;
            bool happened = false;
            PlantFileResult result;
            try
            {
                const AllocationFailure failure(allocator, number);
                result = InspectPlantDatabase(Path, found);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                happened = true;
            }
            EXPECT_TRUE(found.Kind == PlantFileKind::Current || found.Kind == PlantFileKind::Missing) << number;
            if (!happened)
            {
                EXPECT_TRUE(result);
                EXPECT_EQ(found.Kind, PlantFileKind::Current);
                break;
            }
        }
}

} // namespace

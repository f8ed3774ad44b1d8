#include "plant_file.h"

#include "support/inspect_test.h"
#include "support/sample_records.h"
#include "testing/old_files.h"
#include "testing/schema_statements.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include <sqlite3.h>

using namespace support;

namespace
{

using namespace std::string_literals;

using Texts = std::vector<std::string>;

std::string InspectionError(const std::string& path)
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

TEST_F(InspectTest, APathWithoutAFileIsMissingAndStaysSo)
{
    EXPECT_EQ(InspectedKind(Scratch.File("no.db")), PlantFileKind::Missing);
    EXPECT_EQ(InspectedKind(Scratch.File("no/such/place.db")), PlantFileKind::Missing);
    EXPECT_EQ(Scratch.Files().size(), 1U);
}

TEST_F(InspectTest, AFileOfZeroBytesAndADatabaseWithoutTablesAreEmpty)
{
    std::ofstream(Scratch.File("empty.db")) << "";
    EXPECT_EQ(InspectedKind(Scratch.File("empty.db")), PlantFileKind::Empty);
    PlainConnection(Scratch.File("bare.db")).RunSQL("CREATE TABLE T(X); DROP TABLE T;");
    const PlantFileInspection bare = Inspected(Scratch.File("bare.db"));
    EXPECT_EQ(bare.Kind, PlantFileKind::Empty);
    EXPECT_GT(bare.Bytes, 0);
    EXPECT_TRUE(bare.Steps.empty() && bare.Reasons.empty() && bare.Tables.empty());
}

TEST_F(InspectTest, TheSizeRowsAndDatesOfACurrentJournalAreFilledIn)
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

TEST_F(InspectTest, TheDatesComeFromEveryDateColumn)
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
    const auto setAll = [&](const std::string& table, const std::string& column, const std::string& text)
    { PlainConnection(Path).RunSQL("UPDATE " + table + " SET " + column + "='" + text + "';"); };
    int number = 1000;
    for (const auto& [table, names] : columns)
        for (const std::string& column : names)
        {
            const std::string first = std::to_string(number);
            const std::string last = std::to_string(9000 - number++);
            setAll(table, column, first);
            EXPECT_EQ(Inspected(Path).FirstDate, first) << column;
            setAll(table, column, last);
            EXPECT_EQ(Inspected(Path).LastDate, last) << column;
            setAll(table, column, "");
        }
    const PlantFileInspection found = After("SELECT 1;");
    EXPECT_EQ(found.FirstDate, "");
    EXPECT_EQ(found.LastDate, "");
}

// ---- Earlier schemas

// The step that a statement of the migration carries out.
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

TEST_F(InspectTest, TheStepsAreTheStatementsOfTheMigrationThatChangeSomething)
{
    const std::string copy = Scratch.File("copy.db");
    for (const OldFile& old : OldFiles())
    {
        SCOPED_TRACE(old.Name);
        WriteOldFile(Path, old);
        const Statements statements = StatementsOf([&] { OpenJournal(); });
        Database.Close();

        // The same statements again, with an inspection after each one outside a transaction: the steps become fewer.
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

TEST_F(InspectTest, AnUnfinishedFirstOpenIsAnOlderJournalAtEveryStatement)
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
        EXPECT_EQ(InspectedKind(path), rest.empty() ? PlantFileKind::Current : PlantFileKind::Older);
    }
}

TEST_F(InspectTest, TheRowsAndDatesOfAnOlderJournalAreFilledIn)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Path, old);
        const PlantFileInspection found = After("SELECT 1;");
        EXPECT_EQ(found.FirstDate, old.Name < "04" ? "2019-03-01" : "2019-02-03")
            << old; // from 04 on, plants have seed dates
        EXPECT_EQ(found.LastDate, old.Name == "10_unchecked" ? "2019-05-10" : "2019-05-09") << old;
        const PlainConnection file(Path);
        for (const PlantFileTable& table : found.Tables)
            EXPECT_EQ(std::to_string(table.Rows), file.Value("SELECT COUNT(*) FROM " + table.Name + ';')) << table.Name;
        EXPECT_EQ(std::to_string(found.Tables.size()), file.Value("SELECT COUNT(*) FROM sqlite_master WHERE "
                                                                  "type='table';"));
    }
}

// ---- Paths

TEST_F(InspectTest, ADirectoryIsAnError)
{
    EXPECT_EQ(InspectionError(Scratch.File("")), Scratch.File("") + ": not a regular file");
}

TEST_F(InspectTest, APathThatNamesNoFileIsAnError)
{
    EXPECT_EQ(InspectionError(""), ": the path is empty or contains a zero byte");
    EXPECT_EQ(InspectionError(Path + "\0x"s), Path + "\0x: the path is empty or contains a zero byte"s);
}

TEST_F(InspectTest, APathHasNoOtherMeaningToSQLite)
{
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(Path).parent_path());
    for (const char* name : {":memory:", "file:journal.db", "file::memory:", "file:journal.db?mode=memory", "ä %41?#"})
    {
        EXPECT_EQ(InspectedKind(name), PlantFileKind::Missing) << name;
        std::filesystem::copy_file("journal.db", name);
        EXPECT_EQ(InspectedKind(name), PlantFileKind::Current) << name;
    }
    EXPECT_EQ(InspectedKind("journal.db"), PlantFileKind::Current);
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

} // namespace

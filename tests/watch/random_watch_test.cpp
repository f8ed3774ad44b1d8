// Random operations, statements and transactions. What a watcher reports is compared with what two other ways find: the
// rows that differ in the file, and a log that triggers write.
#include "support/random_changes.h"
#include "support/test_form.h"
#include "watch/watch_test.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <utility>

using namespace support;

namespace
{

struct FamilyTable
{
    Family Kind;
    std::string Name;
    std::string Plant; // the expression of a row's plant
};

const std::vector<FamilyTable> FamilyTables = {
    {Family::Plant, "Plants", "UUID"},
    {Family::Strain, "Strains", ""},
    {Family::Event, "PlantEvents", "PlantUUID"},
    {Family::CareEntry, "PlantCareEntries", "PlantUUID"},
    {Family::HarvestRecord, "HarvestRecords", "PlantUUID"},
    {Family::Photo, "PlantPhotos", "PlantUUID"},
    {Family::HealthObservation, "PlantHealthObservations", "PlantUUID"},
    {Family::JournalEntry, "PlantJournalEntries", "PlantUUID"},
};

struct Found
{
    std::set<Family> Families;
    std::set<std::string> Plants;
    bool AnyPlant = false;
};

// The rows of every table, with their plants.
using Snapshot = std::map<Family, std::set<Row>>;

Snapshot TakeSnapshot(const std::string& path)
{
    const PlainConnection file(path);
    Snapshot snapshot;
    for (const FamilyTable& table : FamilyTables)
        for (Row& row :
             file.QueryRows("SELECT " + (table.Plant.empty() ? "''" : table.Plant) + ",* FROM " + table.Name + ";"))
            snapshot[table.Kind].insert(std::move(row));
    return snapshot;
}

Found Difference(Snapshot& before, Snapshot& after)
{
    Found found;
    for (const FamilyTable& table : FamilyTables)
    {
        std::vector<Row> rows;
        std::set_symmetric_difference(before[table.Kind].begin(), before[table.Kind].end(), after[table.Kind].begin(),
                                      after[table.Kind].end(), std::back_inserter(rows));
        for (const Row& row : rows)
        {
            found.Families.insert(table.Kind);
            if (!row[0].empty())
                found.Plants.insert(row[0]);
        }
    }
    return found;
}

class RandomWatchTest : public WatchTest
{
  protected:
    // Writes each row that changes into a temporary table, in the same transaction.
    void BeginLog()
    {
        RunSQL("PRAGMA recursive_triggers=ON; CREATE TEMP TABLE ChangeLog(Family INTEGER, Plant TEXT);");
        for (const FamilyTable& table : FamilyTables)
            for (const auto& [operation, rows] : {std::pair<std::string, std::vector<std::string>>{"INSERT", {"NEW"}},
                                                  {"UPDATE", {"OLD", "NEW"}},
                                                  {"DELETE", {"OLD"}}})
            {
                std::string trigger = "CREATE TEMP TRIGGER " + table.Name + operation + " AFTER " + operation +
                                      " ON main." + table.Name + " BEGIN ";
                for (const std::string& row : rows)
                    trigger += "INSERT INTO ChangeLog VALUES(" + std::to_string(static_cast<int>(table.Kind)) + "," +
                               (table.Plant.empty() ? "''" : row + "." + table.Plant) + ");";
                RunSQL(trigger + " END;");
            }
        Logged = true;
    }

    void Run(const std::string& sql)
    {
        const bool inTransaction = InTransaction();
        if (sqlite3_exec(Database.NativeHandle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
            Inexact = Inexact || inTransaction;
    }

    bool InTransaction() const { return sqlite3_get_autocommit(Database.NativeHandle()) == 0; }

    std::string OneOf(const std::vector<std::string>& texts)
    {
        return texts[static_cast<std::size_t>(Random() % texts.size())];
    }

    std::string RandomStatement()
    {
        const std::string somePlant = "(SELECT UUID FROM Plants LIMIT 1 OFFSET " + std::to_string(Random() % 4) + ")";
        const std::string number = std::to_string(Random() % 1000);
        return OneOf({
            "DELETE FROM Strains;",
            "INSERT OR REPLACE INTO Strains(Name,Notes) VALUES('Strain " + std::to_string(Random() % 3) + "','" +
                number + "');",
            "INSERT INTO Strains(Name) VALUES('One " + number + "'),('Two " + number + "'),('One " + number + "');",
            "DELETE FROM PlantPhotos;",
            "INSERT OR REPLACE INTO Plants(UUID,Name) SELECT " + somePlant + ",'Replaced';",
            "UPDATE Plants SET UUID='plant " + number + "' WHERE UUID=" + somePlant + ";",
            "UPDATE OR REPLACE PlantPhotos SET UUID='photo',PlantUUID=" + somePlant + ";",
            "UPDATE PlantEvents SET PlantUUID=" + somePlant + " WHERE ID%3=0;",
            "DELETE FROM Plants WHERE UUID=" + somePlant + ";",
            "INSERT INTO PlantEvents(PlantUUID,EventType) SELECT " + somePlant +
                ",'Note' UNION ALL SELECT 'unknown','Note';",
            "INSERT INTO PlantPhotos(UUID,PlantUUID,FilePath) VALUES('photo " + number + "'," + somePlant +
                ",'x.jpg');",
            "UPDATE HarvestRecords SET Notes='equal';",
        });
    }

    void RunTransactionStatement()
    {
        if (!InTransaction())
            return Run(OneOf({"BEGIN;", "BEGIN IMMEDIATE;", "SAVEPOINT one;"}));
        const std::string statement =
            OneOf({"COMMIT;", "COMMIT;", "ROLLBACK;", "SAVEPOINT one;", "ROLLBACK TO one;", "RELEASE one;"});
        Inexact = Inexact || statement == "ROLLBACK TO one;";
        Run(statement);
    }

    void Step()
    {
        switch (Random() % 6)
        {
        case 0:
            RunTransactionStatement();
            break;
        case 1:
            Run(RandomStatement());
            break;
        case 2:
            if (!InTransaction())
            {
                RunElsewhere("INSERT OR REPLACE INTO SchemaMeta VALUES('key'," + std::to_string(Random()) + ");");
                Others = true;
            }
            break;
        case 3:
            ComparePoll();
            break;
        default:
            Run("INSERT INTO Strains(Name) SELECT 'First' WHERE NOT EXISTS (SELECT 1 FROM Strains);"); // needs one
            Changes.Next(Repository).Make(Repository);
        }
    }

    // Compares what was reported since the last comparison.
    void ComparePoll()
    {
        const PlantChanges changes = Poll(Watcher);
        EXPECT_EQ(changes.OthersChanged, Others);
        EXPECT_FALSE(changes.AskAgain);
        Others = false;
        Reported.Families.insert(changes.Families.begin(), changes.Families.end());
        Reported.Plants.insert(changes.Plants.begin(), changes.Plants.end());
        Reported.AnyPlant = Reported.AnyPlant || changes.AnyPlant;
        Snapshot now = TakeSnapshot(Path);
        ExpectReported(Difference(Before, now));
        Before = std::move(now);
        if (!InTransaction())
        {
            if (Logged)
                CompareLog();
            Reported = {};
            Inexact = false;
        }
    }

    void ExpectReported(const Found& found) const
    {
        for (const Family family : found.Families)
            EXPECT_EQ(Reported.Families.count(family), 1U) << PlantRecordFamilyName(family);
        for (const std::string& plant : found.Plants)
            EXPECT_TRUE(Reported.AnyPlant || Reported.Plants.count(plant) == 1) << plant;
    }

    void CompareLog()
    {
        Found log;
        for (const Row& row : QueryRows("SELECT Family,Plant FROM ChangeLog;"))
        {
            log.Families.insert(static_cast<Family>(std::stoi(row[0])));
            if (!row[1].empty())
                log.Plants.insert(row[1]);
        }
        RunSQL("DELETE FROM ChangeLog;");
        ExpectReported(log);
        EXPECT_TRUE(!PlantWatcher::NamesPlants() || !Reported.AnyPlant);
        if (Inexact)
            return;
        if (!PlantWatcher::NamesPlants())
            log.Families.insert(Family::Strain);
        for (const Family family : Reported.Families)
            EXPECT_EQ(log.Families.count(family), 1U) << PlantRecordFamilyName(family);
        for (const std::string& plant : Reported.Plants)
            EXPECT_EQ(log.Plants.count(plant), 1U) << plant;
        ++ExactComparisons;
    }

    void RunSteps(int number)
    {
        for (int i = 0; i < number && !HasFailure(); ++i)
        {
            SCOPED_TRACE("step " + std::to_string(i));
            Step();
        }
        Run("ROLLBACK;");
        ComparePoll();
    }

    std::mt19937_64 Random{Seed()};
    RandomChanges Changes{Random};
    PlantWatcher Watcher{Database};
    Snapshot Before;
    Found Reported;
    bool Others = false;
    bool Logged = false;
    bool Inexact = false; // something was undone for which SQLite gives no notice
    int ExactComparisons = 0;
};

TEST_F(RandomWatchTest, NoRandomChangeIsMissed)
{
    RunSteps(IsLongForm() ? 20000 : 2000);
}

TEST_F(RandomWatchTest, NoRandomChangeIsInvented)
{
    BeginLog();
    RunSteps(IsLongForm() ? 20000 : 4000);
    EXPECT_GT(ExactComparisons, 50);
}

} // namespace

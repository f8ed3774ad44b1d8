#include "plant_file.h"

#include "support/inspect_test.h"
#include "testing/old_files.h"

#include <algorithm>
#include <fstream>

using namespace support;

namespace
{

using Texts = std::vector<std::string>;

class InspectForeignTest : public InspectTest
{
  protected:
    // The reasons why the journal is foreign after these statements.
    Texts ReasonsAfter(const std::string& sql)
    {
        const PlantFileInspection found = After(sql);
        EXPECT_EQ(found.Kind, PlantFileKind::Foreign) << sql;
        EXPECT_TRUE(found.Steps.empty() && found.Tables.empty() && found.FirstDate.empty());
        return found.Reasons;
    }
};

TEST_F(InspectForeignTest, AFileWithAnUnknownPartOrAMissingColumnIsForeign)
{
    EXPECT_EQ(ReasonsAfter("CREATE TABLE \"Bee hives\n\"(X);"),
              Texts{"The table \"Bee hives?\" is not part of a journal."});
    EXPECT_EQ(ReasonsAfter("DROP TABLE \"Bee hives\n\"; CREATE INDEX Quick ON Plants(Name);"),
              Texts{"The index \"Quick\" is not part of a journal."});
    EXPECT_EQ(ReasonsAfter("DROP INDEX Quick; CREATE VIEW Seen AS SELECT 1;"),
              Texts{"The view \"Seen\" is not part of a journal."});
    EXPECT_EQ(ReasonsAfter("DROP VIEW Seen; CREATE TRIGGER Late AFTER INSERT ON Plants BEGIN SELECT 1; END;"),
              Texts{"The trigger \"Late\" is not part of a journal."});
    EXPECT_EQ(ReasonsAfter("DROP TRIGGER Late; ALTER TABLE Plants ADD COLUMN Colour;"),
              Texts{"The column \"Colour\" of Plants is not part of a journal."});
    EXPECT_EQ(ReasonsAfter("ALTER TABLE Plants DROP COLUMN Colour; ALTER TABLE Plants DROP COLUMN Tent;"),
              Texts{"The table Plants has no column Tent."});
}

TEST_F(InspectForeignTest, AllReasonsAreGiven)
{
    EXPECT_EQ(ReasonsAfter("CREATE TABLE Bees(X); CREATE TABLE Hives(X);").size(), 2U);
}

TEST_F(InspectForeignTest, AnotherDatabaseIsForeign)
{
    const std::string other = Scratch.File("other.db");
    PlainConnection(other).RunSQL("CREATE TABLE Bees(X); INSERT INTO Bees VALUES(1);");
    const PlantFileInspection found = Inspected(other);
    EXPECT_EQ(found.Kind, PlantFileKind::Foreign);
    EXPECT_EQ(found.Reasons, Texts{"The table \"Bees\" is not part of a journal."});
}

TEST_F(InspectForeignTest, AViewOrVirtualTableNamedLikeATableIsForeignAndNotRead)
{
    EXPECT_EQ(
        ReasonsAfter("DROP TABLE SchemaMeta; CREATE VIEW SchemaMeta AS WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL "
                     "SELECT X FROM N) SELECT X AS Key,X AS Value FROM N;"),
        Texts{"The view \"SchemaMeta\" is not part of a journal."});
    const Texts reasons = ReasonsAfter("DROP VIEW SchemaMeta; CREATE VIRTUAL TABLE SchemaMeta USING fts4(Key,Value);");
    EXPECT_EQ(reasons.front(), "The virtual table \"SchemaMeta\" is not part of a journal.");
}

TEST_F(InspectForeignTest, AnIndexOfAKnownNameOnAnotherTableIsForeign)
{
    EXPECT_EQ(ReasonsAfter("DROP INDEX PlantsByStrain; CREATE INDEX PlantsByStrain ON Strains(Notes);"),
              Texts{"The index \"PlantsByStrain\" is not part of a journal."});
}

TEST_F(InspectForeignTest, SQLitesOwnTablesAreNotForeign)
{
    EXPECT_EQ(After("INSERT INTO Strains(Name) VALUES('Roma'); ANALYZE;").Kind, PlantFileKind::Current);
}

TEST_F(InspectForeignTest, AnUnknownEventTypeInTheDefinitionIsForeign)
{
    OpenJournal();
    ReplaceInDefinitions("'Defoliated'", "'Defoliated','Repotted','it''s'");
    Database.Close();
    EXPECT_EQ(ReasonsAfter("SELECT 1;"), (Texts{"The event type \"Repotted\" is unknown to this version.",
                                                "The event type \"it\" is unknown to this version.",
                                                "The event type \"s\" is unknown to this version."}));
}

TEST_F(InspectForeignTest, AnUnknownEventTypeInARowIsForeign)
{
    EXPECT_EQ(ReasonsAfter("PRAGMA ignore_check_constraints=ON; INSERT INTO PlantEvents(PlantUUID,EventType) "
                           "VALUES('p','Repotted'),('p','Repotted'),('p','water'),('p','Water');"),
              (Texts{"The event type \"Repotted\" is unknown to this version.",
                     "The event type \"water\" is unknown to this version."}));
}

TEST_F(InspectForeignTest, AnUnknownEventTypeThatTheMigrationConvertsIsNotForeign)
{
    const auto form = std::find_if(OldFiles().begin(), OldFiles().end(),
                                   [](const OldFile& file) { return file.Name == "10_unchecked"; });
    WriteOldFile(Path, *form);
    EXPECT_EQ(After("PRAGMA ignore_check_constraints=ON; UPDATE PlantEvents SET EventType='Repotted';").Kind,
              PlantFileKind::Older);
}

TEST_F(InspectForeignTest, AFileWithAWriteAheadLogIsForeignAndNotChanged)
{
    const Texts reasons = {"The file uses a write-ahead log; a journal never does."};
    EXPECT_EQ(ReasonsAfter("PRAGMA journal_mode=WAL;"), reasons);
    PlainConnection(Path).RunSQL("PRAGMA journal_mode=DELETE;");
    EXPECT_EQ(InspectedKind(Path), PlantFileKind::Current);
    std::ofstream(Path + "-wal") << "a log";
    const auto before = Scratch.Files();
    EXPECT_EQ(Inspected(Path).Reasons, reasons);
    EXPECT_TRUE(Scratch.Files() == before);
}

} // namespace

#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/comma_locale.h"
#include "support/copy_over.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/sample_records.h"
#include "testing/old_files.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>

#include <sqlite3.h>

using namespace support;

namespace
{

using namespace std::string_literals;
using Texts = std::vector<std::string>;

Texts Lines(const std::vector<PlantFileFinding>& findings)
{
    Texts lines;
    for (const PlantFileFinding& finding : findings)
        lines.push_back(std::string(PlantFindingKindName(finding.Kind)) + ' ' + finding.Table + ' ' +
                        std::to_string(finding.RowID) + ": " + finding.Description);
    return lines;
}

Texts FoundIn(const std::string& path)
{
    std::vector<PlantFileFinding> findings(3); // stale
    const PlantFileResult result = CheckPlantDatabase(path, findings);
    EXPECT_TRUE(result) << result.Error;
    return Lines(findings);
}

std::string ErrorOf(const std::string& path)
{
    std::vector<PlantFileFinding> findings(3);
    const PlantFileResult result = CheckPlantDatabase(path, findings);
    EXPECT_FALSE(result);
    EXPECT_EQ(Lines(findings), Texts());
    return result.Error;
}

// Checks a sound journal while one allocation fails, each in turn: the failure is an error or an exception, and never a
// finding.
void ExpectNoFindingsWithFailingAllocations(const std::string& path)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1;; number += 1 + number / 50)
        {
            std::vector<PlantFileFinding> findings;
            bool happened = false;
            PlantFileResult result;
            try
            {
                const AllocationFailure failure(allocator, number);
                result = CheckPlantDatabase(path, findings);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                happened = true;
            }
            EXPECT_EQ(Lines(findings), Texts()) << number;
            EXPECT_EQ(result.Error.find("not a plantjournal file"), std::string::npos) << result.Error;
            if (!happened)
            {
                EXPECT_TRUE(result) << result.Error;
                break;
            }
        }
}

// A journal with something in every table and nothing wrong.
class CheckTest : public JournalTest
{
  protected:
    CheckTest()
    {
        const SampleRecords sample = StoreSampleRecords(Repository);
        SampleRecords mended = sample;
        EXPECT_TRUE(Repository.UpdatePlantCareEntry(mended.Unlinked)); // gets an event again
        std::ofstream(Scratch.File("photo.jpg")) << "an image";
        PlantPhoto photo = sample.Photo;
        photo.FilePath = "photo.jpg";
        EXPECT_TRUE(Repository.UpdatePlantPhoto(photo));
        Database.Close();
    }

    // What is found after these statements. The check changes no file and creates none.
    Texts After(const std::string& sql)
    {
        PlainConnection(Path).RunSQL("PRAGMA ignore_check_constraints=ON;" + sql);
        const auto before = Scratch.Files();
        Texts found = FoundIn(Path);
        EXPECT_TRUE(Scratch.Files() == before) << sql;
        return found;
    }

    Texts AfterChangeOf(const std::string& event, const std::string& assignments)
    {
        return After("UPDATE PlantEvents SET " + assignments + " WHERE ID=" + event + ';');
    }

    std::string Value(const std::string& sql) const { return PlainConnection(Path).Value(sql); }
};

TEST_F(CheckTest, ASoundJournalHasNoFindings)
{
    EXPECT_EQ(After("SELECT 1;"), Texts());
}

TEST_F(CheckTest, WhatTheRepositoryWritesHasNoFindings)
{
    const CommaLocale locale;
    OpenJournal();
    using Limits = std::numeric_limits<double>;
    Plant plant = NewPlant("Odd\0 name"s, "Strain\0 with"s);
    for (const double number : {0.0, 0.5, 1.005, 2.5, -3.0, 1e15, 1e300, Limits::infinity(), Limits::denorm_min()})
        for (const std::string& text : {""s, "a | b"s, "zero\0byte"s, "\xFF\xFE"s, std::string(100'000, 'x')})
            for (const PlantCareAction action : {PlantCareAction::Feed, PlantCareAction::Water})
            {
                PlantCareEntry entry;
                entry.PlantUUID = plant.UUID;
                entry.CareDate = text;
                entry.Action = action;
                entry.Product = text;
                entry.AmountMl = entry.EC = entry.PH = entry.RunoffMl = number;
                entry.Notes = text;
                ASSERT_TRUE(Repository.CreatePlantCareEntry(entry));
                Plant harvested = NewPlant("Harvested", "Roma", plant.UUID);
                HarvestRecord record;
                record.HarvestDate = text;
                record.WetWeightG = record.DryWeightG = record.QualityRating = number;
                record.SeedYield = text.empty() ? -1 : std::numeric_limits<int>::max();
                record.CureOutcome = record.Notes = text;
                ASSERT_TRUE(Repository.SaveHarvestRecord(harvested, record));
            }
    Database.Close();
    EXPECT_EQ(After("SELECT 1;"), Texts());
}

// ---- One kind after another

TEST_F(CheckTest, DamageThatSQLiteFindsIsFound)
{
    const int page = std::stoi(Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096L + 3).put('\0').put('\0'); // the index has no entries
    }
    const Texts found = FoundIn(Path);
    EXPECT_NE(std::find(found.begin(), found.end(), "Damage  0: row 1 missing from index PlantsByStrain."),
              found.end());
    EXPECT_TRUE(
        std::all_of(found.begin(), found.end(), [](const auto& line) { return line.starts_with("Damage  0"); }));
}

TEST_F(CheckTest, ADamagedPageIsFoundAndEndsTheCheckWithAnError)
{
    const int page = std::stoi(Value("SELECT rootpage FROM sqlite_master WHERE name='PlantEvents';"));
    std::fstream(Path, std::ios::in | std::ios::out | std::ios::binary).seekp((page - 1) * 4096L).put('\x7F');
    std::vector<PlantFileFinding> findings;
    EXPECT_EQ(CheckPlantDatabase(Path, findings).Error, Path + ": checking the file: database disk image is malformed");
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings.front().Kind, PlantFindingKind::Damage);
    EXPECT_EQ(findings.front().Description.find('\n'), std::string::npos);
}

TEST_F(CheckTest, ARowOfAPlantThatDoesNotExistIsFound)
{
    EXPECT_EQ(After("PRAGMA foreign_keys=OFF; UPDATE PlantPhotos SET ID=77,PlantUUID='nobody';"),
              Texts{"ForeignKey PlantPhotos 77: It refers to a row of Plants that does not exist."});
}

TEST_F(CheckTest, AStoredNameOfNoEnumeratorIsFound)
{
    OpenJournal();
    ReplaceInDefinitions(", CHECK(Sex IN ('Unknown','Female','Male','Hermaphrodite'))", ""); // as in a migrated file
    Database.Close();
    EXPECT_EQ(FoundIn(Path), Texts());
    PlainConnection(Path).RunSQL("UPDATE Plants SET Sex='female' WHERE ID=1;");
    EXPECT_EQ(FoundIn(Path), Texts{"UnknownName Plants 1: Its Sex \"female\" is unknown and reads as \"Unknown\"."});
    PlainConnection(Path).RunSQL("UPDATE Plants SET Sex='Female';");

    const std::string event = Value("SELECT MAX(ID) FROM PlantEvents WHERE EventType='Note';");
    EXPECT_EQ(After("UPDATE Plants SET Stage='Bloom\n\x7F' WHERE ID=2;"),
              Texts{"UnknownName Plants 2: Its Stage \"Bloom??\" is unknown and reads as \"Veg\"."});
    EXPECT_EQ(After("UPDATE Plants SET Stage='Veg'; UPDATE PlantJournalEntries SET ID=5,Type='';"),
              Texts{"UnknownName PlantJournalEntries 5: Its Type \"\" is unknown and reads as \"Observation\"."});
    EXPECT_EQ(After("UPDATE PlantJournalEntries SET Type='Topping'; UPDATE PlantEvents SET EventType='Repotted' WHERE "
                    "ID=" +
                    event + ';'),
              Texts{"UnknownName PlantEvents " + event +
                    ": Its EventType \"Repotted\" is unknown and reads as "
                    "\"Note\"."});
    EXPECT_EQ(After("UPDATE PlantEvents SET EventType='Note' WHERE ID=" + event +
                    ";UPDATE PlantCareEntries SET "
                    "Action='water' WHERE ID=1; UPDATE PlantEvents SET EventType='Water' WHERE ID=(SELECT "
                    "TimelineEventID FROM PlantCareEntries WHERE ID=1);"),
              Texts{"UnknownName PlantCareEntries 1: Its Action \"water\" is unknown and reads as \"Water\"."});
}

TEST_F(CheckTest, ALongTextIsCutAtACharacterInADescription)
{
    EXPECT_EQ(After("UPDATE Plants SET Stage=printf('%.79c','x')||'½½' WHERE ID=1;"),
              Texts{"UnknownName Plants 1: Its Stage \"" + std::string(79, 'x') +
                    "...\" is unknown and reads as "
                    "\"Veg\"."});
    std::string continuations;
    for (int i = 0; i < 100; ++i)
        continuations += "80"; // continuation bytes without a first byte
    EXPECT_EQ(After("UPDATE Plants SET Stage=CAST(x'" + continuations + "' AS TEXT) WHERE ID=1;"),
              Texts{"UnknownName Plants 1: Its Stage \"...\" is unknown and reads as \"Veg\"."});
}

TEST_F(CheckTest, ASeverityOutOfRangeIsFound)
{
    for (const char* severity : {"0", "6", "-1", "'bad'"})
    {
        std::string shown = severity;
        std::erase(shown, '\'');
        EXPECT_EQ(After("UPDATE PlantHealthObservations SET ID=9,Severity="s + severity + ';'),
                  Texts{"Severity PlantHealthObservations 9: Its severity \"" + shown + "\" is not from 1 to 5."});
    }
    for (const char* severity : {"1", "5"})
        EXPECT_EQ(After("UPDATE PlantHealthObservations SET Severity="s + severity + ';'), Texts());
}

TEST_F(CheckTest, EveryPlantOnACycleIsFoundAndItsDescendantsAreNot)
{
    PlainConnection(Path).RunSQL(
        "INSERT INTO Plants(ID,UUID,Name,MotherPlantID) VALUES(10,'10','',NULL),(11,'11','',10),"
        "(12,'12','',14),(13,'13','',12),(14,'14','',13),(15,'15','',13),(16,'16','',15),"
        "(17,'17','',17),(18,'18','',17),(9,'9','',16);");
    EXPECT_EQ(After("SELECT 1;"), (Texts{"LineageCycle Plants 13: It descends from itself.",
                                         "LineageCycle Plants 12: It descends from itself.",
                                         "LineageCycle Plants 14: It descends from itself.",
                                         "LineageCycle Plants 17: It descends from itself."}));
}

TEST_F(CheckTest, AMotherThatDoesNotExistIsFoundOnce)
{
    EXPECT_EQ(After("PRAGMA foreign_keys=OFF; UPDATE Plants SET MotherPlantID=99 WHERE ID=2;"),
              Texts{"MissingMother Plants 2: Its mother, row 99, does not exist."});
}

TEST_F(CheckTest, AStrainWithoutARowIsFound)
{
    EXPECT_EQ(
        After("UPDATE Plants SET Strain='san marzano' WHERE ID=1; UPDATE Plants SET Strain='' WHERE ID=2; INSERT INTO "
              "Strains(Name) VALUES('San Marzano');"),
        Texts{"MissingStrain Plants 1: Its strain \"san marzano\" does not exist."});
}

TEST_F(CheckTest, ACareEntryOrHarvestRecordWithoutItsEventIsFoundOnce)
{
    EXPECT_EQ(After("PRAGMA foreign_keys=OFF; UPDATE PlantCareEntries SET TimelineEventID=NULL WHERE ID=1; "
                    "UPDATE PlantCareEntries SET TimelineEventID=98 WHERE ID=2; UPDATE HarvestRecords SET "
                    "TimelineEventID=99;"),
              (Texts{"MissingEvent PlantCareEntries 1: It has no event.",
                     "MissingEvent PlantCareEntries 2: Its event, row 98, does not exist.",
                     "MissingEvent HarvestRecords 1: Its event, row 99, does not exist."}));
}

TEST_F(CheckTest, AnEventThatDiffersIsFoundWithAllItsDifferences)
{
    const std::string otherPlant = Value("SELECT UUID FROM Plants WHERE ID=2;");
    const std::string sound = FileBytes(Path);
    for (const char* table : {"PlantCareEntries", "HarvestRecords"})
    {
        const std::string event = Value("SELECT TimelineEventID FROM "s + table + " WHERE ID=1;");
        const std::string begin = "EventDiffers "s + table + " 1: Its event, row " + event + ", differs in ";
        const auto expect = [&](const std::string& differences, const std::string& change)
        {
            EXPECT_EQ(AfterChangeOf(event, change), Texts{begin + differences});
            std::ofstream(Path, std::ios::binary) << sound;
        };
        expect("plant.", "PlantUUID='" + otherPlant + '\'');
        expect("date.", "EventDate='x'");
        expect("type.", "EventType='Note'");
        expect("details.", "Details=Details||' '");
        expect("date and type and details.", "EventDate='x',EventType='Note',Details=''");
    }
}

TEST_F(CheckTest, EveryFieldOfTheDetailsIsCompared)
{
    for (const char* change : {"Product='other'", "AmountMl=77", "EC=7", "PH=7", "RunoffMl=77", "Notes='other'"})
    {
        const std::string copy = Scratch.File("copy.db");
        CopyOver(Path, copy);
        PlainConnection(copy).RunSQL("UPDATE PlantCareEntries SET "s + change + " WHERE ID=1;");
        ASSERT_EQ(FoundIn(copy).size(), 1U) << change;
        EXPECT_TRUE(FoundIn(copy).front().ends_with("differs in details.")) << change;
    }
    for (const char* change :
         {"WetWeightG=77", "DryWeightG=77", "QualityRating=7", "SeedYield=77", "CureOutcome='other'", "Notes='other'"})
    {
        const std::string copy = Scratch.File("copy.db");
        CopyOver(Path, copy);
        PlainConnection(copy).RunSQL("UPDATE HarvestRecords SET "s + change + ';');
        ASSERT_EQ(FoundIn(copy).size(), 1U) << change;
        EXPECT_TRUE(FoundIn(copy).front().ends_with("differs in details.")) << change;
    }
}

TEST_F(CheckTest, APhotoWhoseFileDoesNotExistIsFound)
{
    const auto found = [&](const std::string& path)
    {
        Texts lines = After("UPDATE PlantPhotos SET FilePath='" + path + "';");
        return lines.empty() ? ""s : lines.front();
    };
    const std::string begin = "MissingPhotoFile PlantPhotos 1: Its file ";
    EXPECT_EQ(found("photo.jpg"), "");
    EXPECT_EQ(found(Scratch.File("photo.jpg")), "");
    EXPECT_EQ(found("no.jpg"), begin + "\"no.jpg\" cannot be found: No such file or directory.");
    EXPECT_EQ(found("/no/such/place.jpg"),
              begin + "\"/no/such/place.jpg\" cannot be found: No such file or directory.");
    EXPECT_EQ(found("."), begin + "\".\" cannot be found: not a regular file.");
    EXPECT_EQ(found("'||'photo.jpg'||char(0)||'x'||'"), ""); // the path ends at the zero byte
    EXPECT_EQ(found(std::string(5000, 'x')), begin + '"' + std::string(80, 'x') +
                                                 "...\" cannot be found: File name too "
                                                 "long.");
}

TEST_F(CheckTest, APhotosRelativePathStartsAtTheJournalsDirectory)
{
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(Path).parent_path());
    EXPECT_EQ(FoundIn("journal.db"), Texts());
    std::filesystem::current_path(here);
    EXPECT_EQ(FoundIn(Path), Texts());
}

TEST_F(CheckTest, AKindHasItsName)
{
    const Texts names = {"Damage",        "ForeignKey",    "UnknownName",  "Severity",     "LineageCycle",
                         "MissingMother", "MissingStrain", "MissingEvent", "EventDiffers", "MissingPhotoFile"};
    for (std::size_t number = 0; number < names.size(); ++number)
        EXPECT_EQ(PlantFindingKindName(static_cast<PlantFindingKind>(number)), names[number]);
    EXPECT_EQ(PlantFindingKindName(PlantFindingKind::MissingPhotoFile), "MissingPhotoFile"s);
    EXPECT_EQ(PlantFindingKindName(static_cast<PlantFindingKind>(10)), "Damage"s);
    EXPECT_EQ(PlantFindingKindName(static_cast<PlantFindingKind>(-1)), "Damage"s);
}

// ---- Which files

TEST_F(CheckTest, AJournalInUTF16IsCheckedLikeOneInUTF8)
{
    const std::string path = Scratch.File("utf16.db");
    PlainConnection(path).RunSQL("PRAGMA encoding='UTF-16'; CREATE TABLE T(X); DROP TABLE T;");
    ASSERT_TRUE(Database.Open(path));
    Plant plant = NewPlant("Süßkirsche");
    HarvestRecord record;
    record.Notes = "½ l";
    ASSERT_TRUE(Repository.SaveHarvestRecord(plant, record));
    Database.Close();
    ASSERT_EQ(PlainConnection(path).Value("PRAGMA encoding;"), "UTF-16le");
    EXPECT_EQ(FoundIn(path), Texts());

    // Reading a text converts it, which takes memory. A text that cannot be read is not an empty one.
    int failed = 0;
    for (int number = 1;; ++number)
    {
        std::optional<AllocationFailure> failure;
        const AfterCall step(SQLiteCall::Step, number, [&] { failure.emplace(Allocator::SQLite, 1); });
        std::vector<PlantFileFinding> findings;
        std::string error;
        try
        {
            error = CheckPlantDatabase(path, findings).Error;
        }
        catch (const std::bad_alloc&)
        {
            ++failed;
        }
        EXPECT_EQ(Lines(findings), Texts()) << number;
        EXPECT_EQ(error.find("not a plantjournal file"), std::string::npos) << error;
        if (!step.Happened())
            break;
    }
    EXPECT_GT(failed, 5);
}

TEST_F(CheckTest, EveryEarlierSchemaIsCheckedAndNotChanged)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Path, old);
        const Texts found = After("SELECT 1;");
        const bool hasCare = old.Name > "02";
        const auto has = [&](const std::string& begin) {
            return std::any_of(found.begin(), found.end(),
                               [&](const std::string& line) { return line.starts_with(begin); });
        };
        EXPECT_EQ(has("EventDiffers PlantCareEntries 21: Its event, row 12, differs in details."), hasCare) << old;
        EXPECT_EQ(has("MissingEvent PlantCareEntries 23: It has no event."), hasCare) << old;
        EXPECT_EQ(has("MissingPhotoFile PlantPhotos 41"), hasCare) << old;
        EXPECT_TRUE(has("EventDiffers HarvestRecords 31: Its event, row 17, differs in details.")) << old;
        EXPECT_FALSE(has("Damage") || has("ForeignKey") || has("Lineage") || has("Severity")) << old;
    }
}

TEST_F(CheckTest, TheTablesThatExistAreChecked)
{
    const std::string path = Scratch.File("begun.db");
    const PlainConnection file(path);
    for (const std::string& sql : OpeningStatements())
    {
        file.RunSQL(sql);
        if (sql.starts_with("CREATE"))
        {
            EXPECT_EQ(FoundIn(path), Texts()) << sql;
        }
    }
    file.RunSQL(
        "PRAGMA foreign_keys=OFF; DROP TABLE Strains; DROP TABLE PlantEvents; INSERT INTO Plants(UUID,Name,Strain) "
        "VALUES('u','n','gone'); INSERT INTO PlantCareEntries(PlantUUID) VALUES('u');");
    EXPECT_EQ(FoundIn(path), Texts());
}

TEST_F(CheckTest, AJournalWithUnknownEventTypesIsChecked)
{
    OpenJournal();
    ReplaceInDefinitions("'Defoliated'", "'Defoliated','Repotted'");
    RunSQL("UPDATE PlantEvents SET EventType='Repotted' WHERE EventType='Note';");
    Database.Close();
    const Texts found = FoundIn(Path);
    ASSERT_FALSE(found.empty());
    EXPECT_TRUE(found.front().ends_with("Its EventType \"Repotted\" is unknown and reads as \"Note\"."));
}

TEST_F(CheckTest, AFileThatIsNotAJournalIsAnErrorAndNotChanged)
{
    const std::string path = Scratch.File("other.db");
    EXPECT_EQ(ErrorOf(path), path + ": no such file");
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(ErrorOf(Scratch.File("")), Scratch.File("") + ": not a regular file");
    EXPECT_EQ(ErrorOf(""), ": the path is empty or contains a zero byte");
    std::ofstream(path) << "";
    EXPECT_EQ(ErrorOf(path), path + ": reading the schema: not a plantjournal file: it has no tables");
    EXPECT_EQ(FileBytes(path), "");
    std::ofstream(path) << "some other text";
    EXPECT_EQ(ErrorOf(path), path + ": reading the schema: file is not a database");
    EXPECT_EQ(FileBytes(path), "some other text");
    std::filesystem::remove(path);
    PlainConnection(path).RunSQL("CREATE TABLE Bees(X);");
    const std::string before = FileBytes(path);
    EXPECT_EQ(ErrorOf(path),
              path + ": reading the schema: not a plantjournal file: The table \"Bees\" is not part of a journal.");
    EXPECT_EQ(FileBytes(path), before);
}

TEST_F(CheckTest, ALockedJournalIsAnError)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_EQ(ErrorOf(Path), Path + ": reading the schema: database is locked");
}

TEST_F(CheckTest, AWriteWaitsWhileTheCheckReads)
{
    const PlainConnection other(Path);
    int refused = 0;
    for (int number = 1;; ++number)
    {
        bool during = false;
        {
            const AfterCall write(SQLiteCall::Step, number,
                                  [&]
                                  {
                                      during = true;
                                      const int result = sqlite3_exec(other.NativeHandle(), "PRAGMA user_version=0;",
                                                                      nullptr, nullptr, nullptr);
                                      EXPECT_TRUE(result == SQLITE_BUSY || refused == 0) << "written at " << number;
                                      refused += result == SQLITE_BUSY ? 1 : 0;
                                  });
            EXPECT_EQ(FoundIn(Path), Texts());
        }
        if (!during)
            break;
    }
    EXPECT_GT(refused, 50);
}

// ---- Size

TEST_F(CheckTest, AHundredThousandCareEntriesAreCheckedInSeconds)
{
    OpenJournal();
    const Plant plant = NewPlant("Busy");
    RunSQL("BEGIN; WITH RECURSIVE N(X) AS (SELECT 1001 UNION ALL SELECT X+1 FROM N LIMIT 100000) INSERT INTO "
           "PlantEvents(ID,PlantUUID,EventDate,EventType,Details) SELECT X,'" +
           plant.UUID +
           "','2024-05-06','Feed','Bloom A | 500 ml | EC 1.80 | pH 6.20' FROM N;"
           "INSERT INTO PlantCareEntries(ID,TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH) SELECT "
           "ID,ID,PlantUUID,EventDate,EventType,'Bloom A',500,1.8,6.2 FROM PlantEvents WHERE ID>1000;"
           "INSERT INTO Plants(ID,UUID,Name,MotherPlantID) SELECT ID,ID,'',NULLIF(ID-1,1000) FROM PlantEvents WHERE "
           "ID>1000;"
           "UPDATE PlantCareEntries SET EC=1.9 WHERE ID=70000; COMMIT;");
    Database.Close();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(FoundIn(Path), Texts{"EventDiffers PlantCareEntries 70000: Its event, row 70000, differs in details."});
    const auto taken = std::chrono::steady_clock::now() - begin;
    RecordProperty("Milliseconds", std::to_string(taken / std::chrono::milliseconds(1)));
    EXPECT_LT(taken, std::chrono::seconds(30)); // on a busy machine and under a sanitizer
}

// ---- Failures

TEST_F(CheckTest, AFailingDiskIsAnErrorAndChangesNothing)
{
    const auto before = Scratch.Files();
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Size, DiskCall::Lock, DiskCall::Access})
        for (int number = 1;; ++number)
        {
            const DiskFailure failure({call, DiskError::IO, false, number});
            std::vector<PlantFileFinding> findings;
            const PlantFileResult result = CheckPlantDatabase(Path, findings);
            const bool happened = failure.Happened();
            EXPECT_TRUE(result || result.Error.starts_with(Path + ": ")) << result.Error;
            EXPECT_EQ(Lines(findings), Texts()) << call << ' ' << number; // no damage where only the disk fails
            EXPECT_TRUE(Scratch.Files() == before) << call << ' ' << number;
            if (!happened)
            {
                EXPECT_TRUE(result && findings.empty());
                break;
            }
        }
}

TEST_F(CheckTest, AFailingAllocationIsAnErrorOrAnException)
{
    ExpectNoFindingsWithFailingAllocations(Path);
}

} // namespace

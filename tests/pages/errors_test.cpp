// The page of errors tells what is so: every text of an opening, every refusal of an operation, and what SQLite still
// knows of it afterwards.

#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/operations.h"
#include "support/page.h"
#include "testing/old_files.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <set>
#include <sstream>

#include <sqlite3.h>
#include <unistd.h>

using namespace support;

namespace
{

const std::string Page = "docs/errors.md";

// [log]
void KeepLog(void* log, int code, const char* message)
{
    *static_cast<std::ostream*>(log) << code << ": " << message << '\n';
}
// [end]

// SQLite's error log, in a text. SQLite takes the function only before it is used, so it is put down and begun anew.
class ErrorLog
{
  protected:
    ErrorLog()
    {
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_LOG, KeepLog, static_cast<void*>(&Log));
    }
    ~ErrorLog()
    {
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_LOG, nullptr, nullptr);
    }

    std::ostringstream Log;
};

class ErrorsPageTest : protected ErrorLog, public JournalTest
{
  protected:
    ErrorsPageTest() { sqlite3_busy_timeout(Database.NativeHandle(), 0); } // waiting shows nothing here

    int Code() const { return sqlite3_extended_errcode(Database.NativeHandle()); }
    std::string Message() const { return sqlite3_errmsg(Database.NativeHandle()); }
};

TEST_F(ErrorsPageTest, ItsCodeIsWhatIsTriedHere)
{
    EXPECT_EQ(CodeBlocks(Page, "cpp"), (std::vector{Region(__FILE__, "reason"), Region(__FILE__, "forget"),
                                                    Region(__FILE__, "log"), Region(__FILE__, "configure")}));
}

// ---- Opening

// A text of Open, and how to come by it.
struct Opening
{
    std::string Text;
    std::function<void(const std::string& path)> Prepare;
    std::function<std::string(const std::string& path)> Open;
};

std::string TextOf(const std::string& path)
{
    PlantDatabase database;
    std::string text = "opened";
    const bool opened = database.Open(path, &text);
    EXPECT_EQ(opened, text == "opened");
    return text;
}

std::string TextUnderALock(const std::string& path)
{
    const PlainConnection other(path);
    other.Execute("BEGIN IMMEDIATE;");
    return TextOf(path);
}

std::string TextOnAFailingDisk(const std::string& path, DiskError error)
{
    const FailingDisk disk;
    const DiskFailure failure({DiskCall::Write, error, true, 1});
    return TextOf(path);
}

void OldFileWith(const std::string& name, const std::string& path)
{
    for (const OldFile& file : OldFiles())
        if (file.Name.find(name) != std::string::npos)
            return WriteOldFile(path, file);
    FAIL() << name;
}

const std::vector<Opening>& Openings()
{
    static const std::vector<Opening> openings = {
        {"unable to open database file", [](auto& path) { std::filesystem::create_directory(path); }, TextOf},
        {"file is not a database", [](auto& path) { std::ofstream(path) << "a letter"; }, TextOf},
        {"database is locked", [](auto& path) { OldFileWith("few_tables", path); }, TextUnderALock},
        {"cannot rollback - no transaction is active", [](auto& path) { OldFileWith("seed_yield", path); },
         TextUnderALock},
        {"duplicate column name: Sex", [](auto& path) { OldFileWith("current", path); },
         [](auto& path)
         {
             const CallFailure failure(SQLiteCall::Prepare, 4, SQLITE_IOERR, "PRAGMA table_info(Plants);");
             return TextOf(path);
         }},
        {"database or disk is full", [](auto& path) { OldFileWith("few_tables", path); },
         [](auto& path) { return TextOnAFailingDisk(path, DiskError::Full); }},
        {"disk I/O error", [](auto& path) { OldFileWith("few_tables", path); },
         [](auto& path) { return TextOnAFailingDisk(path, DiskError::IO); }},
        {"database disk image is malformed",
         [](auto& path)
         {
             OldFileWith("current", path);
             std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
             file.seekp(100);
             file << std::string(900, '\xFF');
         },
         TextOf},
        {"no such column: Strain", [](auto& path) { PlainConnection(path).Execute("CREATE TABLE Plants(Genus);"); },
         TextOf},
        {"Could not open database", [](auto&) {}, [](auto& path) { return TextOf(path + std::string("\0.db", 4)); }},
    };
    return openings;
}

TEST(OpeningErrorsTest, EveryTextOnThePageIsTold)
{
    // That one takes a user without permission: PermissionTest.
    std::set<std::string> told = {"attempt to write a readonly database"};
    for (const Opening& opening : Openings())
    {
        const ScratchDirectory scratch;
        const std::string path = scratch.File("journal.db");
        opening.Prepare(path);
        EXPECT_EQ(opening.Open(path), opening.Text);
        told.insert(opening.Text);
    }
    std::set<std::string> shown;
    for (const auto& row : TableRows(Page, "## When `Open` returns `false`"))
        shown.insert(Plain(row[0]));
    EXPECT_EQ(shown, told);
}

TEST(OpeningErrorsTest, ADatabaseOfAnotherProgramIsOpenedAndGetsTheTables)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("other.db");
    PlainConnection(path).Execute("CREATE TABLE Invoices(Sum);");
    EXPECT_EQ(TextOf(path), "opened");
    EXPECT_EQ(PlainConnection(path).Value("SELECT COUNT(*) FROM sqlite_master WHERE type='table';"), "10");
}

// ---- Operations

// A reason of an operation's own to return false, and what SQLite has to say of it.
struct Refusal
{
    std::string Operation;
    std::string Meaning;
    std::string Code;   // of the connection afterwards
    std::string Logged; // in SQLite's error log
    std::function<bool()> Call;
};

const std::map<std::string, int> Codes = {
    {"SQLITE_OK", SQLITE_OK},
    {"SQLITE_ERROR", SQLITE_ERROR},
    {"SQLITE_CONSTRAINT_UNIQUE", SQLITE_CONSTRAINT_UNIQUE},
    {"SQLITE_CONSTRAINT_NOTNULL", SQLITE_CONSTRAINT_NOTNULL},
    {"SQLITE_CONSTRAINT_FOREIGNKEY", SQLITE_CONSTRAINT_FOREIGNKEY},
};

class RefusalPageTest : public ErrorsPageTest
{
  protected:
    RefusalPageTest()
    {
        Basil = NewPlant("Basil", "Genovese");
        Clone = NewPlant("Clone", "Genovese", Basil.UUID);
        Event.PlantUUID = Observation.PlantUUID = Entry.PlantUUID = Photo.PlantUUID = Care.PlantUUID = Basil.UUID;
        Observation.Issue = "aphids";
        Photo.FilePath = "basil.jpg";
        EXPECT_TRUE(Repository.CreatePlantEvent(Event) && Repository.CreatePlantHealthObservation(Observation) &&
                    Repository.CreatePlantJournalEntry(Entry) && Repository.CreatePlantPhoto(Photo) &&
                    Repository.CreatePlantCareEntry(Care) && Repository.SaveHarvestRecord(Basil, Harvest));
        Thyme.Name = "Thyme";
        EXPECT_TRUE(Repository.CreateStrain(Thyme));
    }

    // The record with a change.
    template <typename Record, typename Change> static Record With(Record record, const Change& change)
    {
        change(record);
        return record;
    }

    std::vector<Refusal> Refusals();

    static constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
    Plant Basil;
    Plant Clone;
    Strain Thyme;
    PlantEvent Event;
    PlantCareEntry Care;
    HarvestRecord Harvest;
    PlantPhoto Photo;
    PlantHealthObservation Observation;
    PlantJournalEntry Entry;
};

std::vector<Refusal> RefusalPageTest::Refusals()
{
    const std::string before = "as before";
    const std::string nothing;
    const std::string notAlways = "not by every SQLite";
    const std::string ok = "SQLITE_OK";
    const std::string unique = "SQLITE_CONSTRAINT_UNIQUE";
    const std::string null = "SQLITE_CONSTRAINT_NOTNULL";
    const std::string key = "SQLITE_CONSTRAINT_FOREIGNKEY";
    PlantRepository& r = Repository;

    const auto createPlant = [&](auto change)
    {
        Plant plant = With(Plant{}, change);
        return r.CreatePlant(plant);
    };
    const auto updatePlant = [&](auto change) { return r.UpdatePlant(With(Basil, change)); };
    const auto updateStrain = [&](auto change) { return r.UpdateStrain(With(Thyme, change)); };
    const auto create = [&](auto operation, auto record, auto change)
    {
        change(record);
        record.ID = 0;
        return (r.*operation)(record);
    };
    const auto update = [&](auto operation, auto record, auto change)
    {
        change(record);
        return (r.*operation)(record);
    };
    const auto saveHarvest = [&](Plant plant, HarvestRecord record, auto change)
    {
        change(plant, record);
        return r.SaveHarvestRecord(plant, record);
    };
    const auto noPlant = [](auto& record) { record.PlantUUID.clear(); };
    const auto unknownPlant = [](auto& record) { record.PlantUUID = "unknown"; };
    const auto noNumber = [](auto& record) { record.ID = 0; };

    return {
        {"GetPlant", "there is none", ok, nothing,
         [=, &r] { return r.GetPlant("unknown", *std::make_unique<Plant>()); }},
        {"CreatePlant", "the UUID exists", unique, unique,
         [=, this] { return createPlant([&](Plant& p) { p.UUID = Basil.UUID; }); }},
        {"CreatePlant", "a height is not a number", null, null,
         [=] { return createPlant([](Plant& p) { p.FinalHeightCm = NotANumber; }); }},
        {"CreatePlant", "the mother is unknown", ok, nothing,
         [=] { return createPlant([](Plant& p) { p.MotherPlantUUID = "unknown"; }); }},
        {"CreatePlant", "the mother is the plant itself", before, nothing,
         [=] { return createPlant([](Plant& p) { p.MotherPlantUUID = p.UUID = "self"; }); }},
        {"UpdatePlant", "a height is not a number", null, null,
         [=] { return updatePlant([](Plant& p) { p.FlipHeightCm = NotANumber; }); }},
        {"UpdatePlant", "the mother is unknown, or descends from the plant", ok, nothing,
         [=, this]
         {
             return updatePlant([](Plant& p) { p.MotherPlantUUID = "unknown"; }) ||
                    updatePlant([&](Plant& p) { p.MotherPlantUUID = Clone.UUID; });
         }},
        {"UpdatePlant", "the mother is the plant itself, and it has no strain", before, nothing,
         [=]
         {
             return updatePlant(
                 [](Plant& p)
                 {
                     p.MotherPlantUUID = p.UUID;
                     p.Strain.clear();
                 });
         }},
        {"DuplicatePlant", "a height is not a number", null, null,
         [=, this, &r]
         {
             Plant copy;
             return r.DuplicatePlant(With(Basil, [](Plant& p) { p.FlipHeightCm = NotANumber; }), copy);
         }},
        {"GetStrain", "there is none", ok, nothing, [=, &r] { return r.GetStrain(99, *std::make_unique<Strain>()); }},
        {"CreateStrain", "the name is empty", before, nothing,
         [=, &r] { return r.CreateStrain(*std::make_unique<Strain>()); }},
        {"CreateStrain", "the name exists", unique, unique,
         [=, this] { return create(&PlantRepository::CreateStrain, Thyme, [](Strain&) {}); }},
        {"UpdateStrain", "`ID` is 0, or the name is empty", before, nothing,
         [=] { return updateStrain(noNumber) || updateStrain([](Strain& s) { s.Name.clear(); }); }},
        {"UpdateStrain", "there is none", ok, nothing, [=] { return updateStrain([](Strain& s) { s.ID = 99; }); }},
        {"UpdateStrain", "the name is another strain's", ok, unique,
         [=] { return updateStrain([](Strain& s) { s.Name = "Genovese"; }); }},
        {"DeleteStrain", "a plant has it", ok, nothing,
         [=, this, &r]
         { return r.DeleteStrain(std::stoi(Query("SELECT ID FROM Strains WHERE Name='Genovese';")[0][0])); }},
        {"GetStrainSummary", "there is none", ok, nothing,
         [=, &r] { return r.GetStrainSummary(99, *std::make_unique<StrainSummary>()); }},
        {"CreatePlantEvent", "`PlantUUID` is empty", before, nothing,
         [=, this] { return create(&PlantRepository::CreatePlantEvent, Event, noPlant); }},
        {"CreatePlantEvent", "there is no such plant", key, key,
         [=, this] { return create(&PlantRepository::CreatePlantEvent, Event, unknownPlant); }},
        {"UpdatePlantEvent", "`ID` is 0, or `PlantUUID` is empty", before, nothing,
         [=, this]
         {
             return update(&PlantRepository::UpdatePlantEvent, Event, noNumber) ||
                    update(&PlantRepository::UpdatePlantEvent, Event, noPlant);
         }},
        {"DeletePlantEvent", "the number is 0", before, nothing, [=, &r] { return r.DeletePlantEvent(0); }},
        {"CreatePlantCareEntry", "`PlantUUID` is empty", before, nothing,
         [=, this] { return create(&PlantRepository::CreatePlantCareEntry, Care, noPlant); }},
        {"CreatePlantCareEntry", "there is no such plant", ok, key,
         [=, this] { return create(&PlantRepository::CreatePlantCareEntry, Care, unknownPlant); }},
        {"CreatePlantCareEntry", "a number is none", ok, null,
         [=, this]
         { return create(&PlantRepository::CreatePlantCareEntry, Care, [](auto& e) { e.PH = NotANumber; }); }},
        {"UpdatePlantCareEntry", "`ID` is 0, or `PlantUUID` is empty", before, nothing,
         [=, this]
         {
             return update(&PlantRepository::UpdatePlantCareEntry, Care, noNumber) ||
                    update(&PlantRepository::UpdatePlantCareEntry, Care, noPlant);
         }},
        {"UpdatePlantCareEntry", "its event was deleted since it was read", ok, notAlways,
         [=, this]
         { return update(&PlantRepository::UpdatePlantCareEntry, Care, [](auto& e) { e.TimelineEventID = 99; }); }},
        {"UpdatePlantCareEntry", "a number is none", ok, null,
         [=, this]
         { return update(&PlantRepository::UpdatePlantCareEntry, Care, [](auto& e) { e.EC = NotANumber; }); }},
        {"DeletePlantCareEntry", "the number is 0", before, nothing, [=, &r] { return r.DeletePlantCareEntry(0); }},
        {"DeletePlantCareEntry", "there is none", ok, nothing, [=, &r] { return r.DeletePlantCareEntry(99); }},
        {"GetHarvestRecord", "there is none", ok, nothing,
         [=, this, &r] { return r.GetHarvestRecord(Clone.UUID, *std::make_unique<HarvestRecord>()); }},
        {"SaveHarvestRecord", "`plant.UUID` is empty", before, nothing,
         [=] { return saveHarvest({}, {}, [](Plant&, HarvestRecord&) {}); }},
        {"SaveHarvestRecord", "there is no such plant", ok, key,
         [=] { return saveHarvest({}, {}, [](Plant& p, HarvestRecord&) { p.UUID = "unknown"; }); }},
        {"SaveHarvestRecord", "`record.ID` is 0, and the plant has a record", ok, unique,
         [=, this] { return saveHarvest(Basil, {}, [](Plant&, HarvestRecord&) {}); }},
        {"SaveHarvestRecord", "its event was deleted since it was read", ok, notAlways,
         [=, this] { return saveHarvest(Basil, Harvest, [](Plant&, HarvestRecord& h) { h.TimelineEventID = 99; }); }},
        {"SaveHarvestRecord", "a number is none", ok, null,
         [=, this]
         { return saveHarvest(Basil, Harvest, [](Plant&, HarvestRecord& h) { h.DryWeightG = NotANumber; }); }},
        {"DeleteHarvestRecord", "there is none", ok, nothing,
         [=, this, &r] { return r.DeleteHarvestRecord(Clone.UUID); }},
        {"CreatePlantPhoto", "`PlantUUID` or `FilePath` is empty", before, nothing,
         [=, this]
         {
             return create(&PlantRepository::CreatePlantPhoto, Photo, noPlant) ||
                    create(&PlantRepository::CreatePlantPhoto, Photo, [](auto& p) { p.FilePath.clear(); });
         }},
        {"CreatePlantPhoto", "the UUID exists", unique, unique,
         [=, this] { return create(&PlantRepository::CreatePlantPhoto, Photo, [](auto&) {}); }},
        {"CreatePlantPhoto", "there is no such plant", key, key,
         [=, this] {
             return create(&PlantRepository::CreatePlantPhoto, With(Photo, unknownPlant),
                           [](auto& p) { p.UUID = "new"; });
         }},
        {"UpdatePlantPhoto", "`ID` is 0, or `UUID`, `PlantUUID` or `FilePath` is empty", before, nothing,
         [=, this]
         {
             constexpr auto operation = &PlantRepository::UpdatePlantPhoto;
             return update(operation, Photo, noNumber) || update(operation, Photo, noPlant) ||
                    update(operation, Photo, [](auto& p) { p.UUID.clear(); }) ||
                    update(operation, Photo, [](auto& p) { p.FilePath.clear(); });
         }},
        {"DeletePlantPhoto", "the UUID is empty", before, nothing, [=, &r] { return r.DeletePlantPhoto(""); }},
        {"CreatePlantHealthObservation", "`PlantUUID` or `Issue` is empty", before, nothing,
         [=, this]
         {
             constexpr auto operation = &PlantRepository::CreatePlantHealthObservation;
             return create(operation, Observation, noPlant) ||
                    create(operation, Observation, [](auto& o) { o.Issue.clear(); });
         }},
        {"CreatePlantHealthObservation", "there is no such plant", key, key,
         [=, this] { return create(&PlantRepository::CreatePlantHealthObservation, Observation, unknownPlant); }},
        {"UpdatePlantHealthObservation", "`ID` is 0, or `PlantUUID` or `Issue` is empty", before, nothing,
         [=, this]
         {
             constexpr auto operation = &PlantRepository::UpdatePlantHealthObservation;
             return update(operation, Observation, noNumber) || update(operation, Observation, noPlant) ||
                    update(operation, Observation, [](auto& o) { o.Issue.clear(); });
         }},
        {"DeletePlantHealthObservation", "the number is 0", before, nothing,
         [=, &r] { return r.DeletePlantHealthObservation(0); }},
        {"CreatePlantJournalEntry", "`PlantUUID` is empty", before, nothing,
         [=, this] { return create(&PlantRepository::CreatePlantJournalEntry, Entry, noPlant); }},
        {"CreatePlantJournalEntry", "there is no such plant", key, key,
         [=, this] { return create(&PlantRepository::CreatePlantJournalEntry, Entry, unknownPlant); }},
        {"UpdatePlantJournalEntry", "`ID` is 0, or `PlantUUID` is empty", before, nothing,
         [=, this]
         {
             return update(&PlantRepository::UpdatePlantJournalEntry, Entry, noNumber) ||
                    update(&PlantRepository::UpdatePlantJournalEntry, Entry, noPlant);
         }},
        {"DeletePlantJournalEntry", "the number is 0", before, nothing,
         [=, &r] { return r.DeletePlantJournalEntry(0); }},
    };
}

TEST_F(RefusalPageTest, EveryRefusalOnThePageIsOneAndLeavesThatCodeAndThatInTheLog)
{
    std::vector<std::vector<std::string>> rows;
    const std::string content = Content();
    for (const Refusal& refusal : Refusals())
    {
        SCOPED_TRACE(refusal.Operation + ": " + refusal.Meaning);
        rows.push_back({refusal.Operation, Plain(refusal.Meaning), refusal.Code, refusal.Logged});
        if (refusal.Code == "as before")
        {
            EXPECT_TRUE(Refused(refusal.Call));
            continue;
        }
        Log.str("");
        EXPECT_FALSE(refusal.Call());
        EXPECT_EQ(Code(), Codes.at(refusal.Code));
        EXPECT_EQ(Content(), content);
        if (refusal.Logged == "not by every SQLite")
            continue;
        const std::string logged = Log.str();
        EXPECT_EQ(logged.substr(0, logged.find(':')),
                  refusal.Logged.empty() ? "" : std::to_string(Codes.at(refusal.Logged)));
    }
    std::vector<std::vector<std::string>> shown = TableRows(Page, "## When an operation returns `false`");
    for (auto& row : shown)
        std::transform(row.begin(), row.end(), row.begin(), Plain);
    EXPECT_EQ(shown, rows);
}

TEST_F(RefusalPageTest, EveryOperationThatIsNotOnThePageHasNoReasonOfItsOwn)
{
    std::set<std::string> without;
    for (const auto& row : TableRows("README.md", "## The operations"))
        for (const std::string& cell : {row.at(1), row.at(2)})
        {
            std::istringstream names(Plain(cell));
            for (std::string name; names >> name;)
                without.insert(name);
        }
    EXPECT_EQ(without.size(), 36);
    for (const Refusal& refusal : Refusals())
        EXPECT_TRUE(without.contains(refusal.Operation)) << refusal.Operation;
    for (const Refusal& refusal : Refusals())
        without.erase(refusal.Operation);
    EXPECT_EQ(without,
              (std::set<std::string>{"CareTimelineDetails", "DeletePlant", "ListPlantCareEntries", "ListPlantEvents",
                                     "ListPlantHealthObservations", "ListPlantJournalEntries", "ListPlantPhotos",
                                     "ListPlants", "ListStrains"}));
}

// ---- Finding the cause

TEST_F(ErrorsPageTest, AFailedStatementLeavesItsReason)
{
    Plant plant = NewPlant("Basil");
    PlantDatabase& journal = Database;
    PlantRepository& repository = Repository;
    std::ostringstream said;
    std::streambuf* const usual = std::cerr.rdbuf(said.rdbuf());
    // [reason]
    if (!repository.CreatePlant(plant))
    {
        sqlite3* db = journal.NativeHandle();
        std::cerr << sqlite3_extended_errcode(db) << ": " << sqlite3_errmsg(db) << '\n';
    }
    // [end]
    std::cerr.rdbuf(usual);
    EXPECT_EQ(said.str(), "2067: UNIQUE constraint failed: Plants.UUID\n");
    EXPECT_NE(PageText(Page).find("\n" + said.str()), std::string::npos);

    EXPECT_TRUE(Repository.DeletePlant(plant.UUID)); // which runs
    EXPECT_EQ(Message(), "not an error");
}

TEST_F(ErrorsPageTest, AReasonStaysUntilAStatementRunsAndAnEmptyOneForgetsIt)
{
    Plant plant = NewPlant("Basil");
    EXPECT_FALSE(Repository.CreatePlant(plant));
    EXPECT_FALSE(Repository.DeletePlantEvent(0)); // refused without a look
    EXPECT_EQ(Code(), SQLITE_CONSTRAINT_UNIQUE);
    PlantDatabase& journal = Database;
    // [forget]
    sqlite3_exec(journal.NativeHandle(), "", nullptr, nullptr, nullptr);
    // [end]
    EXPECT_EQ(Code(), SQLITE_OK);
}

class SuccessTest : public ErrorsPageTest, public testing::WithParamInterface<Operation>
{
};

TEST_P(SuccessTest, LeavesNoReason)
{
    Garden garden = PlantGarden(Repository);
    EXPECT_TRUE(GetParam().Call(Repository, garden));
    EXPECT_EQ(Code(), SQLITE_OK);
}

INSTANTIATE_TEST_SUITE_P(OfEveryOperation, SuccessTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

TEST_F(ErrorsPageTest, AListThatBreaksOffIsTrueAndLeavesItsReason)
{
    NewPlant("Basil");
    const PlainConnection other(Path);
    other.Execute("BEGIN EXCLUSIVE;");
    std::vector<Plant> plants;
    EXPECT_TRUE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());
    EXPECT_EQ(Code(), SQLITE_BUSY);
}

// ---- What may happen to every operation

class CommonErrorsTest : public ErrorsPageTest
{
  protected:
    CommonErrorsTest()
    {
        Event.PlantUUID = Care.PlantUUID = NewPlant("Basil").UUID;
        Care.Notes = Event.Details =
            std::string(100'000, 'x'); // more than there is room for in the pages that are there
    }

    // The page's row of a cause.
    static std::vector<std::string> Shown(const std::string& cause)
    {
        for (auto row : TableRows(Page, "## What may happen to any operation"))
            if (row[0] == cause)
            {
                std::transform(row.begin(), row.end(), row.begin(), Plain);
                return row;
            }
        ADD_FAILURE() << "the page has no cause: " << cause;
        return std::vector<std::string>(4);
    }

    // What an operation of one statement leaves, one with a transaction, and the log.
    std::vector<std::string> Left(PlantRepository& repository, sqlite3* db)
    {
        const std::map<int, std::string> names = {
            {SQLITE_OK, "SQLITE_OK"},          {SQLITE_ERROR, "SQLITE_ERROR"},       {SQLITE_BUSY, "SQLITE_BUSY"},
            {SQLITE_FULL, "SQLITE_FULL"},      {SQLITE_READONLY, "SQLITE_READONLY"}, {SQLITE_IOERR, "SQLITE_IOERR"},
            {SQLITE_CORRUPT, "SQLITE_CORRUPT"}};
        Log.str("");
        EXPECT_FALSE(repository.CreatePlantEvent(Event));
        const int ofOne = sqlite3_errcode(db);
        EXPECT_FALSE(repository.CreatePlantCareEntry(Care));
        const int ofTransaction = sqlite3_errcode(db);
        // The cause comes before what followed from it.
        const std::string log = Log.str();
        const std::string first = log.empty() ? "" : names.at(std::stoi(log) & 0xFF);
        return {names.at(ofOne & 0xFF), names.at(ofTransaction & 0xFF), first};
    }

    void Expect(const std::string& cause)
    {
        const std::vector<std::string> shown = Shown(cause);
        const std::vector<std::string> left = Left(Repository, Database.NativeHandle());
        EXPECT_EQ(left[0], shown[1]);
        EXPECT_TRUE(shown[2] == left[1] || shown[2] == "SQLITE_ERROR or SQLITE_OK") << left[1];
        EXPECT_EQ(left[2], shown[3]);
    }

    PlantEvent Event;
    PlantCareEntry Care;
};

TEST_F(CommonErrorsTest, AWritersLockLeavesWhatThePageShows)
{
    const PlainConnection other(Path);
    other.Execute("BEGIN IMMEDIATE;");
    Expect("Another process writes, and did not finish within 2.5 seconds");
}

TEST_F(CommonErrorsTest, AReadersLockLeavesWhatThePageShows)
{
    const PlainConnection other(Path);
    other.Execute("BEGIN; SELECT * FROM Plants;");
    Expect("Another process reads, and did not finish within 2.5 seconds");
}

TEST_F(CommonErrorsTest, AFileThatMayOnlyBeReadLeavesWhatThePageShows)
{
    Database.Close();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms{0755});
    std::filesystem::permissions(Path, std::filesystem::perms{0444});
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            constexpr uid_t nobody = 65534; // the administrator may write everywhere
            if (geteuid() == 0 && setuid(nobody) != 0)
                throw std::runtime_error("privileges could not be given up");
            OpenJournal();
            for (const std::string& name : Left(Repository, Database.NativeHandle()))
                parent.Tell(name);
        });
    std::vector<std::string> row = child.Lines();
    EXPECT_EQ(child.End(), "done");
    row.insert(row.begin(), "The file may only be read");
    EXPECT_EQ(row, Shown(row.front()));
}

TEST_F(CommonErrorsTest, AFullDiskLeavesWhatThePageShows)
{
    Execute("PRAGMA max_page_count=" + Query("PRAGMA page_count;")[0][0] + ";");
    Expect("The disk is full");
    EXPECT_EQ(Message(), "cannot rollback - no transaction is active");
}

TEST_F(CommonErrorsTest, AFailingDiskLeavesWhatThePageShows)
{
    const FailingDisk disk;
    Database.Close();
    OpenJournal();
    {
        const DiskFailure failure({DiskCall::Write, DiskError::IO, true, 1});
        Expect("The disk fails");
    }
    Database.Close();
}

TEST_F(CommonErrorsTest, ADamagedFileLeavesWhatThePageShows)
{
    const int page = std::stoi(Query("SELECT rootpage FROM sqlite_master WHERE name='PlantEvents';")[0][0]);
    const int size = std::stoi(Query("PRAGMA page_size;")[0][0]);
    Database.Close();
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(page - 1) * size);
        file << std::string(static_cast<std::size_t>(size), '\xFF');
    }
    OpenJournal();
    Expect("The file is damaged");
}

TEST_F(CommonErrorsTest, ThePageShowsNoOtherCauses)
{
    EXPECT_EQ(TableRows(Page, "## What may happen to any operation").size(), 6);
}

TEST_F(CommonErrorsTest, ATransactionOfOnesOwnKeepsOutThoseThatNeedOne)
{
    Execute("BEGIN;");
    EXPECT_TRUE(Repository.CreatePlantEvent(Event));
    EXPECT_FALSE(Repository.CreatePlantCareEntry(Care));
    EXPECT_EQ(Message(), "cannot start a transaction within a transaction");
    Execute("COMMIT;");
}

TEST_F(CommonErrorsTest, AClosedDatabaseHasNoReason)
{
    Database.Close();
    EXPECT_FALSE(Repository.CreatePlantEvent(Event));
    EXPECT_EQ(Database.NativeHandle(), nullptr);
    EXPECT_EQ(sqlite3_errcode(nullptr), SQLITE_NOMEM);
}

TEST_F(ErrorsPageTest, TheLogCutsItsTextsAndKeepsTheCode)
{
    Plant plant = NewPlant("Basil");
    EXPECT_FALSE(Repository.CreatePlant(plant));
    EXPECT_TRUE(Log.str().starts_with("2067: abort at ")) << Log.str();
    EXPECT_EQ(Log.str().find("UNIQUE"), std::string::npos);
    EXPECT_LT(Log.str().size(), 220);
}

TEST(ErrorLogTest, IsTakenOnlyBeforeSQLiteIsUsed)
{
    PlantDatabase database;
    EXPECT_TRUE(database.Open(":memory:"));
    const auto configure = []
    {
        // [configure]
        const bool taken = sqlite3_config(SQLITE_CONFIG_LOG, KeepLog, static_cast<void*>(&std::cerr)) == SQLITE_OK;
        // [end]
        return taken;
    };
    EXPECT_EQ(configure(), sqlite3_libversion_number() >= 3042000);
    database.Close();
    sqlite3_shutdown();
    EXPECT_TRUE(configure());
    EXPECT_EQ(sqlite3_config(SQLITE_CONFIG_LOG, nullptr, nullptr), SQLITE_OK);
}

} // namespace

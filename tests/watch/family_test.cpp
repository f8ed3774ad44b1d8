// Which families and plants a committed change names.
#include "support/allocation_failure.h"
#include "support/sample_records.h"
#include "watch/watch_test.h"

#include <algorithm>
#include <optional>
#include <utility>

using namespace support;

namespace
{

class FamilyTest : public WatchTest
{
  protected:
    SampleRecords Records = StoreSampleRecords(Repository);
    std::optional<PlantWatcher> Owned{std::in_place, Database};
    PlantWatcher& Watcher = *Owned;
    const std::string Mother = Records.Mother.UUID;
    const std::string Clone = Records.Clone.UUID;
};

TEST_F(FamilyTest, NothingChangedBeforeTheFirstWrite)
{
    ExpectNothing(Watcher);
}

TEST_F(FamilyTest, AChangeIsReportedOnce)
{
    ASSERT_TRUE(Repository.CreatePlantEvent(Records.Event));
    ExpectOwn(Watcher, {Family::Event}, {Records.Event.PlantUUID});
    ExpectNothing(Watcher);
}

TEST_F(FamilyTest, ACareEntryNamesItsEventToo)
{
    Records.Care.PlantUUID = Clone;
    ASSERT_TRUE(Repository.CreatePlantCareEntry(Records.Care));
    ExpectOwn(Watcher, {Family::Event, Family::CareEntry}, {Clone});
    ASSERT_TRUE(Repository.UpdatePlantCareEntry(Records.Care));
    ExpectOwn(Watcher, {Family::Event, Family::CareEntry}, {Clone});
    ASSERT_TRUE(Repository.DeletePlantCareEntry(Records.Care.ID));
    ExpectOwn(Watcher, {Family::Event, Family::CareEntry}, {Clone});
}

TEST_F(FamilyTest, AHarvestNamesItsEventAndItsPlant)
{
    HarvestRecord harvest;
    ASSERT_TRUE(Repository.SaveHarvestRecord(Records.Clone, harvest));
    ExpectOwn(Watcher, {Family::Plant, Family::Event, Family::HarvestRecord}, {Clone});
    ASSERT_TRUE(Repository.DeleteHarvestRecord(Clone));
    ExpectOwn(Watcher, {Family::Event, Family::HarvestRecord}, {Clone});
}

TEST_F(FamilyTest, OtherRecordsNameOneFamilyAndOnePlant)
{
    ASSERT_TRUE(Repository.UpdatePlantPhoto(Records.Photo));
    ExpectOwn(Watcher, {Family::Photo}, {Records.Photo.PlantUUID});
    ASSERT_TRUE(Repository.UpdatePlantHealthObservation(Records.Observation));
    ExpectOwn(Watcher, {Family::HealthObservation}, {Records.Observation.PlantUUID});
    ASSERT_TRUE(Repository.DeletePlantJournalEntry(Records.Entry.ID));
    ExpectOwn(Watcher, {Family::JournalEntry}, {Records.Entry.PlantUUID});
}

TEST_F(FamilyTest, ADeletedPlantNamesEachFamilyThatLostARow)
{
    const std::vector<std::pair<Family, std::string>> tables = {{Family::Event, "PlantEvents"},
                                                                {Family::CareEntry, "PlantCareEntries"},
                                                                {Family::HarvestRecord, "HarvestRecords"},
                                                                {Family::Photo, "PlantPhotos"},
                                                                {Family::HealthObservation, "PlantHealthObservations"},
                                                                {Family::JournalEntry, "PlantJournalEntries"}};
    Families lost = {Family::Plant};
    for (const auto& [family, table] : tables)
        if (RowCount(table, "PlantUUID='" + Mother + "'") != 0)
            lost.push_back(family);
    ASSERT_EQ(lost.size(), tables.size() + 1);
    ASSERT_TRUE(Repository.DeletePlant(Mother));
    ExpectOwn(Watcher, lost, {Mother, Clone}); // the mother link of the clone was cleared
    const Plant basil = NewPlant("Basil");
    Poll(Watcher);
    ASSERT_TRUE(Repository.DeletePlant(basil.UUID));
    ExpectOwn(Watcher, {Family::Plant}, {basil.UUID});
}

TEST_F(FamilyTest, ANewMotherLinkConcernsTheDaughterAlone)
{
    Records.Clone.MotherPlantUUID.clear();
    ASSERT_TRUE(Repository.UpdatePlant(Records.Clone));
    ExpectOwn(Watcher, {Family::Plant}, {Clone});
    Records.Clone.MotherPlantUUID = Mother;
    ASSERT_TRUE(Repository.UpdatePlant(Records.Clone));
    ExpectOwn(Watcher, {Family::Plant}, {Clone});
}

TEST_F(FamilyTest, AStrainConcernsNoPlant)
{
    Records.Kind.Notes = "sturdy";
    ASSERT_TRUE(Repository.UpdateStrain(Records.Kind));
    const PlantChanges changes = Poll(Watcher);
    EXPECT_EQ(changes.Families, Families{Family::Strain});
    EXPECT_TRUE(changes.Plants.empty() && !changes.AnyPlant) << changes;
}

TEST_F(FamilyTest, ARenamedStrainChangesTheRecordsOfItsPlants)
{
    Records.Kind.Name = "Renamed";
    ASSERT_TRUE(Repository.UpdateStrain(Records.Kind));
    std::set<std::string> plants;
    for (const Row& row : QueryRows("SELECT UUID FROM Plants WHERE Strain='Renamed';"))
        plants.insert(row[0]);
    ASSERT_FALSE(plants.empty());
    ExpectOwn(Watcher, {Family::Plant, Family::Strain}, plants);
}

TEST_F(FamilyTest, ANewPlantNamesItsNewStrain)
{
    const Plant basil = NewPlant("Basil", "New strain");
    ExpectOwn(Watcher, {Family::Plant, Family::Strain}, {basil.UUID});
}

TEST_F(FamilyTest, ARowThatMovesConcernsBothPlants)
{
    RunSQL("UPDATE PlantCareEntries SET PlantUUID='" + Clone + "' WHERE ID=" + std::to_string(Records.Care.ID) + ";");
    ExpectOwn(Watcher, {Family::CareEntry}, {Mother, Clone});
    const Plant basil = NewPlant("Basil");
    Poll(Watcher);
    RunSQL("UPDATE Plants SET UUID='another' WHERE UUID='" + basil.UUID + "';");
    ExpectOwn(Watcher, {Family::Plant}, {basil.UUID, "another"});
}

TEST_F(FamilyTest, TheRowThatReplaceRemovesCounts)
{
    const Plant basil = NewPlant("Basil");
    PlantPhoto photo;
    photo.PlantUUID = basil.UUID;
    photo.FilePath = "x.jpg";
    ASSERT_TRUE(Repository.CreatePlantPhoto(photo));
    Poll(Watcher);
    RunSQL("INSERT OR REPLACE INTO PlantPhotos(ID,UUID,PlantUUID,FilePath) VALUES(999,'" + photo.UUID + "','" + Clone +
           "','x.jpg');");
    ExpectOwn(Watcher, {Family::Photo}, {basil.UUID, Clone});
    // The daughters of the replaced plant lose their rows.
    photo.PlantUUID = basil.UUID;
    photo.UUID.clear();
    ASSERT_TRUE(Repository.CreatePlantPhoto(photo));
    Poll(Watcher);
    RunSQL("INSERT OR REPLACE INTO Plants(ID,UUID,Name) VALUES(999,'" + basil.UUID + "','Basil again');");
    EXPECT_EQ(RowCount("PlantPhotos", "UUID='" + photo.UUID + "'"), 0);
    ExpectOwn(Watcher, {Family::Plant, Family::Photo}, {basil.UUID});
}

TEST_F(FamilyTest, ADeleteWithoutWhereNamesItsFamily)
{
    RunSQL("DELETE FROM Strains;");
    ExpectOwn(Watcher, {Family::Strain}, {});
    RunSQL("DELETE FROM PlantJournalEntries;");
    ExpectOwn(Watcher, {Family::JournalEntry}, {Records.Entry.PlantUUID});
}

TEST_F(FamilyTest, ADeleteWithoutForeignKeysNamesItsFamily)
{
    RunSQL("PRAGMA foreign_keys=OFF;");
    RunSQL("DELETE FROM PlantJournalEntries;");
    const PlantChanges changes = Poll(Watcher);
    if (PlantWatcher::NamesPlants())
    {
        EXPECT_EQ(changes.Families, Families{Family::JournalEntry}) << changes;
        EXPECT_EQ(changes.Plants, std::vector{Records.Entry.PlantUUID});
    }
    else
    {
        EXPECT_EQ(changes.Families, EveryFamily()) << changes;
        EXPECT_TRUE(changes.AnyPlant);
    }
}

TEST_F(FamilyTest, AStatementThatWasPreparedBeforeCountsToo)
{
    for (const std::string foreignKeys : {"ON", "OFF"})
    {
        RunSQL("PRAGMA foreign_keys=" + foreignKeys + ";");
        Strain strain;
        strain.Name = foreignKeys;
        ASSERT_TRUE(Repository.CreateStrain(strain));
        Owned.reset(); // a statement that is prepared under the hook would count anyway
        sqlite3_stmt* statement = nullptr;
        ASSERT_EQ(sqlite3_prepare_v2(Database.NativeHandle(), "DELETE FROM Strains;", -1, &statement, nullptr),
                  SQLITE_OK);
        Owned.emplace(Database);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE);
        EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK);
        const Families families = Poll(Watcher).Families;
        EXPECT_EQ(std::count(families.begin(), families.end(), Family::Strain), 1) << foreignKeys;
        EXPECT_EQ(QueryRows("PRAGMA foreign_keys;"), (Rows{{foreignKeys == "ON" ? "1" : "0"}}));
    }
}

TEST_F(FamilyTest, ARowThatIsOverwrittenWithEqualValuesCounts)
{
    ASSERT_TRUE(Repository.UpdatePlant(Records.Mother));
    ExpectOwn(Watcher, {Family::Plant}, {Mother});
}

TEST_F(FamilyTest, AStatementThatMatchesNoRowNamesNoPlant)
{
    ASSERT_TRUE(Repository.DeletePlant("unknown"));
    ExpectOwn(Watcher, {}, {});
}

TEST_F(FamilyTest, TablesOutsideOfTheJournalDoNotCount)
{
    RunSQL("CREATE TEMP TABLE Plants(UUID TEXT);");
    RunSQL("INSERT INTO temp.Plants VALUES('another');");
    RunSQL("INSERT INTO SchemaMeta VALUES('key','value');");
    ExpectOwn(Watcher, {}, {});
}

TEST_F(FamilyTest, ATemporaryTableDoesNotHideATableOfTheJournal)
{
    RunSQL("CREATE TEMP TABLE PlantJournalEntries(PlantUUID TEXT);");
    Owned.emplace(Database);
    RunSQL("UPDATE main.PlantJournalEntries SET Details='x';");
    ExpectOwn(Watcher, {Family::JournalEntry}, {Records.Entry.PlantUUID});
}

TEST_F(FamilyTest, ChangesOfTheSchemaDoNotCount)
{
    RunSQL("ALTER TABLE Plants ADD COLUMN Shelf TEXT NOT NULL DEFAULT 'one';");
    RunSQL("CREATE INDEX PlantsByShelf ON Plants(Shelf);");
    RunSQL("DROP TABLE PlantJournalEntries;");
    ExpectOwn(Watcher, {}, {});
}

TEST_F(FamilyTest, ADroppedTableWithDaughtersCounts)
{
    RunSQL("DROP TABLE Plants;"); // SQLite deletes its rows first
    ExpectOwn(Watcher,
              {Family::Plant, Family::Event, Family::CareEntry, Family::HarvestRecord, Family::Photo,
               Family::HealthObservation, Family::JournalEntry},
              {Mother, Clone});
}

TEST_F(FamilyTest, ARestoredBackupDoesNotCount)
{
    PlantDatabase backup;
    ASSERT_TRUE(backup.Open(Scratch.File("backup.db")));
    sqlite3_backup* restoring = sqlite3_backup_init(Database.NativeHandle(), "main", backup.NativeHandle(), "main");
    ASSERT_NE(restoring, nullptr);
    EXPECT_EQ(sqlite3_backup_step(restoring, -1), SQLITE_DONE);
    EXPECT_EQ(sqlite3_backup_finish(restoring), SQLITE_OK);
    EXPECT_EQ(RowCount("Plants"), 0);
    ExpectNothing(Watcher);
}

TEST_F(FamilyTest, ABlobWriteCountsWithThePreupdateHook)
{
    sqlite3_blob* blob = nullptr;
    ASSERT_EQ(sqlite3_blob_open(Database.NativeHandle(), "main", "PlantJournalEntries", "Details", Records.Entry.ID, 1,
                                &blob),
              SQLITE_OK);
    ASSERT_EQ(sqlite3_blob_write(blob, "X", 1, 0), SQLITE_OK);
    ASSERT_EQ(sqlite3_blob_close(blob), SQLITE_OK);
    if (PlantWatcher::NamesPlants())
        ExpectOwn(Watcher, {Family::JournalEntry}, {Records.Entry.PlantUUID});
    else
        ExpectOwn(Watcher, {}, {});
}

TEST_F(FamilyTest, AUUIDIsReportedUpToItsFirstZeroByte)
{
    RunSQL("INSERT INTO Plants(UUID,Name) VALUES('cut'||char(0)||'off','Basil');");
    ExpectOwn(Watcher, {Family::Plant}, {"cut"});
}

TEST_F(FamilyTest, ManyPlantsBecomeAnyPlant)
{
    const auto create = [&](std::size_t number)
    {
        RunSQL("WITH RECURSIVE Numbers(N) AS (SELECT 1 UNION ALL SELECT N+1 FROM Numbers WHERE N<" +
               std::to_string(number) + ") INSERT INTO Plants(UUID,Name) SELECT hex(randomblob(16)),N FROM Numbers;");
        return Poll(Watcher);
    };
    const PlantChanges most = create(PlantWatcher::MostPlants);
    EXPECT_EQ(most.Plants.size(), PlantWatcher::NamesPlants() ? PlantWatcher::MostPlants : 0);
    EXPECT_EQ(most.AnyPlant, !PlantWatcher::NamesPlants());
    const PlantChanges more = create(PlantWatcher::MostPlants + 1);
    EXPECT_TRUE(more.Plants.empty() && more.AnyPlant);
    RunSQL("UPDATE Plants SET Notes='0';");
    EXPECT_TRUE(Poll(Watcher).AnyPlant);
    // Two transactions with more than the most plants together.
    RunSQL("UPDATE Plants SET Notes='1' WHERE ID<900;");
    RunSQL("UPDATE Plants SET Notes='2' WHERE ID>=900 AND ID<1800;");
    const PlantChanges both = Poll(Watcher);
    EXPECT_TRUE(both.Plants.empty() && both.AnyPlant);
    RunSQL("UPDATE Plants SET Notes='3' WHERE ID<=900;");
    EXPECT_EQ(Poll(Watcher).AnyPlant, !PlantWatcher::NamesPlants());
    RunSQL("UPDATE Plants SET Notes='4';");
    RunSQL("UPDATE Plants SET Notes='5' WHERE ID=900;");
    const PlantChanges last = Poll(Watcher);
    EXPECT_TRUE(last.Plants.empty() && last.AnyPlant);
}

TEST_F(FamilyTest, NoMorePlantsAreKeptThanReported)
{
    RunSQL("WITH RECURSIVE Numbers(N) AS (SELECT 1 UNION ALL SELECT N+1 FROM Numbers WHERE N<3000) "
           "INSERT INTO Plants(UUID,Name) SELECT hex(randomblob(16)),N FROM Numbers;");
    // A plant needs two allocations: one for its place in the set, one for its UUID.
    const AllocationFailure failure(Allocator::New, 2 * static_cast<int>(PlantWatcher::MostPlants) + 3);
    EXPECT_EQ(sqlite3_exec(Database.NativeHandle(), "UPDATE Plants SET Notes='x';", nullptr, nullptr, nullptr),
              SQLITE_OK);
    EXPECT_FALSE(failure.Happened());
}

TEST_F(FamilyTest, AnyOtherFamilyHasTheNameOfTheFirst)
{
    EXPECT_STREQ(PlantRecordFamilyName(Family::Plant), "Plant");
    EXPECT_STREQ(PlantRecordFamilyName(Family::JournalEntry), "JournalEntry");
    EXPECT_STREQ(PlantRecordFamilyName(static_cast<Family>(8)), "Plant");
    EXPECT_STREQ(PlantRecordFamilyName(static_cast<Family>(-1)), "Plant");
}

} // namespace

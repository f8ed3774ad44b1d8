#include "support/journal_test.h"

#include <climits>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto InsertJournalEntry =
    "INSERT INTO PlantJournalEntries(PlantUUID,EntryDate,Type,Details) VALUES(?,?,?,?);";
constexpr auto UpdateJournalEntry =
    "UPDATE PlantJournalEntries SET EntryDate=?,Type=?,Details=? WHERE ID=? AND PlantUUID=?;";

class JournalEntryTest : public JournalTest
{
  protected:
    JournalEntryTest() : Basil(NewPlant("Basil")) {}

    // Every field differs from the other fields and from its default.
    PlantJournalEntry Full(const std::string& details = "Two new shoots") const
    {
        return {.ID = 99,
                .PlantUUID = Basil.UUID,
                .EntryDate = "2024-06-01",
                .Type = PlantJournalType::Pruning,
                .Details = details};
    }

    PlantJournalEntry NewEntry(const std::string& details = "Two new shoots")
    {
        PlantJournalEntry entry = Full(details);
        EXPECT_TRUE(Repository.CreatePlantJournalEntry(entry));
        return entry;
    }

    std::vector<PlantJournalEntry> Listed()
    {
        return JournalTest::Listed(&PlantRepository::ListPlantJournalEntries, Basil.UUID);
    }

    Rows StoredEntries() const
    {
        return QueryRows("SELECT ID,PlantUUID,EntryDate,Type,Details FROM PlantJournalEntries ORDER BY ID;");
    }

    Plant Basil;
};

TEST_F(JournalEntryTest, CreateStoresEveryFieldInItsColumn)
{
    NewEntry("First");
    const PlantJournalEntry entry = NewEntry();
    EXPECT_EQ(entry.ID, 2);
    EXPECT_EQ(StoredEntries().at(1), (Row{"2", Basil.UUID, "2024-06-01", "Pruning", "Two new shoots"}));
    EXPECT_EQ(Listed().at(0), entry);
}

TEST_F(JournalEntryTest, UpdateOverwritesEveryFieldOfThatEntryOnly)
{
    NewEntry("First");
    NewEntry("Second");
    ASSERT_TRUE(Repository.UpdatePlantJournalEntry({.ID = 2,
                                                    .PlantUUID = Basil.UUID,
                                                    .EntryDate = "2024-07-02",
                                                    .Type = PlantJournalType::Topping,
                                                    .Details = "Changed"}));
    EXPECT_EQ(StoredEntries(), (Rows{{"1", Basil.UUID, "2024-06-01", "Pruning", "First"},
                                     {"2", Basil.UUID, "2024-07-02", "Topping", "Changed"}}));
}

TEST_F(JournalEntryTest, EachOperationRunsItsStatement)
{
    PlantJournalEntry entry = Full();
    std::vector<PlantJournalEntry> entries;
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlantJournalEntry(entry); }), (Statements{InsertJournalEntry}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantJournalEntry(entry); }), (Statements{UpdateJournalEntry}));
    EXPECT_EQ(StatementsOf([&] { Repository.ListPlantJournalEntries(Basil.UUID, entries); }),
              (Statements{"SELECT ID,PlantUUID,EntryDate,Type,Details FROM PlantJournalEntries WHERE PlantUUID=? ORDER "
                          "BY EntryDate DESC,ID DESC;"}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantJournalEntry(entry.ID); }),
              (Statements{"DELETE FROM PlantJournalEntries WHERE ID=?;"}));
    EXPECT_EQ(RowCount("PlantJournalEntries"), 0);
}

TEST_F(JournalEntryTest, AnEntryOfAnUnknownPlantIsRefused)
{
    PlantJournalEntry entry = Full();
    entry.PlantUUID = "unknown";
    const PlantJournalEntry before = entry;
    EXPECT_FALSE(Repository.CreatePlantJournalEntry(entry));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "FOREIGN KEY constraint failed");
    EXPECT_EQ(entry, before);
    EXPECT_EQ(RowCount("PlantJournalEntries"), 0);
}

TEST_F(JournalEntryTest, AnEmptyDateAndDetailsStayEmpty)
{
    PlantJournalEntry entry;
    entry.PlantUUID = Basil.UUID;
    ASSERT_TRUE(Repository.CreatePlantJournalEntry(entry));
    EXPECT_EQ(StoredEntries(), (Rows{{"1", Basil.UUID, "", "Observation", ""}}));
    EXPECT_EQ(Listed().at(0), entry);
}

TEST_F(JournalEntryTest, TypesAreStoredByTheirNames)
{
    const char* names[] = {"Observation", "Training", "Pruning", "Topping", "Defoliation", "Milestone"};
    PlantJournalEntry entry = NewEntry();
    for (int number = 0; number < 6; ++number)
    {
        entry.Type = static_cast<PlantJournalType>(number);
        ASSERT_TRUE(Repository.UpdatePlantJournalEntry(entry));
        EXPECT_EQ(QueryRows("SELECT Type FROM PlantJournalEntries;"), (Rows{{names[number]}}));
        EXPECT_EQ(Listed().at(0), entry);
    }
}

TEST_F(JournalEntryTest, NumbersOutsideTheEnumerationAreStoredAsObservations)
{
    PlantJournalEntry entry = NewEntry();
    for (const std::int32_t number : {-1, 6, INT_MIN, INT_MAX})
    {
        entry.Type = static_cast<PlantJournalType>(number);
        ASSERT_TRUE(Repository.UpdatePlantJournalEntry(entry));
        EXPECT_EQ(QueryRows("SELECT Type FROM PlantJournalEntries;"), (Rows{{"Observation"}}));
    }
}

TEST_F(JournalEntryTest, AStoredTypeThatIsUnknownReadsAsAnObservation)
{
    NewEntry();
    for (const char* name : {"Topped", "pruning", ""})
    {
        RunSQL("PRAGMA ignore_check_constraints=ON;");
        RunSQL(std::string("UPDATE PlantJournalEntries SET Type='") + name + "';");
        EXPECT_EQ(Listed().at(0).Type, PlantJournalType::Observation);
    }
}

TEST_F(JournalEntryTest, ATypeThatTheFileDoesNotAllowIsRefused)
{
    PlantJournalEntry entry = NewEntry();
    ReplaceInDefinitions(",'Milestone'", "");
    entry.Type = PlantJournalType::Milestone;
    EXPECT_FALSE(Repository.UpdatePlantJournalEntry(entry));
    EXPECT_EQ(sqlite3_extended_errcode(Database.NativeHandle()), SQLITE_CONSTRAINT_CHECK);
    EXPECT_FALSE(Repository.CreatePlantJournalEntry(entry));
    EXPECT_EQ(entry.ID, 1);
    EXPECT_EQ(StoredEntries(), (Rows{{"1", Basil.UUID, "2024-06-01", "Pruning", "Two new shoots"}}));
}

} // namespace

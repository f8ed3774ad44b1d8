#include "support/journal_test.h"

#include <climits>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto InsertHealth =
    "INSERT INTO PlantHealthObservations(PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes) "
    "VALUES(?,?,?,?,?,?);";
constexpr auto UpdateHealth =
    "UPDATE PlantHealthObservations SET ObservationDate=?,Issue=?,Severity=?,Treatment=?,Notes=? "
    "WHERE ID=? AND PlantUUID=?;";

class HealthTest : public JournalTest
{
  protected:
    HealthTest() : Basil(NewPlant("Basil")) {}

    // Every field differs from the other fields and from its default.
    PlantHealthObservation Full(const std::string& issue = "Aphids") const
    {
        return {.ID = 99,
                .PlantUUID = Basil.UUID,
                .ObservationDate = "2024-06-01",
                .Issue = issue,
                .Severity = 4,
                .Treatment = "Soap",
                .Notes = "Lower leaves"};
    }

    PlantHealthObservation NewObservation(const std::string& issue = "Aphids")
    {
        PlantHealthObservation observation = Full(issue);
        EXPECT_TRUE(Repository.CreatePlantHealthObservation(observation));
        return observation;
    }

    std::vector<PlantHealthObservation> Listed()
    {
        return JournalTest::Listed(&PlantRepository::ListPlantHealthObservations, Basil.UUID);
    }

    Rows StoredObservations() const
    {
        return QueryRows(
            "SELECT ID,PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes FROM PlantHealthObservations "
            "ORDER BY ID;");
    }

    Plant Basil;
};

TEST_F(HealthTest, CreateStoresEveryFieldInItsColumn)
{
    NewObservation("Mites");
    const PlantHealthObservation observation = NewObservation();
    PlantHealthObservation expected = Full();
    expected.ID = 2;
    EXPECT_EQ(observation, expected);
    EXPECT_EQ(StoredObservations().at(1), (Row{"2", Basil.UUID, "2024-06-01", "Aphids", "4", "Soap", "Lower leaves"}));
    EXPECT_EQ(Listed().at(0), expected);
}

TEST_F(HealthTest, UpdateOverwritesEveryFieldOfThatObservationOnly)
{
    NewObservation("Mites");
    NewObservation("Aphids");
    ASSERT_TRUE(Repository.UpdatePlantHealthObservation({.ID = 2,
                                                         .PlantUUID = Basil.UUID,
                                                         .ObservationDate = "2024-07-02",
                                                         .Issue = "Mildew",
                                                         .Severity = 2,
                                                         .Treatment = "Air",
                                                         .Notes = "All over"}));
    EXPECT_EQ(StoredObservations(), (Rows{{"1", Basil.UUID, "2024-06-01", "Mites", "4", "Soap", "Lower leaves"},
                                          {"2", Basil.UUID, "2024-07-02", "Mildew", "2", "Air", "All over"}}));
}

TEST_F(HealthTest, EachOperationRunsItsStatement)
{
    PlantHealthObservation observation = Full();
    std::vector<PlantHealthObservation> observations;
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlantHealthObservation(observation); }), (Statements{InsertHealth}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlantHealthObservation(observation); }), (Statements{UpdateHealth}));
    EXPECT_EQ(StatementsOf([&] { Repository.ListPlantHealthObservations(Basil.UUID, observations); }),
              (Statements{"SELECT ID,PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes FROM "
                          "PlantHealthObservations WHERE PlantUUID=? ORDER BY ObservationDate DESC,ID DESC;"}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlantHealthObservation(observation.ID); }),
              (Statements{"DELETE FROM PlantHealthObservations WHERE ID=?;"}));
    EXPECT_EQ(RowCount("PlantHealthObservations"), 0);
}

TEST_F(HealthTest, CreateLimitsTheSeverityInTheRecordToo)
{
    for (const auto& [given, limited] :
         {std::pair(INT_MIN, 1), std::pair(-3, 1), std::pair(0, 1), std::pair(1, 1), std::pair(3, 3), std::pair(5, 5),
          std::pair(6, 5), std::pair(9, 5), std::pair(INT_MAX, 5)})
    {
        PlantHealthObservation observation = Full();
        observation.Severity = given;
        ASSERT_TRUE(Repository.CreatePlantHealthObservation(observation));
        EXPECT_EQ(observation.Severity, limited);
        EXPECT_EQ(
            QueryRows("SELECT Severity FROM PlantHealthObservations WHERE ID=" + std::to_string(observation.ID) + ";"),
            (Rows{{std::to_string(limited)}}));
    }
}

TEST_F(HealthTest, UpdateLimitsTheSeverityInTheFileOnly)
{
    PlantHealthObservation observation = NewObservation();
    for (const auto& [given, limited] :
         {std::pair(INT_MIN, "1"), std::pair(0, "1"), std::pair(2, "2"), std::pair(7, "5"), std::pair(INT_MAX, "5")})
    {
        observation.Severity = given;
        ASSERT_TRUE(Repository.UpdatePlantHealthObservation(observation));
        EXPECT_EQ(observation.Severity, given);
        EXPECT_EQ(QueryRows("SELECT Severity FROM PlantHealthObservations;"), (Rows{{limited}}));
    }
}

TEST_F(HealthTest, ReadingDoesNotLimitTheSeverity)
{
    NewObservation();
    for (const int severity : {-2, 0, 6, INT_MAX})
    {
        RunSQL("PRAGMA ignore_check_constraints=ON;");
        RunSQL("UPDATE PlantHealthObservations SET Severity=" + std::to_string(severity) + ";");
        EXPECT_EQ(Listed().at(0).Severity, severity);
    }
}

TEST_F(HealthTest, AnObservationWithoutAPlantOrAnIssueIsRefusedAtOnce)
{
    for (std::string PlantHealthObservation::*field :
         {&PlantHealthObservation::PlantUUID, &PlantHealthObservation::Issue})
    {
        PlantHealthObservation observation = NewObservation();
        (observation.*field).clear();
        observation.Severity = 9;
        const PlantHealthObservation before = observation;
        EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.CreatePlantHealthObservation(observation); }));
        EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.UpdatePlantHealthObservation(observation); }));
        EXPECT_EQ(observation, before);
    }
}

TEST_F(HealthTest, AnObservationOfAnUnknownPlantIsRefused)
{
    PlantHealthObservation observation = Full();
    observation.PlantUUID = "unknown";
    observation.Severity = 9;
    PlantHealthObservation expected = observation;
    expected.Severity = 5;
    EXPECT_FALSE(Repository.CreatePlantHealthObservation(observation));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "FOREIGN KEY constraint failed");
    EXPECT_EQ(observation, expected);
    EXPECT_EQ(RowCount("PlantHealthObservations"), 0);
}

TEST_F(HealthTest, ASeverityThatTheFileDoesNotAllowIsRefused)
{
    PlantHealthObservation stored = NewObservation();
    ReplaceInDefinitions("BETWEEN 1 AND 5", "BETWEEN 1 AND 4");
    PlantHealthObservation observation = Full();
    observation.Severity = 5;
    EXPECT_FALSE(Repository.CreatePlantHealthObservation(observation));
    EXPECT_EQ(sqlite3_extended_errcode(Database.NativeHandle()), SQLITE_CONSTRAINT_CHECK);
    EXPECT_EQ(observation.ID, 99);
    stored.Severity = 5;
    EXPECT_FALSE(Repository.UpdatePlantHealthObservation(stored));
    EXPECT_EQ(QueryRows("SELECT Severity FROM PlantHealthObservations;"), (Rows{{"4"}}));
}

TEST_F(HealthTest, OptionalTextsMayBeEmpty)
{
    PlantHealthObservation observation;
    observation.PlantUUID = Basil.UUID;
    observation.Issue = "Aphids";
    ASSERT_TRUE(Repository.CreatePlantHealthObservation(observation));
    EXPECT_EQ(StoredObservations(), (Rows{{"1", Basil.UUID, "", "Aphids", "1", "", ""}}));
}

} // namespace

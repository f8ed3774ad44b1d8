// Validate lists a refusal exactly where the repository refuses the record, on random records and journals.

#include "plant_validation.h"
#include "query/random_journal.h"
#include "support/journal_test.h"
#include "support/random_changes.h"
#include "support/sample_records.h"
#include "support/test_form.h"
#include "validation/random_record.h"

#include <map>
#include <set>

using namespace support;

namespace
{

std::vector<PlantProblem> RefusalsOf(std::vector<PlantProblem> problems)
{
    std::erase_if(problems, [](const PlantProblem& problem) { return problem.Kind != PlantProblemKind::Refused; });
    return problems;
}

class RefusalModelTest : public JournalTest
{
  protected:
    RefusalModelTest() { sqlite3_exec(Database.NativeHandle(), "PRAGMA synchronous=OFF;", nullptr, nullptr, nullptr); }

    template <typename Record> std::vector<PlantProblem> Refusals(const Record& record)
    {
        std::vector<PlantProblem> problems;
        const PlantValidationResult result = Validate(record, Database, problems);
        EXPECT_TRUE(result) << result.Error;
        return RefusalsOf(problems);
    }

    // Validates a record, stores it, and repairs it until it is stored.
    template <typename Record> void TryRecord(Record record)
    {
        SCOPED_TRACE(testing::Message() << record);
        for (int round = 0; round < 12; ++round)
        {
            const int changes = sqlite3_total_changes(Database.NativeHandle());
            const std::vector<PlantProblem> refusals = Refusals(record);
            EXPECT_EQ(sqlite3_total_changes(Database.NativeHandle()), changes);
            const bool done = Store(Repository, record);
            EXPECT_EQ(done, refusals.empty());
            if (done)
            {
                ++Stored[record.ID == 0];
                return;
            }
            ASSERT_FALSE(refusals.empty());
            ExpectExplained(record, refusals);
            for (const PlantProblem& refusal : refusals)
                ExpectTrue(record, refusal);
            for (const PlantProblem& refusal : refusals)
            {
                ++Reasons[refusal.Field + ": " + refusal.Description];
                Repair(record, refusal);
                for (const PlantProblem& after : Refusals(record)) // the reason is gone
                    EXPECT_NE(after.Field + after.Description, refusal.Field + refusal.Description);
            }
        }
        FAIL() << "repairs do not end";
    }

    // The sentence names the first refusal.
    template <typename Record> void ExpectExplained(const Record& record, const std::vector<PlantProblem>& refusals)
    {
        EXPECT_FALSE(Store(Repository, record)); // Validate has replaced the evidence
        const std::string sentence = Explain(Database, record);
        const std::string first = "refused: " + refusals.front().Field + ": " + refusals.front().Description;
        const bool onlyTheEvent = refusals.front().Field == "TimelineEventID"; // it may have been written back
        EXPECT_TRUE(sentence == first || (onlyTheEvent && sentence == "rolled back; the cause was not recorded"))
            << sentence << "\n"
            << first;
    }

    // Whether the rows of the journal make the reason true, for the reasons of which a field has several.
    template <typename Record> void ExpectTrue(const Record& record, const PlantProblem& problem)
    {
        const std::string& reason = problem.Description;
        const auto count = [&](const std::string& rows)
        { return QueryRows("SELECT COUNT(*) FROM " + rows).at(0).at(0); };
        if constexpr (std::is_same_v<Record, Plant>)
        {
            const std::string mother = Literal(record.MotherPlantUUID);
            const std::string up = "(WITH RECURSIVE up(ID) AS (SELECT ID FROM Plants WHERE UUID=" + mother +
                                   " UNION SELECT MotherPlantID FROM Plants JOIN up USING(ID) WHERE MotherPlantID "
                                   "NOT NULL) SELECT UUID,MotherPlantID FROM up JOIN Plants USING(ID))";
            if (problem.Field != "MotherPlantUUID" || reason.starts_with("a plant ") || // by itself
                record.UUID.starts_with("zero") || count("Plants WHERE substr(UUID,1,4)='zero'") != "0")
                return; // two UUIDs that are equal up to a zero byte can be one link
            EXPECT_EQ(count("Plants WHERE UUID=" + mother) == "0", reason == "no plant has this UUID");
            EXPECT_EQ(count(up + " WHERE UUID=" + Literal(record.UUID)) != "0",
                      reason == "the mother descends from this plant");
            EXPECT_TRUE(reason != "the mother descends from a cycle of mother links" ||
                        count(up + " WHERE MotherPlantID IS NULL") == "0");
        }
        else if constexpr (requires { record.PlantUUID; })
        {
            const std::string plant = Literal(record.PlantUUID);
            EXPECT_TRUE(reason != "no plant has this UUID" || count("Plants WHERE UUID=" + plant) == "0");
            EXPECT_TRUE(reason != "the plant already has a harvest record" ||
                        count("HarvestRecords WHERE PlantUUID=" + plant) == "1");
        }
    }

    static std::string Literal(const std::string& text)
    {
        std::string literal = "CAST(x'";
        for (const char letter : text)
            for (const int digit : {(letter >> 4) & 15, letter & 15})
                literal += "0123456789abcdef"[digit];
        return literal + "' AS TEXT)";
    }

    std::string Fresh() { return "fresh " + std::to_string(++Names); }
    Plant FreshPlant()
    {
        Plant plant;
        plant.UUID = Fresh();
        EXPECT_TRUE(Repository.CreatePlant(plant));
        return plant;
    }

    // Changes the field of the problem, and no other, so that its reason no longer holds.
    template <typename Record> void Repair(Record& record, const PlantProblem& problem);

    template <typename Record> void TryRandom(RandomRecords& records) { TryRecord(records.Some<Record>()); }
    void TryRandomOfAnyKind(RandomRecords& records, std::mt19937_64& random)
    {
        switch (random() % 8)
        {
        case 0:
            return TryRandom<Strain>(records);
        case 1:
            return TryRandom<Plant>(records);
        case 2:
            return TryRandom<PlantEvent>(records);
        case 3:
            return TryRandom<PlantCareEntry>(records);
        case 4:
            return TryRandom<HarvestRecord>(records);
        case 5:
            return TryRandom<PlantPhoto>(records);
        case 6:
            return TryRandom<PlantHealthObservation>(records);
        default:
            return TryRandom<PlantJournalEntry>(records);
        }
    }

    int Names = 0;
    std::map<std::string, int> Reasons;
    std::map<bool, int> Stored; // creates and updates
};

template <typename Record> void RefusalModelTest::Repair(Record& record, const PlantProblem& problem)
{
    const std::string& field = problem.Field;
    if constexpr (std::is_same_v<Record, Strain>)
    {
        if (field == "ID")
        {
            Strain strain;
            strain.Name = Fresh();
            EXPECT_TRUE(Repository.CreateStrain(strain));
            record.ID = strain.ID;
        }
        else
            record.Name = Fresh();
    }
    else if constexpr (std::is_same_v<Record, Plant>)
    {
        if (field == "UUID")
            record.UUID = Fresh();
        else if (field == "MotherPlantUUID")
            record.MotherPlantUUID = FreshPlant().UUID;
        else if (field == "FlipHeightCm")
            record.FlipHeightCm = 0;
        else
            record.FinalHeightCm = 0;
        if (field == "MotherPlantUUID" && record.UUID.empty() && record.ID != 0)
            record.UUID = FreshPlant().UUID;
    }
    else if (field == "PlantUUID")
        record.PlantUUID = FreshPlant().UUID;
    else if (field == "TimelineEventID")
    {
        if constexpr (requires { record.TimelineEventID; })
        {
            PlantEvent event;
            event.PlantUUID = FreshPlant().UUID;
            EXPECT_TRUE(Repository.CreatePlantEvent(event));
            record.TimelineEventID = event.ID;
        }
    }
    else if constexpr (std::is_same_v<Record, PlantPhoto>)
        (field == "UUID" ? record.UUID : record.FilePath) = Fresh();
    else if constexpr (std::is_same_v<Record, PlantHealthObservation>)
        record.Issue = Fresh();
    else if constexpr (std::is_same_v<Record, PlantCareEntry>)
        (field == "AmountMl" ? record.AmountMl
         : field == "EC"     ? record.EC
         : field == "PH"     ? record.PH
                             : record.RunoffMl) = 0;
    else if constexpr (std::is_same_v<Record, HarvestRecord>)
        (field == "WetWeightG"   ? record.WetWeightG
         : field == "DryWeightG" ? record.DryWeightG
                                 : record.QualityRating) = 0;
    else
        FAIL() << field;
}

// Journals that other programs have written, too.
TEST_F(RefusalModelTest, ARefusalIsListedExactlyWhereOneHappens)
{
    const TimeLimit limit;
    std::mt19937_64 random(Seed());
    constexpr std::size_t everyReason = 26; // SQLite chooses some values at random, so that a rare one may take longer
    const auto goesOn = [&](int journal)
    { return journal < ShortOrLong(30, 1'000'000) || (journal < 300 && Reasons.size() < everyReason); };
    for (int journal = 0; goesOn(journal) && !limit.IsOver() && !HasFailure(); ++journal)
    {
        if (journal % 3 != 0)
            FillAtRandom(Database.NativeHandle(), random);
        RandomRecords records(Database.NativeHandle(), random);
        for (int i = 0; i < 120 && !HasFailure(); ++i)
            TryRandomOfAnyKind(records, random);
    }
    EXPECT_GT(Stored[true], 500);
    EXPECT_GT(Stored[false], 500);
    for (const char* reason : {"AmountMl: the value is not a number",
                               "DryWeightG: the value is not a number",
                               "EC: the value is not a number",
                               "FilePath: the file path is empty",
                               "FinalHeightCm: the value is not a number",
                               "FlipHeightCm: the value is not a number",
                               "ID: no strain has this row ID",
                               "Issue: the issue is empty",
                               "MotherPlantUUID: a plant cannot be its own mother",
                               "MotherPlantUUID: a plant without a UUID cannot have a mother",
                               "MotherPlantUUID: no plant has this UUID",
                               "MotherPlantUUID: the mother descends from a cycle of mother links",
                               "MotherPlantUUID: the mother descends from this plant",
                               "Name: another strain has this name",
                               "Name: the name is empty",
                               "PH: the value is not a number",
                               "PlantUUID: no plant has this UUID",
                               "PlantUUID: the plant already has a harvest record",
                               "PlantUUID: the record has no plant; its UUID is empty",
                               "QualityRating: the value is not a number",
                               "RunoffMl: the value is not a number",
                               "TimelineEventID: no timeline event has this row ID",
                               "UUID: another photo has this UUID",
                               "UUID: another plant has this UUID",
                               "UUID: the UUID of the photo is empty",
                               "WetWeightG: the value is not a number"})
    {
        EXPECT_GT(Reasons[reason], 0) << reason;
        Reasons.erase(reason);
    }
    for (const auto& [reason, count] : Reasons)
        ADD_FAILURE() << "an unknown reason: " << reason << ", " << count;
}

// Journals of this library.
TEST_F(RefusalModelTest, ARefusalIsListedExactlyWhereOneHappensInAUsualJournal)
{
    std::mt19937_64 random(Seed());
    StoreSampleRecords(Repository);
    RandomChanges changes(random);
    RandomRecords records(Database.NativeHandle(), random);
    for (int i = 0; i < 1500 && !HasFailure(); ++i)
    {
        changes.Next(Repository).Make(Repository); // may be refused after a random record
        TryRandomOfAnyKind(records, random);
    }
    EXPECT_GT(Stored[true], 100);
    EXPECT_GT(Stored[false], 100);
}

} // namespace

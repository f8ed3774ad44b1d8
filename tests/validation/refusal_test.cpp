// Each refusal, with the sentence for it.

#include "support/allocation_failure.h"
#include "support/journal_test.h"
#include "support/sample_records.h"
#include "validation/stored_records.h"

#include <cmath>
#include <map>
#include <new>
#include <string>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

using Findings = std::vector<std::string>;

Findings TextsOf(const std::vector<PlantProblem>& problems)
{
    Findings texts;
    for (const PlantProblem& problem : problems)
        texts.push_back(
            std::vector{"refused: ", "impossible: ", "unlikely: "}.at(static_cast<std::size_t>(problem.Kind)) +
            problem.Field + ": " + problem.Description +
            (problem.OtherField.empty() ? "" : " (" + problem.OtherField + ')'));
    return texts;
}

class RefusalTest : public JournalTest
{
  protected:
    RefusalTest() : Sample(StoreSampleRecords(Repository)) {}

    Findings FindingsOf(const StoredRecord& record)
    {
        std::vector<PlantProblem> problems;
        const PlantValidationResult result = record.Validate(Database, problems);
        EXPECT_EQ(result.Error, "");
        return TextsOf(problems);
    }
    template <typename Record> Findings FindingsOf(const Record& record)
    {
        return FindingsOf(StoredRecordOf("", false, record));
    }

    SampleRecords Sample;
};

TEST_F(RefusalTest, AnAcceptedRecordHasNoProblems)
{
    for (const StoredRecord& record : AcceptedRecords())
        EXPECT_EQ(FindingsOf(record), Findings{}) << record;
}

TEST_F(RefusalTest, EachReasonInTheJournalHasItsSentence)
{
    const std::string noPlant = "refused: PlantUUID: no plant has this UUID";
    const std::string noEvent = "refused: TimelineEventID: no timeline event has this row ID";
    const std::map<std::string, std::string> sentences = {
        {"AStrainWithAUsedName", "refused: Name: another strain has this name"},
        {"AnUnknownStrain", "refused: ID: no strain has this row ID"},
        {"AStrainRenamedToAUsedName", "refused: Name: another strain has this name"},
        {"APlantWithAUsedUUID", "refused: UUID: another plant has this UUID"},
        {"APlantOfAnUnknownMother", "refused: MotherPlantUUID: no plant has this UUID"},
        {"AMotherThatDescends", "refused: MotherPlantUUID: the mother descends from this plant (UUID)"},
        {"AnEventOfAnUnknownPlant", noPlant},
        {"ACareEntryOfAnUnknownPlant", noPlant},
        {"ACareEntryOfAnUnknownEvent", noEvent},
        {"AnUnlinkedCareEntryOfAnUnknownPlant", noPlant},
        {"ASecondHarvestRecord", "refused: PlantUUID: the plant already has a harvest record"},
        {"AHarvestRecordOfAnUnknownPlant", noPlant},
        {"AHarvestRecordOfAnUnknownEvent", noEvent},
        {"APhotoWithAUsedUUID", "refused: UUID: another photo has this UUID"},
        {"APhotoOfAnUnknownPlant", noPlant},
        {"AnObservationOfAnUnknownPlant", noPlant},
        {"AJournalEntryOfAnUnknownPlant", noPlant}};
    EXPECT_EQ(sentences.size(), RecordsRefusedByTheJournal().size());
    for (const StoredRecord& record : RecordsRefusedByTheJournal())
    {
        EXPECT_EQ(FindingsOf(record).at(0), sentences.at(record.Name));
        EXPECT_FALSE(record.Store(Repository)) << record;
        EXPECT_EQ(record.Explain(Database), sentences.at(record.Name).substr(0, sentences.at(record.Name).find(" (")));
    }
}

TEST_F(RefusalTest, EachReasonInTheRecordHasItsSentence)
{
    const std::string noPlant = "refused: PlantUUID: the record has no plant; its UUID is empty";
    const std::map<std::string, std::string> sentences = {
        {"AStrainWithoutAName", "refused: Name: the name is empty"},
        {"APlantThatIsItsOwnMother", "refused: MotherPlantUUID: a plant cannot be its own mother (UUID)"},
        {"APlantWithoutAUUID", "refused: MotherPlantUUID: a plant without a UUID cannot have a mother (UUID)"},
        {"AnEventWithoutAPlant", noPlant},
        {"ACareEntryWithoutAPlant", noPlant},
        {"AHarvestRecordWithoutAPlant", noPlant},
        {"APhotoWithoutAPlant", noPlant},
        {"APhotoWithoutAUUID", "refused: UUID: the UUID of the photo is empty"},
        {"APhotoWithoutAPath", "refused: FilePath: the file path is empty"},
        {"AnObservationWithoutAnIssue", "refused: Issue: the issue is empty"},
        {"AJournalEntryWithoutAPlant", noPlant}};
    EXPECT_EQ(sentences.size(), RecordsRefusedByThemselves().size());
    for (const StoredRecord& record : RecordsRefusedByThemselves())
    {
        EXPECT_EQ(FindingsOf(record).at(0), sentences.at(record.Name));
        EXPECT_FALSE(record.Store(Repository)) << record;
        EXPECT_EQ(record.Explain(Database), sentences.at(record.Name).substr(0, sentences.at(record.Name).find(" (")));
    }
}

// Without the journal, these have the same sentences.
TEST_F(RefusalTest, ARecordByItselfIsRefusedWithoutTheJournal)
{
    EXPECT_EQ(TextsOf(Validate(Strain())), Findings{"refused: Name: the name is empty"});
    PlantPhoto photo;
    EXPECT_EQ(TextsOf(Validate(photo)), (Findings{"refused: PlantUUID: the record has no plant; its UUID is empty",
                                                  "refused: FilePath: the file path is empty"}));
    photo.ID = 1;
    EXPECT_EQ(TextsOf(Validate(photo)).at(0), "refused: UUID: the UUID of the photo is empty");
    PlantHealthObservation observation;
    EXPECT_EQ(TextsOf(Validate(observation)).at(1), "refused: Issue: the issue is empty");
    EXPECT_EQ(Validate(PlantEvent()).size() + Validate(PlantCareEntry()).size() + Validate(HarvestRecord()).size() +
                  Validate(PlantJournalEntry()).size(),
              4);
    Plant plant;
    plant.UUID = plant.MotherPlantUUID = "basil";
    EXPECT_EQ(TextsOf(Validate(plant)), Findings{"refused: MotherPlantUUID: a plant cannot be its own mother (UUID)"});
    plant.UUID = "";
    EXPECT_EQ(TextsOf(Validate(plant)), Findings{}); // a new plant gets a UUID
    plant.ID = 1;
    EXPECT_EQ(TextsOf(Validate(plant)),
              Findings{"refused: MotherPlantUUID: a plant without a UUID cannot have a mother (UUID)"});
}

TEST_F(RefusalTest, ANewRecordWithoutAPlantHasOneProblem)
{
    const Findings expected{"refused: PlantUUID: the record has no plant; its UUID is empty"};
    EXPECT_EQ(FindingsOf(PlantEvent()), expected);
    EXPECT_EQ(FindingsOf(PlantCareEntry()), expected);
    EXPECT_EQ(FindingsOf(HarvestRecord()), expected);
    EXPECT_EQ(FindingsOf(PlantJournalEntry()), expected);
}

TEST_F(RefusalTest, AMotherUnderACycleIsRefused)
{
    RunSQL("UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE Name='Clone');");
    Plant plant;
    plant.MotherPlantUUID = Sample.Mother.UUID;
    EXPECT_EQ(FindingsOf(plant),
              Findings{"refused: MotherPlantUUID: the mother descends from a cycle of mother links"});
    EXPECT_FALSE(Repository.CreatePlant(plant));
}

TEST_F(RefusalTest, RefusedValuesComeFirst)
{
    PlantCareEntry entry = Sample.Care;
    entry.ID = 0;
    entry.CareDate = "spring";
    entry.AmountMl = 200'000;
    entry.PlantUUID = "unknown";
    entry.RunoffMl = std::nan("");
    EXPECT_EQ(FindingsOf(entry),
              (Findings{"refused: RunoffMl: the value is not a number", "refused: PlantUUID: no plant has this UUID",
                        "impossible: CareDate: the text is not a date; write YYYY-MM-DD, YYYY-MM "
                        "or YYYY",
                        "unlikely: AmountMl: the amount is above 100 l; the journal expects ml"}));
}

// An update of a missing row returns true.
TEST_F(RefusalTest, AnUpdateOfAMissingRecordIsUnlikely)
{
    const std::string missing = ": the journal has no such record; an update would not store it";
    const auto expect = [&](auto record, const std::string& field)
    {
        if constexpr (requires { record.TimelineEventID; })
            record.TimelineEventID = 0;
        EXPECT_EQ(FindingsOf(record), Findings{"unlikely: " + field + missing});
        EXPECT_TRUE(Store(Repository, record));
    };
    const auto missed = [](auto record)
    {
        record.ID += 1000;
        return record;
    };
    expect(missed(Sample.Event), "ID");
    expect(missed(Sample.Care), "ID");
    expect(missed(Sample.Observation), "ID");
    expect(missed(Sample.Entry), "ID");
    Plant plant = Sample.Clone;
    plant.UUID = "missing";
    expect(plant, "UUID");
    PlantPhoto photo = Sample.Photo;
    photo.PlantUUID = Sample.Clone.UUID;
    expect(photo, "UUID");
    HarvestRecord record = Sample.Harvest;
    record.ID += 1000;
    EXPECT_EQ(FindingsOf(record), Findings{"unlikely: ID" + missing});
    EXPECT_TRUE(Store(Repository, record));
}

TEST_F(RefusalTest, ANaNOfAMissingRecordIsImpossible)
{
    PlantCareEntry entry = Sample.Care;
    entry.EC = std::nan("");
    EXPECT_EQ(FindingsOf(entry), Findings{"refused: EC: the value is not a number"});
    EXPECT_FALSE(Store(Repository, entry));
    entry.ID += 1000;
    EXPECT_EQ(FindingsOf(entry).at(1), "impossible: EC: the value is not a number");
    EXPECT_TRUE(Store(Repository, entry));
}

TEST_F(RefusalTest, TheDatesOfThePlantAreReadFromTheJournal)
{
    Plant plant = Sample.Mother;
    plant.SeedDate = "2020-03-01";
    plant.FlipDate = "2020-05-01";
    ASSERT_TRUE(Repository.UpdatePlant(plant));
    PlantEvent event = Sample.Event;
    event.EventDate = "2020-02-29";
    EXPECT_EQ(FindingsOf(event), Findings{"unlikely: EventDate: the date is before the plant was sown (2020-03-01)"});
    HarvestRecord record = Sample.Harvest;
    record.HarvestDate = "2020-04-30";
    EXPECT_EQ(FindingsOf(record),
              Findings{"unlikely: HarvestDate: the date is before the flip to flower (2020-05-01)"});
    plant.SeedDate = "";
    plant.CloneDate = "2020-03-02";
    ASSERT_TRUE(Repository.UpdatePlant(plant));
    EXPECT_EQ(FindingsOf(event),
              Findings{"unlikely: EventDate: the date is before the plant was cut as a clone (2020-03-02)"});
}

TEST_F(RefusalTest, ADateAfterThePresentDateIsUnlikely)
{
    PlantJournalEntry entry = Sample.Entry;
    entry.EntryDate = "9999-12-31";
    EXPECT_EQ(FindingsOf(entry), Findings{"unlikely: EntryDate: the date is in the future"});
    EXPECT_EQ(TextsOf(Validate(entry)), Findings{"unlikely: EntryDate: the date is in the future"});
    entry.EntryDate = PlantEventCurrentDate();
    EXPECT_EQ(FindingsOf(entry), Findings{});
}

// Sets each text of the record in turn to one byte more than SQLite permits.
template <typename Record> int CountLongTexts(PlantDatabase& database, const Record& accepted)
{
    constexpr int most = 1000;
    PlantRepository repository(database);
    int texts = 0;
    const auto tryText = [&](auto& field, Record& record)
    {
        if constexpr (std::is_same_v<std::decay_t<decltype(field)>, std::string>)
        {
            const auto problemsOf = [&](std::size_t size)
            {
                field.assign(size, 'x');
                std::vector<PlantProblem> problems;
                EXPECT_TRUE(Validate(record, database, problems));
                return problems;
            };
            const std::vector<PlantProblem> problems = problemsOf(most + 1);
            EXPECT_EQ(TextsOf(problems).at(0).substr(0, 9), "refused: ");
            EXPECT_EQ(problems.at(0).Description, "the text is longer than SQLite permits");
            EXPECT_FALSE(Store(repository, record));
            EXPECT_EQ(Explain(database, record),
                      "refused: " + problems.at(0).Field + ": the text is longer than SQLite permits");
            for (const PlantProblem& problem : problemsOf(most))
                EXPECT_NE(problem.Description, "the text is longer than SQLite permits");
            ++texts;
        }
    };
    Record record = accepted;
    std::apply([&](auto&... fields) { (((record = accepted), tryText(fields, record)), ...); }, Fields(record));
    return texts;
}

TEST_F(RefusalTest, ATextThatIsTooLongIsRefused)
{
    sqlite3_limit(Database.NativeHandle(), SQLITE_LIMIT_LENGTH, 1000);
    EXPECT_EQ(CountLongTexts(Database, Sample.Kind), 3);
    EXPECT_EQ(CountLongTexts(Database, Sample.Clone), 13);
    EXPECT_EQ(CountLongTexts(Database, Sample.Event), 3);
    EXPECT_EQ(CountLongTexts(Database, Sample.Care), 4);
    EXPECT_EQ(CountLongTexts(Database, Sample.Harvest), 4);
    EXPECT_EQ(CountLongTexts(Database, Sample.Photo), 5);
    EXPECT_EQ(CountLongTexts(Database, Sample.Observation), 5);
    EXPECT_EQ(CountLongTexts(Database, Sample.Entry), 3);
}

// An empty UUID is replaced, even where another program has stored one.
TEST_F(RefusalTest, AnEmptyUUIDOfANewRecordIsAccepted)
{
    RunSQL("UPDATE Plants SET UUID='' WHERE Name='Clone'; UPDATE PlantPhotos SET UUID='';");
    Plant plant;
    EXPECT_EQ(FindingsOf(plant), Findings{});
    EXPECT_TRUE(Repository.CreatePlant(plant));
    PlantPhoto photo = Sample.Photo;
    photo.ID = 0;
    photo.UUID.clear();
    EXPECT_EQ(FindingsOf(photo), Findings{});
    EXPECT_TRUE(Repository.CreatePlantPhoto(photo));
}

TEST_F(RefusalTest, ANameOnRowZeroIsInUse)
{
    RunSQL("INSERT INTO Strains(ID,Name) VALUES(0,'zero');");
    Strain strain;
    strain.Name = "zero";
    EXPECT_EQ(FindingsOf(strain), Findings{"refused: Name: another strain has this name"});
    EXPECT_FALSE(Repository.CreateStrain(strain));
}

// SQLite allocates the texts that it returns from a file in UTF-16. With a date read as empty, a problem would be
// missed.
TEST(RefusalMemoryTest, ATextLostToLackOfMemoryIsNotReadAsEmpty)
{
    const ScratchDirectory scratch;
    PlainConnection(scratch.File("journal.db"))
        .RunSQL("PRAGMA encoding='UTF-16'; CREATE TABLE SchemaMeta(Key, Value);");
    PlantDatabase database;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")));
    PlantRepository repository(database);
    const SampleRecords sample = StoreSampleRecords(repository);
    Plant plant = sample.Mother;
    plant.SeedDate = "2020-03-01";
    ASSERT_TRUE(repository.UpdatePlant(plant));
    PlantEvent event = sample.Event;
    event.EventDate = "2020-02-29";
    bool happened = true;
    int failures = 0;
    for (int number = 1; happened; ++number)
    {
        std::vector<PlantProblem> problems;
        bool thrown = false;
        {
            const AllocationFailure failure(Allocator::SQLite, number);
            try
            {
                EXPECT_TRUE(Validate(event, database, problems));
            }
            catch (const std::bad_alloc&)
            {
                thrown = true;
            }
            happened = failure.Happened();
        }
        failures += thrown ? 1 : 0;
        EXPECT_EQ(TextsOf(problems),
                  thrown ? Findings{}
                         : Findings{"unlikely: EventDate: the date is before the plant was sown (2020-03-01)"});
    }
    EXPECT_GT(failures, 5);
}

// The schema of another program can allow NULL.
TEST_F(RefusalTest, ANullInPlaceOfATextIsEmpty)
{
    ReplaceInDefinitions("SeedDate TEXT NOT NULL", "SeedDate TEXT");
    RunSQL("UPDATE Plants SET SeedDate=NULL;");
    EXPECT_EQ(FindingsOf(Sample.Event), Findings{});
}

} // namespace

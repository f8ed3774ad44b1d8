// An export that is imported into a new journal and exported again gives the same bytes.

#include "command/transfer_fixture.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <limits>

using namespace support;

namespace
{

const std::vector<std::string> UnusualTexts = {"",
                                               " blanks ",
                                               "\"",
                                               R"(""quoted", and more")",
                                               ",",
                                               "two\nlines\n",
                                               "two\r\nlines\r",
                                               "\xEF\xBB\xBF mark",
                                               "\xFF\xFE broken \xC3",
                                               R"({"Hex": "ff"})",
                                               "tab\tand \x01\x1B\x7F",
                                               "紅 \xF0\x9F\x8C\xB1 e\xCC\x81",
                                               "NULL",
                                               "0.10",
                                               "=1+1",
                                               "\\n"};

class RoundTripTest : public TransferTest, public testing::WithParamInterface<bool>
{
  protected:
    // Creates a journal with the most unusual texts, numbers and dates that records can hold.
    void CreateUnusualRecords() const
    {
        KeepEverything();
        const std::vector<std::string> dates = {"spring", "2026-13-45", "\xFF", "1.5.26", "2026-5-1", "today"};
        const std::vector<double> numbers = {0.1,
                                             1e308,
                                             5e-324,
                                             1.0 / 3,
                                             std::numeric_limits<double>::infinity(),
                                             -std::numeric_limits<double>::infinity(),
                                             123456789012345680.0};
        Keep(
            [&](PlantRepository& repository)
            {
                std::string mother;
                for (std::size_t i = 0; i < UnusualTexts.size(); ++i)
                    mother = CreatePlantWithRecords(repository, UnusualTexts[i], dates[i % dates.size()],
                                                    numbers[i % numbers.size()], mother);
            });
        // Gaps and extremes among the row IDs, and an event that no record owns.
        const PlainConnection connection(Journal);
        connection.RunSQL("DELETE FROM PlantEvents WHERE ID%7=3 AND ID NOT IN (SELECT TimelineEventID "
                          "FROM PlantCareEntries UNION SELECT TimelineEventID FROM HarvestRecords);"
                          "UPDATE PlantJournalEntries SET ID=9223372036854775807 WHERE ID=4;"
                          "UPDATE PlantPhotos SET ID=-5 WHERE ID=2;"
                          "UPDATE Plants SET ID=ID+100000 WHERE ID>10 AND MotherPlantID IS NULL;");
    }

    // Returns the UUID of the plant.
    std::string CreatePlantWithRecords(PlantRepository& repository, const std::string& text, const std::string& date,
                                       double number, const std::string& mother) const
    {
        Plant plant;
        plant.UUID = "uuid " + text;
        plant.Name = plant.Strain = plant.Tent = plant.PotSize = plant.Medium = plant.Notes = text;
        plant.SeedDate = plant.CloneDate = plant.FlipDate = plant.HarvestDate = plant.TransplantDate = date;
        plant.FlipHeightCm = number;
        plant.FinalHeightCm = -number;
        plant.MotherPlantUUID = mother;
        EXPECT_TRUE(repository.CreatePlant(plant)) << text;
        PlantEvent event = {0, plant.UUID, date, PlantEventType::LSTTrained, text};
        EXPECT_TRUE(repository.CreatePlantEvent(event));
        PlantCareEntry care = {0, 0, plant.UUID, date, PlantCareAction::Feed, text, number, 1, 2, 3, text};
        EXPECT_TRUE(repository.CreatePlantCareEntry(care));
        constexpr int fewest = std::numeric_limits<int>::min();
        HarvestRecord harvest = {0, 0, plant.UUID, date, number, 1, 2, fewest, text, text};
        EXPECT_TRUE(repository.SaveHarvestRecord(plant, harvest));
        PlantPhoto photo = {0, "photo " + text, plant.UUID, date, Scratch.File("basil.jpg"), text};
        EXPECT_TRUE(repository.CreatePlantPhoto(photo));
        PlantHealthObservation observation = {0, plant.UUID, date, text + '!', 5, text, text};
        EXPECT_TRUE(repository.CreatePlantHealthObservation(observation));
        PlantJournalEntry entry = {0, plant.UUID, date, PlantJournalType::Milestone, text};
        EXPECT_TRUE(repository.CreatePlantJournalEntry(entry));
        return plant.UUID;
    }

    Words Export(const std::string& destination, const std::string& file) const
    {
        return GetParam() ? Words{"export", "--csv", destination, "--file", file}
                          : Words{"export", destination, "--file", file};
    }

    // Exports a journal, imports that into a new one, exports that, and compares.
    void ExpectEqualAfterwards(const std::string& file, const std::string& name) const
    {
        const std::string copy = Scratch.File(name + ".db");
        EXPECT_EQ(Run(Export(name + "-there", file)).Status, 0);
        const ProgramResult import = Run({"import", name + "-there", "--file", copy});
        EXPECT_EQ(import.Status, 0) << import.Error;
        Done(Export(name + "-back", copy));
        EXPECT_EQ(ExportBytes(name + "-there"), ExportBytes(name + "-back"));
        EXPECT_EQ(Run({"check", "--file", copy}).Out, Run({"check", "--file", file}).Out);
    }
};

TEST_P(RoundTripTest, UnusualRecordsComeBackByteForByte)
{
    CreateUnusualRecords();
    ExpectEqualAfterwards(Journal, "copy");
    EXPECT_EQ(::Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()), Content());
}

TEST_P(RoundTripTest, AnEmptyJournalComesBack)
{
    Keep([](PlantRepository&) {});
    ExpectEqualAfterwards(Journal, "copy");
}

TEST_P(RoundTripTest, JournalsOfEarlierVersionsComeBack)
{
    Write("photos/mother.jpg", "a picture");
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Scratch.File(old.Name + ".old"), old);
        ExpectEqualAfterwards(Scratch.File(old.Name + ".old"), old.Name);
    }
}

TEST_P(RoundTripTest, RowsGetNewIDsWhereTheirsAreTakenAndLinksFollow)
{
    KeepEverything();
    const JSON there = JSON::parse(Exported());
    Done(Export("everything", Journal));
    const std::string other = Scratch.File("other.db");
    Done({"plant", "add", "First", "--file", other});
    Done({"water", "First", "--file", other});
    Done({"import", "everything", "--file", other});
    const JSON back = JSON::parse(Done({"export", "-", "--file", other}));
    // The rows that were already in the journal come first.
    for (const std::string& table : TableNames)
    {
        const std::size_t first = back.at(table).size() - there.at(table).size();
        EXPECT_EQ(first, table == "Plants" || table == "PlantEvents" || table == "PlantCareEntries" ? 1U : 0U) << table;
        for (std::size_t i = 0; i < there.at(table).size(); ++i)
        {
            JSON expected = there[table][i];
            JSON row = back[table][first + i];
            if (expected.contains("TimelineEventID"))
            {
                EXPECT_EQ(row.at("TimelineEventID"), expected.at("TimelineEventID").get<int>() + 1);
                row["TimelineEventID"] = expected["TimelineEventID"];
            }
            row["ID"] = expected["ID"];
            EXPECT_EQ(row, expected);
        }
    }
    EXPECT_EQ(Done({"check", "--file", other}), "No problems found.\n");
}

INSTANTIATE_TEST_SUITE_P(As, RoundTripTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "CSV" : "JSON"; });

} // namespace

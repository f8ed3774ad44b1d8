// The demonstration's journal, beside what the raw files of the season say. The files are read here in a way of their
// own, so that the two have only the files in common.

#include "support/journal_test.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/wait.h>

using namespace support;

namespace
{

const std::string SeasonData = PLANTJOURNAL_SOURCE_DIR "/examples/data/tomato-2019";
const std::vector<std::string> Compartments = {"AICU",    "Automatoes", "Digilog",
                                               "IUACAAS", "Reference",  "TheAutomators"};

// The cells of a data file without its heading, trimmed.
Rows Cells(const std::string& compartment, const std::string& file)
{
    std::istringstream lines(FileBytes(SeasonData + '/' + compartment + '/' + file + ".csv"));
    std::string line;
    std::getline(lines, line);
    Rows rows;
    while (std::getline(lines, line))
    {
        std::istringstream cells(line);
        std::string cell;
        Row& row = rows.emplace_back();
        while (std::getline(cells, cell, ','))
        {
            std::erase_if(cell, [](char c) { return c == ' ' || c == '\t' || c == '\r'; });
            row.push_back(cell);
        }
    }
    return rows;
}

std::string Date(const std::string& dayNumber)
{
    return PlainConnection(":memory:").Value("SELECT date('1899-12-30','" + dayNumber + " days');");
}

double Number(const std::string& cell)
{
    return std::strtod(cell.c_str(), nullptr);
}

// The season of one compartment as the raw files tell it, in the order in which it is to be kept.
struct Season
{
    std::vector<PlantEvent> Pickings;
    std::vector<PlantCareEntry> Care;
    std::vector<PlantJournalEntry> Journal;
    HarvestRecord Harvest;
    std::string TransplantDate;
};

Season SeasonOf(const std::string& compartment)
{
    Season season;
    const Rows crop = Cells(compartment, "CropParameters");
    const Rows laboratory = Cells(compartment, "LabAnalysis");
    const Rows resources = Cells(compartment, "Resources");
    const Rows pickings = Cells(compartment, "Production");
    const Rows quality = Cells(compartment, "TomQuality");
    const double density = Number(crop[0][5]);
    season.TransplantDate = Date(resources[0][0]);

    double kilograms = 0;
    for (const Row& row : pickings)
    {
        PlantEvent& event = season.Pickings.emplace_back();
        event.EventDate = Date(row[0]);
        event.Type = PlantEventType::Harvest;
        event.Details = "Class A " + row[1] + " kg/m2, class B " + row[2] + " kg/m2";
        kilograms += Number(row[1]) + Number(row[2]);
    }
    for (const Row& row : resources)
    {
        if (Number(row[5]) == 0)
            continue;
        PlantCareEntry& care = season.Care.emplace_back();
        care.CareDate = Date(row[0]);
        care.AmountMl = Number(row[5]) * 1000 / density;
        care.RunoffMl = Number(row[6]) * 1000 / density;
        for (const Row& analysis : laboratory)
        {
            if (Number(analysis[0]) > Number(row[0]))
                break;
            care.Action = PlantCareAction::Feed;
            care.Product = "Nutrient solution";
            care.PH = Number(analysis[1]);
            care.EC = Number(analysis[2]);
            if (Number(analysis[0]) == Number(row[0]))
                care.Notes = "drain EC " + analysis[21] + " pH " + analysis[20];
        }
    }
    for (const Row& row : crop)
    {
        PlantJournalEntry& entry = season.Journal.emplace_back();
        entry.EntryDate = Date(row[0]);
        entry.Details = "Stem growth " + row[1] + " cm, thickness " + row[2] + " mm, trusses " + row[3];
    }
    double flavour = 0;
    double dryMatter = 0;
    int dryMatters = 0;
    for (const Row& row : quality)
    {
        PlantJournalEntry& entry = season.Journal.emplace_back();
        entry.EntryDate = Date(row[0]);
        entry.Type = PlantJournalType::Milestone;
        entry.Details = "Flavour " + row[1] + ", Brix " + row[2] + ", dry matter " + row[7];
        flavour += Number(row[1]);
        if (!std::isnan(Number(row[7])))
        {
            dryMatter += Number(row[7]);
            ++dryMatters;
        }
    }
    season.Harvest.HarvestDate = Date(pickings.back()[0]);
    season.Harvest.WetWeightG = kilograms * 1000 / density;
    season.Harvest.DryWeightG = season.Harvest.WetWeightG * (dryMatter / dryMatters) / 100;
    season.Harvest.QualityRating = flavour / static_cast<double>(quality.size()) / 10;
    return season;
}

class SeasonTest : public testing::Test
{
  protected:
    // Runs the demonstration and returns its exit status.
    int Run(const std::string& data = SeasonData) const
    {
        const std::string command = "'" PLANTJOURNAL_GREENHOUSE_SEASON "' '" + Journal + "' '" + data + "' >'" +
                                    Scratch.File("out") + "' 2>'" + Scratch.File("err") + "'";
        return WEXITSTATUS(std::system(command.c_str()));
    }

    std::string Out() const { return FileBytes(Scratch.File("out")); }
    std::string Err() const { return FileBytes(Scratch.File("err")); }

    // A copy of the data in which `change` is made to a file.
    template <typename Change> std::string ChangedData(const std::string& file, const Change& change) const
    {
        const std::string data = Scratch.File("data");
        std::filesystem::remove_all(data);
        std::filesystem::copy(SeasonData, data, std::filesystem::copy_options::recursive);
        change(data + '/' + file);
        return data;
    }

    // Replaces the first `from` of a data file by `to`.
    std::string ReplacedData(const std::string& file, const std::string& from, const std::string& to) const
    {
        return ChangedData(file,
                           [&](const std::string& path)
                           {
                               std::string text = FileBytes(path);
                               text.replace(text.find(from), from.size(), to);
                               std::ofstream(path, std::ios::binary) << text;
                           });
    }

    // The program refuses the data with a message and keeps nothing.
    void ExpectRefused(const std::string& data, const std::string& message) const
    {
        EXPECT_EQ(Run(data), 1);
        EXPECT_NE(Err().find(message), std::string::npos) << Err();
        if (std::filesystem::exists(Journal))
        {
            EXPECT_EQ(PlainConnection(Journal).Value("SELECT COUNT(*) FROM Plants;"), "0");
        }
    }

    ScratchDirectory Scratch;
    std::string Journal = Scratch.File("season.db");
};

TEST_F(SeasonTest, TheJournalHoldsWhatTheRawFilesSay)
{
    ASSERT_EQ(Run(), 0) << Err();
    PlantDatabase database;
    ASSERT_TRUE(database.Open(Journal));
    PlantRepository repository(database);
    std::vector<Plant> plants;
    ASSERT_TRUE(repository.ListPlants(plants));
    ASSERT_EQ(plants.size(), Compartments.size());
    std::sort(plants.begin(), plants.end(), [](const Plant& a, const Plant& b) { return a.ID < b.ID; });

    const auto expectRecords = [](const auto& expected, auto& records)
    {
        std::reverse(records.begin(), records.end());
        std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) { return a.ID < b.ID; });
        EXPECT_EQ(records, expected);
    };
    std::int64_t eventID = 0;
    std::int64_t careID = 0;
    std::int64_t entryID = 0;
    for (std::size_t i = 0; i < plants.size(); ++i)
    {
        SCOPED_TRACE(Compartments[i]);
        Season season = SeasonOf(Compartments[i]);
        Plant plant;
        plant.ID = static_cast<std::int64_t>(i) + 1;
        plant.UUID = plants[i].UUID;
        plant.Name = Compartments[i];
        plant.Strain = "Axiany";
        plant.Tent = "Bleiswijk";
        plant.Medium = "slab";
        plant.Stage = PlantStage::Harvested;
        plant.TransplantDate = season.TransplantDate;
        plant.HarvestDate = season.Harvest.HarvestDate;
        EXPECT_EQ(plants[i], plant);

        for (PlantEvent& event : season.Pickings)
        {
            event.ID = ++eventID;
            event.PlantUUID = plant.UUID;
        }
        for (PlantCareEntry& care : season.Care)
        {
            care.ID = ++careID;
            care.TimelineEventID = ++eventID;
            care.PlantUUID = plant.UUID;
        }
        for (PlantJournalEntry& entry : season.Journal)
        {
            entry.ID = ++entryID;
            entry.PlantUUID = plant.UUID;
        }
        season.Harvest.ID = plant.ID;
        season.Harvest.TimelineEventID = ++eventID;
        season.Harvest.PlantUUID = plant.UUID;

        std::vector<PlantEvent> events;
        ASSERT_TRUE(repository.ListPlantEvents(plant.UUID, events));
        std::erase_if(events, [&](const PlantEvent& event)
                      { return event.ID > season.Pickings.back().ID; }); // the others mirror their owners
        expectRecords(season.Pickings, events);
        std::vector<PlantCareEntry> care;
        ASSERT_TRUE(repository.ListPlantCareEntries(plant.UUID, care));
        expectRecords(season.Care, care);
        std::vector<PlantJournalEntry> entries;
        ASSERT_TRUE(repository.ListPlantJournalEntries(plant.UUID, entries));
        expectRecords(season.Journal, entries);
        HarvestRecord harvest;
        ASSERT_TRUE(repository.GetHarvestRecord(plant.UUID, harvest));
        EXPECT_EQ(harvest, season.Harvest);
    }
    const auto count = [&](const std::string& table)
    { return Query(database.NativeHandle(), "SELECT COUNT(*) FROM " + table + ";").at(0).at(0); };
    EXPECT_EQ(count("PlantEvents"), std::to_string(eventID));
    EXPECT_EQ(count("PlantPhotos"), "0");
    EXPECT_EQ(count("PlantHealthObservations"), "0");
}

TEST_F(SeasonTest, ItsFiguresAreReported)
{
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_EQ(Err(), "");
    for (const char* figure : {"6 plants, 971 care entries (870 Feed, 101 Water), 1,117 timeline events, 186 journal "
                               "entries, 6 harvests",
                               "777.42 g", "7.63"})
        EXPECT_NE(Out().find(figure), std::string::npos) << figure << " in\n" << Out();
}

TEST_F(SeasonTest, RunningItAgainDoublesNothing)
{
    ASSERT_EQ(Run(), 0) << Err();
    const std::string kept = FileBytes(Journal);
    const std::string shown = Out();
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_EQ(FileBytes(Journal), kept);
    // The second run says so first, and shows the same journal.
    EXPECT_NE(Out(), shown);
    EXPECT_TRUE(Out().ends_with(shown.substr(shown.size() / 2)));
}

TEST_F(SeasonTest, AGrowersOwnPlantsAreLeftAlone)
{
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(Journal));
        PlantRepository repository(database);
        Plant own;
        own.Name = "Reference";
        own.Strain = "Axiany";
        own.Tent = "the window sill";
        ASSERT_TRUE(own.Save(repository));
    }
    ASSERT_EQ(Run(), 0) << Err();
    ASSERT_EQ(Run(), 0) << Err();
    const PlainConnection journal(Journal);
    EXPECT_EQ(journal.Query("SELECT Name,Stage FROM Plants WHERE Tent='the window sill';"),
              (Rows{{"Reference", "Veg"}}));
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM Plants;"), "7");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantCareEntries;"), "971");
}

TEST_F(SeasonTest, AHalfKeptSeasonIsKeptWhole)
{
    ASSERT_EQ(Run(), 0) << Err();
    const std::string shown = Out();
    PlainConnection(Journal).Execute(
        "PRAGMA foreign_keys=ON; DELETE FROM Plants WHERE ID>4; DELETE FROM HarvestRecords WHERE ID=4; "
        "UPDATE Plants SET Stage='Veg',HarvestDate='' WHERE ID=4;"); // as if killed while the fourth was written
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_TRUE(Out().ends_with(shown.substr(shown.size() / 2)));
    const PlainConnection journal(Journal);
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM Plants;"), "6");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantCareEntries;"), "971");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantEvents;"), "1117");
}

TEST_F(SeasonTest, AMissingFileIsNamedAndNothingIsKept)
{
    ExpectRefused(ChangedData("Digilog/LabAnalysis.csv", [](const auto& path) { std::filesystem::remove(path); }),
                  Scratch.File("data/Digilog/LabAnalysis.csv"));
    ExpectRefused(Scratch.File("nowhere"), Scratch.File("nowhere"));
}

TEST_F(SeasonTest, ARowThatMakesNoSenseIsNamedWithItsLineAndNothingIsKept)
{
    const std::string path = Scratch.File("data/AICU/");
    // The first cells of each file's first rows.
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "wet"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "NaN"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "-1"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "43816", "43816.5"), path + "Resources.csv:3: ");
    ExpectRefused(ReplacedData("AICU/Production.csv", "43880, 0.50,0.0,", "43880, "), path + "Production.csv:3: ");
    ExpectRefused(ReplacedData("AICU/CropParameters.csv", "3.6,1.8", "3.6,0"), path + "CropParameters.csv:2: ");
    ExpectRefused(ReplacedData("AICU/TomQuality.csv", "80,9.0", "80,9.0x"), path + "TomQuality.csv:2: ");
    ExpectRefused(ReplacedData("AICU/LabAnalysis.csv", "5.3,4.3", "5.3,"), path + "LabAnalysis.csv:2: ");
}

TEST_F(SeasonTest, AJournalThatCannotBeOpenedIsNamedWithTheReason)
{
    std::filesystem::create_directory(Journal);
    EXPECT_EQ(Run(), 1);
    EXPECT_NE(Err().find(Journal), std::string::npos);
    EXPECT_NE(Err().find("unable to open database file"), std::string::npos);
}

} // namespace

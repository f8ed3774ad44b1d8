// Compares the journal of the demonstration with the raw files of the season. The files are parsed here a second time,
// so that the test shares no code with the demonstration.

#include "support/journal_test.h"
#include "support/on_windows.h"
#include "support/program.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace support;

namespace
{

const std::string SeasonData = PLANTJOURNAL_SOURCE_DIR "/examples/data/tomato-2019";
const std::vector<std::string> Compartments = {"AICU",    "Automatoes", "Digilog",
                                               "IUACAAS", "Reference",  "TheAutomators"};

// Returns the trimmed cells of a data file without its heading.
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

// Drops the measurements that are missing from a text such as "Stem growth NaN cm, trusses 22".
std::string WithoutMissing(const std::string& text)
{
    std::istringstream measurements(text + ", ");
    std::string present;
    for (std::string one; std::getline(measurements, one, ',');)
        if (one.find("NaN") == std::string::npos && one.find("nan") == std::string::npos && one != " ")
            present += (present.empty() ? one.substr(one.find_first_not_of(' ')) : ',' + one);
    if (!present.empty())
        present[0] = static_cast<char>(std::toupper(present[0]));
    return present;
}

// The season of one compartment, in the order in which it is stored.
struct Season
{
    std::vector<PlantEvent> Pickings;
    std::vector<PlantCareEntry> Care;
    std::vector<PlantJournalEntry> Journal;
    HarvestRecord Harvest;
    std::string TransplantDate;
};

std::vector<PlantEvent> PickingsOf(const std::string& compartment)
{
    std::vector<PlantEvent> events;
    for (const Row& row : Cells(compartment, "Production"))
    {
        PlantEvent& event = events.emplace_back();
        event.EventDate = Date(row[0]);
        event.Type = PlantEventType::Harvest;
        event.Details = "Class A " + row[1] + " kg/m2, class B " + row[2] + " kg/m2";
    }
    return events;
}

std::vector<PlantCareEntry> CareOf(const std::string& compartment, double density)
{
    std::vector<PlantCareEntry> entries;
    const Rows laboratory = Cells(compartment, "LabAnalysis");
    for (const Row& row : Cells(compartment, "Resources"))
    {
        if (Number(row[5]) == 0)
            continue;
        PlantCareEntry& care = entries.emplace_back();
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
    return entries;
}

std::vector<PlantJournalEntry> JournalOf(const std::string& compartment)
{
    std::vector<PlantJournalEntry> entries;
    const auto add = [&](const std::string& day, PlantJournalType type, const std::string& details)
    {
        PlantJournalEntry entry;
        entry.EntryDate = Date(day);
        entry.Type = type;
        entry.Details = WithoutMissing(details);
        if (!entry.Details.empty())
            entries.push_back(entry);
    };
    for (const Row& row : Cells(compartment, "CropParameters"))
        add(row[0], PlantJournalType::Observation,
            "Stem growth " + row[1] + " cm, thickness " + row[2] + " mm, trusses " + row[3]);
    for (const Row& row : Cells(compartment, "TomQuality"))
        add(row[0], PlantJournalType::Milestone, "Flavour " + row[1] + ", Brix " + row[2] + ", dry matter " + row[7]);
    return entries;
}

HarvestRecord HarvestOf(const std::string& compartment, double density)
{
    const Rows pickings = Cells(compartment, "Production");
    double kilograms = 0;
    for (const Row& row : pickings)
        kilograms += Number(row[1]) + Number(row[2]);
    const Rows quality = Cells(compartment, "TomQuality");
    double flavour = 0;
    double dryMatter = 0;
    int dryMatters = 0;
    for (const Row& row : quality)
    {
        flavour += Number(row[1]);
        if (!std::isnan(Number(row[7])))
        {
            dryMatter += Number(row[7]);
            ++dryMatters;
        }
    }
    HarvestRecord harvest;
    harvest.HarvestDate = Date(pickings.back()[0]);
    harvest.WetWeightG = kilograms * 1000 / density;
    harvest.DryWeightG = harvest.WetWeightG * (dryMatter / dryMatters) / 100;
    harvest.QualityRating = flavour / static_cast<double>(quality.size()) / 10;
    return harvest;
}

Season SeasonOf(const std::string& compartment)
{
    const double density = Number(Cells(compartment, "CropParameters")[0][5]);
    Season season;
    season.TransplantDate = Date(Cells(compartment, "Resources")[0][0]);
    season.Pickings = PickingsOf(compartment);
    season.Care = CareOf(compartment, density);
    season.Journal = JournalOf(compartment);
    season.Harvest = HarvestOf(compartment, density);
    return season;
}

// The journal as it should be: numbers the rows in the order in which they are written.
struct Expected
{
    void Number(Season& season, const Plant& plant)
    {
        for (PlantEvent& event : season.Pickings)
        {
            event.ID = ++EventID;
            event.PlantUUID = plant.UUID;
        }
        for (PlantCareEntry& care : season.Care)
        {
            care.ID = ++CareID;
            care.TimelineEventID = ++EventID;
            care.PlantUUID = plant.UUID;
        }
        for (PlantJournalEntry& entry : season.Journal)
        {
            entry.ID = ++EntryID;
            entry.PlantUUID = plant.UUID;
        }
        season.Harvest.ID = plant.ID;
        season.Harvest.TimelineEventID = ++EventID;
        season.Harvest.PlantUUID = plant.UUID;
    }

    std::int64_t EventID = 0;
    std::int64_t CareID = 0;
    std::int64_t EntryID = 0;
};

// Compares a list of the library with the rows in the order in which they were written.
template <typename Record> void ExpectRecords(const std::vector<Record>& expected, std::vector<Record> listed)
{
    std::sort(listed.begin(), listed.end(), [](const Record& a, const Record& b) { return a.ID < b.ID; });
    EXPECT_EQ(listed, expected);
}

void ExpectSeason(PlantRepository& repository, const std::string& plantUUID, const Season& season)
{
    std::vector<PlantEvent> events;
    ASSERT_TRUE(repository.ListPlantEvents(plantUUID, events));
    // Later events belong to care entries and to the harvest record.
    std::erase_if(events, [&](const PlantEvent& event) { return event.ID > season.Pickings.back().ID; });
    ExpectRecords(season.Pickings, events);
    std::vector<PlantCareEntry> care;
    ASSERT_TRUE(repository.ListPlantCareEntries(plantUUID, care));
    ExpectRecords(season.Care, care);
    std::vector<PlantJournalEntry> entries;
    ASSERT_TRUE(repository.ListPlantJournalEntries(plantUUID, entries));
    ExpectRecords(season.Journal, entries);
    HarvestRecord harvest;
    ASSERT_TRUE(repository.GetHarvestRecord(plantUUID, harvest));
    HarvestRecord expected = season.Harvest;
    // A processor may add in registers with more digits, so that the last bit of a sum depends on the compiler.
    for (double HarvestRecord::*const sum :
         {&HarvestRecord::WetWeightG, &HarvestRecord::DryWeightG, &HarvestRecord::QualityRating})
    {
        EXPECT_DOUBLE_EQ(harvest.*sum, expected.*sum);
        expected.*sum = harvest.*sum;
    }
    EXPECT_EQ(harvest, expected);
}

class SeasonTest : public testing::Test
{
  protected:
    // Runs the demonstration. Returns its exit status.
    int Run(const std::string& data = SeasonData) const
    {
        Result = RunProgram({PLANTJOURNAL_GREENHOUSE_SEASON, Journal, data});
        return Result.Status;
    }

    std::string Out() const { return Result.Out; }
    std::string Err() const { return Result.Error; }

    // Copies the data and applies `change` to one file of the copy. Returns the directory of the copy.
    template <typename Change> std::string ChangedData(const std::string& file, const Change& change) const
    {
        const std::string data = Scratch.File("data");
        std::filesystem::remove_all(data);
        std::filesystem::copy(SeasonData, data, std::filesystem::copy_options::recursive);
        change(data + '/' + file);
        return data;
    }

    // Copies the data and replaces the first `from` of a file with `to`.
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

    // Expects the program to refuse the data with a message and to write nothing.
    void ExpectRefused(const std::string& data, std::string message) const
    {
        EXPECT_EQ(Run(data), 1);
        std::string error = Err();
        for (std::string* text : {&error, &message})
            if (OnWindows)
                std::replace(text->begin(), text->end(), '\\', '/');
        EXPECT_NE(error.find(message), std::string::npos) << error;
        if (std::filesystem::exists(Journal))
        {
            EXPECT_EQ(PlainConnection(Journal).Value("SELECT COUNT(*) FROM Plants;"), "0");
        }
    }

    ScratchDirectory Scratch;
    mutable ProgramResult Result; // of the last run
    std::string Journal = Scratch.File("season.db");
};

TEST_F(SeasonTest, TheJournalHoldsTheValuesOfTheRawFiles)
{
    ASSERT_EQ(Run(), 0) << Err();
    PlantDatabase database;
    ASSERT_TRUE(database.Open(Journal));
    PlantRepository repository(database);
    std::vector<Plant> plants;
    ASSERT_TRUE(repository.ListPlants(plants));
    ASSERT_EQ(plants.size(), Compartments.size());
    std::sort(plants.begin(), plants.end(), [](const Plant& a, const Plant& b) { return a.ID < b.ID; });

    Expected expected;
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
        expected.Number(season, plant);
        ExpectSeason(repository, plant.UUID, season);
    }
    const PlainConnection journal(Journal);
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantEvents;"), std::to_string(expected.EventID));
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantPhotos;"), "0");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantHealthObservations;"), "0");
}

TEST_F(SeasonTest, NoTextShowsAMissingMeasurement)
{
    ASSERT_EQ(Run(), 0) << Err();
    const PlainConnection journal(Journal);
    const auto details = [&](const std::string& date)
    {
        return journal.QueryRows("SELECT Details FROM PlantJournalEntries WHERE EntryDate='" + date +
                                 "' AND PlantUUID=(SELECT UUID FROM Plants WHERE Name='AICU') ORDER BY ID;");
    };
    EXPECT_EQ(details("2019-12-24"), (Rows{{"Stem growth 18.7 cm, thickness 8.3 mm"}})); // no trusses
    EXPECT_EQ(details("2020-04-29"), (Rows{{"Trusses 22"}, {"Flavour 77, Brix 8.9, dry matter 9.25"}}));
    EXPECT_EQ(details("2020-05-06"), Rows{}); // a row without any measurement
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantJournalEntries WHERE Details='' OR Details LIKE '%nan%';"), "0");
}

TEST_F(SeasonTest, TheNotesOfASampleLeaveOutMissingValues)
{
    const auto notes = [&](const std::string& measured) // pH and EC of the drain water on the day of the first sample
    {
        std::filesystem::remove(Journal);
        EXPECT_EQ(Run(ReplacedData("AICU/LabAnalysis.csv", "0.5,6.5,4.5,", "0.5," + measured + ",")), 0) << Err();
        return PlainConnection(Journal).Value("SELECT Notes FROM PlantCareEntries WHERE CareDate='2020-01-06' AND "
                                              "PlantUUID=(SELECT UUID FROM Plants WHERE Name='AICU');");
    };
    EXPECT_EQ(notes("6.5,4.5"), "drain EC 4.5 pH 6.5");
    EXPECT_EQ(notes("NaN,4.5"), "drain EC 4.5");
    EXPECT_EQ(notes("6.5,nan"), "drain pH 6.5");
    EXPECT_EQ(notes("NaN,NaN"), "");
}

TEST_F(SeasonTest, TheDemonstrationPrintsItsTotals)
{
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_EQ(Err(), "");
    for (const char* figure : {"6 plants, 971 care entries (870 Feed, 101 Water), 1,117 timeline events, 162 journal "
                               "entries, 6 harvests",
                               "777.42 g", "7.63"})
        EXPECT_NE(Out().find(figure), std::string::npos) << figure << " in\n" << Out();
}

TEST_F(SeasonTest, ASecondRunWritesNothing)
{
    ASSERT_EQ(Run(), 0) << Err();
    const std::string kept = FileBytes(Journal);
    const std::string shown = Out();
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_EQ(FileBytes(Journal), kept);
    // The second run first reports that it has written nothing. It then shows the same journal.
    EXPECT_NE(Out(), shown);
    EXPECT_TRUE(Out().ends_with(shown.substr(shown.size() / 2)));
}

TEST_F(SeasonTest, TheGrowersOwnPlantsStayUnchanged)
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
    EXPECT_EQ(journal.QueryRows("SELECT Name,Stage FROM Plants WHERE Tent='the window sill';"),
              (Rows{{"Reference", "Veg"}}));
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM Plants;"), "7");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantCareEntries;"), "971");
}

TEST_F(SeasonTest, TheNextRunCompletesAnInterruptedSeason)
{
    ASSERT_EQ(Run(), 0) << Err();
    const std::string shown = Out();
    PlainConnection(Journal).RunSQL(
        "PRAGMA foreign_keys=ON; DELETE FROM Plants WHERE ID>4; DELETE FROM HarvestRecords WHERE ID=4; "
        "UPDATE Plants SET Stage='Veg',HarvestDate='' WHERE ID=4;"); // as if killed during the fourth plant
    ASSERT_EQ(Run(), 0) << Err();
    EXPECT_TRUE(Out().ends_with(shown.substr(shown.size() / 2)));
    const PlainConnection journal(Journal);
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM Plants;"), "6");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantCareEntries;"), "971");
    EXPECT_EQ(journal.Value("SELECT COUNT(*) FROM PlantEvents;"), "1117");
}

TEST_F(SeasonTest, AMissingFileIsReportedAndNothingIsWritten)
{
    ExpectRefused(ChangedData("Digilog/LabAnalysis.csv", [](const auto& path) { std::filesystem::remove(path); }),
                  Scratch.File("data/Digilog/LabAnalysis.csv"));
    ExpectRefused(Scratch.File("nowhere"), Scratch.File("nowhere"));
}

TEST_F(SeasonTest, AnInvalidRowIsReportedWithItsLineAndNothingIsWritten)
{
    const std::string path = Scratch.File("data/AICU/");
    // Each text to replace is in one of the first rows of its file.
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "wet"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "NaN"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "16.2", "-1"), path + "Resources.csv:2: ");
    ExpectRefused(ReplacedData("AICU/Resources.csv", "43816", "43816.5"), path + "Resources.csv:3: ");
    ExpectRefused(ReplacedData("AICU/Production.csv", "43880, 0.50,0.0,", "43880, "), path + "Production.csv:3: ");
    ExpectRefused(ReplacedData("AICU/CropParameters.csv", "3.6,1.8", "3.6,0"), path + "CropParameters.csv:2: ");
    ExpectRefused(ReplacedData("AICU/TomQuality.csv", "80,9.0", "80,9.0x"), path + "TomQuality.csv:2: ");
    ExpectRefused(ReplacedData("AICU/LabAnalysis.csv", "5.3,4.3", "5.3,"), path + "LabAnalysis.csv:2: ");
}

TEST_F(SeasonTest, AJournalThatCannotBeOpenedIsReportedWithTheReason)
{
    std::filesystem::create_directory(Journal);
    EXPECT_EQ(Run(), 1);
    EXPECT_NE(Err().find(Journal), std::string::npos);
    EXPECT_NE(Err().find("unable to open database file"), std::string::npos);
}

} // namespace

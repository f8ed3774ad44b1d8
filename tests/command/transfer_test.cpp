// Export and import: everything goes out, comes back equal, and comes in whole or not at all.

#include "support/command.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <thread>

using namespace support;

namespace
{

const Words TableNames = {"Strains",
                          "Plants",
                          "PlantEvents",
                          "PlantCareEntries",
                          "HarvestRecords",
                          "PlantPhotos",
                          "PlantHealthObservations",
                          "PlantJournalEntries"};

class TransferTest : public CommandTest
{
  protected:
    // The bytes of an export, of all files where it is a directory.
    std::string BytesOf(const std::string& name) const
    {
        if (!std::filesystem::is_directory(Scratch.File(name)))
            return FileBytes(Scratch.File(name));
        std::string bytes;
        for (const std::string& table : TableNames)
            bytes += table + ":\n" + FileBytes(Scratch.File(name) + '/' + table + ".csv");
        return bytes;
    }

    std::string Exported() const { return Done({"export", "-"}); }

    // What an import of this text as JSON says; it is refused.
    std::string RefusedText(const std::string& json) const
    {
        Write("source.json", json);
        return Refused({"import", "source.json"});
    }

    // A journal in which every text, number and date is as unlikely as a record can hold it.
    void KeepTheUnlikely() const
    {
        KeepEverything();
        Keep(
            [this](PlantRepository& repository)
            {
                const std::vector<std::string> texts = {"",
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
                const std::vector<std::string> dates = {"spring", "2026-13-45", "\xFF", "1.5.26", "2026-5-1", "today"};
                const std::vector<double> numbers = {0.1,
                                                     1e308,
                                                     5e-324,
                                                     1.0 / 3,
                                                     std::numeric_limits<double>::infinity(),
                                                     -std::numeric_limits<double>::infinity(),
                                                     123456789012345680.0};
                for (std::size_t i = 0; i < texts.size(); ++i)
                {
                    const std::string& text = texts[i];
                    const std::string& date = dates[i % dates.size()];
                    const double number = numbers[i % numbers.size()];
                    Plant plant;
                    plant.UUID = "uuid " + text;
                    plant.Name = plant.Strain = plant.Tent = plant.PotSize = plant.Medium = plant.Notes = text;
                    plant.SeedDate = plant.CloneDate = plant.FlipDate = plant.HarvestDate = plant.TransplantDate = date;
                    plant.FlipHeightCm = number;
                    plant.FinalHeightCm = -number;
                    plant.MotherPlantUUID = i == 0 ? "" : "uuid " + texts[i - 1];
                    EXPECT_TRUE(repository.CreatePlant(plant)) << text;
                    PlantEvent event = {0, plant.UUID, date, PlantEventType::LSTTrained, text};
                    EXPECT_TRUE(repository.CreatePlantEvent(event));
                    PlantCareEntry care = {0, 0, plant.UUID, date, PlantCareAction::Feed, text, number, 1, 2, 3, text};
                    EXPECT_TRUE(repository.CreatePlantCareEntry(care));
                    HarvestRecord harvest = {0,    0,   plant.UUID, date, number, 1, 2, std::numeric_limits<int>::min(),
                                             text, text};
                    EXPECT_TRUE(repository.SaveHarvestRecord(plant, harvest));
                    PlantPhoto photo = {0, "photo " + text, plant.UUID, date, Scratch.File("basil.jpg"), text};
                    EXPECT_TRUE(repository.CreatePlantPhoto(photo));
                    PlantHealthObservation seen = {0, plant.UUID, date, text + '!', 5, text, text};
                    EXPECT_TRUE(repository.CreatePlantHealthObservation(seen));
                    PlantJournalEntry entry = {0, plant.UUID, date, PlantJournalType::Milestone, text};
                    EXPECT_TRUE(repository.CreatePlantJournalEntry(entry));
                }
            });
        // Gaps and extremes among the row numbers, and an entry without an event.
        const PlainConnection connection(Journal);
        connection.RunSQL("DELETE FROM PlantEvents WHERE ID%7=3 AND ID NOT IN (SELECT TimelineEventID "
                          "FROM PlantCareEntries UNION SELECT TimelineEventID FROM HarvestRecords);"
                          "UPDATE PlantJournalEntries SET ID=9223372036854775807 WHERE ID=4;"
                          "UPDATE PlantPhotos SET ID=-5 WHERE ID=2;"
                          "UPDATE Plants SET ID=ID+100000 WHERE ID>10 AND MotherPlantID IS NULL;");
    }
};

// ---- Export

TEST_F(TransferTest, AnExportHoldsEveryRecordAsTheListsTellItOnALineEach)
{
    KeepEverything();
    const std::string before = FileBytes(Journal);
    EXPECT_EQ(Done({"export", "journal.json"}), "");
    const std::string text = BytesOf("journal.json");
    EXPECT_EQ(Exported(), text);
    EXPECT_EQ(FileBytes(Journal), before);

    const JSON all = JSON::parse(text);
    Words names = {"Format"};
    names.insert(names.end(), TableNames.begin(), TableNames.end());
    Words found;
    for (const auto& [name, value] : all.items())
        found.push_back(name);
    EXPECT_EQ(found, names);
    EXPECT_EQ(all.at("Format"), 1);
    EXPECT_EQ(all.at("Strains"), Parsed({"strain", "list"}));
    EXPECT_EQ(all.at("Plants"), Parsed({"plant", "list"}));
    for (const auto& [table, family] :
         std::vector<std::pair<const char*, const char*>>{{"PlantCareEntries", "care"},
                                                          {"HarvestRecords", "harvest"},
                                                          {"PlantPhotos", "photo"},
                                                          {"PlantHealthObservations", "health"},
                                                          {"PlantJournalEntries", "note"}})
        EXPECT_EQ(all.at(table), Parsed({family, "list"}));
    EXPECT_EQ(all.at("PlantEvents").size(), 3U);
    for (const JSON& event : all.at("PlantEvents"))
        EXPECT_NE(text.find('\n' + event.dump()), std::string::npos);
}

TEST_F(TransferTest, AnExportAsCSVIsAFilePerTableWithTheFieldsAsHeadings)
{
    KeepEverything();
    EXPECT_EQ(Done({"export", "--csv", "csv"}), "");
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(Scratch.File("csv")))
        ++files;
    EXPECT_EQ(files, 8);
    const JSON all = JSON::parse(Exported());
    for (const std::string& table : TableNames)
    {
        std::string headings;
        for (const auto& [name, value] : all.at(table).at(0).items())
            headings += (headings.empty() ? "" : ",") + name;
        EXPECT_TRUE(FileBytes(Scratch.File("csv/" + table + ".csv")).starts_with(headings + '\n')) << table;
    }
    EXPECT_EQ(FileBytes(Scratch.File("csv/Strains.csv")),
              "ID,Name,Breeder,FloweringWeeks,Notes\n1,Genovese,Riviera,9,large leaves\n");
    EXPECT_NE(FileBytes(Scratch.File("csv/Plants.csv")).find(",\"peat, \"\"fine\"\"\",2026-02,40.5,0.1,"),
              std::string::npos);
    EXPECT_NE(FileBytes(Scratch.File("csv/Plants.csv")).find(",\"two\nlines\"\n"), std::string::npos);
}

TEST_F(TransferTest, AnExportReplacesNothing)
{
    KeepEverything();
    std::filesystem::create_directory(Scratch.File("directory"));
    std::filesystem::create_symlink("nowhere", Scratch.File("link"));
    for (const char* taken : {"basil.jpg", "directory", "link"})
        for (const bool csv : {false, true})
        {
            const Words words = csv ? Words{"export", "--csv", taken} : Words{"export", taken};
            EXPECT_NE(Refused(words).find("exists already; nothing was written"), std::string::npos);
        }
    EXPECT_EQ(FileBytes(Scratch.File("basil.jpg")), "a picture");
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("directory")));
    EXPECT_NE(Refused({"export", "nowhere/journal.json"}).find("No such file or directory"), std::string::npos);
}

TEST_F(TransferTest, AnExportThatWouldNotBeWholeIsRefused)
{
    KeepEverything();
    const PlainConnection connection(Journal);
    connection.RunSQL("INSERT INTO PlantJournalEntries(PlantUUID,Details) VALUES('nobody','lost');");
    Sound = false;
    std::filesystem::create_directory(Scratch.File("out"));
    for (const Words& words : {Words{"export", "out/a.json"}, {"export", "-"}, {"export", "--csv", "out/csv"}})
        EXPECT_NE(Refused(words).find("of 2 rows of PlantJournalEntries only 1 could be read"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("out")));
}

TEST_F(TransferTest, AnExportGivesWhatWasLastStoredWhileAnotherWrites)
{
    KeepEverything();
    const std::string before = Exported();
    OtherProgram other(Journal, "BEGIN IMMEDIATE; UPDATE Plants SET Name='renamed';");
    EXPECT_EQ(Exported(), before);
    other.Finish();
    EXPECT_NE(Exported(), before);
}

TEST_F(TransferTest, AnExportIsOfOneMomentWhileOthersWrite)
{
    Keep([](PlantRepository&) {});
    const auto state = [](const std::string& word)
    {
        return "BEGIN IMMEDIATE; UPDATE Plants SET Tent='" + word + "'; UPDATE PlantJournalEntries SET Details='" +
               word + "'; COMMIT;";
    };
    Words moments;
    {
        const PlainConnection connection(Journal);
        connection.RunSQL("WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I+1 FROM N WHERE I<500) "
                          "INSERT INTO Plants(UUID,Name) SELECT 'u'||I,'one of many' FROM N;"
                          "INSERT INTO PlantJournalEntries(PlantUUID) SELECT UUID FROM Plants;");
        for (const char* word : {"here", "there"})
        {
            connection.RunSQL(state(word));
            moments.push_back(Exported());
        }
    }
    const std::string end = Scratch.File("end");
    ChildProcess writer(
        [&](const ParentProcess& parent)
        {
            const PlainConnection connection(Journal);
            connection.RunSQL("PRAGMA busy_timeout=10000;");
            parent.Send("begun");
            for (int i = 0; !std::filesystem::exists(end); ++i)
            {
                connection.RunSQL(state(i % 2 == 0 ? "here" : "there"));
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    EXPECT_EQ(writer.ReadLine(), "begun");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(std::count(moments.begin(), moments.end(), Exported()), 1);
    Write("end", "");
    EXPECT_EQ(writer.End(), "done");
}

// ---- There and back

class RoundTripTest : public TransferTest, public testing::WithParamInterface<bool>
{
  protected:
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
        EXPECT_EQ(Done(Export(name + "-back", copy)), "");
        EXPECT_EQ(BytesOf(name + "-there"), BytesOf(name + "-back"));
        EXPECT_EQ(Run({"check", "--file", copy}).Out, Run({"check", "--file", file}).Out);
    }
};

TEST_P(RoundTripTest, AnyRecordComesBackEqualToTheByteAndRowForRow)
{
    KeepTheUnlikely();
    ExpectEqualAfterwards(Journal, "copy");
    EXPECT_EQ(::Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()), Content());
}

TEST_P(RoundTripTest, AnEmptyJournalComesBack)
{
    Keep([](PlantRepository&) {});
    ExpectEqualAfterwards(Journal, "copy");
}

TEST_P(RoundTripTest, WhatEarlierVersionsWroteComesBack)
{
    Write("photos/mother.jpg", "a picture");
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Scratch.File(old.Name + ".old"), old);
        ExpectEqualAfterwards(Scratch.File(old.Name + ".old"), old.Name);
    }
}

TEST_P(RoundTripTest, WhereRowNumbersAreTakenNewOnesAreGivenAndEveryLinkFollows)
{
    KeepEverything();
    const JSON there = JSON::parse(Exported());
    Done(Export("everything", Journal));
    const std::string other = Scratch.File("other.db");
    Done({"plant", "add", "First", "--file", other});
    Done({"water", "First", "--file", other});
    Done({"import", "everything", "--file", other});
    const JSON back = JSON::parse(Done({"export", "-", "--file", other}));
    // In what follows the rows of the journal that was there come first.
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
    EXPECT_EQ(Done({"check", "--file", other}), "");
}

INSTANTIATE_TEST_SUITE_P(As, RoundTripTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "CSV" : "JSON"; });

// ---- Import

TEST_F(TransferTest, AnImportTellsHowManyRowsCameIn)
{
    Write("source.json", R"({"Plants":[{"Name":"Basil","UUID":"b1"}],"PlantEvents":[{"PlantUUID":"b1"}]})");
    const JSON counts = Parsed({"import", "source.json"});
    EXPECT_EQ(counts, JSON::parse(R"({"Strains":0,"Plants":1,"PlantEvents":1,"PlantCareEntries":0,"HarvestRecords":0,
        "PlantPhotos":0,"PlantHealthObservations":0,"PlantJournalEntries":0})"));
    Write("second.json", R"({"Plants":[{"Name":"Mint"},{"Name":"Thyme"}]})");
    EXPECT_TRUE(Done({"import", "second.json"})
                    .starts_with("Imported                 Rows\n"
                                 "Strains                     0\n"
                                 "Plants                      2\n"));
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

TEST_F(TransferTest, WhatAnImportDoesNotBringIsMadeAsByHand)
{
    // The same by hand and by files that know neither strains nor events nor numbers.
    Write("csv/Plants.csv", "Name,UUID,Strain,Stage\nBasil,b1,Genovese,flower\nMint,b2,,VEG\n");
    Write("csv/PlantCareEntries.csv",
          "PlantUUID,CareDate,Action,AmountMl,EC\nb1,2026-05-01,feed,500,1.8\nb1,2026,Water,,\n");
    Write("csv/HarvestRecords.csv", "PlantUUID,HarvestDate,DryWeightG\nb1,2026-07-01,96.5\n");
    Done({"import", "csv"});
    const std::string imported = Exported();
    EXPECT_EQ(Done({"check"}), "");
    std::filesystem::remove(Journal);
    Done({"plant", "add", "Basil", "--uuid", "b1", "--strain", "Genovese", "--stage", "flower"});
    Done({"plant", "add", "Mint", "--uuid", "b2"});
    Done({"feed", "b1", "--care-date", "2026-05-01", "--amount-ml", "500", "--ec", "1.8"});
    Done({"water", "b1", "--care-date", "2026"});
    Done({"harvest", "add", "b1", "--harvest-date", "2026-07-01", "--dry-weight-g", "96.5"});
    EXPECT_EQ(imported, Exported());
}

TEST_F(TransferTest, ANewPlantOrPhotoWithoutAUUIDGetsOne)
{
    Write("source.json", R"({"Plants":[{"Name":"Basil"},{"Name":"Mint"}]})");
    Done({"import", "source.json"});
    const JSON plants = Parsed({"plant", "list"});
    EXPECT_EQ(plants.at(0).at("UUID").get<std::string>().size(), 36U);
    EXPECT_NE(plants.at(0).at("UUID"), plants.at(1).at("UUID"));
}

TEST_F(TransferTest, CSVMayBeWrittenByOtherPrograms)
{
    Write("csv/Plants.csv",
          "\xEF\xBB\xBFName,Notes,UUID\r\n\"Basil \"\"1\"\"\",\"a,\r\nb\",b1\r\n Mint ,,b2"); // no end
    Write("csv/readme.txt", "not a table");
    Done({"import", "csv"});
    const JSON plants = Parsed({"plant", "list"});
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("Name"), " Mint ");
    EXPECT_EQ(plants.at(1).at("Name"), "Basil \"1\"");
    EXPECT_EQ(plants.at(1).at("Notes"), "a,\r\nb");
}

TEST_F(TransferTest, DatesThatDoNotSortAsDatesAreTakenAndToldOf)
{
    Write("csv/Plants.csv",
          "Name,UUID,SeedDate,FlipDate,HarvestDate\nBasil,b1,spring,2026-05-01,\nMint,b2,2026,2026-02-30,2026-05\n");
    const ProgramResult import = Run({"import", "csv"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_EQ(import.Error, "warning: csv/Plants.csv:2:10: SeedDate: \"spring\" does not sort as a date\n"
                            "warning: csv/Plants.csv:3:14: FlipDate: \"2026-02-30\" does not sort as a date\n");
    EXPECT_EQ(Parsed({"plant", "show", "b1"}).at("SeedDate"), "spring");
}

TEST_F(TransferTest, AStrainThatIsThereAlreadyIsNotAddedTwice)
{
    KeepEverything();
    Write("source.json",
          R"({"Strains":[{"Name":"Genovese","Breeder":"Riviera","FloweringWeeks":9,"Notes":"large leaves"},
                            {"Name":"Roma"}],"Plants":[{"Name":"New","Strain":"Genovese"}]})");
    EXPECT_EQ(Parsed({"import", "source.json"}).at("Strains"), 1);
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 2U);
    EXPECT_EQ(RefusedText(R"({"Strains":[{"Name":"Genovese","Breeder":"another"}]})"),
              "source.json:1:21: Name: the journal has \"Genovese\" already, with other particulars\n"
              "plantjournal: source.json: bad values: 1; nothing was imported\n");
}

// Every bad value is told with file, line, column and reason, and nothing is imported.

struct BadSource
{
    std::string Name;
    std::string Text; // with ^a, ^b ... before what is complained of
    Words Complaints; // each begins with the letter of its place
};

std::ostream& operator<<(std::ostream& out, const BadSource& source)
{
    return out << source.Name;
}

class BadJSONTest : public TransferTest, public testing::WithParamInterface<BadSource>
{
};

TEST_P(BadJSONTest, IsToldInFullAndNotImported)
{
    KeepEverything();
    std::string text;
    std::map<char, std::string> places;
    int line = 1;
    int column = 1;
    for (std::size_t i = 0; i < GetParam().Text.size(); ++i)
    {
        const char letter = GetParam().Text[i];
        if (letter == '^')
        {
            places[GetParam().Text.at(++i)] = std::to_string(line) + ':' + std::to_string(column);
            continue;
        }
        text += letter;
        line += letter == '\n' ? 1 : 0;
        column = letter == '\n' ? 1 : column + 1;
    }
    std::string expected;
    for (const std::string& complaint : GetParam().Complaints)
        expected += "source.json:" + places.at(complaint.at(0)) + complaint.substr(1) + '\n';
    expected += "plantjournal: source.json: bad values: " + std::to_string(GetParam().Complaints.size()) +
                "; nothing was imported\n";
    EXPECT_EQ(RefusedText(text), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Of, BadJSONTest,
    testing::Values(
        BadSource{"Values",
                  R"({"Plants": [
 {"Name": "x",
  "Stage": ^a"bad", "FlipHeightCm": ^b"q"},
 {"Name": "b", "Sex": ^c"", "ID": ^d1.5}],
"PlantHealthObservations": [
 {"PlantUUID": "0b0b0b0b-0000-4000-8000-000000000001", "Severity": ^e6}]})",
                  {"a: Stage: \"bad\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived",
                   "b: FlipHeightCm: \"q\" is not a number",
                   "c: Sex: \"\" is not one of Unknown, Female, Male, Hermaphrodite",
                   "d: ID: \"1.5\" is not a whole number", "e: Severity: \"6\" is not from 1 to 5"}},
        BadSource{"NoValues",
                  R"({"Plants": [{"Name": ^anull,
"Tent": ^btrue},{"Name": ^c{"Hex": "zz"}},
{"Name": ^d{"Hex": "fff"}}]})",
                  {"a: null is no value", "b: neither true nor false is a value",
                   "c: \"zz\" are not bytes in hexadecimal digits", "d: \"fff\" are not bytes in hexadecimal digits"}},
        BadSource{"Numbers",
                  R"({"HarvestRecords":[{"PlantUUID":"0b0b0b0b-0000-4000-8000-000000000002",
"SeedYield":^a3000000000,
"DryWeightG":^b"nan",
"ID":^c99999999999999999999}]})",
                  {"a: SeedYield: \"3000000000\" is too large", "b: DryWeightG: \"nan\" is not a number",
                   "c: ID: \"99999999999999999999\" is too large"}},
        BadSource{"ZeroByte",
                  R"({"Plants":[{"Name":^a"x\u0000b"},{"Name":^b{"Hex":"00"}}]})",
                  {"a: Name: holds a zero byte", "b: Name: holds a zero byte"}},
        BadSource{"FieldsAndTables",
                  R"(^c{"Plants":[{"Nme":^a"x"},{"Name":"x","Name":^b"y"}],"Animals":[{"Name":"dog"}]})",
                  {"a: Plants has no field \"Nme\"", "b: Name is given twice", "c: there is no table \"Animals\""}},
        BadSource{"TwoTables", R"({"Plants":[],"Plants":^a[]})", {"a: the table \"Plants\" is here twice"}},
        BadSource{"Relations",
                  R"({"Plants":[{"UUID":"x","Name":"x","MotherPlantUUID":^a"none"}],
"PlantEvents":[{"PlantUUID":"x","ID":1},{"PlantUUID":^c"y","ID":^b1}],
"PlantCareEntries":[{"PlantUUID":^d"z"},{"PlantUUID":"x","TimelineEventID":^e7}],
"PlantJournalEntries":[^f{"Details":"of nobody"}]})",
                  {"a: MotherPlantUUID: there is no plant \"none\"", "b: ID: 1 is here twice",
                   "c: PlantUUID: there is no plant \"y\"", "d: PlantUUID: there is no plant \"z\"",
                   "e: TimelineEventID: there is no event 7 in this import", "f: PlantUUID: there is no plant \"\""}},
        BadSource{"Twice",
                  R"({"Strains":[{"Name":^a""},{"Name":"s"},{"Name":^b"s"}],
"Plants":[{"UUID":^c"0b0b0b0b-0000-4000-8000-000000000001"},{"UUID":"x"},{"UUID":^d"x"}],
"HarvestRecords":[{"PlantUUID":^e"0b0b0b0b-0000-4000-8000-000000000001"},{"PlantUUID":"x"},{"PlantUUID":^f"x"}],
"PlantPhotos":[{"PlantUUID":"x","UUID":^g"0b0b0b0b-0000-4000-8000-000000000009","FilePath":"p"}]})",
                  {"a: Name: is empty", "b: Name: \"s\" is here twice",
                   "c: UUID: \"0b0b0b0b-0000-4000-8000-000000000001\" is in the journal already",
                   "d: UUID: \"x\" is here twice", "e: PlantUUID: the plant has a harvest record already",
                   "f: PlantUUID: the plant has a harvest record already", "g: UUID: there is such a photo already"}},
        BadSource{"Lineage",
                  R"({"Plants":[{"UUID":"x","MotherPlantUUID":^a"y"},
{"UUID":"y","MotherPlantUUID":^b"x"},
{"UUID":"z","MotherPlantUUID":^c"z"}]})",
                  {"a: MotherPlantUUID: the plant descends from itself",
                   "b: MotherPlantUUID: the plant descends from itself",
                   "c: MotherPlantUUID: the plant descends from itself"}},
        BadSource{
            "Format", R"({"Format":^a2})", {"a: this form of export, 2, is not known; a newer version may know it"}},
        BadSource{"NoObject", "^a[]", {"a: an array does not belong here"}},
        BadSource{"NoTable", R"({"Plants":^a{}})", {"a: an object does not belong here"}},
        BadSource{"NoRecord", R"({"Plants":^a[5]})", {"a: a value does not belong here"}},
        BadSource{"NoText", R"({"Plants":[{"Name":^a["x"]}]})", {"a: an array does not belong here"}},
        BadSource{"NoJSON", "^adear diary", {"a: syntax error while parsing value - invalid literal; last read: 'd'"}},
        BadSource{"Cut",
                  "{\"Plants\":[{\"Name\":\"a\"},\n{\"N^aa",
                  {"a: syntax error while parsing object key - invalid string: missing closing quote; last read: "
                   "'\"Na'; expected string literal"}}),
    [](const auto& test) { return test.param.Name; });

TEST_F(TransferTest, EveryBadValueOfCSVIsToldToo)
{
    KeepEverything();
    Write("csv/Plants.csv", "Name,Stage,FlipHeightCm\na,bad,1\nb,veg,\"x\ny\"\nc,veg\nd,veg,1,2\n");
    Write("csv/Strains.csv", "Name,Weeks\ns,1\n");
    Write("csv/Animals.csv", "Name\ndog\n");
    Write("csv/PlantPhotos.csv", "");
    Write("csv/PlantEvents.csv", "PlantUUID,Details\na,\"open\n");
    Write("csv/HarvestRecords.csv", "PlantUUID,Notes\na,\"b\"c\n");
    const std::string message = Refused({"import", "csv"});
    for (const std::string complaint :
         {"csv/Plants.csv:2:3: Stage: \"bad\" is not one of ",
          "csv/Plants.csv:3:7: FlipHeightCm: \"x y\" is not a number",
          "csv/Plants.csv:5:1: 2 values where 3 columns are", "csv/Plants.csv:6:1: 4 values where 3 columns are",
          "csv/Strains.csv:2:3: Strains has no field \"Weeks\"", "csv/Animals.csv:1:1: there is no table \"Animals\"",
          "csv/PlantPhotos.csv:1:1: the line of headings is missing", ": a quoted value does not end",
          ": a quoted value is not followed by a comma or the end of the line"})
        EXPECT_NE(message.find(complaint), std::string::npos) << message;
    EXPECT_NE(message.find("csv/PlantEvents.csv:2:"), std::string::npos) << message;
    EXPECT_NE(message.find("csv/HarvestRecords.csv:2:"), std::string::npos) << message;
    EXPECT_NE(message.find("plantjournal: csv: bad values: 9; nothing was imported\n"), std::string::npos) << message;
}

TEST_F(TransferTest, ADirectoryWithoutTablesIsRefused)
{
    std::filesystem::create_directory(Scratch.File("empty"));
    EXPECT_NE(Refused({"import", "empty"}).find("empty: has no CSV file"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

TEST_F(TransferTest, NoTextOfASourceReachesTheTerminalAsACommand)
{
    const std::string escape = "\x1B[2J";
    Write("source.json", R"({"Plants":[{"Stage":"\u001b[2J","\u001b[2J":"x"}],"\u001b[2J":[]})");
    const std::string message = Refused({"import", "source.json"});
    EXPECT_EQ(message.find('\x1B'), std::string::npos);
}

TEST_F(TransferTest, AnImportIntoAnOlderJournalBringsItUpToDateFirst)
{
    std::filesystem::create_directories(std::filesystem::path(Journal).parent_path());
    WriteOldFile(Journal, OldFiles().front());
    Write("source.json", R"({"Plants":[{"Name":"Basil"}]})");
    const ProgramResult import = Run({"import", "source.json"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_NE(import.Error.find("earlier schema; backed up as "), std::string::npos);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
    Left.push_back("journal.db.before-update-" + PlantEventCurrentDate());
    Sound = false;
}

// ---- Others at the same time

TEST_F(TransferTest, AnImportIsWrittenIntoTheVeryFileThatOthersHaveOpen)
{
    KeepEverything();
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    const PlainConnection other(Journal);
    EXPECT_EQ(other.Value("SELECT COUNT(*) FROM Plants;"), "2");
    Done({"import", "source.json"});
    EXPECT_EQ(other.Value("SELECT COUNT(*) FROM Plants;"), "3");
    EXPECT_EQ(other.Value("PRAGMA integrity_check;"), "ok");
}

class MeanwhileTest : public TransferTest
{
  protected:
    MeanwhileTest()
    {
        KeepEverything();
        Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    }

    // Whether the copy is there that an import builds: it has read the journal by then.
    bool CopyIsThere() const
    {
        const std::vector<std::string> names = Beside();
        return std::any_of(names.begin(), names.end(),
                           [](const std::string& name) { return name.starts_with("journal.db.import-"); });
    }
};

TEST_F(MeanwhileTest, AJournalThatAnotherChangedDuringAnImportIsLeftAsTheOtherLeftIt)
{
    OtherProgram other(Journal, "BEGIN IMMEDIATE; UPDATE Plants SET Tent='of the other';");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    other.Finish(); // the import has been waiting for that
    const ProgramResult outcome = import.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_NE(outcome.Error.find("another program wrote to it meanwhile; nothing was changed, import again"),
              std::string::npos)
        << outcome.Error;
    const JSON plants = Parsed({"plant", "list"});
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("Tent"), "of the other");
    Done({"import", "source.json"});
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

TEST_F(MeanwhileTest, AJournalThatAnotherOnlyHeldIsWritten)
{
    OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    other.Finish();
    EXPECT_EQ(import.End().Status, 0);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

TEST_F(MeanwhileTest, AJournalThatAnotherKeepsLockedIsLeftAlone)
{
    const std::string before = Exported();
    {
        const OtherProgram other(Journal, "BEGIN IMMEDIATE;");
        const ProgramResult import = Run({"import", "source.json"});
        EXPECT_EQ(import.Status, 1);
        EXPECT_NE(import.Error.find("database is locked; nothing was changed"), std::string::npos) << import.Error;
    }
    EXPECT_EQ(Exported(), before);
}

TEST_F(MeanwhileTest, CtrlCWhileWaitingForAnotherChangesNothing)
{
    const std::string before = Exported();
    OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    import.Interrupt();
    other.Finish();
    const ProgramResult outcome = import.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed\n");
    EXPECT_EQ(Exported(), before);
}

TEST_F(MeanwhileTest, CtrlCAtAnyMomentOfAnImportLeavesTheJournalAsBeforeOrWithAllOfIt)
{
    std::string source = R"({"Plants":[{"UUID":"m1","Name":"Mint"}],"PlantEvents":[)";
    for (int i = 0; i < 15000; ++i)
        source += (i > 0 ? ",\n" : "\n") +
                  std::string(R"({"PlantUUID":"m1","EventDate":"2026-05-01","Details":"event )") + std::to_string(i) +
                  "\"}";
    Write("source.json", source + "]}");
    const std::string bytes = FileBytes(Journal);
    const std::string before = Exported();

    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    EXPECT_EQ(Run({"import", "source.json"}).Status, 0);
    const auto whole = Clock::now() - begin;
    const std::string after = Exported();
    EXPECT_NE(before, after);

    int interrupted = 0;
    constexpr int moments = 10;
    for (int moment = 0; moment < moments; ++moment)
    {
        Write("data/plantjournal/journal.db", bytes);
        RunningProgram import(Line({"import", "source.json"}), Around);
        std::this_thread::sleep_for(whole * moment / (moments - 1));
        import.Interrupt();
        const ProgramResult outcome = import.End();
        const bool done = outcome.Status == 0;
        interrupted += done ? 0 : 1;
        EXPECT_EQ(outcome.Status, done ? 0 : 1);
        EXPECT_EQ(outcome.Error, done ? "" : "plantjournal: interrupted; nothing was changed\n");
        EXPECT_EQ(outcome.Out.empty(), !done);
        EXPECT_TRUE(Exported() == (done ? after : before)) << "at moment " << moment;
        EXPECT_EQ(Beside(), Left);
    }
    EXPECT_GT(interrupted, 0); // the first one for certain
}

TEST_F(MeanwhileTest, CtrlCDuringAnExportLeavesNothing)
{
    std::filesystem::create_directory(Scratch.File("out"));
    OtherProgram other(Journal, "BEGIN EXCLUSIVE;"); // so that there is time for it
    RunningProgram program(Line({"export", "out/journal.json"}), Around);
    program.Interrupt();
    other.Finish();
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed\n");
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("out")));
}

// ---- A full disk

// A disk of so many kibibytes, mounted where only the programs that it runs see it.
class SmallDisk
{
  public:
    SmallDisk(const Surroundings& around, std::string directory, int kibibytes)
        : Around(around), Directory(std::move(directory)),
          Holder(
              {"unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
               "mount -t tmpfs -o size=" + std::to_string(kibibytes) + "k none \"$0\" && echo mounted && exec sleep 50",
               Directory},
              OnATerminal(around))
    {
    }

    bool IsMounted() { return Holder.Await("mounted"); }

    // The place where others see the disk.
    std::filesystem::path Outside() const { return "/proc/" + std::to_string(Holder.Process()) + "/root" + Directory; }

    ProgramResult Run(const Words& line) const
    {
        Words words = {"nsenter",
                       "--target",
                       std::to_string(Holder.Process()),
                       "--user",
                       "--mount",
                       "--preserve-credentials",
                       "--wd=" + Around.Directory};
        words.insert(words.end(), line.begin(), line.end());
        return RunningProgram(words, Around).End();
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Outside()))
            names.push_back(entry.path().filename().string());
        return names;
    }

  private:
    static Surroundings OnATerminal(Surroundings around)
    {
        around.Columns = 80;
        return around;
    }

    Surroundings Around;
    std::string Directory;
    RunningProgram Holder;
};

class FullDiskTest : public TransferTest
{
  protected:
    FullDiskTest()
    {
        KeepEverything();
        std::filesystem::create_directory(Disk);
    }

    // Runs a command on a journal on ever larger disks until it succeeds. Each time it is all done or nothing, and
    // nothing else is on the disk; `outcome` is called with the result, the disk, and the journal as an export.
    template <typename Visitor> void OnGrowingDisks(const Words& words, int from, int step, const Visitor& visit) const
    {
        int failures = 0;
        for (int size = from;; size += step)
        {
            SmallDisk disk(Around, Disk, size);
            if (!disk.IsMounted())
                GTEST_SKIP() << "this system does not let users mount a disk of their own";
            std::filesystem::copy_file(Journal, disk.Outside() / "journal.db");
            const ProgramResult outcome = disk.Run(Line(words));
            const ProgramResult exported = disk.Run(Line({"export", "-", "--file", Disk + "/journal.db"}));
            EXPECT_EQ(exported.Status, 0) << exported.Error;
            EXPECT_EQ(disk.Run(Line({"check", "--file", Disk + "/journal.db"})).Status, 0);
            visit(outcome, disk, exported.Out);
            if (outcome.Status == 0)
                break;
            ++failures;
            EXPECT_EQ(outcome.Status, 1);
            EXPECT_TRUE(outcome.Error.find("disk is full") != std::string::npos ||
                        outcome.Error.find("No space left on device") != std::string::npos)
                << outcome.Error;
            ASSERT_LT(size, 20000);
        }
        EXPECT_GT(failures, 1);
    }

    std::string Disk = Scratch.File("disk");
};

TEST_F(FullDiskTest, LeavesTheJournalAsItWasOrWithAllOfAnImport)
{
    std::string source = R"({"Plants":[{"UUID":"m1","Name":"Mint"}],"PlantEvents":[)";
    for (int i = 0; i < 3000; ++i)
        source += (i > 0 ? ",\n" : "\n") +
                  std::string(R"({"PlantUUID":"m1","EventDate":"2026-05-01","Details":"event )") + std::to_string(i) +
                  "\"}";
    Write("source.json", source + "]}");
    const std::string before = Exported();
    const std::string bytes = FileBytes(Journal);
    Done({"import", "source.json"});
    const std::string after = Exported();
    Write("data/plantjournal/journal.db", bytes);
    OnGrowingDisks(
        {"import", "source.json", "--file", Disk + "/journal.db"}, 120, 60,
        [&](const ProgramResult& outcome, const SmallDisk& disk, const std::string& exported)
        {
            EXPECT_TRUE(exported == (outcome.Status == 0 ? after : before)) << outcome.Error;
            EXPECT_EQ(disk.Names(), Words{"journal.db"});
            EXPECT_TRUE(outcome.Status == 0 || outcome.Error.find("nothing was changed") != std::string::npos)
                << outcome.Error;
        });
}

TEST_F(FullDiskTest, LeavesNoHalfABackUp)
{
    OnGrowingDisks({"backup", Disk + "/copy.db", "--file", Disk + "/journal.db"}, 104, 24,
                   [&](const ProgramResult& outcome, const SmallDisk& disk, const std::string&)
                   { EXPECT_EQ(disk.Names().size(), outcome.Status == 0 ? 2U : 1U) << outcome.Error; });
}

TEST_F(FullDiskTest, LeavesNoHalfAnExport)
{
    PlainConnection(Journal).RunSQL("UPDATE Plants SET Notes=hex(zeroblob(50000)) WHERE ID=1;");
    for (const bool csv : {false, true})
    {
        const std::string destination = Disk + "/everything";
        const Words words = csv ? Words{"export", "--csv", destination, "--file", Disk + "/journal.db"}
                                : Words{"export", destination, "--file", Disk + "/journal.db"};
        OnGrowingDisks(words, 208, 40,
                       [&](const ProgramResult& outcome, const SmallDisk& disk, const std::string&)
                       { EXPECT_EQ(disk.Names().size(), outcome.Status == 0 ? 2U : 1U) << outcome.Error; });
    }
}

TEST_F(FullDiskTest, IsTheReasonThatAFeedingIsRefused)
{
    const std::string before = Exported();
    OnGrowingDisks({"feed", "Basil", "--notes", std::string(100000, 'x'), "--file", Disk + "/journal.db"}, 104, 100,
                   [&](const ProgramResult& outcome, const SmallDisk&, const std::string& exported)
                   { EXPECT_EQ(exported == before, outcome.Status != 0); });
}

} // namespace

// What every command does alike: help, outputs, statuses, tables, colours, JSON.

#include "support/command.h"
#include "support/page.h"
#include "testing/records.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

using namespace support;

namespace
{

// How many columns of a terminal a text of this file takes: its letters, of which 韓 and 紅 are wide.
std::size_t WidthOf(const std::string& text)
{
    std::size_t width = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        width += (text[i] & '\xC0') == '\x80'                                     ? 0U
                 : text.compare(i, 3, "韓") == 0 || text.compare(i, 3, "紅") == 0 ? 2U
                                                                                  : 1U;
    return width;
}

// ---- Help

class CommandHelpTest : public CommandTest
{
  protected:
    // Visits a command and all below it, with their help.
    // NOLINTNEXTLINE(misc-no-recursion): commands have groups, and groups commands
    void ForEachCommand(const std::function<void(const Words& command, const std::string& help, bool group)>& visit,
                        const Words& command = {}) const
    {
        Words words = command;
        words.emplace_back("--help");
        const std::string help = Done(words);
        const std::size_t list = help.find("\nSubcommands:\n");
        visit(command, help, list != std::string::npos);
        if (list == std::string::npos)
            return;
        for (const std::string& line : Lines(help.substr(list + 14)))
        {
            if (!line.starts_with("  "))
                break;
            Words below = command;
            below.push_back(line.substr(2, line.find(' ', 2) - 2));
            ForEachCommand(visit, below);
        }
    }
};

TEST_F(CommandHelpTest, IsThereForEveryCommandWithExamplesOfIt)
{
    std::vector<std::string> names;
    ForEachCommand(
        [&](const Words& command, const std::string& help, bool group)
        {
            std::string name = "plantjournal";
            for (const std::string& word : command)
                name += ' ' + word;
            const std::size_t examples = help.find("Examples:\n  plantjournal ");
            EXPECT_NE(examples, std::string::npos) << name;
            if (group)
                return;
            const std::string used = help.substr(std::min(examples, help.size()));
            EXPECT_TRUE(used.find("  " + name + ' ') != std::string::npos ||
                        used.find("  " + name + '\n') != std::string::npos)
                << name;
            names.push_back(name.substr(name.find(' ') + 1));
        });
    std::vector<std::string> expected = {
        "plant list",      "plant show",  "plant add",     "plant edit",  "plant delete",
        "plant duplicate", "plant tree",  "timeline",      "strain list", "strain show",
        "strain add",      "strain edit", "strain delete", "feed",        "water"};
    for (const char* family : {"care", "event", "harvest", "photo", "health", "note"})
        for (const char* operation : {"list", "add", "edit", "delete"})
            expected.push_back(std::string(family) + ' ' + operation);
    expected.insert(expected.end(), {"info", "check", "backup", "export", "import"});
    EXPECT_EQ(names, expected);
}

TEST_F(CommandHelpTest, TellsTheVersion)
{
    EXPECT_EQ(Done({"--version"}), "plantjournal " PLANTJOURNAL_VERSION "\n");
}

TEST_F(CommandHelpTest, MakesNoJournal)
{
    Done({"--help"});
    Done({"plant", "add", "--help"});
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

// ---- Statuses and outputs

using CommandConventionTest = CommandTest;

TEST_F(CommandConventionTest, AMistakeInTheCommandLineIsStatus2AndChangesNothing)
{
    KeepEverything();
    const std::vector<std::pair<Words, std::string>> mistakes = {
        {{}, "A subcommand is required"},
        {{"plant"}, "A subcommand is required"},
        {{"water", "Basil", "--amount-ml"}, "--amount-ml"},
        {{"dig"}, "not expected: dig"},
        {{"--dig"}, "not expected: --dig"},
        {{"plant", "dig"}, "not expected: dig"},
        {{"plant", "list", "Basil"}, "Basil"},
        {{"plant", "add"}, "--name is required"},
        {{"plant", "show"}, "PLANT is required"},
        {{"plant", "edit", "Basil"}, "no field to change was given"},
        {{"plant", "edit", "Basil", "--uuid", "other"}, "--uuid"},
        {{"strain", "edit", "Genovese"}, "no field to change was given"},
        {{"care", "edit", "Basil", "1"}, "no field to change was given"},
        {{"care", "edit", "Basil", "one", "--ec", "1"}, "ID"},
        {{"feed", "Basil", "--action", "water"}, "--action"},
        {{"photo", "add", "Basil"}, "--file-path is required"},
        {{"health", "add", "Basil"}, "--issue is required"},
        {{"import"}, "SOURCE is required"},
        {{"backup"}, "DESTINATION is required"},
        {{"export"}, "DESTINATION is required"},
        {{"export", "--csv", "-"}, "cannot go to the standard output"},
    };
    for (const auto& [words, reason] : mistakes)
    {
        const std::string message = Mistaken(words);
        EXPECT_NE(message.find(reason), std::string::npos) << message;
        EXPECT_NE(message.find("--help"), std::string::npos) << message;
    }
}

TEST_F(CommandConventionTest, ARefusalIsStatus1WithTheReasonAndWhatToDo)
{
    EXPECT_NE(Refused({"plant", "list"}).find("no such journal; `plantjournal plant add NAME` creates it"),
              std::string::npos);
    KeepEverything();
    const std::vector<std::pair<Words, std::string>> refusals = {
        {{"plant", "show", "Mint"}, "\"Mint\": no plant has this name or UUID; `plantjournal plant list`"},
        {{"strain", "show", "Mint"}, "\"Mint\": no strain has this name; the strains are:\n  Genovese"},
        {{"care", "edit", "Basil", "99", "--ec", "1"}, "Basil has no care entry 99; `plantjournal care list`"},
        {{"harvest", "delete", "Cutting", "--yes"}, "Cutting has no harvest record; `plantjournal harvest list`"},
        {{"harvest", "add", "Basil"}, "Basil already has a harvest record; `plantjournal harvest edit` changes it"},
        {{"plant", "delete", "Basil"}, "Standard input is not a terminal; pass --yes to confirm"},
        {{"plant", "add", "Mint", "--uuid", "0b0b0b0b-0000-4000-8000-000000000001"},
         "that name or UUID is already in use"},
        {{"plant", "edit", "Basil", "--mother", "Cutting"},
         "the mother must not be the plant itself or one of its descendants"},
        {{"plant", "edit", "Basil", "--mother", "Basil"}, "the mother must not be the plant itself"},
        {{"strain", "add", "Genovese"}, "that name or UUID is already in use"},
        {{"strain", "delete", "Genovese", "--yes"}, "it still has plants"},
        {{"import", "nowhere.json"}, "nowhere.json: cannot be read: No such file or directory"},
        {{"export", "basil.jpg"}, "exists already; nothing was written"},
        {{"backup", "basil.jpg"}, "basil.jpg"},
    };
    for (const auto& [words, reason] : refusals)
    {
        const std::string message = Refused(words);
        EXPECT_TRUE(message.starts_with("plantjournal: ")) << message;
        EXPECT_NE(message.find(reason), std::string::npos) << message;
    }
}

TEST_F(CommandConventionTest, OutputThatCannotBeWrittenIsAFailure)
{
    KeepEverything();
    for (const Words& words :
         {Words{"plant", "list"}, {"plant", "list", "--json"}, {"export", "-"}, {"--version"}, {"--help"}})
    {
        Words shell = {"sh", "-c", "exec \"$@\" >/dev/full", "sh"};
        for (const std::string& word : Line(words))
            shell.push_back(word);
        const ProgramResult outcome = RunningProgram(shell, Around).End();
        EXPECT_EQ(outcome.Status, 1) << words.front();
        EXPECT_EQ(outcome.Error, "plantjournal: the output cannot be written\n");
    }
}

TEST_F(CommandConventionTest, ADeletionAsksAndDoesNothingUnlessTheAnswerIsYes)
{
    KeepEverything();
    const std::string before = Content();
    const ProgramResult no = RunOnTerminal({"plant", "delete", "Basil"}, "n\n");
    EXPECT_EQ(no.Status, 1);
    EXPECT_NE(no.Out.find("Delete the plant Basil and all its records? [y/N] "), std::string::npos);
    EXPECT_NE(no.Out.find("nothing was deleted"), std::string::npos);
    EXPECT_EQ(RunOnTerminal({"plant", "delete", "Basil"}, "\n").Status, 1);
    EXPECT_EQ(RunOnTerminal({"plant", "delete", "Basil"}, "\x04").Status, 1); // the end of the input
    EXPECT_EQ(Content(), before);

    for (const char* yes : {"y\n", "yes\n", "Y\n"})
    {
        Done({"water", "Basil"});
        const std::string id = std::to_string(Parsed({"care", "list", "Basil"}).at(0).at("ID").get<int>());
        EXPECT_EQ(RunOnTerminal({"care", "delete", "Basil", id}, yes).Status, 0);
    }
    EXPECT_EQ(Content(), before);
}

TEST_F(CommandConventionTest, CtrlCAtAQuestionDeletesNothing)
{
    KeepEverything();
    const std::string before = Content();
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram program(Line({"plant", "delete", "Basil"}), terminal);
    ASSERT_TRUE(program.Await("[y/N] "));
    program.Type("\x03");
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("nothing was deleted"), std::string::npos);
    EXPECT_EQ(Content(), before);
}

// ---- Tables

TEST_F(CommandConventionTest, TablesLineUpWhateverLettersTheyHold)
{
    Keep(
        [](PlantRepository& repository)
        {
            for (const char* name :
                 {"Süßkirsche", "紅韓", "u\xCC\x88mlaut", "plain"}) // the third with a combining mark
            {
                Plant plant;
                plant.Name = name;
                plant.Tent = "here";
                EXPECT_TRUE(repository.CreatePlant(plant));
            }
        });
    const std::vector<std::string> lines = Lines(Done({"plant", "list"}));
    ASSERT_EQ(lines.size(), 5U);
    const std::size_t tent = WidthOf(lines[0].substr(0, lines[0].find("Tent")));
    for (std::size_t i = 1; i < lines.size(); ++i)
    {
        const std::size_t marks = lines[i].find("\xCC\x88") == std::string::npos ? 0 : 1;
        EXPECT_EQ(WidthOf(lines[i].substr(0, lines[i].find("here"))) - marks, tent) << lines[i];
        EXPECT_FALSE(lines[i].ends_with(' '));
    }
}

TEST_F(CommandConventionTest, NumbersStandToTheRight)
{
    Done({"plant", "add", "Basil"});
    Done({"feed", "Basil", "--amount-ml", "5"});
    Done({"feed", "Basil", "--amount-ml", "12500"});
    const std::vector<std::string> lines = Lines(Done({"care", "list", "Basil"}));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].find("AmountMl") + 8, lines[1].find("12500") + 5);
    EXPECT_EQ(lines[1].find("12500") + 5, lines[2].find("       5  ") + 8);
}

TEST_F(CommandConventionTest, TablesFitATerminalAndAreWholeInAPipe)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name =
                "The one with the very long name, by the window, in the sun: 紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅";
            plant.Strain = "Genovese Gigante of the second generation, from our own seeds";
            plant.Tent = "South";
            EXPECT_TRUE(repository.CreatePlant(plant));
            PlantEvent event = {0, plant.UUID, "2026-05-01", PlantEventType::Note, std::string(500, 'x')};
            EXPECT_TRUE(repository.CreatePlantEvent(event));
        });
    const ProgramResult piped = Run({"plant", "list"});
    EXPECT_NE(piped.Out.find("紅  Genovese Gigante of the second generation, from our own seeds  "), std::string::npos);
    EXPECT_NE(Done({"event", "list"}).find(std::string(500, 'x')), std::string::npos);

    const std::string uuid = Parsed({"plant", "list"}).at(0).at("UUID");
    Around.Environment.emplace_back("NO_COLOR=1");
    for (const Words& words : {Words{"plant", "list"},
                               {"event", "list"},
                               {"plant", "show", uuid},
                               {"strain", "list"},
                               {"info"},
                               {"timeline", uuid}})
    {
        const ProgramResult shown = RunOnTerminal(words);
        EXPECT_EQ(shown.Status, 0);
        for (const std::string& line : Lines(shown.Out))
            EXPECT_LE(WidthOf(line), 80U) << line;
    }
    EXPECT_NE(RunOnTerminal({"plant", "list"}).Out.find("…"), std::string::npos);
}

TEST_F(CommandConventionTest, ColourIsOnATerminalOnlyAndNeverWithNoColor)
{
    KeepEverything();
    const std::string bold = "\x1B[1m";
    EXPECT_EQ(Done({"plant", "list"}).find('\x1B'), std::string::npos);
    EXPECT_TRUE(RunOnTerminal({"plant", "list"}).Out.starts_with(bold + "UUID"));
    EXPECT_EQ(RunOnTerminal({"plant", "list", "--json"}).Out.find('\x1B'), std::string::npos);
    Around.Environment.emplace_back("NO_COLOR="); // means nothing while it is empty
    EXPECT_TRUE(RunOnTerminal({"plant", "list"}).Out.starts_with(bold));
    Around.Environment.back() = "NO_COLOR=1";
    EXPECT_EQ(RunOnTerminal({"plant", "list"}).Out.find('\x1B'), std::string::npos);
}

TEST_F(CommandConventionTest, NoTextOfTheJournalReachesTheTerminalAsACommand)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name = "red \x1B[31m\x07 and \xC2\x9B"
                         "2J, broken \xFF, two\nlines";
            plant.Strain = "\x1B]0;title\x07";
            EXPECT_TRUE(repository.CreatePlant(plant));
            PlantEvent event = {0, plant.UUID, "\x1B[2J", PlantEventType::Note, "\x1B[2J\r"};
            EXPECT_TRUE(repository.CreatePlantEvent(event));
            PlantCareEntry care;
            care.PlantUUID = plant.UUID;
            care.Notes = "\x1B[2J";
            EXPECT_TRUE(repository.CreatePlantCareEntry(care));
        });
    const std::string uuid = Parsed({"plant", "list"}).at(0).at("UUID");
    const std::string care = std::to_string(Parsed({"care", "list"}).at(0).at("ID").get<int>());
    Around.Environment.emplace_back("NO_COLOR=1");
    for (const Words& words : {Words{"plant", "list"},
                               {"plant", "show", uuid},
                               {"plant", "tree"},
                               {"timeline", uuid},
                               {"event", "list"},
                               {"care", "list", uuid},
                               {"strain", "list"},
                               {"strain", "show", "\x1B]0;title\x07"},
                               {"strain", "show", "\x1B"},
                               {"plant", "show", "\x1B"},
                               {"care", "edit", uuid, "99", "--ec", "1"},
                               {"harvest", "edit", uuid, "--notes", "x"},
                               {"care", "delete", uuid, care},
                               {"plant", "delete", uuid},
                               {"info"},
                               {"plant", "list", "--json"},
                               {"timeline", uuid, "--json"}})
    {
        const std::string shown = RunOnTerminal(words, "n\n").Out;
        for (const char* part : {"\x1B", "\x07", "\xC2\x9B", "\xFF", "\r"})
            EXPECT_EQ(shown.find(part), std::string::npos) << words.at(0) << ' ' << words.at(words.size() > 1 ? 1 : 0);
    }
    EXPECT_NE(Done({"plant", "list"}).find("two lines"), std::string::npos);
}

// ---- Progress

TEST_F(CommandConventionTest, WorkLongerThanASecondShowsABarOnATerminalOnly)
{
    KeepEverything();
    EXPECT_EQ(RunOnTerminal({"backup", "quick.db"}).Out, "");
    for (const int columns : {80, 0})
    {
        // Whoever backs up has to wait, but not for too long.
        OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
        Surroundings around = Around;
        around.Columns = columns;
        RunningProgram program(Line({"backup", "slow" + std::to_string(columns) + ".db"}), around);
        std::this_thread::sleep_for(std::chrono::milliseconds(1300));
        other.Finish();
        const ProgramResult outcome = program.End();
        EXPECT_EQ(outcome.Status, 0) << outcome.Out << outcome.Error;
        const std::string shown = outcome.Out + outcome.Error;
        if (columns == 0)
            EXPECT_EQ(shown, "");
        else
        {
            EXPECT_NE(shown.find("\rBacking up [##"), std::string::npos) << shown;
            EXPECT_TRUE(shown.ends_with("\r\x1B[K")) << shown;
        }
    }
}

// ---- JSON

// The names of the fields, in their order; the values come from the library.
const Words PlantFields = {"ID",       "UUID",         "Name",          "Strain",    "MotherPlantUUID",
                           "Stage",    "Sex",          "Tent",          "PotSize",   "Medium",
                           "SeedDate", "FlipHeightCm", "FinalHeightCm", "CloneDate", "TransplantDate",
                           "FlipDate", "HarvestDate",  "Notes"};
const Words StrainFields = {"ID", "Name", "Breeder", "FloweringWeeks", "Notes"};
const Words SummaryFields = {"StrainID",
                             "StrainName",
                             "TotalPlants",
                             "Seed",
                             "Clone",
                             "Veg",
                             "Flower",
                             "Dry",
                             "Cure",
                             "Harvested",
                             "Archived",
                             "HarvestCount",
                             "AverageDryWeightG",
                             "AverageQuality"};
const Words EventFields = {"ID", "PlantUUID", "EventDate", "Type", "Details"};
const Words CareFields = {"ID", "TimelineEventID", "PlantUUID", "CareDate", "Action", "Product", "AmountMl", "EC",
                          "PH", "RunoffMl",        "Notes"};
const Words HarvestFields = {"ID",         "TimelineEventID", "PlantUUID", "HarvestDate", "WetWeightG",
                             "DryWeightG", "QualityRating",   "SeedYield", "CureOutcome", "Notes"};
const Words PhotoFields = {"ID", "UUID", "PlantUUID", "PhotoDate", "FilePath", "Caption"};
const Words HealthFields = {"ID", "PlantUUID", "ObservationDate", "Issue", "Severity", "Treatment", "Notes"};
const Words NoteFields = {"ID", "PlantUUID", "EntryDate", "Type", "Details"};

std::string Stored(PlantStage value)
{
    return PlantStageName(value);
}
std::string Stored(PlantSex value)
{
    return PlantSexName(value);
}
std::string Stored(PlantEventType value)
{
    return PlantEventTypeName(value);
}
std::string Stored(PlantCareAction value)
{
    return PlantCareActionName(value);
}
std::string Stored(PlantJournalType value)
{
    return PlantJournalTypeName(value);
}
template <typename Value> const Value& Stored(const Value& value)
{
    return value;
}

JSON ObjectOf(const Record auto& record, const Words& names)
{
    JSON object = JSON::object();
    auto name = names.begin();
    std::apply([&](const auto&... values) { ((object[*name++] = Stored(values)), ...); }, Fields(record));
    EXPECT_EQ(name, names.end());
    return object;
}

template <typename Type> JSON ArrayOf(const std::vector<Type>& records, const Words& names)
{
    JSON array = JSON::array();
    for (const Type& record : records)
        array.push_back(ObjectOf(record, names));
    return array;
}

TEST_F(CommandConventionTest, JSONGivesEveryRecordUnderTheNamesOfItsFields)
{
    KeepEverything();
    std::vector<Plant> plants;
    std::vector<Strain> strains;
    StrainSummary summary;
    std::vector<PlantEvent> events;
    std::vector<PlantCareEntry> care;
    HarvestRecord harvest;
    std::vector<PlantPhoto> photos;
    std::vector<PlantHealthObservation> seen;
    std::vector<PlantJournalEntry> notes;
    Keep(
        [&](PlantRepository& repository)
        {
            EXPECT_TRUE(repository.ListPlants(plants) && repository.ListStrains(strains));
            EXPECT_TRUE(repository.GetStrainSummary(strains.at(0).ID, summary));
            EXPECT_TRUE(repository.ListPlantEvents(plants.at(0).UUID, events));
            EXPECT_TRUE(repository.ListPlantCareEntries(plants[0].UUID, care));
            EXPECT_TRUE(repository.GetHarvestRecord(plants[0].UUID, harvest));
            EXPECT_TRUE(repository.ListPlantPhotos(plants[0].UUID, photos));
            EXPECT_TRUE(repository.ListPlantHealthObservations(plants[0].UUID, seen));
            EXPECT_TRUE(repository.ListPlantJournalEntries(plants.at(1).UUID, notes));
        });
    EXPECT_EQ(Parsed({"plant", "list"}), ArrayOf(plants, PlantFields));
    EXPECT_EQ(Parsed({"plant", "show", "Cutting"}), ObjectOf(plants[1], PlantFields));
    EXPECT_EQ(Parsed({"strain", "list"}), ArrayOf(strains, StrainFields));
    EXPECT_EQ(Parsed({"strain", "show", "Genovese"}), ObjectOf(summary, SummaryFields));
    EXPECT_EQ(events.size(), 3U);
    EXPECT_EQ(Parsed({"event", "list", "Basil"}), ArrayOf(events, EventFields));
    EXPECT_EQ(Parsed({"care", "list", "Basil"}), ArrayOf(care, CareFields));
    EXPECT_EQ(Parsed({"harvest", "list", "Basil"}), ArrayOf(std::vector{harvest}, HarvestFields));
    EXPECT_EQ(Parsed({"photo", "list", "Basil"}), ArrayOf(photos, PhotoFields));
    EXPECT_EQ(Parsed({"health", "list", "Basil"}), ArrayOf(seen, HealthFields));
    EXPECT_EQ(Parsed({"note", "list", "Cutting"}), ArrayOf(notes, NoteFields));
    EXPECT_EQ(Parsed({"note", "list", "Basil"}), JSON::array());
    EXPECT_EQ(Parsed({"note", "list"}), ArrayOf(notes, NoteFields)); // of all plants

    JSON tree = ObjectOf(plants[0], PlantFields);
    tree["Clones"] = JSON::array({ObjectOf(plants[1], PlantFields)});
    tree["Clones"][0]["Clones"] = JSON::array();
    EXPECT_EQ(Parsed({"plant", "tree"}), JSON::array({tree}));

    const auto of = [](const char* table, const JSON& object)
    {
        JSON moment = {{"Table", table}};
        moment.update(object);
        return moment;
    };
    EXPECT_EQ(Parsed({"timeline", "Basil"}),
              JSON::array({of("HarvestRecords", ObjectOf(harvest, HarvestFields)),
                           of("PlantHealthObservations", ObjectOf(seen.at(0), HealthFields)),
                           of("PlantPhotos", ObjectOf(photos.at(0), PhotoFields)),
                           of("PlantCareEntries", ObjectOf(care.at(0), CareFields)),
                           of("PlantEvents", ObjectOf(events.at(2), EventFields))}));

    const std::string bytes = std::to_string(std::filesystem::file_size(Journal));
    EXPECT_EQ(Parsed({"info"}), JSON::parse(R"({"File":")" + Journal + R"(","Kind":"Current","Bytes":)" + bytes +
                                            R"(,"FirstDate":"2026-02","LastDate":"2026-07-01","Steps":[],"Reasons":[],
        "Tables":{"SchemaMeta":0,"Strains":1,"Plants":2,"PlantEvents":3,"PlantCareEntries":1,"HarvestRecords":1,
        "PlantPhotos":1,"PlantHealthObservations":1,"PlantJournalEntries":1}})"));
    EXPECT_EQ(Parsed({"check"}), JSON::array());
}

TEST_F(CommandConventionTest, JSONKeepsTextsThatAreNotUTF8AsTheirBytes)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name = "\xFFz\xE4";
            EXPECT_TRUE(repository.CreatePlant(plant));
        });
    EXPECT_EQ(Parsed({"plant", "list"}).at(0).at("Name"), JSON({{"Hex", "ff7ae4"}}));
}

TEST_F(CommandConventionTest, JSONOfACheckTellsTheFindingsAndTheStatusToo)
{
    KeepEverything();
    std::filesystem::remove(Scratch.File("basil.jpg"));
    Sound = false;
    const ProgramResult check = Run({"check", "--json"});
    EXPECT_EQ(check.Status, 1);
    EXPECT_NE(check.Error.find("findings: 1"), std::string::npos);
    const JSON findings = JSON::parse(check.Out);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].at("Kind"), "MissingPhotoFile");
    EXPECT_EQ(findings[0].at("Table"), "PlantPhotos");
    EXPECT_EQ(findings[0].at("RowID"), 1);
    EXPECT_NE(findings[0].at("Description").get<std::string>().find("basil.jpg"), std::string::npos);
    EXPECT_NE(Run({"check"}).Out.find("MissingPhotoFile  PlantPhotos"), std::string::npos);
}

TEST_F(CommandConventionTest, JSONFlagStandsAnywhereInTheLine)
{
    KeepEverything();
    const std::string expected = Done({"plant", "list", "--json"});
    EXPECT_EQ(Done({"--json", "plant", "list"}), expected);
    EXPECT_EQ(Done({"plant", "--json", "list"}), expected);
}

} // namespace

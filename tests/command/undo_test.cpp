// `undo`: what it undoes, what it says, and when it refuses.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>
#include <memory>

using namespace support;

namespace
{

class UndoTest : public BasilTest
{
  protected:
    std::string Exported() const { return Done({"export", "-"}); }

    // Runs the command and undoes it, which must restore everything.
    void ExpectUndone(const Words& words)
    {
        const std::string before = Exported();
        Done(words);
        EXPECT_NE(Exported(), before) << words.front();
        EXPECT_TRUE(Done({"undo", "--yes"}).starts_with("Undone: "));
        EXPECT_EQ(Exported(), before) << words.front();
    }

    // The files that `undo` keeps, without those of other journals.
    std::filesystem::path State() const { return StateDirectory + "/undo"; }
    std::filesystem::path Only(const std::filesystem::path& directory) const
    {
        std::filesystem::directory_iterator entry(directory);
        return entry == std::filesystem::directory_iterator() ? std::filesystem::path() : entry->path();
    }
    std::filesystem::path Record() const { return Only(State()) / "last-change"; }
};

TEST_F(UndoTest, UndoRestoresWhatACommandChanged)
{
    ExpectUndone({"feed", "Basil", "--amount-ml", "500"});
    ExpectUndone({"plant", "edit", "Basil", "--tent", "South"});
    ExpectUndone({"plant", "delete", "Basil", "--yes"});
    ExpectUndone({"plant", "add", "Chili", "--strain", "Cayenne"});
}

TEST_F(UndoTest, UndoRemovesWhatItNeedsNoLonger)
{
    Done({"feed", "Basil"});
    EXPECT_TRUE(std::filesystem::exists(Record()));
    Done({"undo", "--yes"});
    EXPECT_TRUE(std::filesystem::is_empty(Only(State())));
    EXPECT_EQ(Refused({"undo", "--yes"}),
              "plantjournal: " + Journal +
                  ": nothing to undo; only the last change that plantjournal made can be undone; what undo needs is "
                  "stored outside the journal file, for each user\n");
}

TEST_F(UndoTest, UndoRefusesAJournalThatHasChangedSince)
{
    Done({"feed", "Basil"});
    PlainConnection(Journal).RunSQL("UPDATE Plants SET Tent='North';");
    const std::string refusal = Refused({"undo", "--yes"});
    EXPECT_NE(refusal.find("the journal has changed since"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("nothing was changed"), std::string::npos) << refusal;
    EXPECT_EQ(Refused({"undo"}), refusal); // without a question
}

TEST_F(UndoTest, WhatAKilledCommandLeftDoesNotPreventUndo)
{
    Write(Record().lexically_relative(Scratch.File("")).string() + ".part", std::string(10000, 'x'));
    ExpectUndone({"feed", "Basil"});
}

TEST_F(UndoTest, ASecondUndoHasNothingToUndo)
{
    const std::string before = Exported();
    Done({"feed", "Basil"});
    Done({"water", "Basil"});
    Done({"undo", "--yes"});
    EXPECT_NE(Refused({"undo", "--yes"}).find("nothing to undo"), std::string::npos);
    EXPECT_NE(Exported(), before);
}

TEST_F(UndoTest, UndoPrintsWhatItHasUndone)
{
    Done({"plant", "add", "Chili"});
    const std::string line = DoneLine({"feed", "Basil", "500ml"});
    EXPECT_EQ(DoneLine({"undo", "--yes"}), "Undone: " + line);
    const std::string lines = Done({"feed", "Basil", "Chili", "500ml"});
    EXPECT_EQ(Done({"undo", "--yes"}),
              "Undone: " + lines.substr(0, lines.find('\n') + 1) + "Undone: " + lines.substr(lines.find('\n') + 1));
    Done({"feed", "Basil"});
    EXPECT_EQ(Done({"undo", "--yes", "--quiet"}), "");
}

TEST_F(UndoTest, UndoPrintsWhatItHasUndoneAsJSON)
{
    const std::string line = DoneLine({"feed", "Basil", "500ml"});
    EXPECT_EQ(Parsed({"undo", "--yes"}), (JSON{{"Undone", {line}}}));
}

TEST_F(UndoTest, UndoRestoresWhatACommandStoredForAllPlants)
{
    Done({"plant", "add", "Chili"});
    ExpectUndone({"feed", "--all", "500ml"});
}

TEST_F(UndoTest, WithoutATerminalUndoNeedsYes)
{
    const std::string line = DoneLine({"feed", "Basil", "500ml"});
    const std::string message = Refused({"undo"});
    EXPECT_TRUE(message.starts_with(line + '\n')) << message;
    EXPECT_NE(message.find("pass --yes"), std::string::npos) << message;
    Done({"undo", "-y"});
}

TEST_F(UndoTest, AnImportIsUndone)
{
    Write("source.json", R"({"Plants":[{"Name":"Mint","Strain":"Spearmint"}],"PlantJournalEntries":[
        {"PlantUUID":"b1","Details":"a"},{"PlantUUID":"b1","Details":"b"}]})");
    const std::string before = Exported();
    Done({"import", "source.json"});
    EXPECT_EQ(Done({"undo", "--yes"}), "Undone: Imported 1 strain, 1 plant, 2 journal entries from source.json\n");
    EXPECT_EQ(Exported(), before);
    EXPECT_TRUE(std::filesystem::is_empty(Only(State())));
}

TEST_F(UndoTest, TheCopyOfAnImportIsRemovedByTheNextChange)
{
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    Done({"import", "source.json"});
    EXPECT_TRUE(std::filesystem::exists(Only(State()) / "copy.db"));
    Done({"feed", "Basil"});
    EXPECT_FALSE(std::filesystem::exists(Only(State()) / "copy.db"));
    Done({"undo", "--yes"});
}

TEST_F(UndoTest, AnImportIsNotUndoneWithADamagedCopy)
{
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    Done({"import", "source.json"});
    const std::filesystem::path copy = Only(State()) / "copy.db";
    const std::string bytes = FileBytes(copy.string());
    const auto refusedWith = [&](const std::string& damaged)
    {
        Write(copy.lexically_relative(Scratch.File("")).string(), damaged);
        return Refused({"undo", "--yes"});
    };
    EXPECT_NE(refusedWith(bytes.substr(0, bytes.size() / 2)).find("copy.db"), std::string::npos);
    EXPECT_NE(refusedWith(FileBytes(Journal)).find("not the journal from before"), std::string::npos);
    std::filesystem::remove(copy);
    EXPECT_NE(Refused({"undo", "--yes"}).find("copy.db: no such file"), std::string::npos);
}

TEST_F(UndoTest, TheCreationOfTheJournalIsNotUndone)
{
    const std::string created = Scratch.File("created.db");
    Done({"plant", "add", "Mint", "--file", created});
    Done({"undo", "--yes", "--file", created});
    EXPECT_EQ(Parsed({"plant", "list", "--file", created}), JSON::array());
}

TEST_F(UndoTest, EachJournalHasItsOwnUndo)
{
    const std::string other = Scratch.File("other.db");
    Done({"feed", "Basil"});
    Done({"plant", "add", "Mint", "--file", other});
    EXPECT_TRUE(Done({"undo", "--yes"}).starts_with("Undone: Fed Basil"));
    EXPECT_TRUE(Done({"undo", "--yes", "--file", other}).starts_with("Undone: Added Mint"));
}

TEST_F(UndoTest, AJournalIsTheSameUnderAnotherName)
{
    std::filesystem::create_symlink(Journal, Scratch.File("link.db"));
    Done({"feed", "Basil"});
    Done({"undo", "--yes", "--file", "link.db"});
}

TEST_F(UndoTest, WhatAFailedCommandStoredIsUndone)
{
    const std::string before = Exported();
    EXPECT_EQ(Run({"plant", "edit", "Basil", "--mother", "Basil", "--strain", "Spearmint"}).Status, 1);
    EXPECT_NE(Exported(), before); // the strain was stored
    EXPECT_EQ(DoneLine({"undo", "--yes"}), "Undone: The stored part of a command that failed");
    EXPECT_EQ(Exported(), before);
}

TEST_F(UndoTest, OnlyTheOwnerCanReadWhatUndoNeeds)
{
    using std::filesystem::perms;
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    Done({"import", "source.json"});
    const std::filesystem::path directory = Only(State());
    for (const std::filesystem::path& file : {directory / "last-change", directory / "copy.db"})
        EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write) << file;
    for (const std::filesystem::path& created : {directory, State(), State().parent_path()})
        EXPECT_EQ(std::filesystem::status(created).permissions(), perms::owner_all) << created;
}

TEST_F(UndoTest, TheStateDirectoryCanBeSet)
{
    SetVariable("PLANTJOURNAL_FILE", Journal);
    SetVariable(StateVariable, Scratch.File("state"));
    Done({"feed", "Basil"});
    EXPECT_TRUE(std::filesystem::exists(Only(Scratch.File("state/plantjournal/undo")) / "last-change"));
    SetVariable(StateVariable, "state"); // a relative path counts as none
    EXPECT_NE(Refused({"undo", "--yes"}).find(OnWindows ? "LOCALAPPDATA is not set" : "changed since \"Added Basil"),
              std::string::npos);
}

TEST_F(UndoTest, AChangeIsStoredEvenIfItCannotBeUndone)
{
    const auto expectNotice = [this](const Words& words, const std::string& reason)
    {
        const std::string before = Exported();
        const ProgramResult outcome = Run(words);
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_TRUE(outcome.Error.starts_with("notice: `undo` cannot roll back this change: ")) << outcome.Error;
        EXPECT_EQ(std::count(outcome.Error.begin(), outcome.Error.end(), '\n'), 1) << outcome.Error;
        EXPECT_NE(outcome.Error.find(reason), std::string::npos) << outcome.Error;
        EXPECT_NE(Exported(), before);
    };
    Write("file", "");
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    SetVariable("PLANTJOURNAL_FILE", Journal);
    SetVariable(StateVariable, Scratch.File("file"));
    expectNotice({"feed", "Basil"}, "file: creating the directory: Not a directory");
    expectNotice({"import", "source.json"}, "file: creating the directory: Not a directory");
    SetVariable(StateVariable, OnWindows ? Scratch.File("data") : "");
    EXPECT_NE(Refused({"undo", "--yes"}).find("the journal has changed since"), std::string::npos);
    RemoveVariable(HomeVariable);
    expectNotice({"feed", "Basil"}, std::string(HomeVariable) + " is not set");
}

TEST_F(UndoTest, AClosedPipeDoesNotPreventUndo)
{
    const std::string before = Exported();
    Words line = Line({"feed", "Basil"});
    line.insert(line.begin(), {"sh", "-c", R"("$0" "$@" | true; sleep 0.1)"});
    RunningProgram(line, Around).End();
    EXPECT_TRUE(Await([&] { return Exported() != before; }));
    EXPECT_TRUE(Await([&] { return Run({"undo", "--yes"}).Status == 0; }));
    EXPECT_EQ(Exported(), before);
}

TEST_F(UndoTest, CommandsAtTheSameTimeDoNotMixTheirRecords)
{
    for (int round = 0; round < 5; ++round)
    {
        {
            std::vector<std::unique_ptr<RunningProgram>> programs;
            for (int i = 0; i < 6; ++i)
                programs.push_back(std::make_unique<RunningProgram>(Line({"feed", "Basil"}), Around));
            for (const auto& program : programs)
                program->End();
        }
        JSON before = Parsed({"care", "list", "Basil"});
        const ProgramResult undo = Run({"undo", "--yes"});
        if (undo.Status == 0)
        {
            const std::string id = undo.Out.substr(undo.Out.find("(care ") + 6);
            std::erase_if(before.get_ref<JSON::array_t&>(),
                          [&](const JSON& entry) { return entry["ID"] == std::stoi(id); });
        }
        EXPECT_EQ(Parsed({"care", "list", "Basil"}), before) << undo.Out;
    }
}

TEST_F(UndoTest, ABrokenReferenceFromBeforeDoesNotPreventUndo)
{
    Sound = false;
    Done({"feed", "Basil"});
    PlainConnection(Journal).RunSQL("PRAGMA foreign_keys=OFF; UPDATE PlantCareEntries SET TimelineEventID=99;");
    ExpectUndone({"plant", "edit", "Basil", "--tent", "South"});
}

class UndoTerminalTest : public UndoTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

TEST_F(UndoTerminalTest, UndoShowsTheChangesAndAsks)
{
    Done({"plant", "add", "Chili"});
    const std::string before = Exported();
    Done({"feed", "Basil", "500ml"});
    const std::string after = Exported();
    ProgramResult result = RunOnTerminal({"undo"}, "\n");
    EXPECT_NE(result.Out.find("Fed Basil: 500 ml (care 1)\nUndo this change? [y/N]"), std::string::npos) << result.Out;
    EXPECT_NE(result.Out.find("nothing was undone"), std::string::npos) << result.Out;
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(Exported(), after);
    EXPECT_EQ(RunOnTerminal({"undo"}, "y\n").Status, 0);
    EXPECT_EQ(Exported(), before);
    Done({"feed", "Basil", "Chili"});
    result = RunOnTerminal({"undo"}, "y\n");
    EXPECT_NE(result.Out.find("Undo these 2 changes? [y/N]"), std::string::npos) << result.Out;
    EXPECT_EQ(Exported(), before);
}

TEST_F(UndoTerminalTest, AChangeDuringTheQuestionIsKept)
{
    Done({"feed", "Basil"});
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram undo(Line({"undo"}), terminal);
    EXPECT_TRUE(undo.Await("[y/N]"));
    Done({"water", "Basil"});
    const std::string after = Exported();
    undo.Type("y\n");
    const ProgramResult result = undo.End();
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Out.find("the journal has changed since"), std::string::npos) << result.Out;
    EXPECT_EQ(Exported(), after);
    Done({"undo", "--yes"}); // of the watering
}

TEST_F(UndoTest, WithoutSessionsCommandsWorkAndUndoRefuses)
{
    const auto run = [this](Words words)
    {
        words.insert(words.begin(), PLANTJOURNAL_WITHOUT_SESSIONS);
        return RunningProgram(words, Around).End();
    };
    Done({"undo", "--yes"});
    Done({"plant", "add", "Basil", "--uuid", "b1"});
    std::filesystem::remove_all(State());
    const ProgramResult fed = run({"feed", "Basil"});
    EXPECT_EQ(fed.Status, 0);
    EXPECT_EQ(fed.Error, "");
    const std::string after = Exported();
    const ProgramResult undone = run({"undo", "--yes"});
    EXPECT_EQ(undone.Status, 1);
    EXPECT_NE(undone.Error.find("without the session extension"), std::string::npos) << undone.Error;
    EXPECT_EQ(Exported(), after);
    EXPECT_FALSE(std::filesystem::exists(State()));
}

} // namespace

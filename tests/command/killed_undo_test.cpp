// A command that is killed, or that another program interrupts, at any moment: `undo` then restores exactly or refuses.

#include "command/transfer_fixture.h"
#include "support/file_changes.h"
#include "support/test_form.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>
#include <functional>

using namespace support;

namespace
{

class KilledUndoTest : public TransferTest
{
  protected:
    KilledUndoTest()
    {
        KeepEverything();
        Start = Exported();
        Done({"plant", "edit", "Basil", "--tent", "North"});
        Edited = Exported();
        Write("source.json", R"({"Plants":[{"UUID":"m1","Name":"Mint"}]})");
        Save();
    }

    // Keeps the journal and what `undo` needs, as they are now.
    void Save()
    {
        SavedJournal = FileBytes(Journal);
        std::filesystem::remove_all(Scratch.File("saved"));
        std::filesystem::copy(State, Scratch.File("saved"), std::filesystem::copy_options::recursive);
    }

    // Runs a command on the saved files again and again. Calls `act` before its first change of a file, then before its
    // second, and so on, and `check` after the command has ended.
    void AtEveryChange(const Words& words, const std::function<void(RunningProgram&)>& act,
                       const std::function<void()>& check)
    {
        Surroundings traced = Around;
        traced.Traced = true;
        traced.Environment.emplace_back("LSAN_OPTIONS=detect_leaks=0"); // finding leaks would need ptrace, too
        const int step = words.front() == "import" ? ShortOrLong(3, 1) : 1;
        for (int moment = 1;; moment += step)
        {
            Write("data/plantjournal/journal.db", SavedJournal);
            std::filesystem::remove_all(State);
            std::filesystem::copy(Scratch.File("saved"), State, std::filesystem::copy_options::recursive);
            RunningProgram program(Line(words), traced);
            FileChanges changes(program.Process());
            int reached = 0;
            while (reached < moment && changes.Next())
                ++reached;
            if (reached < moment)
            {
                EXPECT_EQ(program.End().Status, 0);
                EXPECT_GT(moment, 10);
                break;
            }
            act(program);
            changes.Stop();
            program.End();
            SCOPED_TRACE("at change " + std::to_string(moment));
            check();
        }
    }

    static void Kill(RunningProgram& program) { program.Kill(); }

    // Moves a plant to the tent East, as another program does, unless the command has locked the journal.
    std::function<void(RunningProgram&)> WriteFromOutside(const std::string& plant)
    {
        return [this, plant](RunningProgram&)
        {
            Written = false;
            try
            {
                PlainConnection(Journal).RunSQL("UPDATE Plants SET Tent='East' WHERE Name='" + plant + "';");
                Written = true;
            }
            catch (const std::runtime_error& error)
            {
                EXPECT_NE(std::string(error.what()).find("locked"), std::string::npos) << error.what();
            }
        };
    }

    // Kills a command that changes Edited to `changed`. `undo` then has to undo the change before it if the command has
    // changed nothing, else the command itself or nothing.
    void ExpectUndoneOrRefused(const Words& words, const std::string& changed)
    {
        int undone = 0;
        int refused = 0;
        AtEveryChange(words, Kill,
                      [&]
                      {
                          const std::string killed = Exported();
                          const ProgramResult undo = Run({"undo", "--yes"});
                          const bool isDone = undo.Status == 0;
                          EXPECT_TRUE(isDone || undo.Error.find("the journal has changed since") != std::string::npos)
                              << undo.Error;
                          const std::string after = Exported();
                          if (killed == Edited)
                              EXPECT_TRUE(isDone && after == Start);
                          else
                          {
                              EXPECT_EQ(killed, changed);
                              EXPECT_EQ(after, isDone ? Edited : changed);
                              ++(isDone ? undone : refused);
                          }
                      });
        EXPECT_GT(undone, 0);
        EXPECT_GT(refused, 0);
    }

    // Kills `undo` of the command that was run last, which changed Edited to `changed`. A second one has to complete
    // it, and refuses if it is complete.
    void ExpectUndoCompleted(const std::string& changed)
    {
        Save();
        int restored = 0;
        AtEveryChange({"undo", "--yes"}, Kill,
                      [&]
                      {
                          const std::string killed = Exported();
                          EXPECT_TRUE(killed == changed || killed == Edited);
                          restored += killed == Edited ? 1 : 0;
                          EXPECT_EQ(Run({"undo", "--yes"}).Status, killed == changed ? 0 : 1);
                          EXPECT_EQ(Exported(), Edited);
                      });
        EXPECT_GT(restored, 0);
    }

    bool Written = false; // whether WriteFromOutside() wrote
    const std::string State = StateDirectory + "/undo";
    std::string SavedJournal;
    std::string Start;
    std::string Edited;
};

TEST_F(KilledUndoTest, UndoOfAKilledCommandRestoresOrRefuses)
{
    const Words words = {"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"};
    Done(words);
    ExpectUndoneOrRefused(words, Exported());
}

TEST_F(KilledUndoTest, AKilledUndoIsCompleteOrCanBeRepeated)
{
    Done({"plant", "delete", "Basil", "--yes"});
    ExpectUndoCompleted(Exported());
}

TEST_F(KilledUndoTest, UndoOfAKilledImportRestoresOrRefuses)
{
    Done({"import", "source.json"});
    ExpectUndoneOrRefused({"import", "source.json"}, Exported());
    Done({"undo", "--yes"});
    Done({"import", "source.json"}); // removes the files of a killed one
    const std::filesystem::path directory = std::filesystem::directory_iterator(State)->path();
    Words names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Words{"copy.db", "last-change"}));
}

TEST_F(KilledUndoTest, AKilledUndoOfAnImportCanBeRepeated)
{
    Done({"import", "source.json"});
    ExpectUndoCompleted(Exported());
}

TEST_F(KilledUndoTest, UndoKeepsWhatAnotherProgramWroteAtAnyMoment)
{
    const Words words = {"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"};
    int undone = 0;
    int refused = 0;
    AtEveryChange(words, WriteFromOutside("Cutting"),
                  [&]
                  {
                      const std::string before = Exported();
                      EXPECT_EQ(before.find("East") != std::string::npos, Written);
                      const bool isDone = Run({"undo", "--yes"}).Status == 0;
                      std::string expected = Edited;
                      if (Written)
                          expected.replace(expected.rfind(R"("Tent":"")"), 9, R"("Tent":"East")");
                      EXPECT_EQ(Exported(), isDone ? expected : before);
                      ++(isDone ? undone : refused);
                  });
    EXPECT_GT(undone, 0);
    EXPECT_GT(refused, 0);
}

TEST_F(KilledUndoTest, UndoKeepsWhatAnotherProgramWroteToTheSameRow)
{
    int kept = 0;
    AtEveryChange({"plant", "edit", "Basil", "--notes", "three"}, WriteFromOutside("Basil"),
                  [&]
                  {
                      const bool isThere = Exported().find("East") != std::string::npos;
                      Run({"undo", "--yes"});
                      EXPECT_EQ(Exported().find("East") != std::string::npos, isThere);
                      kept += isThere ? 1 : 0;
                  });
    EXPECT_GT(kept, 0);
}

} // namespace

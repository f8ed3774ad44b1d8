// `undo`: what it undoes, what it says, and when it refuses.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

#include <filesystem>

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
    std::filesystem::path State() const { return Scratch.File("home/.local/state/plantjournal/undo"); }
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
    EXPECT_NE(Refused({"undo", "--yes"}).find("nothing to undo"), std::string::npos);
}

TEST_F(UndoTest, UndoRefusesAJournalThatHasChangedSince)
{
    Done({"feed", "Basil"});
    PlainConnection(Journal).RunSQL("UPDATE Plants SET Tent='North';");
    const std::string refusal = Refused({"undo", "--yes"});
    EXPECT_NE(refusal.find("the journal has changed since"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("nothing was changed"), std::string::npos) << refusal;
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

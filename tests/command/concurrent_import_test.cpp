// Imports while other programs use the journal, and imports that are interrupted.

#include "command/transfer_fixture.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace support;

namespace
{

class ConcurrentImportTest : public TransferTest
{
  protected:
    ConcurrentImportTest()
    {
        KeepEverything();
        Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    }

    // Waits until the import has made its copy and waits for the lock of another program.
    void AwaitTheWait() const
    {
        EXPECT_TRUE(Await([this] { return CopyIsThere(); }));
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }

    // Whether an import has made its copy of the journal.
    bool CopyIsThere() const
    {
        const std::vector<std::string> names = Beside();
        return std::any_of(names.begin(), names.end(),
                           [](const std::string& name) { return name.starts_with("journal.db.import-"); });
    }
};

TEST_F(ConcurrentImportTest, AJournalThatAnotherProgramChangedIsNotOverwritten)
{
    OtherProgram other(Journal, "BEGIN IMMEDIATE; UPDATE Plants SET Tent='of the other';");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    other.Finish(); // the import has been waiting for that
    const ProgramResult outcome = import.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_NE(outcome.Error.find("another program wrote to it meanwhile; nothing was changed; import again"),
              std::string::npos)
        << outcome.Error;
    const JSON plants = Parsed({"plant", "list"});
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("Tent"), "of the other");
    Done({"import", "source.json"});
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

TEST_F(ConcurrentImportTest, AJournalThatAnotherProgramOnlyLockedIsWritten)
{
    OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    other.Finish();
    EXPECT_EQ(import.End().Status, 0);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

// With a read lock during the wait, neither program could go on.
TEST_F(ConcurrentImportTest, AnImportThatWaitsLetsTheOtherProgramCommit)
{
    for (const char* change : {"", "UPDATE Plants SET Tent='of the other';"})
    {
        OtherProgram other(Journal, std::string("BEGIN IMMEDIATE;") + change);
        RunningProgram import(Line({"import", "source.json"}), Around);
        AwaitTheWait();
        other.Finish();
        const ProgramResult outcome = import.End();
        EXPECT_EQ(outcome.Status, *change == '\0' ? 0 : 1);
        EXPECT_EQ(outcome.Error.find("database is locked"), std::string::npos) << outcome.Error;
    }
}

TEST_F(ConcurrentImportTest, CtrlCEndsTheWaitForALock)
{
    OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    RunningProgram import(Line({"import", "source.json"}), Around);
    AwaitTheWait();
    import.Interrupt();
    const ProgramResult outcome = import.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed; run the command again\n");
    other.Finish();
}

TEST_F(ConcurrentImportTest, AJournalThatAnotherProgramKeepsLockedIsUnchanged)
{
    const std::string before = Exported();
    {
        const OtherProgram other(Journal, "BEGIN IMMEDIATE;");
        const ProgramResult import = Run({"import", "source.json"});
        EXPECT_EQ(import.Status, 1);
        EXPECT_NE(
            import.Error.find("database is locked; nothing was changed; another program is writing to the journal"),
            std::string::npos)
            << import.Error;
    }
    EXPECT_EQ(Exported(), before);
}

TEST_F(ConcurrentImportTest, CtrlCWhileWaitingForALockChangesNothing)
{
    const std::string before = Exported();
    OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    RunningProgram import(Line({"import", "source.json"}), Around);
    EXPECT_TRUE(Await([&] { return CopyIsThere(); }));
    import.Interrupt();
    other.Finish();
    const ProgramResult outcome = import.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed; run the command again\n");
    EXPECT_EQ(Exported(), before);
}

TEST_F(ConcurrentImportTest, CtrlCAtAnyMomentLeavesNothingOrAllOfAnImport)
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
        EXPECT_EQ(outcome.Error, done ? "" : "plantjournal: interrupted; nothing was changed; run the command again\n");
        EXPECT_EQ(outcome.Out.empty(), !done);
        EXPECT_TRUE(Exported() == (done ? after : before)) << "at moment " << moment;
        EXPECT_EQ(Beside(), Left);
    }
    EXPECT_GT(interrupted, 0); // the first one for certain
}

} // namespace

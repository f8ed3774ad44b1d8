// What a killed import or export leaves next to the journal: the next one removes it, and nothing else.

#include "command/transfer_fixture.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace support;

namespace
{

class KilledImportTest : public TransferTest
{
  protected:
    KilledImportTest()
    {
        KeepEverything();
        std::string source = R"({"Plants":[{"UUID":"m1","Name":"Mint"}],"PlantEvents":[)";
        for (int i = 0; i < 15000; ++i)
            source += (i > 0 ? ",\n" : "\n") + std::string(R"({"PlantUUID":"m1","Details":"event )") +
                      std::to_string(i) + "\"}";
        Write("long.json", source + "]}");
        Write("short.json", R"({"PlantJournalEntries":[
            {"PlantUUID":"0b0b0b0b-0000-4000-8000-000000000001","Details":"imported"}]})");
    }

    // Returns the names in the journal's directory that consist of this beginning and a number.
    Words NumberedNames(const std::string& begin) const
    {
        Words numbered;
        for (const std::string& name : Beside())
            if (name.size() > begin.size() && name.starts_with(begin) &&
                name.find_first_not_of("0123456789", begin.size()) == std::string::npos)
                numbered.push_back(name);
        return numbered;
    }
    bool HasCopy() const { return !NumberedNames("journal.db.import-").empty(); }

    // Creates an empty file in the journal's directory.
    void CreateFile(const std::string& name) const { Write("data/plantjournal/" + name, ""); }
};

TEST_F(KilledImportTest, TheNextImportRemovesWhatAKilledOneLeft)
{
    const std::string bytes = FileBytes(Journal);
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    Done({"import", "long.json"});
    const auto duration = Clock::now() - begin;
    const std::string complete = Exported();

    int kills = 0;
    constexpr int moments = 12;
    for (int moment = 0; moment <= moments; ++moment)
    {
        Write("data/plantjournal/journal.db", bytes);
        const std::string before = Exported();
        {
            RunningProgram import(Line({"import", "long.json"}), Around);
            if (moment == 0)
                EXPECT_TRUE(Await([this] { return HasCopy(); }));
            else
                std::this_thread::sleep_for(duration * moment / moments);
        } // kills the import
        kills += Beside() != Left ? 1 : 0;
        const std::string after = Exported();
        EXPECT_TRUE(after == before || after == complete) << "at moment " << moment;
        Done({"import", "short.json"});
        EXPECT_EQ(Beside(), Left) << "at moment " << moment;
    }
    EXPECT_GT(kills, 0);
}

TEST_F(KilledImportTest, TheCopyOfARunningImportIsKept)
{
    RunningProgram import(Line({"import", "long.json"}), Around);
    EXPECT_TRUE(Await([this] { return HasCopy(); }));
    import.Pause();
    const Words names = Beside();
    Done({"import", "short.json"});
    EXPECT_EQ(Beside(), names);
    import.Resume();
    const ProgramResult result = import.End();
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Error.find("another program wrote to it meanwhile"), std::string::npos) << result.Error;
    EXPECT_EQ(Beside(), Left);
}

TEST_F(KilledImportTest, OnlyFilesThatAnImportMakesAreRemoved)
{
    for (const char* name : {"journal.db.import-78", "journal.db.import-78-journal", "journal.db.import-78.part-Ab3xYz",
                             "journal.db.import-78.part-Ab3xYz-copy", "journal.db.import-79.lock"})
        CreateFile(name);
    const Words kept = {"journal.db.import-",
                        "journal.db.import-12-wal",
                        "journal.db.import-12.part-abc",
                        "journal.db.import-12.part-ab-def",
                        "journal.db.import-12.part-copy",
                        "journal.db.import-12.part--copy",
                        "journal.db.import-12x",
                        "journal.db.import-notes",
                        "other.db.import-78"};
    for (const std::string& name : kept)
        CreateFile(name);
    std::filesystem::create_directory(Journal + ".import-34");
    std::filesystem::create_symlink(Scratch.File("basil.jpg"), Journal + ".import-56");
    Done({"import", "short.json"});
    Left.insert(Left.end(), kept.begin(), kept.end());
    Left.insert(Left.end(), {"journal.db.import-34", "journal.db.import-56"});
    std::sort(Left.begin(), Left.end());
    EXPECT_EQ(Beside(), Left);
}

TEST_F(KilledImportTest, AFileThatAnotherProgramHasLockedIsKept)
{
    const std::string copy = Journal + ".import-80";
    constexpr std::uintmax_t size = 5'000'000'000; // more than a file offset of 32 bits
    std::filesystem::copy_file(Journal, copy);
    std::filesystem::resize_file(copy, size);
    {
        OtherProgram other(copy, "BEGIN IMMEDIATE;");
        Done({"import", "short.json"});
        EXPECT_TRUE(std::filesystem::exists(copy));
        other.Finish();
    }
    Done({"import", "short.json"});
    EXPECT_EQ(Beside(), Left);
}

TEST_F(KilledImportTest, AnImportTakesAnotherNumberIfItsOwnIsInUse)
{
    // The shell locks the file of its own process ID, which the import then has.
    const Words line = {
        "sh",         "-c",   R"(exec 9>"$2.import-$$.lock" && flock 9 && exec "$0" import "$1")", PLANTJOURNAL_COMMAND,
        "short.json", Journal};
    const ProgramResult result = RunningProgram(line, Around).End();
    EXPECT_EQ(result.Status, 0) << result.Error;
    EXPECT_EQ(Beside().size(), 2U); // the journal and the file that the shell locked
    Done({"import", "short.json"});
    EXPECT_EQ(Beside(), Left);
}

TEST_F(KilledImportTest, TheNextExportRemovesWhatAKilledOneLeft)
{
    PlainConnection(Journal).RunSQL("UPDATE Plants SET Notes=hex(zeroblob(10000000)) WHERE ID=1;");
    for (const bool csv : {false, true})
    {
        const std::string destination = Journal + ".export";
        const Words words = csv ? Words{"export", "--csv", destination} : Words{"export", destination};
        const auto hasPartial = [this] { return !NumberedNames("journal.db.export.partial-").empty(); };
        do
        {
            std::filesystem::remove_all(destination);
            RunningProgram program(Line(words), Around);
            EXPECT_TRUE(Await([&] { return hasPartial() || std::filesystem::exists(destination); }));
        } while (!hasPartial()); // the program was not killed soon enough
        std::filesystem::remove_all(destination);
        Done(words);
        EXPECT_EQ(Beside(), (Words{"journal.db", "journal.db.export"}));
        std::filesystem::remove_all(destination);
    }
}

} // namespace

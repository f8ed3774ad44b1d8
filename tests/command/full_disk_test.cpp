// Commands on a full disk: each does all of its work or nothing.

#include "command/transfer_fixture.h"
#include "testing/plain_connection.h"

using namespace support;

namespace
{

// A file system of so many kibibytes. Only the programs that it runs see it.
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

    // Its path for other programs.
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

    void SetUp() override { SkipWithoutTerminal(); } // SmallDisk runs its shell on one

    // Runs a command with a journal on larger and larger disks until it succeeds. Calls `visit` each time with the
    // result, the disk and an export of the journal.
    template <typename Visitor> void OnGrowingDisks(const Words& words, int from, int step, const Visitor& visit) const
    {
        int failures = 0;
        for (int size = from;; size += step)
        {
            SmallDisk disk(Around, Disk, size);
            if (!disk.IsMounted())
                GTEST_SKIP() << "this system does not allow users to mount a file system";
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

TEST_F(FullDiskTest, AnImportIsWholeOrChangesNothing)
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

TEST_F(FullDiskTest, ABackupIsWholeOrLeavesNothing)
{
    OnGrowingDisks({"backup", Disk + "/copy.db", "--file", Disk + "/journal.db"}, 104, 24,
                   [&](const ProgramResult& outcome, const SmallDisk& disk, const std::string&)
                   { EXPECT_EQ(disk.Names().size(), outcome.Status == 0 ? 2U : 1U) << outcome.Error; });
}

TEST_F(FullDiskTest, AnExportIsWholeOrLeavesNothing)
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

TEST_F(FullDiskTest, AFailureInTheMiddleListsWhatWasStored)
{
    const auto feedings = [](const std::string& exported)
    { return JSON::parse(exported).at("PlantCareEntries").size(); };
    const std::size_t before = feedings(Exported());
    bool some = false;
    for (const bool asJSON : {false, true})
    {
        Words words = {"feed", "Basil", "Cutting", "--notes", std::string(100000, 'x'), "--file", Disk + "/journal.db"};
        if (asJSON)
            words.emplace_back("--json");
        OnGrowingDisks(words, 104, 60,
                       [&](const ProgramResult& outcome, const SmallDisk&, const std::string& exported)
                       {
                           const std::size_t stored = feedings(exported) - before;
                           const auto newlines = std::count(outcome.Out.begin(), outcome.Out.end(), '\n');
                           const std::size_t lines = !asJSON               ? static_cast<std::size_t>(newlines)
                                                     : outcome.Out.empty() ? 0
                                                                           : JSON::parse(outcome.Out).size();
                           EXPECT_EQ(lines, stored) << outcome.Out << outcome.Error;
                           some = some || stored == 1;
                           if (outcome.Status == 0)
                               EXPECT_EQ(stored, 2U);
                           else
                               EXPECT_TRUE(stored == 0 ? outcome.Error.ends_with("\n  stored: nothing\n"
                                                                                 "  not stored: Basil, Cutting\n")
                                                       : outcome.Error.find("\n  stored: Basil (care ") <
                                                             outcome.Error.find(")\n  not stored: Cutting\n"))
                                   << outcome.Error;
                       });
    }
    EXPECT_TRUE(some);
}

TEST_F(FullDiskTest, UndoRollsBackWhatAFailedCommandStored)
{
    const std::string before = Exported();
    bool some = false;
    OnGrowingDisks({"feed", "Basil", "Cutting", "--notes", std::string(100000, 'x'), "--file", Disk + "/journal.db"},
                   104, 60,
                   [&](const ProgramResult& outcome, const SmallDisk& disk, const std::string& exported)
                   {
                       disk.Run({"mount", "-o", "remount,size=20m", Disk}); // undo needs room, too
                       const ProgramResult undo = disk.Run(Line({"undo", "--yes", "--file", Disk + "/journal.db"}));
                       const std::string restored = disk.Run(Line({"export", "-", "--file", Disk + "/journal.db"})).Out;
                       EXPECT_EQ(undo.Status == 0, exported != before) << undo.Error;
                       EXPECT_EQ(restored, before);
                       EXPECT_EQ(outcome.Error.find("notice:"), std::string::npos) << outcome.Error;
                       if (exported != before && outcome.Status != 0)
                       {
                           EXPECT_TRUE(undo.Out.starts_with("Undone: Fed Basil")) << undo.Out;
                           some = true;
                       }
                   });
    EXPECT_TRUE(some);
}

TEST_F(FullDiskTest, StepsOfPlantsAreStoredTogetherOrChangeNothing)
{
    const std::string before = Exported();
    const std::string text(60000, 'x');
    for (const Words& words : std::vector<Words>{{"transplant", "Basil", "Cutting", "--details", text},
                                                 {"clone", "Basil", text, "--count", "2"},
                                                 {"note", "Basil", "Cutting", text}})
    {
        Words line = words;
        line.insert(line.end(), {"--file", Disk + "/journal.db"});
        OnGrowingDisks(line, 104, 60,
                       [&](const ProgramResult& outcome, const SmallDisk&, const std::string& exported)
                       { EXPECT_EQ(exported == before, outcome.Status != 0) << words.front() << outcome.Error; });
    }
}

TEST_F(FullDiskTest, AFeedingIsStoredOrChangesNothing)
{
    const std::string before = Exported();
    OnGrowingDisks({"feed", "Basil", "--notes", std::string(100000, 'x'), "--file", Disk + "/journal.db"}, 104, 100,
                   [&](const ProgramResult& outcome, const SmallDisk&, const std::string& exported)
                   { EXPECT_EQ(exported == before, outcome.Status != 0); });
}

} // namespace

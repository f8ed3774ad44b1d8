// A `backup`, `restore` or `salvage` that is killed at any moment: the journal and the backups stay whole.

#include "support/command.h"
#include "testing/plain_connection.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

using namespace support;

namespace
{

class KilledFileCommandTest : public CommandTest
{
  protected:
    KilledFileCommandTest()
    {
        KeepEverything();
        PlainConnection(Journal).RunSQL(
            "WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT 4000) INSERT "
            "INTO PlantJournalEntries(PlantUUID,Details) SELECT "
            "(SELECT UUID FROM Plants LIMIT 1),printf('%.1000c','x') FROM N;");
        Bytes = FileBytes(Journal);
        Export = Exported(Journal);
        Sound = false; // the entries have no events
    }

    std::string Exported(const std::string& journal) const { return Done({"export", "-", "--file", journal}); }
    static void Put(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    // Kills the command at moments from its start to its end, and calls `check` after each.
    void KillAtMoments(const Words& words, const std::function<void()>& prepare,
                       const std::function<void()>& check) const
    {
        using Clock = std::chrono::steady_clock;
        prepare();
        const auto begin = Clock::now();
        EXPECT_EQ(Run(words).Status, 0);
        const auto duration = Clock::now() - begin;
        constexpr int moments = 10;
        int kills = 0;
        for (int moment = 0; moment < moments; ++moment)
        {
            prepare();
            {
                RunningProgram program(Line(words), Around);
                std::this_thread::sleep_for(duration * moment / moments);
                kills += program.Runs() ? 1 : 0;
            } // kills the program
            SCOPED_TRACE("at moment " + std::to_string(moment));
            check();
        }
        EXPECT_GT(kills, 0);
    }

    std::string Bytes;
    std::string Export;
};

TEST_F(KilledFileCommandTest, AKilledBackupLeavesWholeBackupsOnly)
{
    KillAtMoments(
        {"backup"}, [] {},
        [this]
        {
            for (const JSON& file : Parsed({"backup", "--list"}))
                EXPECT_EQ(file.at("Kind"), "Current");
            EXPECT_EQ(FileBytes(Journal) == Bytes, true);
        });
    Done({"backup"});
    EXPECT_EQ(Parsed({"backup", "--list"}).size(), 1U); // the newest of the day
}

TEST_F(KilledFileCommandTest, AKilledRestoreLeavesEitherJournal)
{
    Done({"backup", Scratch.File("copy.db")});
    PlainConnection(Journal).RunSQL("UPDATE Plants SET Notes='later';");
    const std::string laterBytes = FileBytes(Journal);
    const std::string later = Exported(Journal);
    const auto prepare = [&]
    {
        std::filesystem::remove_all(std::filesystem::path(Journal).parent_path());
        std::filesystem::create_directories(std::filesystem::path(Journal).parent_path());
        Put(Journal, laterBytes);
    };
    KillAtMoments({"restore", Scratch.File("copy.db"), "--yes"}, prepare,
                  [&]
                  {
                      const std::string found = Exported(Journal);
                      EXPECT_TRUE(found == later || found == Export);
                      Done({"restore", Scratch.File("copy.db"), "--yes"});
                      EXPECT_EQ(Exported(Journal) == Export, true);
                  });
    prepare();
}

TEST_F(KilledFileCommandTest, AKilledSalvageLeavesAWholeJournalOrNone)
{
    const std::string found = Scratch.File("new.db");
    KillAtMoments(
        {"salvage", Journal, found}, [&] { std::filesystem::remove(found); },
        [&]
        {
            EXPECT_TRUE(!std::filesystem::exists(found) || Exported(found) == Export);
            EXPECT_EQ(FileBytes(Journal) == Bytes, true);
            std::filesystem::remove(found);
            Done({"salvage", Journal, found});
            EXPECT_EQ(Exported(found) == Export, true);
        });
}

} // namespace

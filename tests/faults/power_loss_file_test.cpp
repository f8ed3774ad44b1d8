// Rotation, restore and salvage, with a power loss after every change and every sync that they make.

#include "plant_file.h"

#include "support/figures.h"
#include "support/file_recorder.h"
#include "support/restore_test.h"
#include "support/rotation_test.h"
#include "support/salvage_test.h"
#include "support/test_form.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace support;

namespace
{

using Problems = std::set<std::string>;

// What `look` finds after a power loss: an empty text, or a problem.
using Look = std::function<std::string(bool hasReturned)>;

// The same operation with many power losses. Its files are in one directory, which contains after each power loss what
// is left.
class PowerLosses
{
  public:
    // Runs the operation once, without a power loss.
    PowerLosses(std::filesystem::path directory, const std::function<void()>& operation)
        : Directory(std::move(directory))
    {
        Before.Load(Directory.string());
        const FileRecorder recorder(Directory.string());
        operation();
        Steps = recorder.Steps();
    }

    // Every call of this name was one that the disk ignored.
    void Ignore(const std::string& call)
    {
        std::erase_if(Steps, [&](const DiskStep& step) { return step.Call == call; });
    }
    bool Has(const std::string& call) const
    {
        return std::any_of(Steps.begin(), Steps.end(), [&](const DiskStep& step) { return step.Call == call; });
    }

    // Loses the power after each step, and boots several times from there, each time with another outcome for the
    // changes that were not synced. Returns the problems. At the end, the directory is as before the operation.
    Problems Find(const Look& look, bool unlinksPersist = false)
    {
        Problems problems;
        SimulatedDisk disk = Before;
        disk.UnlinksPersist = unlinksPersist;
        for (std::size_t step = 0; step < Steps.size(); ++step)
        {
            Steps[step].Repeat(disk);
            AddToFigure("power losses");
            for (int boot = 0; boot < ShortOrLong(4, 60); ++boot)
            {
                SimulatedDisk after = disk;
                after.Reboot(Random);
                after.Store(Directory.string());
                problems.insert(look(step + 1 == Steps.size()));
                AddToFigure("looks after a power loss");
            }
        }
        Before.Store(Directory.string());
        problems.erase("");
        return problems;
    }

  private:
    std::filesystem::path Directory;
    SimulatedDisk Before;
    std::vector<DiskStep> Steps;
    std::mt19937_64 Random{Seed()};
};

bool IsSound(const std::string& path)
{
    PlantFileInspection inspection;
    std::vector<PlantFileFinding> findings;
    return InspectPlantDatabase(path, inspection) && inspection.Kind == PlantFileKind::Current &&
           CheckPlantDatabase(path, findings) &&
           std::none_of(findings.begin(), findings.end(),
                        [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::Damage; });
}

bool HasUnfinishedCopy(const ScratchDirectory& directory)
{
    const Names names = NamesOf(directory.Files());
    return std::any_of(names.begin(), names.end(),
                       [](const std::string& name) { return name.find(".part-") != std::string::npos; });
}

// ---- Rotation

// Three backups of three days. The next rotation removes the first two.
class RotationPowerLossTest : public RotationTest
{
  protected:
    RotationPowerLossTest()
    {
        for (const char* day : {"1", "2", "3"})
            EXPECT_EQ(RotateAt(std::string("2026-05-0") + day + " 10:00:00"), "");
        for (const std::string& name : There())
            Earlier[name] = FileBytes(Place + '/' + name);
        EXPECT_EQ(Earlier.size(), 3U);
        JournalBytes = FileBytes(Path);
    }

    PowerLosses Recorded()
    {
        return {std::filesystem::path(Path).parent_path(), [this] {
                    EXPECT_EQ(RotateAt("2026-05-04 10:00:00", {2, 0, 0}), "");
                }};
    }

    std::string Problem(bool hasReturned)
    {
        const std::string next = Place + "/2026-05-04-100000-journal.db";
        const bool isThere = std::filesystem::exists(next);
        if (isThere && std::filesystem::file_size(next) != 0 && !IsSound(next))
            return "the new backup is not whole";
        if (hasReturned && !(isThere && IsSound(next)))
            return "the new backup is lost";
        for (const auto& [name, bytes] : Earlier)
        {
            const std::string path = Place + '/' + name;
            if (std::filesystem::exists(path) ? FileBytes(path) != bytes
                                              : !IsSound(next) || name == "2026-05-03-100000-journal.db")
                return "an earlier backup is lost";
        }
        if (FileBytes(Path) != JournalBytes)
            return "the journal is changed";
        if (Random() % 4 == 0)
        {
            if (!RotateAt("2026-05-05 10:00:00", {2, 0, 0}).empty())
                return "the next rotation fails";
            if (GoodBackUps() != static_cast<int>(There().size()) || GoodBackUps() != 2)
                return "the next rotation leaves something else";
        }
        return {};
    }

    std::map<std::string, std::string> Earlier;
    std::string JournalBytes;
    std::mt19937_64 Random{Seed()};
};

TEST_F(RotationPowerLossTest, NoGoodBackupIsLostBeforeTheNewOneIsThere)
{
    PowerLosses losses = Recorded();
    for (const bool unlinksPersist : {false, true})
        EXPECT_EQ(losses.Find([this](bool returned) { return Problem(returned); }, unlinksPersist), Problems());
}

TEST_F(RotationPowerLossTest, NoneIsLostWithoutHardLinksEither)
{
    PowerLosses losses = [this]
    {
        const FileCallFailure failure({FileCall::Link}, FileCallFailure::EveryCall, EPERM);
        return Recorded();
    }();
    EXPECT_TRUE(losses.Has("creation"));
    EXPECT_TRUE(losses.Has("rename"));
    EXPECT_EQ(losses.Find([this](bool returned) { return Problem(returned); }), Problems());
}

TEST_F(RotationPowerLossTest, ABackupInANewDirectoryIsDurable)
{
    Place = Scratch.File("stick/plants/backups");
    PowerLosses losses = Recorded();
    const auto problem = [this](bool hasReturned) -> std::string
    {
        const std::string next = Place + "/2026-05-04-100000-journal.db";
        if (std::filesystem::exists(next) ? !IsSound(next) : hasReturned)
            return "the new backup is lost";
        return {};
    };
    EXPECT_EQ(losses.Find(problem), Problems());
    losses.Ignore("sync of a directory");
    EXPECT_EQ(losses.Find(problem), Problems{"the new backup is lost"});
}

// A disk that ignores syncs must show problems, or these tests would not notice a rotation without them.
TEST_F(RotationPowerLossTest, ADiskThatIgnoresSyncsLosesBackups)
{
    PowerLosses losses = Recorded();
    const auto problem = [this](bool returned) { return Problem(returned); };
    losses.Ignore("sync of a directory");
    EXPECT_TRUE(losses.Find(problem).contains("the new backup is lost"));
    losses = Recorded();
    losses.Ignore("sync");
    EXPECT_TRUE(losses.Find(problem).contains("the new backup is not whole"));
}

// ---- Restore

class RestorePowerLossTest : public RestoreTest
{
  protected:
    RestorePowerLossTest()
    {
        Shrink();
        DestinationBytes = FileBytes(Destination);
    }

    PowerLosses Recorded()
    {
        if (std::filesystem::exists(Path))
            Former = FileBytes(Path);
        return {std::filesystem::path(Destination).parent_path(), [this] { EXPECT_EQ(Restore(), ""); }};
    }

    // The former journal can be read if `former` has its content.
    std::string Problem(bool hasReturned, const std::string& former = {})
    {
        if (FileBytes(Destination) != DestinationBytes)
            return "the backup is changed";
        const bool isThere = std::filesystem::exists(Path);
        const bool isFormer = isThere ? FileBytes(Path) == Former : Former.empty();
        if (!isFormer)
        {
            const std::string content = ContentIfSound();
            if (content.empty() || (content != BackedUp && content != former))
                return "the journal is neither the former nor the restored one";
            if (content == BackedUp && !Former.empty() && !(std::filesystem::exists(Kept) && FileBytes(Kept) == Former))
                return "the kept copy is lost";
        }
        if (hasReturned && ContentIfSound() != BackedUp)
            return "the restored journal is lost";
        if (Random() % 4 == 0)
        {
            if (!Restore().empty() || ContentIfSound() != BackedUp)
                return "the next restoration fails";
            if (HasUnfinishedCopy(Scratch))
                return "the next restoration leaves an unfinished copy";
        }
        return {};
    }
    // Opening it rolls an interrupted write back.
    std::string ContentIfSound() const
    {
        return std::filesystem::exists(Path) && PlantDatabase().Open(Path) && IsSound(Path) ? ContentOf(Path) : "";
    }

    std::string DestinationBytes;
    std::string Former; // the bytes of the journal before; empty where there is none
    std::mt19937_64 Random{Seed()};
};

TEST_F(RestorePowerLossTest, AReadableJournalIsTheFormerOrTheRestored)
{
    PowerLosses losses = Recorded();
    EXPECT_FALSE(losses.Has("rename")); // through SQLite's backup interface
    const auto problem = [this](bool returned) { return Problem(returned, Later); };
    EXPECT_EQ(losses.Find(problem, true), Problems());
    // SQLite's last unlink can be undone: then the former journal is in place.
    EXPECT_EQ(losses.Find([&](bool /*returned*/) { return problem(false); }, false), Problems());
}

TEST_F(RestorePowerLossTest, ADamagedJournalIsTheFormerOrTheRestored)
{
    Overwrite(4096, 8192);
    PowerLosses losses = Recorded();
    EXPECT_TRUE(losses.Has("rename"));
    for (const bool unlinksPersist : {false, true})
        EXPECT_EQ(losses.Find([this](bool returned) { return Problem(returned); }, unlinksPersist), Problems());
}

TEST_F(RestorePowerLossTest, AMissingJournalIsMissingOrTheRestored)
{
    std::filesystem::remove(Path);
    EXPECT_EQ(Recorded().Find([this](bool returned) { return Problem(returned); }), Problems());
    Path = Scratch.File("new/plants/journal.db");
    EXPECT_EQ(Recorded().Find([this](bool returned) { return Problem(returned); }), Problems());
}

TEST_F(RestorePowerLossTest, ADiskThatIgnoresSyncsLosesTheJournal)
{
    const auto problem = [this](bool returned) { return Problem(returned, Later); };
    PowerLosses losses = Recorded();
    losses.Ignore("sync");
    EXPECT_TRUE(losses.Find(problem).contains("the journal is neither the former nor the restored one"));

    WriteBytes(Path, LaterBytes);
    Overwrite(4096, 8192);
    losses = Recorded();
    losses.Ignore("sync of a directory");
    const Problems problems = losses.Find(problem);
    EXPECT_TRUE(problems.contains("the kept copy is lost"));
    EXPECT_TRUE(problems.contains("the restored journal is lost"));
}

// ---- Salvage

class SalvagePowerLossTest : public SalvageTest
{
  protected:
    SalvagePowerLossTest()
    {
        Grow();
        Expected = RowsOf(Path);
        Zero(Path, 0, 512);
        DamagedBytes = FileBytes(Path);
    }

    PowerLosses Recorded()
    {
        return {std::filesystem::path(Path).parent_path(), [this]
                {
                    PlantSalvageReport report;
                    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error, "");
                }};
    }

    std::string Problem(bool hasReturned)
    {
        if (FileBytes(Path) != DamagedBytes)
            return "the damaged file is changed";
        if (std::filesystem::exists(Destination) ? !IsSound(Destination) || RowsOf(Destination) != Expected
                                                 : hasReturned)
            return "the new journal is lost or not whole";
        if (Random() % 4 == 0)
        {
            Salvage();
            if (RowsOf(Destination) != Expected || HasUnfinishedCopy(Scratch))
                return "the next salvage fails";
        }
        return {};
    }

    std::string Expected;
    std::string DamagedBytes;
    std::mt19937_64 Random{Seed()};
};

TEST_F(SalvagePowerLossTest, TheNewJournalIsMissingOrWhole)
{
    PowerLosses losses = Recorded();
    for (const bool unlinksPersist : {false, true})
        EXPECT_EQ(losses.Find([this](bool returned) { return Problem(returned); }, unlinksPersist), Problems());
}

TEST_F(SalvagePowerLossTest, ADiskThatIgnoresSyncsLosesTheNewJournal)
{
    for (const char* sync : {"sync", "sync of a directory"})
    {
        std::filesystem::remove(Destination);
        PowerLosses losses = Recorded();
        losses.Ignore(sync);
        EXPECT_EQ(losses.Find([this](bool returned) { return Problem(returned); }),
                  Problems{"the new journal is lost or not whole"})
            << sync;
    }
}

// This test is the last, since the figure counts all tests of the program.
TEST(PowerLossFiguresTest, ThePowerIsLostOftenEnough)
{
    EXPECT_GE(AddToFigure("power losses", 0), 1'000);
}

} // namespace

#pragma once

#include "plant_database.h"
#include "support/figures.h"
#include "support/simulated_disk.h"
#include "support/test_form.h"
#include "testing/plain_connection.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace support
{

// The journal of these tests. The simulated disk has no directories.
constexpr auto JournalName = "journal.db";

// How unlinks and the caller's settings protect the last operation.
struct Durability
{
    const char* Name;
    bool UnlinksPersist;
    const char* Pragma; // run by the caller after opening
    bool MayLoseLastOperation;
};

// SQLite ends a transaction by the unlink of its rollback journal. It syncs the directory after that only with
// synchronous=EXTRA: https://www.sqlite.org/pragma.html#pragma_synchronous
constexpr Durability UnlinksPersist = {"unlinks persist", true, "", false};
constexpr Durability UnlinksCanBeUndone = {"unlinks can be undone", false, "", true};
constexpr Durability UnlinksAreSynced = {"unlinks are synced", false, "PRAGMA synchronous=EXTRA;", false};

// Opens the journal, expects that it is undamaged and that every linked event is its owner's, and returns its content.
std::string OpenedContent();

// How far an operation came before the power was lost.
struct Interruption
{
    bool Succeeded;   // it returned true
    bool AfterReturn; // the power was lost only after it had returned
};

// A test with a journal on a simulated disk.
class PowerLossTest : public testing::Test
{
  protected:
    // Empties the disk.
    void Begin(const Durability& durability);

    // Opens the journal and runs `work` on its repository. The power is lost at the `call`-th call of the disk from
    // there, or after the return of `work` if there are fewer calls.
    template <typename Work> Interruption InterruptWork(const Work& work, int call)
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(JournalName));
        RunSQL(database.NativeHandle(), Pragma);
        PlantRepository repository(database);
        Disk.CutPowerAt(call);
        const bool succeeded = work(repository);
        return {succeeded, CutPower()};
    }

    // Opens the journal. The power is lost as above.
    Interruption InterruptOpening(int call);

    // Boots the machine `times` times from the moment of the power loss, each time with another outcome for the changes
    // that were not synced, and runs `look`. Some of the boots lose the power once more while the journal is opened.
    template <typename Look> void Reboot(int times, const Look& look)
    {
        AddToFigure("power losses");
        const SimulatedDisk off = Disk;
        for (int i = 0; i < times && !HasFailure(); ++i)
        {
            Disk = off;
            Disk.Reboot(Random);
            if (Random() % 4 == 0)
            {
                const Interruption opening = InterruptOpening(1 + static_cast<int>(Random() % 8));
                EXPECT_EQ(opening.Succeeded, opening.AfterReturn);
                AddToFigure("power losses", opening.AfterReturn ? 0 : 1);
                Disk.Reboot(Random);
            }
            look();
            AddToFigure("journals opened after a power loss");
        }
    }

    SimulatedDisk Disk;
    DiskInUse InUse{Disk};
    std::string Pragma;
    std::mt19937_64 Random{Seed()};

  private:
    // Cuts the power unless it is off. Returns whether it was on.
    bool CutPower();
};

} // namespace support

// Every operation, with a power loss at every write and every sync that it makes.

#include "support/power_loss.h"
#include "support/repository_operations.h"
#include "support/sqlite_calls.h"
#include "testing/operation_statements.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

using namespace support;

namespace
{

// The UUID of a duplicate differs in every run.
std::string WithoutCloneUUID(std::string content, const SampleRecords& sample)
{
    const std::string& uuid = sample.Clone.UUID;
    for (std::size_t at = 0; (at = content.find(uuid, at)) != std::string::npos;)
        content.replace(at, uuid.size(), "the clone's UUID");
    return content;
}

class OperationPowerLossTest : public PowerLossTest
{
  protected:
    // Stores the sample records in a journal on the disk.
    void StoreJournal(const Durability& durability)
    {
        Begin(durability);
        {
            PlantDatabase database;
            ASSERT_TRUE(database.Open(JournalName));
            PlantRepository repository(database);
            Stored = StoreSampleRecords(repository);
        }
        Disk.SyncAll();
        Synced = Disk;
        Before = OpenedContent();
        RunSQL(PlainConnection(JournalName).NativeHandle(), "INSERT INTO Strains(Name) VALUES('a new strain');");
        Registered = OpenedContent();
    }

    // Runs the operation without a power loss and keeps the content after it. Returns whether it writes.
    bool Writes(const Operation& operation)
    {
        Disk = Synced;
        SampleRecords sample = Stored;
        std::vector<std::string> statements;
        {
            PlantDatabase database;
            EXPECT_TRUE(database.Open(JournalName));
            PlantRepository repository(database);
            const CallRecorder recorder;
            EXPECT_TRUE(operation.Call(repository, sample));
            statements = recorder.Statements();
        }
        RegistersAStrain = statements.front() == SQL::RegisterStrain;
        const std::string after = OpenedContent();
        After = WithoutCloneUUID(after, sample);
        return after != Before;
    }

    // Interrupts the operation at each of its calls of the disk, and after its return. `look` gets the records that it
    // changed, and whether it succeeded.
    template <typename Look> void InterruptEachCall(const Operation& operation, const Look& look)
    {
        bool returned = false;
        for (int call = 1; !returned && !HasFailure(); ++call)
        {
            SCOPED_TRACE("call " + std::to_string(call));
            Disk = Synced;
            SampleRecords sample = Stored;
            const Interruption interruption =
                InterruptWork([&](PlantRepository& repository) { return operation.Call(repository, sample); }, call);
            returned = interruption.AfterReturn;
            EXPECT_TRUE(interruption.Succeeded || !returned);
            look(sample, interruption.Succeeded);
        }
    }

    int LostOperations(const Durability& durability);

    SampleRecords Stored;
    SimulatedDisk Synced;
    std::string Before;
    std::string Registered; // the content with the new strain of a plant, which is stored before the plant
    std::string After;
    bool RegistersAStrain = false;
};

// Operations() has no DuplicatePlant, since it generates a UUID.
std::vector<Operation> OperationsAndDuplicatePlant()
{
    std::vector<Operation> operations = Operations();
    operations.push_back(
        {"DuplicatePlant", [](PlantRepository& r, SampleRecords& g) { return r.DuplicatePlant(g.Mother, g.Clone); }});
    return operations;
}

// Interrupts every operation everywhere. Returns how often an operation that had succeeded was not in the journal.
int OperationPowerLossTest::LostOperations(const Durability& durability)
{
    StoreJournal(durability);
    int operations = 0;
    int lost = 0;
    int whole = 0;
    int unchanged = 0;
    for (const Operation& operation : OperationsAndDuplicatePlant())
    {
        SCOPED_TRACE(operation.Name);
        if (!Writes(operation))
            continue;
        ++operations;
        const auto look = [&](const SampleRecords& sample, bool done)
        {
            const std::string found = WithoutCloneUUID(OpenedContent(), sample);
            const bool finished = found == After;
            const bool untouched = found == WithoutCloneUUID(Before, sample);
            const bool registered = RegistersAStrain && found == WithoutCloneUUID(Registered, sample);
            EXPECT_TRUE(finished || untouched || registered) << found;
            EXPECT_TRUE(finished || !done || durability.MayLoseLastOperation) << found;
            lost += done && !finished ? 1 : 0;
            whole += !done && finished ? 1 : 0;
            unchanged += !done && untouched ? 1 : 0;
        };
        InterruptEachCall(operation, [&](const SampleRecords& sample, bool done)
                          { Reboot(ShortOrLong(2, 20), [&] { look(sample, done); }); });
    }
    EXPECT_GT(whole, 0);
    EXPECT_GT(unchanged, 0);
    EXPECT_GE(operations, 30);
    return lost;
}

TEST_F(OperationPowerLossTest, AnOperationIsStoredWholeOrNotAtAll)
{
    EXPECT_EQ(LostOperations(UnlinksPersist), 0);
}

// A limit of the library: it does not change the setting of SQLite.
TEST_F(OperationPowerLossTest, AnUndoneUnlinkRollsBackTheLastOperation)
{
    const int lost = LostOperations(UnlinksCanBeUndone);
    EXPECT_GT(lost, 0);
    AddToFigure("operations rolled back by undone unlinks", static_cast<std::uint64_t>(lost));
}

TEST_F(OperationPowerLossTest, TheSettingExtraKeepsTheLastOperation)
{
    EXPECT_EQ(LostOperations(UnlinksAreSynced), 0);
}

// Settings of SQLite that are faster and unsafe must fail here, or these tests would not notice a library that used
// them.
TEST_F(OperationPowerLossTest, AnUnsafeSettingLosesOrDamagesAJournal)
{
    const auto contentIfUndamaged = []() -> std::string
    {
        try
        {
            PlantDatabase database;
            const bool sound = database.Open(JournalName) && Damage(database.NativeHandle()) == "ok";
            return sound ? Content(database.NativeHandle()) : "";
        }
        catch (const std::runtime_error&)
        {
            return "";
        }
    };
    for (const char* setting : {"PRAGMA synchronous=OFF;", "PRAGMA journal_mode=MEMORY;"})
    {
        SCOPED_TRACE(setting);
        StoreJournal(UnlinksPersist);
        Pragma = setting;
        int lost = 0;
        int damaged = 0;
        for (const Operation& operation : Operations())
        {
            if (!Writes(operation))
                continue;
            InterruptEachCall(operation,
                              [&](const SampleRecords&, bool done)
                              {
                                  Disk.Reboot(Random);
                                  const std::string found = contentIfUndamaged();
                                  damaged += found.empty() ? 1 : 0;
                                  lost += done && !found.empty() && found != After ? 1 : 0;
                              });
        }
        EXPECT_GT(damaged, 0);
        if (setting == std::string("PRAGMA synchronous=OFF;"))
        {
            EXPECT_GT(lost, 0);
        }
    }
}

// This test is the last, since the figure counts all tests of the program.
TEST(PowerLossFiguresTest, ThePowerIsLostOftenEnough)
{
    EXPECT_GE(AddToFigure("power losses", 0), 2'000);
}

} // namespace

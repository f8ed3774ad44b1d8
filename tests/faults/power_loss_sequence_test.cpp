// Random sequences of operations on one journal, which loses its power again and again.

#include "support/power_loss.h"
#include "support/random_changes.h"

#include <string>
#include <vector>

using namespace support;

namespace
{

// The expected journal, in memory, where no power loss reaches it.
class ExpectedJournal
{
  public:
    ExpectedJournal() { EXPECT_TRUE(Database.Open(":memory:")); }

    std::string Content() const { return support::Content(Database.NativeHandle()); }

    void Register(const std::string& strain)
    {
        RunSQL(Database.NativeHandle(), "INSERT INTO Strains(Name) VALUES('" + strain + "') ON CONFLICT DO NOTHING;");
    }

    void Make(const JournalChange& change) { EXPECT_TRUE(change.Make(Repository)); }

  private:
    PlantDatabase Database;
    PlantRepository Repository{Database};
};

class SequencePowerLossTest : public PowerLossTest
{
  protected:
    // Changes the journal until the power is lost. Unsure then has the changes that the file may have or lack.
    void ChangeUntilPowerLoss(const Durability& durability, RandomChanges& changes, ExpectedJournal& expected)
    {
        const auto change = [&](PlantRepository& repository)
        {
            while (!Disk.IsOff() && !HasFailure())
            {
                if (Random() % 8 == 0)
                {
                    PlantCareEntry withoutPlant;
                    withoutPlant.PlantUUID = "no plant";
                    EXPECT_FALSE(repository.CreatePlantCareEntry(withoutPlant));
                    continue;
                }
                const JournalChange next = changes.Next(repository);
                const bool done = next.Make(repository);
                EXPECT_TRUE(done || Disk.IsOff());
                if (done)
                {
                    for (const JournalChange& sure : Unsure)
                        expected.Make(sure);
                    Unsure.clear();
                    AddToFigure("operations that succeeded");
                }
                if (done && !durability.MayLoseLastOperation)
                    expected.Make(next);
                else
                    Unsure.push_back(next);
                if (Random() % 32 == 0)
                    return true;
            }
            return true;
        };
        InterruptWork(change, 1 + static_cast<int>(Random() % 400));
    }

    // Repeats the unsure changes in the expected journal until it has the content that was found.
    void FollowTo(ExpectedJournal& expected, const std::string& found)
    {
        const auto isReached = [&] { return expected.Content() == found; };
        for (const JournalChange& change : Unsure)
        {
            if (isReached())
                break;
            if (!change.NewStrain.empty())
                expected.Register(change.NewStrain);
            if (isReached())
                break;
            expected.Make(change);
        }
        EXPECT_EQ(found, expected.Content());
        Unsure.clear();
    }

    std::vector<JournalChange> Unsure;
};

TEST_F(SequencePowerLossTest, NoOperationIsLostHoweverOftenThePowerIsLost)
{
    for (const Durability& durability : {UnlinksPersist, UnlinksCanBeUndone, UnlinksAreSynced})
    {
        SCOPED_TRACE(durability.Name);
        const TimeLimit limit;
        for (int sequence = 0; (IsLongForm() ? !limit.IsOver() : sequence < 8) && !HasFailure(); ++sequence)
        {
            SCOPED_TRACE("sequence " + std::to_string(sequence));
            Begin(durability);
            RandomChanges changes(Random);
            ExpectedJournal expected;
            for (int loss = 0; loss < 40 && !HasFailure(); ++loss)
            {
                ChangeUntilPowerLoss(durability, changes, expected);
                Reboot(1, [&] { FollowTo(expected, OpenedContent()); });
            }
        }
    }
}

// This test is the last, since the figure counts all tests of the program.
TEST(PowerLossFiguresTest, ThePowerIsLostOftenEnough)
{
    EXPECT_GE(AddToFigure("power losses", 0), 900);
}

} // namespace

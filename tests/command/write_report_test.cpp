// The line in which a command reports what it did.

#include "command/basil_test.h"

using namespace support;

namespace
{

using WriteReportTest = BasilTest;

TEST_F(WriteReportTest, ANewPlantIsReportedWithStrainStageAndUUID)
{
    EXPECT_EQ(Done({"plant", "add", "Mint", "--uuid", "m1"}), "Added Mint: stage Veg (m1)\n");
    EXPECT_EQ(Done({"plant", "add", "Tom", "--uuid", "t1", "--strain", "Roma", "--stage", "seed"}),
              "Added Tom: Roma, stage Seed (t1)\n");
    const std::string copy = Done({"plant", "duplicate", "Tom"});
    const std::string uuid = Parsed({"plant", "show", "Tom copy"}).at("UUID");
    EXPECT_EQ(copy, "Added Tom copy: Roma, stage Seed (" + uuid + ")\n");
}

TEST_F(WriteReportTest, AChangedPlantIsReportedWithTheFieldsThatWereSet)
{
    EXPECT_EQ(Done({"plant", "edit", "Basil", "--stage", "flower", "--pot-size", "11 l", "--tent="}),
              "Changed Basil: stage Flower, tent cleared, pot size 11 l\n");
    EXPECT_EQ(Done({"plant", "edit", "Basil", "--flip-height-cm", "42.129", "--final-height-cm", "0"}),
              "Changed Basil: height at flip 42.13 cm, final height 0 cm\n");
    EXPECT_EQ(Done({"plant", "edit", "Basil", "--name", "Sweet basil"}), "Changed Basil: name Sweet basil\n");
}

TEST_F(WriteReportTest, ANewMotherIsReportedByItsName)
{
    Done({"plant", "add", "Cutting"});
    EXPECT_EQ(Done({"plant", "edit", "Cutting", "--mother", "b1"}), "Changed Cutting: mother Basil\n");
    EXPECT_EQ(Done({"plant", "edit", "Cutting", "--tent", "South"}), "Changed Cutting: tent South\n");
    EXPECT_EQ(Done({"plant", "edit", "Cutting", "--mother="}), "Changed Cutting: mother cleared\n");
}

TEST_F(WriteReportTest, ADeletedPlantIsReportedWithItsRecords)
{
    EXPECT_EQ(Done({"plant", "delete", "Basil", "--yes"}), "Deleted Basil and all its records\n");
}

TEST_F(WriteReportTest, AStrainIsReportedByItsName)
{
    EXPECT_EQ(Done({"strain", "add", "Roma", "--breeder", "who"}), "Added strain Roma\n");
    EXPECT_EQ(Done({"strain", "edit", "Roma", "--name", "Romana", "--flowering-weeks", "9"}),
              "Changed strain Roma: name Romana, flowering time 9 weeks\n");
    EXPECT_EQ(Done({"strain", "delete", "Romana", "--yes"}), "Deleted strain Romana\n");
}

TEST_F(WriteReportTest, ACareEntryIsReportedWithItsValuesAndRowID)
{
    EXPECT_EQ(Done({"care", "add", "Basil", "--action", "feed", "--product", "Bloom A", "--amount-ml", "500", "--ec",
                    "1.8", "--ph", "6.2", "--runoff-ml", "75.5", "--notes", "half"}),
              "Fed Basil: Bloom A, 500 ml, EC 1.80, pH 6.20, runoff 75.5 ml (care 1)\n");
    EXPECT_EQ(Done({"care", "add", "Basil", "--amount-ml", "750"}), "Watered Basil: 750 ml (care 2)\n");
    EXPECT_EQ(Done({"care", "add", "Basil"}), "Watered Basil (care 3)\n");
    EXPECT_EQ(Done({"care", "edit", "Basil", "1", "--amount-ml", "450", "--notes="}),
              "Changed care entry 1 of Basil: amount 450 ml, notes cleared\n");
    EXPECT_EQ(Done({"care", "delete", "Basil", "2", "--yes"}), "Deleted care entry 2 of Basil: Water, 750 ml\n");
}

TEST_F(WriteReportTest, ADateOtherThanTodayIsReported)
{
    EXPECT_EQ(Done({"care", "add", "Basil", "--care-date", "2026-05-02"}), "Watered Basil on 2026-05-02 (care 1)\n");
    EXPECT_EQ(Done({"care", "add", "Basil", "--care-date="}), "Watered Basil (care 2)\n");
    EXPECT_EQ(Done({"care", "delete", "Basil", "1", "--yes"}), "Deleted care entry 1 of Basil on 2026-05-02: Water\n");
}

TEST_F(WriteReportTest, AHarvestIsReportedWithItsWeights)
{
    EXPECT_EQ(Done({"harvest", "add", "Basil", "--wet-weight-g", "410", "--dry-weight-g", "96.5"}),
              "Harvested Basil: wet weight 410 g, dry weight 96.5 g\n");
    EXPECT_EQ(Done({"harvest", "edit", "Basil", "--quality-rating", "8"}),
              "Changed the harvest record of Basil: quality 8 of 10\n");
}

TEST_F(WriteReportTest, OtherRecordsAreReportedWithTheirTexts)
{
    EXPECT_EQ(Done({"event", "add", "Basil", "into the big tent", "--type", "transplant"}),
              "Added timeline event to Basil: Transplant, into the big tent (event 1)\n");
    EXPECT_EQ(Done({"health", "add", "Basil", "Spider mites", "--severity", "2"}),
              "Added health observation to Basil: Spider mites, severity 2 of 5 (health 1)\n");
    EXPECT_EQ(Done({"note", "add", "Basil", "Four new\npairs"}),
              "Added journal entry to Basil: Observation, Four new pairs (note 1)\n");
    EXPECT_EQ(Done({"health", "edit", "Basil", "1", "--treatment", "mites"}),
              "Changed health observation 1 of Basil: treatment mites\n");
    EXPECT_EQ(Done({"health", "delete", "Basil", "1", "--yes"}),
              "Deleted health observation 1 of Basil: Spider mites, severity 2 of 5, mites\n");
}

TEST_F(WriteReportTest, ALongTextIsCutInTheReport)
{
    const std::string line = Done({"note", "add", "Basil", std::string(200, 'x')});
    EXPECT_EQ(line, "Added journal entry to Basil: Observation, " + std::string(59, 'x') + "… (note 1)\n");
    EXPECT_EQ(Parsed({"note", "list", "Basil"}).at(0).at("Details"), std::string(200, 'x'));
}

TEST_F(WriteReportTest, QuietPrintsOnlyTheIdentifierOfWhatWasStored)
{
    EXPECT_EQ(Done({"plant", "add", "Mint", "--uuid", "m1", "-q"}), "m1\n");
    EXPECT_EQ(Done({"plant", "edit", "Mint", "--tent", "South", "-q"}), "m1\n");
    EXPECT_EQ(Done({"care", "add", "Basil", "-q"}), "1\n");
    EXPECT_EQ(Done({"care", "add", "Basil", "--quiet"}), "2\n");
    EXPECT_EQ(Done({"care", "edit", "Basil", "1", "--ph", "6", "--quiet"}), "1\n");
    EXPECT_EQ(Done({"strain", "add", "Roma", "-q"}), "Roma\n");
    EXPECT_EQ(Done({"strain", "edit", "Roma", "--name", "Romana", "-q"}), "Romana\n");
}

TEST_F(WriteReportTest, QuietPrintsNothingAfterADeletion)
{
    Done({"care", "add", "Basil"});
    Done({"strain", "add", "Roma"});
    EXPECT_EQ(Done({"care", "delete", "Basil", "1", "--yes", "-q"}), "");
    EXPECT_EQ(Done({"strain", "delete", "Roma", "--yes", "-q"}), "");
    EXPECT_EQ(Done({"plant", "delete", "Basil", "--yes", "-q"}), "");
}

TEST_F(WriteReportTest, JSONPrintsTheStoredPlantAndStrain)
{
    JSON stored = Parsed({"plant", "add", "Mint"});
    EXPECT_EQ(stored, Parsed({"plant", "show", "Mint"}));
    stored = Parsed({"plant", "edit", "Mint", "--tent", "South"});
    EXPECT_EQ(stored, Parsed({"plant", "show", "Mint"}));
    stored = Parsed({"plant", "duplicate", "Mint"});
    EXPECT_EQ(stored, Parsed({"plant", "show", "Mint copy"}));
    stored = Parsed({"strain", "add", "Zebra"});
    EXPECT_EQ(stored, Parsed({"strain", "list"}).back());
    stored = Parsed({"strain", "edit", "Zebra", "--breeder", "who"});
    EXPECT_EQ(stored, Parsed({"strain", "list"}).back());
    EXPECT_EQ(Done({"plant", "delete", "Mint", "--yes", "--json"}), "");
}

TEST_F(WriteReportTest, AFailedWriteReportsNothing)
{
    EXPECT_NE(Refused({"strain", "add", "Genovese"}).find("the strain could not be added"), std::string::npos);
}

} // namespace

// Values that cannot be are refused; values that are unlikely are stored with a notice.

#include "command/basil_test.h"

#include <filesystem>
#include <tuple>

using namespace support;

namespace
{

using NoticeTest = BasilTest;

TEST_F(NoticeTest, AnImpossibleValueIsRefusedWithFieldAndReason)
{
    const std::vector<std::tuple<Words, std::string>> lines = {
        {{"harvest", "add", "b1", "--dry-weight-g=-3"},
         "harvest of Basil: --dry-weight-g \"-3\": the dry weight cannot be negative\n"},
        {{"harvest", "add", "b1", "--wet-weight-g=-0.5"},
         "harvest of Basil: --wet-weight-g \"-0.5\": the wet weight cannot be negative\n"},
        {{"harvest", "add", "b1", "--wet-weight-g=1", "--quality-rating=10.5"},
         "harvest of Basil: --quality-rating \"10.5\": the quality rating must be from 0 to 10\n"},
        {{"harvest", "add", "b1", "--wet-weight-g=1", "--seed-yield=-1"},
         "harvest of Basil: --seed-yield \"-1\": the number of seeds cannot be negative\n"},
        {{"feed", "b1", "--ph=14.5"}, "care of Basil: --ph \"14.5\": the pH must be from 0 to 14\n"},
        {{"water", "b1", "--amount-ml=-1"}, "care of Basil: --amount-ml \"-1\": the amount cannot be negative\n"},
        {{"care", "add", "b1", "--runoff-ml=-1"}, "care of Basil: --runoff-ml \"-1\": the runoff cannot be negative\n"},
        {{"plant", "edit", "b1", "--flip-height-cm=-1"},
         "plant Basil: --flip-height-cm \"-1\": the height cannot be negative\n"},
        {{"plant", "add", "Mint", "--final-height-cm=-1"},
         "plant Mint: --final-height-cm \"-1\": the height cannot be negative\n"},
        {{"strain", "add", "Roma", "--flowering-weeks=-1"},
         "strain Roma: --flowering-weeks \"-1\": the flowering time cannot be negative\n"},
        {{"strain", "edit", "Genovese", "--flowering-weeks=-1"},
         "strain Genovese: --flowering-weeks \"-1\": the flowering time cannot be negative\n"}};
    for (const auto& [words, message] : lines)
    {
        const std::string reason = message.substr(0, message.find('\n'));
        EXPECT_NE(Mistaken(words).find(reason + "; `plantjournal help "), std::string::npos) << Mistaken(words);
    }
    EXPECT_NE(Mistaken({"health", "add", "b1", "mites", "--severity=6"}).find("--severity: \"6\" is not from 1 to 5"),
              std::string::npos);
}

TEST_F(NoticeTest, AnUnlikelyValueIsStoredWithOneLineOfNotice)
{
    Done({"plant", "edit", "b1", "--seed-date", "2026-05-01"});
    const std::vector<std::tuple<Words, std::string>> lines = {
        {{"feed", "b1", "--ec", "1800"}, "care of Basil: --ec \"1800\": the EC is above 20; the journal expects mS/cm"},
        {{"water", "b1", "--amount-ml", "100001"},
         "care of Basil: --amount-ml \"100001\": the amount is above 100 l; the journal expects ml"},
        {{"water", "b1", "--date", "2026-04-30"},
         "care of Basil: --date \"2026-04-30\": the date is before the plant was sown (2026-05-01)"},
        {{"harvest", "add", "b1", "--date", "2026-04-30", "--wet-weight-g", "1"},
         "harvest of Basil: --date \"2026-04-30\": the date is before the plant was sown (2026-05-01)"},
        {{"harvest", "edit", "b1", "--date", "2026-07-01", "--dry-weight-g", "2"},
         "harvest of Basil: --dry-weight-g \"2\": the dry weight is above the wet weight"},
        {{"note", "add", "b1", "--date", "9999"}, "note of Basil: --date \"9999\": the date is in the future"},
        {{"event", "add", "b1", "--date", "9999"}, "event of Basil: --date \"9999\": the date is in the future"},
        {{"health", "add", "b1", "mites", "--date", "9999"},
         "health of Basil: --date \"9999\": the date is in the future"},
        {{"plant", "edit", "b1", "--flip-date", "2026-04"},
         "plant Basil: --flip-date \"2026-04\": the date is before the sowing (2026-05-01)"},
        {{"plant", "add", "Mint", "--seed-date", "9999"},
         "plant Mint: --seed-date \"9999\": the date is in the future"},
        {{"strain", "add", "Roma", "--flowering-weeks", "60"},
         "strain Roma: --flowering-weeks \"60\": the flowering time is above 52 weeks"}};
    for (const auto& [words, notice] : lines)
        EXPECT_EQ(NoticesOf(words), "notice: " + notice + '\n');
    EXPECT_EQ(Parsed({"care", "list", "b1"}).size(), 3U);
    EXPECT_EQ(Parsed({"harvest", "list", "b1"}).at(0).at("DryWeightG"), 2.0);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
}

TEST_F(NoticeTest, AMessageNamesTheFlagAsItWasTyped)
{
    const auto flagIn = [](const std::string& message)
    {
        const std::size_t begin = message.find("--");
        return message.substr(begin, message.find(' ', begin) - begin);
    };
    const std::string future = "9999";
    EXPECT_EQ(flagIn(NoticesOf({"water", "b1", "--date", future})), "--date");
    EXPECT_EQ(flagIn(NoticesOf({"water", "b1", "--care-date", future})), "--care-date");
    EXPECT_EQ(flagIn(NoticesOf({"care", "add", "b1", "--care-date=" + future})), "--care-date");
    EXPECT_EQ(flagIn(NoticesOf({"note", "b1", "sunny", "--entry-date", future})), "--entry-date");
    EXPECT_EQ(flagIn(NoticesOf({"top", "b1", "--date", future})), "--date");
    EXPECT_EQ(flagIn(NoticesOf({"harvest", "add", "b1", "--harvest-date", future, "--wet", "1"})), "--harvest-date");
    EXPECT_EQ(flagIn(NoticesOf({"harvest", "edit", "b1", "--dry", "2g"})), "--dry");
    EXPECT_EQ(flagIn(NoticesOf({"harvest", "edit", "b1", "--dry-weight-g", "3"})), "--dry-weight-g");
    EXPECT_EQ(flagIn(Mistaken({"harvest", "edit", "b1", "--wet=-2"})), "--wet");
    EXPECT_EQ(flagIn(NoticesOf({"health", "add", "b1", "--observation-date", future, "--", "--date"})),
              "--observation-date"); // the issue is "--date"
}

TEST_F(NoticeTest, ALargeNumberIsWrittenWithoutAnExponent)
{
    Done({"plant", "add", "Mint"});
    const ProgramResult care = Run({"water", "Mint", "200l", "--date", "today"});
    EXPECT_EQ(care.Error,
              "notice: care of Mint: --amount-ml \"200000\": the amount is above 100 l; the journal expects ml\n");
    EXPECT_EQ(care.Out, "Watered Mint: 200000 ml (care 1)\n");
    EXPECT_NE(Done({"care", "list", "Mint"}).find("200000 ml"), std::string::npos);
    EXPECT_NE(Done({"timeline", "Mint"}).find("200000 ml"), std::string::npos);
    EXPECT_NE(NoticesOf({"water", "Mint", "--amount-ml", "1e12"}).find("\"1000000000000\""), std::string::npos);
    EXPECT_EQ(Run({"water", "Mint", "--amount-ml", "3e15"}).Out, "Watered Mint: 3e+15 ml (care 3)\n");
    EXPECT_EQ(Done({"water", "Mint", "--amount-ml", "0.00002"}), "Watered Mint: 0.00002 ml (care 4)\n");
}

TEST_F(NoticeTest, AnImportWarnsOfALargeNumberWithoutAnExponent)
{
    Write("care.json", R"({"Plants": [{"UUID": "m1", "Name": "Mint"}],
                           "PlantCareEntries": [{"PlantUUID": "m1", "CareDate": "2026-05-01", "AmountMl": 200000}]})");
    const std::string warnings = NoticesOf({"import", "care.json"});
    EXPECT_NE(warnings.find("AmountMl: \"200000\": the amount is above 100 l"), std::string::npos) << warnings;
}

TEST_F(NoticeTest, AnEditMindsOnlyTheFieldsThatItSets)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            EXPECT_TRUE(repository.GetPlant("b1", plant));
            plant.FlipHeightCm = -5;
            plant.SeedDate = "9999";
            plant.FlipDate = "spring";
            EXPECT_TRUE(repository.UpdatePlant(plant));
            HarvestRecord record;
            record.PlantUUID = "b1";
            record.WetWeightG = 1;
            record.DryWeightG = 2;
            record.QualityRating = 11;
            EXPECT_TRUE(repository.SaveHarvestRecord(plant, record));
        });
    EXPECT_EQ(NoticesOf({"plant", "edit", "b1", "--tent", "South"}), "");
    EXPECT_EQ(NoticesOf({"harvest", "edit", "b1", "--notes", "late"}), "");
    EXPECT_EQ(NoticesOf({"harvest", "edit", "b1", "--wet-weight-g", "1.5"}),
              "notice: harvest of Basil: --dry-weight-g \"2\": the dry weight is above the wet weight\n");
    EXPECT_EQ(NoticesOf({"harvest", "edit", "b1", "--wet-weight-g", "3"}), "");
    EXPECT_NE(Mistaken({"harvest", "edit", "b1", "--quality-rating", "12"})
                  .find("harvest of Basil: --quality-rating \"12\": the quality rating must be from 0 to 10; "),
              std::string::npos);
    EXPECT_EQ(Parsed({"harvest", "list", "b1"}).at(0).at("QualityRating"), 11.0);
}

TEST_F(NoticeTest, ANoticeAboutSeveralPlantsIsPrintedOnce)
{
    Done({"plant", "add", "Chili", "--uuid", "c1", "--seed-date", "2026-05-01"});
    Done({"plant", "add", "Dill", "--uuid", "d1", "--seed-date", "2026-06-01"});
    EXPECT_EQ(NoticesOf({"feed", "Basil", "Chili", "Dill", "--ec", "1800", "--date", "2026-05-15"}),
              "notice: care of Basil and 2 more: --ec \"1800\": the EC is above 20; the journal expects mS/cm\n"
              "notice: care of Dill: --date \"2026-05-15\": the date is before the plant was sown (2026-06-01)\n");
}

TEST_F(NoticeTest, ARefusalDoesNotCreateAJournal)
{
    Around.Environment.push_back("PLANTJOURNAL_FILE=" + Scratch.File("other.db"));
    EXPECT_EQ(Run({"plant", "add", "Mint", "--flip-height-cm=-1"}).Status, 2);
    EXPECT_EQ(Run({"strain", "add", "Roma", "--flowering-weeks=-1"}).Status, 2);
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("other.db")));
}

TEST_F(NoticeTest, ANoticeIsSafeForATerminal)
{
    EXPECT_EQ(NoticesOf({"plant", "add", "A\x1B[31m\nB", "--seed-date", "9999"}),
              "notice: plant A\uFFFD[31m B: --seed-date \"9999\": the date is in the future\n");
    EXPECT_NE(Mistaken({"plant", "add", "A\x1B[31m\nB", "--flip-height-cm=-1"})
                  .find("plant A\uFFFD[31m B: --flip-height-cm \"-1\": the height cannot be negative; "),
              std::string::npos);
}

} // namespace

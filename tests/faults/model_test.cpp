// Random operations with unusual arguments, on a journal and on its model in memory. The two are compared after each.

#include "support/figures.h"
#include "support/model/steps.h"
#include "support/test_form.h"
#include "testing/scratch_directory.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

using namespace support;

namespace
{

using namespace std::string_literals;

std::vector<StepResult> RunAndCount(const std::vector<StepBytes>& steps)
{
    std::vector<StepResult> outcomes = RunSteps(steps);
    AddToFigure("sequences");
    AddToFigure("operations", outcomes.size());
    for (const StepResult& outcome : outcomes)
    {
        AddToFigure("operations that returned false", outcome.Done ? 0 : 1);
        AddToFigure("times reopened", outcome.Operation == "Reopen" ? 1 : 0);
    }
    return outcomes;
}

TEST(ModelTest, RandomOperationsDoWhatTheModelDoes)
{
    // Every byte is equally likely, also in short sequences.
    const auto anyByte = rc::gen::resize(rc::kNominalSize, rc::gen::arbitrary<std::uint8_t>());
    const auto anySteps = rc::gen::container<std::vector<StepBytes>>(rc::gen::container<StepBytes>(anyByte));

    std::set<std::string> done;
    std::set<std::string> refused;
    const auto doWhatTheModelDoes = [&]
    {
        for (const StepResult& outcome : RunAndCount(*anySteps))
            (outcome.Done ? done : refused).insert(outcome.Operation);
    };

    // RapidCheck reads and prints these settings. Set in the environment, they repeat a failure of a later round.
    const std::string settings = " max_size=90 max_success=300";
    ::setenv("RC_PARAMS", ("seed=" + std::to_string(Seed()) + settings).c_str(), 0);
    auto parameters = rc::detail::configuration().testParams;
    std::mt19937_64 random(Seed());
    const TimeLimit limit;
    do
    {
        const auto result = rc::detail::checkTestable(doWhatTheModelDoes, rc::detail::TestMetadata{}, parameters);
        std::ostringstream message;
        rc::detail::printResultMessage(result, message);
        ASSERT_TRUE(result.is<rc::detail::SuccessResult>())
            << message.str() << "\nTo repeat it: RC_PARAMS='seed=" << parameters.seed << settings << '\'';
        parameters.seed = random();
    } while (AddToFigure("operations", 0) < 20'000 || (IsLongForm() && !limit.IsOver()));

    EXPECT_EQ(done, StepOperationNames());
    EXPECT_GE(refused.size(), 25);
}

// The first inputs of the fuzzer.
TEST(ModelTest, TheCorpusOfTheFuzzerDoesWhatTheModelDoes)
{
    std::set<std::string> operations;
    const std::filesystem::path corpus = PLANTJOURNAL_SOURCE_DIR "/tests/fuzz/corpus/operations";
    for (const auto& file : std::filesystem::directory_iterator(corpus))
    {
        const std::string bytes = FileBytes(file.path().string());
        const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
        std::vector<StepResult> outcomes;
        EXPECT_NO_THROW(outcomes = RunAndCount(StepsFrom(data.data(), data.size()))) << file.path();
        for (const StepResult& outcome : outcomes)
            operations.insert(outcome.Operation);
        AddToFigure("files of the corpus");
    }
    EXPECT_EQ(operations, StepOperationNames());
}

constexpr auto CreatePlant = [](auto& journal, Plant& plant) { return journal.CreatePlant(plant); };
constexpr auto UpdatePlant = [](auto& journal, Plant& plant) { return journal.UpdatePlant(plant); };
constexpr auto DeletePlant = [](auto& journal, const std::string& uuid) { return journal.DeletePlant(uuid); };

Plant PlantOf(const std::string& uuid, const std::string& mother = "")
{
    Plant plant;
    plant.UUID = uuid;
    plant.MotherPlantUUID = mother;
    return plant;
}

// Random steps rarely reach the next two cases.

TEST(ModelTest, APlantThatReadsLikeAnotherCanHideACycle)
{
    SideBySide journal;
    Plant first = PlantOf("a");
    Plant second = PlantOf("b", "a");
    Plant third = PlantOf("c", "b");
    Plant alike = PlantOf("a\0lso read as a"s);
    alike.Name = "listed last";
    for (Plant* plant : {&first, &second, &third, &alike})
        EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, *plant));

    first.MotherPlantUUID = "c"; // the mothers of c lead to a
    EXPECT_FALSE(journal.Run("UpdatePlant", UpdatePlant, first));
    second.MotherPlantUUID = "";
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, second));
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, first));
    second.MotherPlantUUID = "a"; // the check reads the plant that looks the same and has no mother
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, second));

    Plant fourth = PlantOf("d", "c");
    EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, fourth));
    EXPECT_TRUE(journal.Run("DeletePlant", DeletePlant, alike.UUID));
    EXPECT_FALSE(journal.Run("UpdatePlant", UpdatePlant, fourth)); // the check finds the cycle
}

TEST(ModelTest, RenamingAStrainReadsItsNameUpToAZeroByte)
{
    const auto createStrain = [](auto& journal, Strain& strain) { return journal.CreateStrain(strain); };
    const auto updateStrain = [](auto& journal, Strain& strain) { return journal.UpdateStrain(strain); };
    SideBySide journal;
    Strain strain;
    strain.Name = "\0"s;
    EXPECT_TRUE(journal.Run("CreateStrain", createStrain, strain));
    Plant without;
    Plant with;
    with.Strain = strain.Name;
    EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, without));
    EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, with));

    strain.Name = "a new name";
    EXPECT_TRUE(journal.Run("UpdateStrain", updateStrain, strain));
    std::vector<Plant> plants;
    journal.Expected().ListPlants(plants);
    EXPECT_EQ(plants.at(0).UUID, with.UUID);
    EXPECT_EQ(plants.at(0).Strain, "");
    EXPECT_EQ(plants.at(1).UUID, without.UUID);
    EXPECT_EQ(plants.at(1).Strain, "a new name");
}

} // namespace

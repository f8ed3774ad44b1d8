// Random operations with hostile arguments, on a journal and on a plain model of it in memory, compared after each.

#include "support/figures.h"
#include "support/model/journal_model.h"
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
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

using namespace support;

namespace
{

using namespace std::string_literals;

std::vector<StepResult> TakeAndCount(const std::vector<Step>& steps)
{
    std::vector<StepResult> outcomes = RunSteps(steps);
    AddToFigure("sequences");
    AddToFigure("operations", outcomes.size());
    for (const StepResult& outcome : outcomes)
    {
        AddToFigure("operations that returned false", outcome.Done ? 0 : 1);
        AddToFigure("times closed and opened again", outcome.Operation == "Reopen" ? 1 : 0);
    }
    return outcomes;
}

TEST(ModelTest, RandomOperationsDoWhatTheModelDoes)
{
    // Every byte is as likely as any other, in short sequences, too.
    const auto anyByte = rc::gen::resize(rc::kNominalSize, rc::gen::arbitrary<std::uint8_t>());
    const auto anySteps = rc::gen::container<std::vector<Step>>(rc::gen::container<Step>(anyByte));

    std::set<std::string> done;
    std::set<std::string> refused;
    const auto doWhatTheModelDoes = [&]
    {
        for (const StepResult& outcome : TakeAndCount(*anySteps))
            (outcome.Done ? done : refused).insert(outcome.Operation);
    };

    // RapidCheck reads and tells these itself. Set from outside, they show a failure of a later round again.
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
            << message.str() << "\nThe same again: RC_PARAMS='seed=" << parameters.seed << settings << '\'';
        parameters.seed = random();
    } while (AddToFigure("operations", 0) < 20'000 || (IsLongForm() && !limit.IsOver()));

    EXPECT_EQ(done, StepOperationNames());
    EXPECT_GE(refused.size(), 25);
}

// What the fuzzer starts with.
TEST(ModelTest, TheFuzzersCorpusDoesWhatTheModelDoes)
{
    std::set<std::string> operations;
    const std::filesystem::path corpus = PLANTJOURNAL_SOURCE_DIR "/tests/fuzz/corpus/operations";
    for (const auto& file : std::filesystem::directory_iterator(corpus))
    {
        const std::string bytes = FileBytes(file.path().string());
        const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
        std::vector<StepResult> outcomes;
        EXPECT_NO_THROW(outcomes = TakeAndCount(StepsFrom(data.data(), data.size()))) << file.path();
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

// Random steps come by these rarely.

TEST(ModelTest, APlantThatReadsLikeAnotherMayHideACircleOfMothers)
{
    SideBySide journal;
    Plant first = PlantOf("a");
    Plant second = PlantOf("b", "a");
    Plant third = PlantOf("c", "b");
    Plant alike = PlantOf("a\0lso read as a"s);
    alike.Name = "listed last";
    for (Plant* plant : {&first, &second, &third, &alike})
        EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, *plant));

    first.MotherPlantUUID = "c"; // the walk up from c comes by a itself
    EXPECT_FALSE(journal.Run("UpdatePlant", UpdatePlant, first));
    second.MotherPlantUUID = "";
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, second));
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, first));
    second.MotherPlantUUID = "a"; // the walk takes it for the one that is alike, and that has no mother
    EXPECT_TRUE(journal.Run("UpdatePlant", UpdatePlant, second));

    Plant fourth = PlantOf("d", "c");
    EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, fourth));
    EXPECT_TRUE(journal.Run("DeletePlant", DeletePlant, alike.UUID));
    EXPECT_FALSE(journal.Run("UpdatePlant", UpdatePlant, fourth)); // the circle is in sight, above another plant
}

TEST(ModelTest, AStrainGoesByItsNameUpToAZeroByteWhenItIsRenamed)
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

// What is told of the difference that `operation` makes after a plant was stored.
template <typename Operation, typename... Arguments>
std::string ToldOf(const Operation& operation, Arguments... arguments)
{
    SideBySide journal;
    Plant plant = PlantOf("a plant");
    EXPECT_TRUE(journal.Run("CreatePlant", CreatePlant, plant));
    try
    {
        journal.Run("Differ", operation, arguments...);
    }
    catch (const Mismatch& mismatch)
    {
        return mismatch.what();
    }
    return "nothing";
}

TEST(ComparisonTest, TellsADifferenceAndTheCallsThatLedToIt)
{
    const auto inResult = []<typename Journal>(Journal&) { return std::is_same_v<Journal, JournalModel>; };
    EXPECT_EQ(ToldOf(inResult), "  CreatePlant 0|\"a plant\"|\"\"|\"\"|\"\"|2|0|\"\"|\"\"|\"\"|\"\"|0x0p+0|0x0p+0|"
                                "\"\"|\"\"|\"\"|\"\"|\"\"| -> true\n"
                                "  Differ -> false\n"
                                "The result of the library: false\n"
                                "The result of the model:   true");

    const auto inArgument = []<typename Journal>(Journal&, Strain& strain)
    {
        strain.FloweringWeeks = std::is_same_v<Journal, JournalModel> ? 8 : 9;
        return true;
    };
    EXPECT_NE(ToldOf(inArgument, Strain{}).find("The argument of the library: 0|\"\"|\"\"|9|"), std::string::npos);

    const auto onlyInLibrary = []<typename Journal, typename Type>(Journal& journal, Type& record)
    {
        if constexpr (std::is_same_v<Journal, JournalModel>)
            record.ID = 1;
        else if constexpr (std::is_same_v<Type, Strain>)
            return journal.CreateStrain(record);
        else
            return journal.CreatePlantJournalEntry(record);
        return true;
    };
    Strain strain;
    strain.Name = "a strain";
    EXPECT_NE(ToldOf(onlyInLibrary, strain).find("The list of strains of the model:   nothing"), std::string::npos);
    PlantJournalEntry entry;
    entry.PlantUUID = "a plant";
    EXPECT_NE(ToldOf(onlyInLibrary, entry).find("The list of the model:   nothing"), std::string::npos);
}

} // namespace

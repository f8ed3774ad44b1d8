#include "support/model/side_by_side.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

using namespace support;

namespace
{

// The message of the mismatch that `operation` causes after a plant was stored.
template <typename Operation, typename... Arguments>
std::string MessageOf(const Operation& operation, Arguments... arguments)
{
    SideBySide journal;
    Plant plant;
    plant.UUID = "a plant";
    EXPECT_TRUE(journal.Run(
        "CreatePlant", [](auto& j, Plant& p) { return j.CreatePlant(p); }, plant));
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

TEST(SideBySideTest, AMismatchShowsTheDifferenceAndTheCalls)
{
    const auto inResult = []<typename Journal>(Journal&) { return std::is_same_v<Journal, JournalModel>; };
    EXPECT_EQ(MessageOf(inResult), "  CreatePlant 0|\"a plant\"|\"\"|\"\"|\"\"|2|0|\"\"|\"\"|\"\"|\"\"|0x0p+0|0x0p+0|"
                                   "\"\"|\"\"|\"\"|\"\"|\"\"| -> true\n"
                                   "  Differ -> false\n"
                                   "The result of the library: false\n"
                                   "The result of the model:   true");

    const auto inArgument = []<typename Journal>(Journal&, Strain& strain)
    {
        strain.FloweringWeeks = std::is_same_v<Journal, JournalModel> ? 8 : 9;
        return true;
    };
    EXPECT_NE(MessageOf(inArgument, Strain{}).find("The argument of the library: 0|\"\"|\"\"|9|"), std::string::npos);

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
    EXPECT_NE(MessageOf(onlyInLibrary, strain).find("The list of strains of the model:   nothing"), std::string::npos);
    PlantJournalEntry entry;
    entry.PlantUUID = "a plant";
    EXPECT_NE(MessageOf(onlyInLibrary, entry).find("The list of the model:   nothing"), std::string::npos);
}

} // namespace

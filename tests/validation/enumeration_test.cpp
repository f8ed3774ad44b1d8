// The arrays of the enumerations' values, and the names that are read back.

#include "plant_validation.h"

#include <cstdint>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace
{

// Every number that has a name of its own is in the array, in its order.
template <typename Enum, std::size_t Count>
void ExpectEveryValue(const std::array<Enum, Count>& values, const char* (*nameOf)(Enum), Enum otherwise)
{
    for (std::size_t i = 0; i < Count; ++i)
        EXPECT_EQ(static_cast<std::size_t>(values.at(i)), i);
    EXPECT_STREQ(nameOf(static_cast<Enum>(Count)), nameOf(otherwise)) << "the array lacks a value";
}

template <typename Enum, std::size_t Count>
void ExpectParsed(const std::array<Enum, Count>& values, const char* (*nameOf)(Enum),
                  std::optional<Enum> (*parse)(const std::string&))
{
    for (const Enum value : values)
        EXPECT_EQ(parse(nameOf(value)), value) << nameOf(value);
    for (std::string name : {"", "Moon", "VEG", "veg", "Veg ", "feed", "note", "LSTTrained"})
        EXPECT_EQ(parse(name), std::nullopt) << name;
    EXPECT_EQ(parse(std::string(nameOf(values[0])) + '\0'), std::nullopt) << "a zero byte is a character";
}

TEST(EnumerationTest, TheArraysHoldEveryValueInOrder)
{
    ExpectEveryValue(PlantStages, PlantStageName, PlantStage::Veg);
    ExpectEveryValue(PlantSexes, PlantSexName, PlantSex::Unknown);
    ExpectEveryValue(PlantEventTypes, PlantEventTypeName, PlantEventType::Note);
    ExpectEveryValue(PlantCareActions, PlantCareActionName, PlantCareAction::Water);
    ExpectEveryValue(PlantJournalTypes, PlantJournalTypeName, PlantJournalType::Observation);
}

TEST(EnumerationTest, OnlyAnExactStoredNameIsParsed)
{
    ExpectParsed(PlantStages, PlantStageName, ParsePlantStage);
    ExpectParsed(PlantSexes, PlantSexName, ParsePlantSex);
    ExpectParsed(PlantEventTypes, PlantEventTypeName, ParsePlantEventType);
    ExpectParsed(PlantCareActions, PlantCareActionName, ParsePlantCareAction);
    ExpectParsed(PlantJournalTypes, PlantJournalTypeName, ParsePlantJournalType);
}

static_assert(PlantStages.size() == 8 && PlantSexes.size() == 4 && PlantEventTypes.size() == 11 &&
                  PlantCareActions.size() == 2 && PlantJournalTypes.size() == 6,
              "the arrays are constant expressions");

} // namespace

// The stored names of the enumerations.

#include "plant.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace
{

// The values of an enumeration in the order of their numbers, and the functions that convert them.
template <typename Enum> struct Vocabulary;

template <> struct Vocabulary<PlantStage>
{
    static constexpr auto Title = "PlantStage";
    static constexpr auto NameOf = PlantStageName;
    static constexpr auto FromName = PlantStageFromName;
    static constexpr PlantStage Default = PlantStage::Veg;
    static constexpr std::pair<PlantStage, const char*> Names[] = {
        {PlantStage::Seed, "Seed"},           {PlantStage::Clone, "Clone"},      {PlantStage::Veg, "Veg"},
        {PlantStage::Flower, "Flower"},       {PlantStage::Dry, "Dry"},          {PlantStage::Cure, "Cure"},
        {PlantStage::Harvested, "Harvested"}, {PlantStage::Archived, "Archived"}};
};

template <> struct Vocabulary<PlantSex>
{
    static constexpr auto Title = "PlantSex";
    static constexpr auto NameOf = PlantSexName;
    static constexpr auto FromName = PlantSexFromName;
    static constexpr PlantSex Default = PlantSex::Unknown;
    static constexpr std::pair<PlantSex, const char*> Names[] = {{PlantSex::Unknown, "Unknown"},
                                                                 {PlantSex::Female, "Female"},
                                                                 {PlantSex::Male, "Male"},
                                                                 {PlantSex::Hermaphrodite, "Hermaphrodite"}};
};

template <> struct Vocabulary<PlantEventType>
{
    static constexpr auto Title = "PlantEventType";
    static constexpr auto NameOf = PlantEventTypeName;
    static constexpr auto FromName = PlantEventTypeFromName;
    static constexpr PlantEventType Default = PlantEventType::Note;
    static constexpr std::pair<PlantEventType, const char*> Names[] = {{PlantEventType::Clone, "Clone"},
                                                                       {PlantEventType::Transplant, "Transplant"},
                                                                       {PlantEventType::Flip, "Flip"},
                                                                       {PlantEventType::Harvest, "Harvest"},
                                                                       {PlantEventType::Feed, "Feed"},
                                                                       {PlantEventType::Water, "Water"},
                                                                       {PlantEventType::Stage, "Stage"},
                                                                       {PlantEventType::Topped, "Topped"},
                                                                       {PlantEventType::LSTTrained, "LST Trained"},
                                                                       {PlantEventType::Defoliated, "Defoliated"},
                                                                       {PlantEventType::Note, "Note"}};
};

template <> struct Vocabulary<PlantCareAction>
{
    static constexpr auto Title = "PlantCareAction";
    static constexpr auto NameOf = PlantCareActionName;
    static constexpr auto FromName = PlantCareActionFromName;
    static constexpr PlantCareAction Default = PlantCareAction::Water;
    static constexpr std::pair<PlantCareAction, const char*> Names[] = {{PlantCareAction::Feed, "Feed"},
                                                                        {PlantCareAction::Water, "Water"}};
};

template <> struct Vocabulary<PlantJournalType>
{
    static constexpr auto Title = "PlantJournalType";
    static constexpr auto NameOf = PlantJournalTypeName;
    static constexpr auto FromName = PlantJournalTypeFromName;
    static constexpr PlantJournalType Default = PlantJournalType::Observation;
    static constexpr std::pair<PlantJournalType, const char*> Names[] = {
        {PlantJournalType::Observation, "Observation"}, {PlantJournalType::Training, "Training"},
        {PlantJournalType::Pruning, "Pruning"},         {PlantJournalType::Topping, "Topping"},
        {PlantJournalType::Defoliation, "Defoliation"}, {PlantJournalType::Milestone, "Milestone"}};
};

template <typename Enum> class StoredNameTest : public testing::Test
{
    static_assert(std::is_same_v<std::underlying_type_t<Enum>, std::int32_t>);
    static_assert(!std::is_convertible_v<Enum, std::int32_t>, "a scoped enumeration");
};

struct EnumerationName
{
    template <typename Enum> static std::string GetName(int /*index*/) { return Vocabulary<Enum>::Title; }
};

using Enumerations = testing::Types<PlantStage, PlantSex, PlantEventType, PlantCareAction, PlantJournalType>;
TYPED_TEST_SUITE(StoredNameTest, Enumerations, EnumerationName);

TYPED_TEST(StoredNameTest, EveryValueHasItsNumberAndItsStoredName)
{
    using Words = Vocabulary<TypeParam>;
    std::int32_t number = 0;
    for (const auto& [value, name] : Words::Names)
    {
        EXPECT_EQ(static_cast<std::int32_t>(value), number++) << name;
        EXPECT_STREQ(Words::NameOf(value), name);
        EXPECT_EQ(Words::FromName(name), value) << name;
        EXPECT_EQ(Words::FromName(Words::NameOf(value)), value) << name;
    }
}

TYPED_TEST(StoredNameTest, ANumberOutsideTheEnumerationHasTheDefaultName)
{
    using Words = Vocabulary<TypeParam>;
    for (const std::int32_t number :
         {INT32_MIN, -1, static_cast<std::int32_t>(std::size(Words::Names)), 4711, INT32_MAX})
        EXPECT_STREQ(Words::NameOf(static_cast<TypeParam>(number)), Words::NameOf(Words::Default)) << number;
}

TYPED_TEST(StoredNameTest, AStoredNameHasAConstantAddress)
{
    using Words = Vocabulary<TypeParam>;
    for (const auto& [value, name] : Words::Names)
        EXPECT_EQ(static_cast<const void*>(Words::NameOf(value)), static_cast<const void*>(Words::NameOf(value)))
            << name;
}

TYPED_TEST(StoredNameTest, ATextThatIsNotAStoredNameReadsAsTheDefault)
{
    using Words = Vocabulary<TypeParam>;
    using namespace std::string_literals;
    for (const std::string& text : {""s, " "s, "\0"s, "0"s, "?"s, "NULL"s, "LSTTrained"s, "LST  Trained"s, "Toppings"s})
        EXPECT_EQ(Words::FromName(text), Words::Default) << testing::PrintToString(text);
    for (const auto& entry : Words::Names)
    {
        const std::string name = entry.second;
        std::string lower = name;
        std::string upper = name;
        for (std::size_t i = 0; i < name.size(); ++i)
        {
            lower[i] = static_cast<char>(std::tolower(name[i]));
            upper[i] = static_cast<char>(std::toupper(name[i]));
        }
        for (const std::string& text : {lower, upper, name + ' ', ' ' + name, name + '\0', name + "\0x"s, name + name,
                                        name.substr(1), name.substr(0, name.size() - 1)})
            EXPECT_EQ(Words::FromName(text), Words::Default) << testing::PrintToString(text);
    }
}

} // namespace

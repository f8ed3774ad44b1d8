// The types and the default values of the records' fields.

#include "testing/records.h"

#include <cstdint>
#include <type_traits>

#include <gtest/gtest.h>

namespace
{

template <typename... Types>
constexpr bool AreValues = (std::is_default_constructible_v<Types> && ...) &&
                           (std::is_copy_constructible_v<Types> && ...) && (std::is_copy_assignable_v<Types> && ...) &&
                           (std::is_nothrow_move_constructible_v<Types> && ...) &&
                           (std::is_nothrow_move_assignable_v<Types> && ...);
static_assert(AreValues<Plant, Strain, PlantEvent, PlantCareEntry, HarvestRecord, StrainSummary, PlantPhoto,
                        PlantHealthObservation, PlantJournalEntry>);

template <typename Type, typename... Fields> constexpr bool AreAll = (std::is_same_v<Type, Fields> && ...);
static_assert(
    AreAll<std::int64_t, decltype(Plant::ID), decltype(Strain::ID), decltype(PlantEvent::ID),
           decltype(PlantCareEntry::ID), decltype(PlantCareEntry::TimelineEventID), decltype(HarvestRecord::ID),
           decltype(HarvestRecord::TimelineEventID), decltype(StrainSummary::StrainID), decltype(PlantPhoto::ID),
           decltype(PlantHealthObservation::ID), decltype(PlantJournalEntry::ID)>);
static_assert(AreAll<int, decltype(Strain::FloweringWeeks), decltype(HarvestRecord::SeedYield),
                     decltype(PlantHealthObservation::Severity), decltype(StrainSummary::TotalPlants),
                     decltype(StrainSummary::HarvestCount)>);

TEST(RecordTest, ANewPlantHasDefaultValues)
{
    EXPECT_EQ(Plant{}, (Plant{.ID = 0,
                              .UUID = "",
                              .Name = "",
                              .Strain = "",
                              .MotherPlantUUID = "",
                              .Stage = PlantStage::Veg,
                              .Sex = PlantSex::Unknown,
                              .Tent = "",
                              .PotSize = "",
                              .Medium = "",
                              .SeedDate = "",
                              .FlipHeightCm = 0,
                              .FinalHeightCm = 0,
                              .CloneDate = "",
                              .TransplantDate = "",
                              .FlipDate = "",
                              .HarvestDate = "",
                              .Notes = ""}));
}

TEST(RecordTest, ANewStrainHasDefaultValues)
{
    EXPECT_EQ(Strain{}, (Strain{.ID = 0, .Name = "", .Breeder = "", .FloweringWeeks = 0, .Notes = ""}));
}

TEST(RecordTest, ANewPlantEventHasDefaultValues)
{
    EXPECT_EQ(PlantEvent{},
              (PlantEvent{.ID = 0, .PlantUUID = "", .EventDate = "", .Type = PlantEventType::Note, .Details = ""}));
}

TEST(RecordTest, ANewPlantCareEntryHasDefaultValues)
{
    EXPECT_EQ(PlantCareEntry{}, (PlantCareEntry{.ID = 0,
                                                .TimelineEventID = 0,
                                                .PlantUUID = "",
                                                .CareDate = "",
                                                .Action = PlantCareAction::Water,
                                                .Product = "",
                                                .AmountMl = 0,
                                                .EC = 0,
                                                .PH = 0,
                                                .RunoffMl = 0,
                                                .Notes = ""}));
}

TEST(RecordTest, ANewHarvestRecordHasDefaultValues)
{
    EXPECT_EQ(HarvestRecord{}, (HarvestRecord{.ID = 0,
                                              .TimelineEventID = 0,
                                              .PlantUUID = "",
                                              .HarvestDate = "",
                                              .WetWeightG = 0,
                                              .DryWeightG = 0,
                                              .QualityRating = 0,
                                              .SeedYield = 0,
                                              .CureOutcome = "",
                                              .Notes = ""}));
}

TEST(RecordTest, ANewStrainSummaryHasDefaultValues)
{
    EXPECT_EQ(StrainSummary{}, (StrainSummary{.StrainID = 0,
                                              .StrainName = "",
                                              .TotalPlants = 0,
                                              .Seed = 0,
                                              .Clone = 0,
                                              .Veg = 0,
                                              .Flower = 0,
                                              .Dry = 0,
                                              .Cure = 0,
                                              .Harvested = 0,
                                              .Archived = 0,
                                              .HarvestCount = 0,
                                              .AverageDryWeightG = 0,
                                              .AverageQuality = 0}));
}

TEST(RecordTest, ANewPlantPhotoHasDefaultValues)
{
    EXPECT_EQ(PlantPhoto{},
              (PlantPhoto{.ID = 0, .UUID = "", .PlantUUID = "", .PhotoDate = "", .FilePath = "", .Caption = ""}));
}

TEST(RecordTest, ANewPlantHealthObservationHasDefaultValues)
{
    EXPECT_EQ(PlantHealthObservation{}, (PlantHealthObservation{.ID = 0,
                                                                .PlantUUID = "",
                                                                .ObservationDate = "",
                                                                .Issue = "",
                                                                .Severity = 1,
                                                                .Treatment = "",
                                                                .Notes = ""}));
}

TEST(RecordTest, ANewPlantJournalEntryHasDefaultValues)
{
    EXPECT_EQ(PlantJournalEntry{},
              (PlantJournalEntry{
                  .ID = 0, .PlantUUID = "", .EntryDate = "", .Type = PlantJournalType::Observation, .Details = ""}));
}

} // namespace

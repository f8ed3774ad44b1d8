#include "query/query_test.h"

#include <limits>

using namespace support;

namespace
{

class StatusTest : public QueryTest
{
  protected:
    Plant StoredPlantOf(
        PlantStage stage, const std::function<void(Plant&)>& change = [](Plant&) {})
    {
        Plant plant = NewPlant("Basil");
        plant.Stage = stage;
        change(plant);
        EXPECT_TRUE(Repository.UpdatePlant(plant));
        return plant;
    }

    PlantStatus StatusOf(const Plant& plant, const std::string& today = "2025-06-30")
    {
        PlantSet set;
        set.UUIDs = {plant.UUID};
        return AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, set, today).at(0);
    }

    void AddEvent(const Plant& plant, const std::string& date, PlantEventType type, const std::string& details = {})
    {
        PlantEvent event;
        event.EventDate = date;
        event.Type = type;
        event.Details = details;
        Stored(event, plant, &PlantRepository::CreatePlantEvent);
    }

    void AddCare(const Plant& plant, const std::vector<std::string>& dates,
                 PlantCareAction action = PlantCareAction::Water)
    {
        for (const std::string& date : dates)
        {
            PlantCareEntry entry;
            entry.CareDate = date;
            entry.Action = action;
            Stored(entry, plant, &PlantRepository::CreatePlantCareEntry);
        }
    }

    PlantHealthObservation Seen(const Plant& plant, const std::string& date, const std::string& issue)
    {
        PlantHealthObservation observation;
        observation.ObservationDate = date;
        observation.Issue = issue;
        observation.Severity = 3;
        observation.Treatment = "soap";
        observation.Notes = "below the leaves";
        return Stored(observation, plant, &PlantRepository::CreatePlantHealthObservation);
    }
};

TEST_F(StatusTest, AnEmptyJournalHasNoStatus)
{
    EXPECT_TRUE(AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, PlantSet{}, "2025-06-30").empty());
}

TEST_F(StatusTest, PlantsAreListedByStrainAndThenByName)
{
    for (const auto& [name, strain] :
         std::vector<std::pair<std::string, std::string>>{{"b", "Mint"}, {"C", "mint"}, {"a", "Mint"}, {"z", "basil"}})
        NewPlant(name, strain);
    std::string names;
    for (const PlantStatus& status : AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, PlantSet{}, "2025-06-30"))
        names += status.Name;
    EXPECT_EQ(names, "zabC");
}

TEST_F(StatusTest, AStatusNamesItsPlant)
{
    const Plant plant = StoredPlantOf(PlantStage::Flower,
                                      [](Plant& p)
                                      {
                                          p.Strain = "Genovese";
                                          p.Tent = "Window";
                                      });
    const PlantStatus status = StatusOf(plant);
    EXPECT_EQ(status.PlantUUID, plant.UUID);
    EXPECT_EQ(status.Name, "Basil");
    EXPECT_EQ(status.Strain, "Genovese");
    EXPECT_EQ(status.Tent, "Window");
    EXPECT_EQ(status.Stage, PlantStage::Flower);
    EXPECT_EQ(status.AgeDays, std::nullopt);
    EXPECT_EQ(status.StageDate, "");
    EXPECT_EQ(status.StageDays, std::nullopt);
    EXPECT_EQ(status.FlipDays, std::nullopt);
    EXPECT_EQ(status.CareGapDays, std::nullopt);
    EXPECT_EQ(status.DueDate, "");
}

TEST_F(StatusTest, ATextThatIsNoDayIsRefusedAsToday)
{
    for (const std::string today : {"", "today", "2025-02-30", "2025-06-30 "})
    {
        std::vector<PlantStatus> out(2);
        EXPECT_EQ(QueryPlantStatus(Database, {}, today, out).Error,
                  "computing the status: '" + today + "' is not a day of the form YYYY-MM-DD");
        EXPECT_TRUE(out.empty());
    }
}

TEST_F(StatusTest, TheAgeIsCountedFromSowingOrElseCutting)
{
    const auto age = [&](const std::string& seed, const std::string& clone)
    {
        return StatusOf(StoredPlantOf(PlantStage::Veg,
                                      [&](Plant& p)
                                      {
                                          p.SeedDate = seed;
                                          p.CloneDate = clone;
                                      }))
            .AgeDays;
    };
    EXPECT_EQ(age("2025-06-01", ""), 29);
    EXPECT_EQ(age("", "2025-06-29"), 1);
    EXPECT_EQ(age("2025-06-01", "2025-06-29"), 29);
    EXPECT_EQ(age("2025-06-30", ""), 0);
    EXPECT_EQ(age("2025-07-01", ""), std::nullopt) << "after today";
    EXPECT_EQ(age("spring", "2025-06-29"), std::nullopt) << "sown, but on an unknown day";
}

TEST_F(StatusTest, AgeAndFlipAreCountedUntilTheHarvest)
{
    const auto harvestedOn = [&](const std::string& date)
    {
        return StatusOf(StoredPlantOf(PlantStage::Harvested,
                                      [&](Plant& p)
                                      {
                                          p.SeedDate = "2025-06-01";
                                          p.FlipDate = "2025-06-11";
                                          p.HarvestDate = date;
                                      }));
    };
    EXPECT_EQ(harvestedOn("2025-06-21").AgeDays, 20);
    EXPECT_EQ(harvestedOn("2025-06-21").FlipDays, 10);
    EXPECT_EQ(harvestedOn("2025-06-21").StageDays, 9);
    EXPECT_EQ(harvestedOn("2025-08-01").AgeDays, 29) << "today is earlier";
    EXPECT_EQ(harvestedOn("2025-08-01").StageDays, std::nullopt);
    EXPECT_EQ(harvestedOn("2025-06").AgeDays, std::nullopt);
    EXPECT_EQ(harvestedOn("2025-06-05").FlipDays, std::nullopt) << "the flip is later";
}

TEST_F(StatusTest, AStageBeginsOnThePlantsOwnDateForIt)
{
    const std::vector<std::pair<PlantStage, std::string>> begins = {
        {PlantStage::Seed, "2025-01-01"},      {PlantStage::Clone, "2025-01-02"}, {PlantStage::Veg, ""},
        {PlantStage::Flower, "2025-01-03"},    {PlantStage::Dry, "2025-01-04"},   {PlantStage::Cure, ""},
        {PlantStage::Harvested, "2025-01-04"}, {PlantStage::Archived, ""}};
    for (const auto& [stage, date] : begins)
    {
        const Plant plant = StoredPlantOf(stage,
                                          [](Plant& p)
                                          {
                                              p.SeedDate = "2025-01-01";
                                              p.CloneDate = "2025-01-02";
                                              p.TransplantDate = "2025-01-09";
                                              p.FlipDate = "2025-01-03";
                                              p.HarvestDate = "2025-01-04";
                                          });
        EXPECT_EQ(StatusOf(plant).StageDate, date) << PlantStageName(stage);
        AddEvent(plant, "2025-02-01", PlantEventType::Stage, PlantStageName(stage));
        EXPECT_EQ(StatusOf(plant).StageDate, date.empty() ? "2025-02-01" : date) << PlantStageName(stage);
    }
}

TEST_F(StatusTest, AStageBeginsElseWithItsNewestEvent)
{
    using Type = PlantEventType;
    const std::vector<std::pair<PlantStage, std::vector<Type>>> begins = {{PlantStage::Seed, {}},
                                                                          {PlantStage::Clone, {Type::Clone}},
                                                                          {PlantStage::Veg, {}},
                                                                          {PlantStage::Flower, {Type::Flip}},
                                                                          {PlantStage::Dry, {Type::Harvest}},
                                                                          {PlantStage::Cure, {}},
                                                                          {PlantStage::Harvested, {Type::Harvest}},
                                                                          {PlantStage::Archived, {}}};
    for (const auto& [stage, types] : begins)
        for (int type = 0; type <= static_cast<int>(Type::Note); ++type)
        {
            const Plant plant = StoredPlantOf(stage);
            AddEvent(plant, "2025-06-02", static_cast<Type>(type), "Other");
            AddEvent(plant, "2025-06-01", static_cast<Type>(type), "Other");
            const bool matches = std::find(types.begin(), types.end(), static_cast<Type>(type)) != types.end();
            EXPECT_EQ(StatusOf(plant).StageDate, matches ? "2025-06-02" : "") << PlantStageName(stage) << ' ' << type;
            AddEvent(plant, "2025-06-03", Type::Stage, PlantStageName(stage));
            EXPECT_EQ(StatusOf(plant).StageDate, "2025-06-03") << PlantStageName(stage) << ' ' << type;
            EXPECT_EQ(StatusOf(plant).StageDays, 27);
        }
}

TEST_F(StatusTest, TheFlipIsThePlantsOwnOrElseTheNewestEvent)
{
    Plant plant = StoredPlantOf(PlantStage::Veg);
    AddEvent(plant, "2025-06-21", PlantEventType::Flip);
    AddEvent(plant, "2025-06-20", PlantEventType::Flip);
    AddEvent(plant, "2025-06-29", PlantEventType::Stage, "Veg");
    EXPECT_EQ(StatusOf(plant).FlipDays, 9);
    EXPECT_EQ(StatusOf(plant).StageDate, "2025-06-29");
    plant.FlipDate = "2025-06-28";
    EXPECT_TRUE(Repository.UpdatePlant(plant));
    EXPECT_EQ(StatusOf(plant).FlipDays, 2);
}

TEST_F(StatusTest, RecordsAfterTodayAreLeftOut)
{
    const Plant plant = StoredPlantOf(PlantStage::Flower);
    for (const char* date : {"2025-06-01", "2025-06-10", "2025-07-01", "zz"})
    {
        AddEvent(plant, date, PlantEventType::Flip);
        AddCare(plant, {date});
        AddCare(plant, {date}, PlantCareAction::Feed);
        Seen(plant, date, "Mites on " + std::string(date));
    }
    const PlantStatus status = StatusOf(plant);
    EXPECT_EQ(status.StageDate, "2025-06-10");
    EXPECT_EQ(status.FlipDays, 20);
    EXPECT_EQ(status.LastFeedDate, "2025-06-10");
    EXPECT_EQ(status.LastWaterDate, "2025-06-10");
    EXPECT_EQ(status.CareGapDays, 9);
    EXPECT_EQ(status.Health.size(), 2U);
}

TEST_F(StatusTest, ADateThatBeginsWithTodayIsNotAfterIt)
{
    const Plant plant = StoredPlantOf(PlantStage::Flower);
    AddCare(plant, {"2025-06-30T18:00"});
    Seen(plant, "2025-06-30 18:00", "Mites");
    AddEvent(plant, "2025-06-30 18:00", PlantEventType::Flip);
    const PlantStatus status = StatusOf(plant);
    EXPECT_EQ(status.LastWaterDate, "2025-06-30T18:00");
    EXPECT_EQ(status.StageDate, "2025-06-30 18:00");
    EXPECT_EQ(status.StageDays, std::nullopt);
    EXPECT_EQ(status.Health.size(), 1U);
}

TEST_F(StatusTest, TheLastFeedingAndWateringAreTheNewest)
{
    const Plant plant = StoredPlantOf(PlantStage::Veg);
    AddCare(plant, {"2025-06-04"}, PlantCareAction::Feed);
    EXPECT_EQ(StatusOf(plant).LastWaterDate, "");
    AddCare(plant, {"2025-05-01"});
    AddCare(plant, {"2025-06-05", "2025-06-03"}, PlantCareAction::Feed);
    for (int day = 10; day < 30; ++day)
        AddCare(plant, {"2025-06-" + std::to_string(day)}, PlantCareAction::Feed);
    EXPECT_EQ(StatusOf(plant).LastFeedDate, "2025-06-29");
    EXPECT_EQ(StatusOf(plant).LastWaterDate, "2025-05-01");
    const Plant other = StoredPlantOf(PlantStage::Veg);
    AddCare(other, {"2025-05-01"}, PlantCareAction::Feed);
    for (int day = 10; day < 30; ++day)
        AddCare(other, {"2025-06-" + std::to_string(day)});
    EXPECT_EQ(StatusOf(other).LastFeedDate, "2025-05-01");
    EXPECT_EQ(StatusOf(other).LastWaterDate, "2025-06-29");
}

TEST_F(StatusTest, HealthIsTheNewestOfEachIssueInThirtyDays)
{
    const Plant plant = StoredPlantOf(PlantStage::Veg);
    Seen(plant, "2025-05-31", "Rot");
    const PlantHealthObservation mildew = Seen(plant, "2025-06-01", "Mildew");
    Seen(plant, "2025-06-02", "Mites");
    Seen(plant, "2025-06-20", "mites");
    const PlantHealthObservation mites = Seen(plant, "2025-06-20", "MITES");
    const PlantHealthObservation lice = Seen(plant, "2025-06-30", "Lice");
    const PlantStatus status = StatusOf(plant);
    ASSERT_EQ(status.Health.size(), 3U);
    EXPECT_EQ(status.Health[0], lice);
    EXPECT_EQ(status.Health[1], mites);
    EXPECT_EQ(status.Health[2], mildew);
}

TEST_F(StatusTest, TheGapIsTheMedianOfTheLastSixDays)
{
    const auto gapOf = [&](const std::vector<std::string>& dates)
    {
        const Plant plant = StoredPlantOf(PlantStage::Veg);
        AddCare(plant, dates);
        AddCare(plant, dates, PlantCareAction::Feed); // twice a day is one day
        return StatusOf(plant);
    };
    EXPECT_EQ(gapOf({}).CareGapDays, std::nullopt);
    EXPECT_EQ(gapOf({"2025-06-10"}).CareGapDays, std::nullopt);
    EXPECT_EQ(gapOf({"2025-06-10"}).DueDate, "");
    EXPECT_EQ(gapOf({"2025-06-10", "2025-06-08"}).CareGapDays, 2);
    EXPECT_EQ(gapOf({"2025-06-10", "2025-06-08"}).DueDate, "2025-06-12");
    EXPECT_EQ(gapOf({"2025-06-10", "2025-06-08", "2025-06-07"}).CareGapDays, 1.5);
    EXPECT_EQ(gapOf({"2025-06-10", "2025-06-08", "2025-06-07"}).DueDate, "2025-06-12");
    // 1, 9, 2, 3 and 8 days; 20 days are one too many.
    const PlantStatus six = gapOf({"2025-06-24", "2025-06-23", "2025-06-14", "2025-06-12", "2025-06-09", "2025-06-01",
                                   "2025-05-12", "2025-05-11"});
    EXPECT_EQ(six.CareGapDays, 3);
    EXPECT_EQ(six.DueDate, "2025-06-27");
}

TEST_F(StatusTest, DatesThatAreNoDaysHaveNoPlaceInTheGap)
{
    const Plant plant = StoredPlantOf(PlantStage::Veg);
    AddCare(plant, {"", "2025", "2025-02-30", "2025-06-10 08:00", "2025-06-10", "2025-06-07"});
    EXPECT_EQ(StatusOf(plant).CareGapDays, 3);
    EXPECT_EQ(StatusOf(plant).LastWaterDate, "2025-06-10 08:00");
}

TEST_F(StatusTest, NoCareIsDueAfterFlowering)
{
    for (int stage = 0; stage <= static_cast<int>(PlantStage::Archived); ++stage)
    {
        const Plant plant = StoredPlantOf(static_cast<PlantStage>(stage));
        AddCare(plant, {"2025-06-10", "2025-06-08"});
        EXPECT_EQ(StatusOf(plant).CareGapDays, 2);
        EXPECT_EQ(StatusOf(plant).DueDate, stage <= static_cast<int>(PlantStage::Flower) ? "2025-06-12" : "");
    }
}

TEST_F(StatusTest, RecordsOfOtherPlantsHaveNoEffect)
{
    const Plant other = StoredPlantOf(PlantStage::Flower);
    AddCare(other, {"2025-06-10", "2025-06-08"});
    AddEvent(other, "2025-06-08", PlantEventType::Flip);
    Seen(other, "2025-06-20", "Mites");
    const Plant plant = StoredPlantOf(PlantStage::Flower);
    PlantStatus expected;
    expected.PlantUUID = plant.UUID;
    expected.Name = plant.Name;
    expected.Stage = plant.Stage;
    EXPECT_EQ(Printed(StatusOf(plant)), Printed(expected));
}

TEST_F(StatusTest, TodayMayBeATextOfTheOldAnswer)
{
    AddCare(StoredPlantOf(PlantStage::Veg), {"2025-06-10", "2025-06-08"});
    auto out = AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, PlantSet{}, "2025-06-30");
    ASSERT_TRUE(QueryPlantStatus(Database, {}, out.at(0).LastWaterDate, out));
    EXPECT_EQ(out.at(0).DueDate, "2025-06-12");
    out.at(0).Name = "soon";
    EXPECT_EQ(QueryPlantStatus(Database, {}, out.at(0).Name, out).Error,
              "computing the status: 'soon' is not a day of the form YYYY-MM-DD");
}

} // namespace

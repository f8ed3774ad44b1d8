#include "query/random_season.h"

#include "query/listed_plants.h"
#include "query/random_journal.h"
#include "testing/plain_connection.h"

#include <gtest/gtest.h>

namespace support
{

using namespace std::string_literals;

void RandomSeason::Fill()
{
    for (std::size_t count = Below(7); count > 0; --count)
        AddPlant();
    for (const Plant& plant : Plants) // a repository refuses cycles
        if (Below(3) != 0)
            RunSQL(Database.NativeHandle(),
                   "UPDATE Plants SET MotherPlantID=" + std::to_string(Plants.at(Below(Plants.size())).ID) +
                       " WHERE ID=" + std::to_string(plant.ID) + ';');
    RunSQL(Database.NativeHandle(), "PRAGMA ignore_check_constraints=ON; "
                                    "UPDATE PlantCareEntries SET Action='Mist' WHERE ID%11=0; "
                                    "UPDATE PlantEvents SET EventType='Sung' WHERE ID%17=0; "
                                    "UPDATE Plants SET Stage='Resting' WHERE ID%7=0; "
                                    "PRAGMA ignore_check_constraints=OFF;");
}

void RandomSeason::FillWithOddRows()
{
    FillAtRandom(Database.NativeHandle(), Random);
    EXPECT_TRUE(PlantRepository(Database).ListPlants(Plants));
}

void RandomSeason::AddPlant()
{
    PlantRepository repository(Database);
    Plant plant;
    plant.Name = OneOf({"basil", "Basil", "thyme", "", "mint"});
    plant.Strain = OneOf({"", "mint", "Mint", "Genovese"});
    plant.Tent = OneOf({"", "Window", "window", "Win\0dow"s});
    plant.Stage = UpTo(PlantStage::Archived);
    for (std::string* date : {&plant.SeedDate, &plant.CloneDate, &plant.TransplantDate, &plant.FlipDate})
        *date = Date();
    plant.HarvestDate = Below(2) == 0 ? "" : Date();
    EXPECT_TRUE(repository.CreatePlant(plant));
    AddRecords(plant);
    if (Below(2) == 0)
        AddHarvest(plant);
    Plants.push_back(plant);
}

void RandomSeason::AddHarvest(Plant plant)
{
    PlantRepository repository(Database);
    const Plant before = plant;
    HarvestRecord record;
    record.HarvestDate = Date();
    record.WetWeightG = Number();
    record.DryWeightG = Number();
    record.QualityRating = Number();
    record.SeedYield = static_cast<int>(Below(5));
    record.Notes = OneOf({"", "mild", "mi\0ld"s});
    EXPECT_TRUE(repository.SaveHarvestRecord(plant, record));
    if (Below(2) == 0)
    {
        EXPECT_TRUE(repository.UpdatePlant(before)); // grows on
    }
}

void RandomSeason::AddRecords(const Plant& plant)
{
    PlantRepository repository(Database);
    for (std::size_t count = Below(20); count > 0; --count)
    {
        PlantCareEntry entry;
        entry.PlantUUID = plant.UUID;
        entry.CareDate = Date();
        entry.Action = UpTo(PlantCareAction::Water);
        entry.Product = OneOf({"", "Bloom", "bloom", "Grow", "Gr\0ow"s});
        for (double* number : {&entry.AmountMl, &entry.EC, &entry.PH, &entry.RunoffMl})
            *number = Number();
        EXPECT_TRUE(repository.CreatePlantCareEntry(entry));
    }
    for (std::size_t count = Below(12); count > 0; --count)
    {
        PlantEvent event;
        event.PlantUUID = plant.UUID;
        event.EventDate = Date();
        event.Type = Below(3) == 0 ? UpTo(PlantEventType::Note) : PlantEventType::Stage;
        event.Details = Below(2) == 0 ? PlantStageName(plant.Stage) : PlantStageName(plant.Stage) + "\0!"s;
        if (Below(3) == 0)
            event.Details = PlantStageName(UpTo(PlantStage::Archived));
        EXPECT_TRUE(repository.CreatePlantEvent(event));
    }
    for (std::size_t count = Below(8); count > 0; --count)
    {
        PlantHealthObservation observation;
        observation.PlantUUID = plant.UUID;
        observation.ObservationDate = Date();
        observation.Issue = OneOf({"Mites", "mites", "MI\0TES"s, "Mildew"});
        observation.Severity = 1 + static_cast<int>(Below(5));
        EXPECT_TRUE(repository.CreatePlantHealthObservation(observation));
    }
}

std::string RandomSeason::AnyDay()
{
    return DateOf(DayOf("2025-01-20").value() + static_cast<int>(Below(50)));
}

std::string RandomSeason::Date()
{
    switch (Below(8))
    {
    case 0:
        return OneOf({"", "2025", "2025-02", "2025-02-30", "zz", "2030-01-01", "2025-1-1"});
    case 1:
        return AnyDay() + OneOf({" 08:00", "\0"s, "\0!"s});
    default:
        return AnyDay();
    }
}

double RandomSeason::Number()
{
    switch (Below(10))
    {
    case 0:
        return -1.5;
    case 1:
    case 2:
    case 3:
        return 0;
    default:
        return static_cast<double>(Below(100)) / 10;
    }
}

PlantSet RandomSeason::AnySet()
{
    PlantSet set;
    if (Below(3) == 0)
        set.UUIDs = {AnyPlant(), AnyPlant(), AnyPlant()};
    if (Below(3) == 0)
        set.Strains = {TextOfAPlant(&Plant::Strain), TextOfAPlant(&Plant::Strain)};
    if (Below(4) == 0)
        set.Tents = {TextOfAPlant(&Plant::Tent), "Win"};
    if (Below(4) == 0)
        set.Stages = {UpTo(PlantStage::Archived), PlantStage::Veg, PlantStage::Harvested};
    return set;
}

PlantTotalFilter RandomSeason::AnyTotalFilter()
{
    PlantTotalFilter filter;
    filter.Plants = AnySet();
    if (Below(3) == 0)
        filter.Actions = {UpTo(PlantCareAction::Water)};
    const std::vector<std::string> limits = {"", "2025-02", "2025-02-1", "2025", "zz", AnyDay(), AnyDay()};
    filter.From = Below(2) == 0 ? "" : OneOf(limits);
    filter.To = Below(2) == 0 ? "" : OneOf(limits);
    filter.Group = UpTo(PlantTotalGroup::Product);
    filter.Period = UpTo(PlantPeriod::Month);
    return filter;
}

std::vector<PlantComparedSet> RandomSeason::AnyComparedSets()
{
    std::vector<PlantComparedSet> sets(Below(4));
    for (PlantComparedSet& set : sets)
    {
        set = {OneOf({"a", "b", ""}), AnySet()};
        if (Below(3) == 0)
            set.From = OneOf({"2025", "2025-02", AnyDay()});
        if (Below(3) == 0)
            set.To = OneOf({"2025", "2025-02", "zz", AnyDay()});
    }
    return sets;
}

std::string RandomSeason::AnyPlant()
{
    return TextOfAPlant(&Plant::UUID);
}

std::string RandomSeason::TextOfAPlant(std::string Plant::*text)
{
    return Plants.empty() || Below(8) == 0 ? OneOf({"", "unknown"}) : Plants.at(Below(Plants.size())).*text;
}

} // namespace support

#include "support/basil_journal.h"

#include <gtest/gtest.h>

namespace support
{

namespace
{

Strain Genovese()
{
    Strain strain;
    strain.Name = "Genovese";
    strain.Breeder = "Riviera";
    strain.FloweringWeeks = 9;
    strain.Notes = "large leaves";
    return strain;
}

Plant Basil()
{
    Plant basil;
    basil.UUID = "0b0b0b0b-0000-4000-8000-000000000001";
    basil.Name = "Basil";
    basil.Strain = "Genovese";
    basil.Stage = PlantStage::Flower;
    basil.Sex = PlantSex::Female;
    basil.Tent = "South";
    basil.PotSize = "11 l";
    basil.Medium = "peat, \"fine\"";
    basil.SeedDate = "2026-02";
    basil.FlipHeightCm = 0.1;
    basil.FinalHeightCm = 40.5;
    basil.TransplantDate = "2026-03-12";
    basil.FlipDate = "2026-04-20";
    basil.Notes = "two\nlines";
    return basil;
}

Plant Cutting()
{
    Plant cutting;
    cutting.UUID = "0b0b0b0b-0000-4000-8000-000000000002";
    cutting.Name = "Cutting";
    cutting.Strain = "Genovese";
    cutting.MotherPlantUUID = Basil().UUID;
    cutting.Stage = PlantStage::Clone;
    cutting.CloneDate = "2026-04-01";
    return cutting;
}

PlantCareEntry Feeding()
{
    PlantCareEntry feeding;
    feeding.PlantUUID = Basil().UUID;
    feeding.CareDate = "2026-05-02";
    feeding.Action = PlantCareAction::Feed;
    feeding.Product = "Bloom A";
    feeding.AmountMl = 500;
    feeding.EC = 1.8;
    feeding.PH = 6.2;
    feeding.RunoffMl = 20;
    feeding.Notes = "half strength";
    return feeding;
}

HarvestRecord Harvest()
{
    HarvestRecord harvest;
    harvest.HarvestDate = "2026-07-01";
    harvest.WetWeightG = 410;
    harvest.DryWeightG = 96.5;
    harvest.QualityRating = 8;
    harvest.SeedYield = 12;
    harvest.CureOutcome = "good";
    harvest.Notes = "in the morning";
    return harvest;
}

} // namespace

void StoreBasilJournal(PlantRepository& repository, const std::string& photoPath)
{
    Strain strain = Genovese();
    Plant basil = Basil();
    Plant cutting = Cutting();
    PlantEvent event = {0, basil.UUID, "2026-05-01", PlantEventType::LSTTrained, "tied down"};
    PlantCareEntry feeding = Feeding();
    HarvestRecord harvest = Harvest();
    PlantPhoto photo = {0, "0b0b0b0b-0000-4000-8000-000000000009", basil.UUID, "2026-05-03", photoPath, "low"};
    PlantHealthObservation seen = {0, basil.UUID, "2026-05-04", "thrips", 3, "soap", "few"};
    PlantJournalEntry entry = {0, cutting.UUID, "2026-05-05", PlantJournalType::Topping, "above the fifth node"};
    EXPECT_TRUE(repository.CreateStrain(strain));
    EXPECT_TRUE(repository.CreatePlant(basil));
    EXPECT_TRUE(repository.CreatePlant(cutting));
    EXPECT_TRUE(repository.CreatePlantEvent(event));
    EXPECT_TRUE(repository.CreatePlantCareEntry(feeding));
    EXPECT_TRUE(repository.SaveHarvestRecord(basil, harvest));
    EXPECT_TRUE(repository.CreatePlantPhoto(photo));
    EXPECT_TRUE(repository.CreatePlantHealthObservation(seen));
    EXPECT_TRUE(repository.CreatePlantJournalEntry(entry));
}

} // namespace support

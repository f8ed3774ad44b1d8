#include "support/reading_page.h"

#include "support/page.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace support
{

std::string NumberText(double number)
{
    std::ostringstream text;
    text << std::setprecision(10) << number;
    return text.str();
}

std::string SameNumber(const std::string& text)
{
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    return text.empty() || *end != '\0' ? text : NumberText(number);
}

Rows CsvRows(const std::string& csv)
{
    Rows rows;
    for (const std::string& line : Lines(csv))
    {
        Row row = {""};
        bool quoted = false;
        for (const char letter : line)
            if (letter == '"')
                quoted = !quoted;
            else if (letter == ',' && !quoted)
                row.emplace_back();
            else
                row.back() += letter;
        for (std::string& cell : row)
            cell = SameNumber(cell);
        rows.push_back(row);
    }
    return rows;
}

std::string FileNameOf(const std::string& block)
{
    const std::string first = block.substr(0, block.find('\n'));
    return first.substr(first.rfind(' ') + 1);
}

ReadingPage::ReadingPage()
{
    for (const char* language : {"sql", "python", "r"})
        for (const std::string& block : CodeBlocks(PageName, language))
            Write(FileNameOf(block), block);
    Run("'" PLANTJOURNAL_GREENHOUSE_SEASON "' season.db");
    EXPECT_EQ(Status, 0);
    std::filesystem::copy_file(Scratch.File("season.db"), Scratch.File("garden.db"));
    WriteGarden();
}

std::string ReadingPage::Run(const std::string& line) const
{
    Status = std::system(("cd '" + Scratch.File("") + "' && { " + line + "; } >out").c_str());
    std::string printed;
    for (std::string text : Lines(FileBytes(Scratch.File("out"))))
        printed += text.erase(text.find_last_not_of(" \r") + 1) + '\n';
    return printed;
}

void ReadingPage::Write(const std::string& file, const std::string& text) const
{
    std::ofstream(Scratch.File(file), std::ios::binary) << text;
}

Rows ReadingPage::ShellAnswer(const std::string& journal, const std::string& file) const
{
    const Rows rows =
        CsvRows(Run("cat activity.sql " + file + " | sqlite3 -header -csv 'file:" + journal + "?mode=ro'"));
    EXPECT_EQ(Status, 0) << file;
    return rows;
}

Rows ReadingPage::Answer(const std::string& journal, const std::string& file) const
{
    Rows rows = ShellAnswer(journal, file);
    if (!rows.empty())
        rows.erase(rows.begin());
    return rows;
}

namespace
{

// A harvest without a dry weight, a health observation and a photo: the season has none.
void AddOtherRecords(PlantRepository& repository, const Plant& reference, Plant& basil)
{
    basil.Stage = PlantStage::Harvested;
    ASSERT_TRUE(repository.UpdatePlant(basil));
    HarvestRecord harvest;
    harvest.PlantUUID = basil.UUID;
    harvest.HarvestDate = "2020-05-21";
    harvest.WetWeightG = 120;
    ASSERT_TRUE(repository.SaveHarvestRecord(basil, harvest));
    PlantHealthObservation mites;
    mites.PlantUUID = reference.UUID;
    mites.ObservationDate = "2020-05-20";
    mites.Issue = "Spider mites";
    mites.Treatment = "Soap";
    ASSERT_TRUE(repository.CreatePlantHealthObservation(mites));
    PlantPhoto photo;
    photo.PlantUUID = reference.UUID;
    photo.PhotoDate = "2020-05-20";
    photo.FilePath = "leaf.jpg";
    photo.Caption = "A leaf";
    ASSERT_TRUE(repository.CreatePlantPhoto(photo));
}

} // namespace

// The garden also has records that the season lacks, so that the answers cover them.
void ReadingPage::WriteGarden() const
{
    PlantDatabase database;
    PlantRepository repository(database);
    ASSERT_TRUE(database.Open(Scratch.File("garden.db")));
    std::vector<Plant> plants;
    ASSERT_TRUE(repository.ListPlants(plants));
    Plant reference;
    for (Plant& plant : plants)
        if (plant.Name == "Reference" || plant.Name == "Digilog")
        {
            plant.Stage = PlantStage::Flower;
            plant.SeedDate = "2019-10-01";
            ASSERT_TRUE(repository.UpdatePlant(plant));
            reference = plant.Name == "Reference" ? plant : reference;
        }
    const auto addPlant = [&](const std::string& name, const std::string& strain, const std::string& mother)
    {
        Plant plant;
        plant.Name = name;
        plant.Strain = strain;
        plant.Tent = strain == "Axiany" ? "Bleiswijk" : "Window";
        plant.MotherPlantUUID = mother;
        plant.CloneDate = mother.empty() ? "" : "2020-05-19";
        plant.TransplantDate = mother.empty() ? "2020-03-01" : "";
        EXPECT_TRUE(repository.CreatePlant(plant)) << name;
        return plant;
    };
    const auto water = [&](const Plant& plant, const std::string& day, double ec)
    {
        PlantCareEntry care;
        care.PlantUUID = plant.UUID;
        care.CareDate = day;
        care.AmountMl = 250;
        care.EC = ec;
        EXPECT_TRUE(repository.CreatePlantCareEntry(care)) << day;
    };
    const Plant cutting = addPlant("Cutting A", "Axiany", reference.UUID);
    water(addPlant("Cutting B", "Axiany", reference.UUID), "2020-05-22", 0);
    addPlant("Cutting C", "Axiany", cutting.UUID);
    for (const char* day : {"2020-05-20", "2020-05-23", "2020-05-29"})
        water(cutting, day, day == std::string("2020-05-23") ? 1.25 : 0);

    Plant basil = addPlant("Basil", "Genovese", "");
    water(basil, "2020-05-20", 0);
    AddOtherRecords(repository, reference, basil);
}

} // namespace support

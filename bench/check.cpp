// Proves that every contender gives the same records and leaves the same file as plantjournal, before anything is
// timed: a day of a front end on a new file and on an old one, then every workload.

#include "contender.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/scratch_directory.h"
#include "workload.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>

using namespace support;

namespace
{

template <typename Record> std::string PrintAll(const std::vector<Record>& records)
{
    std::string text;
    for (const Record& record : records)
        text += Print(record) + '\n';
    return text;
}

void TellCareEntries(Contender& contender, const std::string& plantUUID, std::ostream& out)
{
    for (int i = 0; i < 4; ++i)
    {
        PlantCareEntry entry;
        entry.PlantUUID = i == 3 ? "nobody" : plantUUID;
        entry.CareDate = "2024-05-0" + std::to_string(i);
        entry.Action = i == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
        entry.Product = i == 0 ? "Bloom A" : "";
        entry.AmountMl = 250.4 * i;
        entry.EC = i;
        entry.PH = 6.45;
        entry.RunoffMl = 10.0 * i;
        entry.Notes = i == 1 ? "dry pot" : "";
        out << contender.CreatePlantCareEntry(entry);
        if (i != 3)
            out << Print(entry) << '\n';
        entry.Product = "Cal-Mag";
        entry.TimelineEventID = i == 2 ? 0 : entry.TimelineEventID;
        if (i == 1 || i == 2) // the first stays as it was created
            out << contender.UpdatePlantCareEntry(entry) << Print(entry) << '\n';
        if (i == 1)
            out << contender.DeletePlantCareEntry(entry.ID) << contender.DeletePlantCareEntry(entry.ID) << '\n';
    }
}

// What every operation answers and fills, as text.
std::string ADay(Contender& contender)
{
    std::ostringstream told;
    const auto tellPlants = [&]
    {
        std::vector<Plant> plants(3);
        told << contender.ListPlants(plants) << '\n' << PrintAll(plants);
    };
    const auto tellEvents = [&](const std::string& plantUUID)
    {
        std::vector<PlantEvent> events(3);
        told << contender.ListPlantEvents(plantUUID, events) << '\n' << PrintAll(events);
    };

    std::vector<Plant> plants(3);
    for (std::size_t i = 0; i < plants.size(); ++i)
    {
        Plant& plant = plants[i];
        plant.UUID = "plant " + std::to_string(i);
        plant.Name = i == 1 ? "a plant with a name of some length, Süßkirsche" : "B";
        plant.Strain = i == 2 ? "" : "a strain";
        plant.MotherPlantUUID = i == 0 ? "" : plants[i - 1].UUID;
        plant.Stage = PlantStage::Clone;
        plant.Sex = PlantSex::Hermaphrodite;
        plant.Tent = "tent";
        plant.PotSize = "11 l";
        plant.Medium = "coco";
        plant.SeedDate = "2024-01-02";
        plant.FlipHeightCm = 40.1;
        plant.FinalHeightCm = 1e-300;
        plant.CloneDate = "2024-01-03";
        plant.TransplantDate = "2024-01-04";
        plant.FlipDate = "2024-01-05";
        plant.HarvestDate = "2024-01-06";
        plant.Notes = "some \"notes\"";
        told << contender.CreatePlant(plant) << Print(plant) << '\n';
    }
    Plant again = plants[0];
    told << contender.CreatePlant(again) << Print(again) << '\n';
    Plant orphan = plants[0];
    orphan.UUID = "orphan";
    orphan.MotherPlantUUID = "nobody";
    told << contender.CreatePlant(orphan) << Print(orphan) << '\n';
    Plant found;
    told << contender.GetPlant("plant 2", found) << Print(found) << contender.GetPlant("plant 9", found) << '\n';
    tellPlants();

    TellCareEntries(contender, plants[0].UUID, told);
    tellEvents(plants[0].UUID);

    HarvestRecord harvest;
    harvest.HarvestDate = "2024-07-05";
    harvest.WetWeightG = 450;
    harvest.DryWeightG = 112.5;
    harvest.QualityRating = 7.25;
    harvest.SeedYield = 12;
    harvest.CureOutcome = "Jarred 3 weeks";
    harvest.Notes = "sticky";
    told << contender.SaveHarvestRecord(plants[0], harvest) << Print(harvest) << Print(plants[0]) << '\n';
    harvest.DryWeightG = 0.05;
    told << contender.SaveHarvestRecord(plants[0], harvest) << Print(harvest) << '\n';
    HarvestRecord second;
    told << contender.SaveHarvestRecord(plants[0], second) << '\n';
    tellEvents(plants[0].UUID);

    for (const std::int64_t strain : {1, 99})
    {
        StrainSummary summary;
        told << contender.GetStrainSummary(strain, summary) << Print(summary) << '\n';
    }
    told << contender.DeletePlant(plants[1].UUID) << contender.DeletePlant("nobody") << '\n';
    tellPlants();
    return told.str();
}

// All that is in the file, the identifiers of new plants apart: they are random.
std::string ContentOf(const std::string& path)
{
    const PlainConnection file(path);
    file.RunSQL("UPDATE Plants SET UUID='new '||ID WHERE Name='Plant 99999';");
    return Content(file.NativeHandle());
}

std::string AfterADay(const ContenderKind& kind, const ScratchDirectory& scratch, const OldFile* old)
{
    const std::string path = scratch.File(kind.Name + ".db");
    if (old != nullptr)
        WriteOldFile(path, *old);
    const std::unique_ptr<Contender> contender = kind.Make();
    if (!contender->Open(path))
        throw std::runtime_error(kind.Name + " does not open " + path);
    const std::string told = ADay(*contender);
    contender->Close();
    return told + ContentOf(path);
}

std::string AfterWorkload(const ContenderKind& kind, const ScratchDirectory& scratch, const Workload& workload)
{
    Bout bout(kind, workload, Medium::Disk, scratch.File(""));
    const Step step = bout.Prepare();
    for (int i = 0; i < workload.Steps; ++i)
        if (!step())
            throw std::runtime_error(kind.Name + " fails to " + workload.Title());
    bout.Opened().Close();
    return ContentOf(bout.Path());
}

// Where two texts first differ, for the one who has to find out why.
std::string Difference(const std::string& expected, const std::string& found)
{
    std::istringstream left(expected);
    std::istringstream right(found);
    std::string l;
    std::string r;
    while (std::getline(left, l), std::getline(right, r), left && right && l == r)
        ;
    return "  plantjournal: " + l + "\n  here:         " + r + '\n';
}

// Whether `what`, done by each contender that can do it, comes out as plantjournal's.
template <typename Work> bool Agree(const std::string& what, const Work& work)
{
    bool agree = true;
    const ScratchDirectory scratch;
    const std::string expected = work(Contenders().front(), scratch);
    for (auto kind = std::next(Contenders().begin()); kind != Contenders().end(); ++kind)
    {
        const std::string found = work(*kind, scratch);
        if (found != expected)
        {
            std::cout << kind->Name << " differs: " << what << '\n' << Difference(expected, found);
            agree = false;
        }
    }
    return agree;
}

} // namespace

int main()
try
{
    bool agree = true;
    int compared = 0;
    const auto add = [&](bool same)
    {
        agree = same && agree;
        ++compared;
    };
    add(Agree("a day on a new file", [](const ContenderKind& kind, const ScratchDirectory& scratch)
              { return AfterADay(kind, scratch, nullptr); }));
    for (const OldFile& old : OldFiles())
        add(Agree("a day on an old file, " + old.Name, [&](const ContenderKind& kind, const ScratchDirectory& scratch)
                  { return AfterADay(kind, scratch, &old); }));
    for (const Workload& workload : Workloads())
        if (workload.OnDisk && workload.Rounds == 0) // what takes seconds a step was done in a day, too, on less
            add(Agree(workload.Title(), [&](const ContenderKind& kind, const ScratchDirectory& scratch)
                      { return AfterWorkload(kind, scratch, workload); }));

    std::cout << "Contenders:";
    for (const ContenderKind& kind : Contenders())
        std::cout << ' ' << kind.Name << ' ' << kind.Version << (&kind == &Contenders().back() ? "" : ",");
    std::cout << '\n';
    for (const std::string& name : AbsentContenders())
        std::cout << "Absent: " << name << '\n';
    std::cout << compared << " comparisons of records and files: " << (agree ? "all the same" : "NOT the same") << '\n';
    return agree ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

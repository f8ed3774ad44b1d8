// Verifies, before anything is timed, that every implementation returns the same records and leaves the same file as
// plantjournal: after a front end's day on a new file and on an older one, and after every workload.

#include "implementation.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/scratch_directory.h"
#include "workload_run.h"

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

// Calls every operation, and prints what it returns and the records that it fills.
class Day
{
  public:
    explicit Day(Implementation& implementation) : Front(implementation) {}

    std::string Run()
    {
        CreatePlants();
        ListPlants();
        KeepCareEntries();
        ListEvents();
        KeepHarvests();
        ListEvents();
        for (const std::int64_t strain : {1, 99})
        {
            StrainSummary summary;
            Out << Front.GetStrainSummary(strain, summary) << Print(summary) << '\n';
        }
        Out << Front.DeletePlant(Plants[1].UUID) << Front.DeletePlant("unknown") << '\n';
        ListPlants();
        return Out.str();
    }

  private:
    static Plant NewPlant(std::size_t number)
    {
        Plant plant;
        plant.UUID = "plant " + std::to_string(number);
        plant.Name = number == 1 ? "a plant with a name of some length, Süßkirsche" : "B";
        plant.Strain = number == 2 ? "" : "a strain";
        plant.MotherPlantUUID = number == 0 ? "" : "plant " + std::to_string(number - 1);
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
        return plant;
    }

    void CreatePlants()
    {
        for (std::size_t number = 0; number < 3; ++number)
        {
            Plant& plant = Plants.emplace_back(NewPlant(number));
            Out << Front.CreatePlant(plant) << Print(plant) << '\n';
        }
        Plant again = Plants[0];
        Out << Front.CreatePlant(again) << Print(again) << '\n';
        Plant orphan = Plants[0];
        orphan.UUID = "orphan";
        orphan.MotherPlantUUID = "unknown";
        Out << Front.CreatePlant(orphan) << Print(orphan) << '\n';
        Plant found;
        Out << Front.GetPlant("plant 2", found) << Print(found) << Front.GetPlant("plant 9", found) << '\n';
    }

    void KeepCareEntries()
    {
        for (int i = 0; i < 4; ++i)
        {
            PlantCareEntry entry;
            entry.PlantUUID = i == 3 ? "unknown" : Plants[0].UUID;
            entry.CareDate = "2024-05-0" + std::to_string(i);
            entry.Action = i == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
            entry.Product = i == 0 ? "Bloom A" : "";
            entry.AmountMl = 250.4 * i;
            entry.EC = i;
            entry.PH = 6.45;
            entry.RunoffMl = 10.0 * i;
            entry.Notes = i == 1 ? "dry pot" : "";
            Out << Front.CreatePlantCareEntry(entry);
            if (i != 3)
                Out << Print(entry) << '\n';
            entry.Product = "Cal-Mag";
            entry.TimelineEventID = i == 2 ? 0 : entry.TimelineEventID;
            if (i == 1 || i == 2) // the first stays as it was created
                Out << Front.UpdatePlantCareEntry(entry) << Print(entry) << '\n';
            if (i == 1)
                Out << Front.DeletePlantCareEntry(entry.ID) << Front.DeletePlantCareEntry(entry.ID) << '\n';
        }
    }

    void KeepHarvests()
    {
        HarvestRecord harvest;
        harvest.HarvestDate = "2024-07-05";
        harvest.WetWeightG = 450;
        harvest.DryWeightG = 112.5;
        harvest.QualityRating = 7.25;
        harvest.SeedYield = 12;
        harvest.CureOutcome = "Jarred 3 weeks";
        harvest.Notes = "sticky";
        Out << Front.SaveHarvestRecord(Plants[0], harvest) << Print(harvest) << Print(Plants[0]) << '\n';
        harvest.DryWeightG = 0.05;
        Out << Front.SaveHarvestRecord(Plants[0], harvest) << Print(harvest) << '\n';
        HarvestRecord second;
        Out << Front.SaveHarvestRecord(Plants[0], second) << '\n';
    }

    void ListPlants()
    {
        std::vector<Plant> plants(3);
        Out << Front.ListPlants(plants) << '\n' << PrintAll(plants);
    }

    void ListEvents()
    {
        std::vector<PlantEvent> events(3);
        Out << Front.ListPlantEvents(Plants[0].UUID, events) << '\n' << PrintAll(events);
    }

    Implementation& Front;
    std::vector<Plant> Plants;
    std::ostringstream Out;
};

// All that is in the file but the UUIDs of new plants, which are random.
std::string ContentOf(const std::string& path)
{
    const PlainConnection file(path);
    file.RunSQL("UPDATE Plants SET UUID='new '||ID WHERE Name='Plant 99999';");
    return Content(file.NativeHandle());
}

std::string AfterADay(const ImplementationKind& kind, const ScratchDirectory& scratch, const OldFile* old)
{
    const std::string path = scratch.File(kind.Name + ".db");
    if (old != nullptr)
        WriteOldFile(path, *old);
    const std::unique_ptr<Implementation> implementation = kind.Make();
    if (!implementation->Open(path))
        throw std::runtime_error(kind.Name + " cannot open " + path);
    const std::string printed = Day(*implementation).Run();
    implementation->Close();
    return printed + ContentOf(path);
}

std::string AfterWorkload(const ImplementationKind& kind, const ScratchDirectory& scratch, const Workload& workload)
{
    WorkloadRun run(kind, workload, Medium::Disk, scratch.File(""));
    const Step step = run.Prepare();
    for (int i = 0; i < workload.Steps; ++i)
        if (!step())
            throw std::runtime_error(kind.Name + " fails to " + workload.Title());
    run.Close();
    return ContentOf(run.Path());
}

// Returns the first line in which two texts differ, from both.
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

// Whether `work` has the same result for every implementation as for plantjournal.
template <typename Work> bool Agree(const std::string& what, const Work& work)
{
    bool agree = true;
    const ScratchDirectory scratch;
    const std::string expected = work(Implementations().front(), scratch);
    for (auto kind = std::next(Implementations().begin()); kind != Implementations().end(); ++kind)
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
    add(Agree("a day on a new file", [](const ImplementationKind& kind, const ScratchDirectory& scratch)
              { return AfterADay(kind, scratch, nullptr); }));
    for (const OldFile& old : OldFiles())
        add(Agree("a day on an older file, " + old.Name,
                  [&](const ImplementationKind& kind, const ScratchDirectory& scratch)
                  { return AfterADay(kind, scratch, &old); }));
    for (const Workload& workload : Workloads())
        if (workload.OnDisk && workload.Rounds == 0) // a day does the long ones on a small journal
            add(Agree(workload.Title(), [&](const ImplementationKind& kind, const ScratchDirectory& scratch)
                      { return AfterWorkload(kind, scratch, workload); }));

    std::cout << "Implementations:";
    for (const ImplementationKind& kind : Implementations())
        std::cout << ' ' << kind.Name << ' ' << kind.Version << (&kind == &Implementations().back() ? "" : ",");
    std::cout << '\n';
    for (const std::string& name : AbsentImplementations())
        std::cout << "Absent: " << name << '\n';
    std::cout << compared << " comparisons of records and files: " << (agree ? "all the same" : "NOT the same") << '\n';
    return agree ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

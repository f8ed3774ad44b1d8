// A program that uses the libraries: stores a plant under a UUID that it creates, inspects the file, asks how the plant
// is, writes a report, validates the plant, and watches a change.

#include "plant_database.h"
#include "plant_file.h"
#include "plant_query.h"
#include "plant_report.h"
#include "plant_validation.h"
#include "plant_watcher.h"

#include <iostream>

std::string CreatePlantUUID(); // exported by the library, in no header

int main()
{
    PlantDatabase journal;
    PlantRepository repository(journal);
    Plant basil;
    basil.UUID = CreatePlantUUID();
    basil.Name = "Basil";
    PlantFileInspection file;
    if (!journal.Open("journal.db") || !basil.Save(repository) || !InspectPlantDatabase("journal.db", file))
        return 1;
    std::vector<PlantStatus> plants;
    if (!QueryPlantStatus(journal, {}, PlantEventCurrentDate(), plants) || plants.size() != 1)
        return 1;
    PlantReportOptions options;
    options.Today = PlantEventCurrentDate();
    std::string page;
    if (!WritePlantReport(journal, options, page) || page.find("<html") == std::string::npos)
        return 1;
    std::vector<PlantProblem> problems;
    if (!Validate(basil, journal, problems) || !problems.empty() || Validate(Strain{}).size() != 1 ||
        ParsePlantStage("Veg") != basil.Stage || Explain(journal, PlantEvent{}).find("refused") != 0)
        return 1;
    PlantWatcher watcher(journal);
    PlantChanges changes;
    if (!repository.UpdatePlant(basil) || !watcher.Poll(changes) || changes.Families.empty())
        return 1;
    std::cout << PlantFileKindName(file.Kind) << ", " << PlantStageName(plants[0].Stage) << ", " << plants[0].Name
              << '\n';
}

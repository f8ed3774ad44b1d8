#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/find_record.h"

#include <algorithm>
#include <memory>

namespace
{

void ShowPlant(Session& session, const std::string& named)
{
    const std::vector<Plant> plants = AllPlants(session);
    Plant plant = FindPlant(plants, named);
    if (session.AsJSON)
        return PrintJSON(RecordJSON(plant));
    const auto mother = std::find_if(plants.begin(), plants.end(),
                                     [&](const Plant& other) { return other.UUID == plant.MotherPlantUUID; });
    if (mother != plants.end())
        plant.MotherPlantUUID = DisplayName(*mother);
    PrintDescription(std::cout, PropertiesOf(plant));
}

} // namespace

void AddPlantShowCommand(CLI::App& plantGroup, Session& session)
{
    auto of = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(plantGroup, "show", "Show every field of a plant that was entered",
                                "plant show Basil\nplant show 3f2a --json",
                                [&session, of] { ShowPlant(session, of->Plant); }),
                     *of);
}

// What the window shows of one plant.
#pragma once

#include "plant_query.h"
#include "plant_report.h"

#include <optional>
#include <string>
#include <vector>

struct PlantView
{
    Plant Record;
    std::vector<PlantActivity> Timeline;  // newest first
    std::vector<PlantChart> Charts;       // those that have something to draw
    std::vector<PlantPhoto> Photos;       // newest first
    std::optional<HarvestRecord> Harvest; // the harvest record, if there is one
};

// Reads the plant with the UUID `uuid`. Draws the charts `chartWidth` pixels wide. After an error, `view` is not
// complete.
PlantQueryResult ReadPlantView(PlantDatabase& database, const std::string& uuid, double chartWidth, PlantView& view);

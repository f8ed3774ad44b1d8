// What the charts of a page draw, read from a journal.
#pragma once

#include "plant_report.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace plant_report
{

struct PageData
{
    std::vector<Plant> Plants;                 // those of the page, as PlantRepository::ListPlants() sorts them
    std::map<std::string, std::string> NameOf; // of each plant of the page, by its UUID
    std::int64_t Entries = 0;                  // activities between the dates of the page
    std::optional<std::pair<std::int64_t, std::int64_t>> Days; // the first and the last day of these
    std::vector<PlantStageSpan> Stages;
    std::vector<PlantCalendarDay> Care;
    std::vector<PlantTotal> Measurements;
    PlantPeriod MeasurementPeriod = PlantPeriod::Day;
    std::vector<PlantTotal> Waterings, Feedings;
    PlantPeriod AmountPeriod = PlantPeriod::Week;
    std::vector<PlantHarvest> Harvests;
    std::vector<PlantRelative> Lineage;
    std::vector<PlantHealth> Health; // oldest first
    std::vector<PlantPhoto> Photos;  // newest first
};

// Reads all of it. Throws ReadFailure.
PageData ReadPageData(PlantDatabase& database, const PlantReportOptions& options);

// Whether a date is between the dates of the page.
bool IsBetweenDates(const PlantReportOptions& options, const std::string& date);

} // namespace plant_report

#pragma once

#include "plant_query.h"

#include <string>
#include <vector>

// The rows of an answer, as SQLite's shell prints them with `.mode tabs`.
std::string TabbedRows(const std::vector<PlantActivity>& activities);
std::string TabbedRows(const std::vector<PlantStatus>& statuses);
std::string TabbedRows(const std::vector<PlantTotal>& totals);

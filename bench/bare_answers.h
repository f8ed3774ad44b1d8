#pragma once

#include "plant_query.h"

#include <vector>

#include <sqlite3.h>

// Answers as a program computes them with bare SQLite: the statements of query/ in their order, in one read
// transaction. They throw std::runtime_error where SQLite fails.

std::vector<PlantTotal> BareTotalsByMonth(sqlite3* journal);
std::vector<PlantTotal> BareTotalsByProduct(sqlite3* journal);
// All photos, newest first.
std::vector<PlantActivity> BarePhotos(sqlite3* journal);

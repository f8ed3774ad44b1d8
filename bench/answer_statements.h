#pragma once

#include <string>
#include <vector>

// What the answers that are compared with SQLite's shell are asked for.
inline constexpr auto FirstDayOfWeek = "2019-03-04";
inline constexpr auto LastDayOfWeek = "2019-03-10";
inline constexpr auto StatusDay = "2024-07-28";
std::vector<std::string> PlantsWithStatus();

// The single statement that returns the rows of an answer. Throws std::invalid_argument for an unknown operation.
std::string StatementOf(const std::string& operation);

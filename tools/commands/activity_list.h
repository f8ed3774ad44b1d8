#pragma once

#include "commands/answer.h"
#include "commands/plant_set.h"

// What `log` and `search` share: they list activities of several plants.

struct ActivityOptions
{
    PlantSetOptions Plants;
    std::optional<std::string> Kinds;
    std::optional<std::string> Newest;
    bool OldestFirst = false;
    bool AsCSV = false;
};

// Adds --strain, --tent, --stage, --all, --kind, --from, --to, --newest, --oldest-first and --csv. `options` must live
// as long as the command.
void AddActivityOptions(CLI::App& command, ActivityOptions& options);

// The activities that the options select, in their order. `text` is a part of each, regardless of case in every
// alphabet; `from` replaces --from. Throws Refusal.
std::vector<PlantActivity> FindActivities(Session& session, const std::vector<Plant>& plants,
                                          const ActivityOptions& options, const std::string& from,
                                          const std::string& text);

// Prints them as a table.
void PrintActivities(const std::vector<PlantActivity>& activities, const std::vector<Plant>& plants);

// Their fields in JSON and CSV.
std::vector<AnswerField<PlantActivity>> ActivityFields();

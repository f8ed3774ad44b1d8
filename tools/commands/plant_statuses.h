#pragma once

#include "commands/answer.h"
#include "commands/plant_set.h"

// What `status` and `due` share.

// The status of the plants that the options select, those that are due for care first, the most overdue at the front.
// Without names, --stage and --all, only growing plants are selected. Throws Refusal.
std::vector<PlantStatus> FindStatuses(Session& session, const std::vector<Plant>& plants,
                                      const PlantSetOptions& options);

// How many days after today care is due; negative for overdue. Without a value where no day is known.
std::optional<std::int64_t> DaysUntilDue(const PlantStatus& plant);

// "Aphids (2 of 5)".
std::string HealthText(const PlantHealthObservation& seen);

// "every 3.5 d"; empty where it is not known.
std::string RhythmText(const PlantStatus& plant);

// The fields of a status in JSON and CSV.
std::vector<AnswerField<PlantStatus>> StatusFields();

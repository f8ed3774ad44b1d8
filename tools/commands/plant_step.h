#pragma once

#include "commands/check_values.h"
#include "commands/outcome.h"
#include "plant_database.h"

#include <string>
#include <vector>

// The steps of a plant's life that a timeline event records, such as a move to another stage or a transplant.

struct PlantStep
{
    Plant Of;
    PlantEvent Event;
    bool ChangesPlant = false;
    std::string Summary; // "Moved Basil to Flower"
};

// A step that changes no field of the plant.
PlantStep StepOf(const Plant& plant, PlantEventType type, const std::string& date);

// A move to another stage. A move to Flower also sets the flip date, and its event is a Flip. The event of any other
// move is a Stage; its details are the stored name of the stage, nothing else, so that programs can read it.
PlantStep MoveToStage(const Plant& plant, PlantStage stage, const std::string& date);

// Stores the plants and the events of the steps, all of them or nothing, and sets the row IDs of the events. Throws
// Refusal.
void StoreSteps(Session& session, std::vector<PlantStep>& steps);

// Stores a plant that the user has edited. If its stage has changed, the event of the move is stored with it, both or
// neither. Without a flip date among the `fields` that were set, a move to Flower sets it. Throws Refusal with
// `advice` where SQLite's error does not decide what to do.
void StoreEditedPlant(Session& session, const Plant& before, Plant& plant, const FieldNames& fields,
                      const std::string& advice);

// As StoreSteps(); then reports the events. Without steps, nothing is written.
void StoreAndReportSteps(Session& session, std::vector<PlantStep>& steps, Records records);

#pragma once

#include "commands/arguments.h"
#include "journal/session.h"
#include "record/fields.h"

// What only harvest records need: their weights, and the stage of the plant after a deletion.

void AddUnweighed(CLI::App& command, Arguments& given);
void AddStageAfterDeletion(CLI::App& command, Arguments& given);

// Asks on the terminal for the weights of a new record, unless one is among the fields that were `set` or --unweighed
// was given. Throws Refusal where standard input is not a terminal, or ends before the answers.
void RequireWeights(const Arguments& given, const FieldNames& set, HarvestRecord& record);

// Asks, deletes the record and reports it. The plant keeps its stage and harvest date; with --stage it gets that stage
// and no harvest date, in the same transaction.
void DeleteHarvest(Session& session, const Arguments& given, const Plant& plant, const HarvestRecord& record);

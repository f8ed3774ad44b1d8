#pragma once

#include "journal/session.h"

#include <string>
#include <variant>
#include <vector>

// A date in the record of a plant itself.
struct OwnDate
{
    std::string Field; // its name
    std::string Date;
};

using DatedRecord = std::variant<PlantEvent, PlantCareEntry, HarvestRecord, PlantPhoto, PlantHealthObservation,
                                 PlantJournalEntry, OwnDate>;

struct TimelineItem
{
    std::string Date;
    std::string Kind; // in one word or two, such as "Feed" or "Sown"
    std::string Details;
    DatedRecord Record;
};

// Everything dated of a plant, the newest first. A care entry or harvest record stands for its timeline event, too. A
// date of the plant itself is left out where another item of the same kind has it. Throws Refusal.
std::vector<TimelineItem> TimelineOf(Session& session, const Plant& plant);

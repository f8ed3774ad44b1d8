#pragma once

#include "record/fields.h"

#include <tuple>

// All tables of a journal. A table comes after those to which its rows refer.
template <template <typename> typename Table>
using Tables = std::tuple<Table<Strain>, Table<Plant>, Table<PlantEvent>, Table<PlantCareEntry>, Table<HarvestRecord>,
                          Table<PlantPhoto>, Table<PlantHealthObservation>, Table<PlantJournalEntry>>;

template <typename AllTables, typename Visitor> void ForEachTable(AllTables& tables, const Visitor& visitor)
{
    std::apply([&](auto&... table) { (visitor(table), ...); }, tables);
}

// Care entries and harvest records own an event on the timeline.
template <typename Record>
concept OwnsEvent = requires(Record record)
{
    record.TimelineEventID;
};

template <typename Record>
concept BelongsToPlant = requires(Record record)
{
    record.PlantUUID;
};

// The version of the JSON format of an export.
constexpr int ExportFormat = 1;

#pragma once

#include "record/fields.h"

#include <tuple>
#include <vector>

// All that a journal holds, table by table, in an order in which each row's relations come before it.
template <template <typename> typename Table>
using Tables = std::tuple<Table<Strain>, Table<Plant>, Table<PlantEvent>, Table<PlantCareEntry>, Table<HarvestRecord>,
                          Table<PlantPhoto>, Table<PlantHealthObservation>, Table<PlantJournalEntry>>;

template <typename Everything, typename Visitor> void ForEachTable(Everything& everything, const Visitor& visitor)
{
    std::apply([&](auto&... table) { (visitor(table), ...); }, everything);
}

// The version of the form in which `export` writes JSON.
constexpr int TransferFormat = 1;

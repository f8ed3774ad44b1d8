#pragma once

#include "support/model/values.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

// The rows of a table, as a vector.
namespace support::model
{

template <typename Row> std::int64_t NextID(const std::vector<Row>& rows)
{
    std::int64_t id = 0;
    for (const Row& row : rows)
        id = std::max(id, row.ID);
    return id + 1;
}

// The first row for which `matches` holds, or null.
template <typename Rows, typename Condition> auto* FirstRow(Rows& rows, const Condition& matches)
{
    const auto found = std::find_if(rows.begin(), rows.end(), matches);
    return found != rows.end() ? &*found : nullptr;
}

template <typename Rows> auto* RowWithID(Rows& rows, std::int64_t id)
{
    return FirstRow(rows, [&](const auto& row) { return row.ID == id; });
}

template <typename Rows> auto* RowOfPlant(Rows& rows, const std::string& plantUUID)
{
    return FirstRow(rows, [&](const auto& row) { return row.PlantUUID == plantUUID; });
}

// The row that an update with `record` overwrites, or null.
template <typename Row> Row* RowToUpdate(std::vector<Row>& rows, const Row& record)
{
    return FirstRow(rows, [&](const Row& row) { return row.ID == record.ID && row.PlantUUID == record.PlantUUID; });
}

template <typename Row> void RemoveRowWithID(std::vector<Row>& rows, std::int64_t id)
{
    std::erase_if(rows, [&](const Row& row) { return row.ID == id; });
}

template <typename Row> void RemoveRowsOfPlant(std::vector<Row>& rows, const std::string& plantUUID)
{
    std::erase_if(rows, [&](const Row& row) { return row.PlantUUID == plantUUID; });
}

template <typename Row> void AddRow(std::vector<Row>& rows, Row& record)
{
    record.ID = NextID(rows);
    rows.push_back(AsStored(record));
}

// The rows of a plant as they are read: the newest date first, and within a date the newest row first.
template <typename Row>
bool ListRowsOfPlant(const std::vector<Row>& rows, const std::string& plantUUID, std::string Row::*date,
                     std::vector<Row>& out)
{
    out.clear();
    for (const Row& row : rows)
        if (row.PlantUUID == plantUUID)
            out.push_back(row);
    std::sort(out.begin(), out.end(),
              [&](const Row& l, const Row& r) { return std::tie(l.*date, l.ID) > std::tie(r.*date, r.ID); });
    for (Row& row : out)
        row = AsRead(row);
    return true;
}

template <typename Row> std::vector<Row> SortedByID(std::vector<Row> rows)
{
    std::sort(rows.begin(), rows.end(), [](const Row& l, const Row& r) { return l.ID < r.ID; });
    return rows;
}

// Inserts a row after the rows that compare equal.
template <typename Row, typename Less> void InsertSorted(std::vector<Row>& rows, const Row& row, const Less& less)
{
    rows.insert(std::upper_bound(rows.begin(), rows.end(), row, less), row);
}

// Brings rows into the order of a list.
template <typename Row, typename Listed> void OrderLike(const std::vector<Listed>& list, std::vector<Row>& rows)
{
    const auto place = [&](const Row& row)
    { return std::find_if(list.begin(), list.end(), [&](const Listed& listed) { return listed.ID == row.ID; }); };
    std::sort(rows.begin(), rows.end(), [&](const Row& l, const Row& r) { return place(l) < place(r); });
}

} // namespace support::model

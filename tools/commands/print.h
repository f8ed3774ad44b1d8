#pragma once

#include "journal/session.h"
#include "record/fields.h"
#include "record/json.h"
#include "record/text.h"
#include "terminal/table.h"

#include <algorithm>
#include <iostream>
#include <vector>

// How the commands print records: as JSON with --json, else as a table.

inline void PrintJSON(const JSON& json)
{
    std::cout << json.Indented() << '\n';
}

// The columns of a table of records, and one of its rows.
template <typename Record> std::vector<Column> ColumnsOf()
{
    const Record defaults;
    std::vector<Column> columns;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Displayed == Display::Always)
            columns.push_back({field.Name, IsNumber(ValueIn(field, defaults))});
    return columns;
}

template <typename Record> Row RowOf(const Record& record)
{
    Row row;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Displayed == Display::Always)
            row.push_back(RoundedTextOf(ValueIn(field, record)));
    return row;
}

template <typename Record> void PrintRecords(const Session& session, const std::vector<Record>& records)
{
    if (session.AsJSON)
        return PrintJSON(RecordsJSON(records));
    std::vector<Row> rows(records.size());
    std::transform(records.begin(), records.end(), rows.begin(), RowOf<Record>);
    PrintTable(std::cout, ColumnsOf<Record>(), rows);
}

// Prints every field of one record.
template <typename Record> void PrintInFull(const Session& session, const Record& record)
{
    if (session.AsJSON)
        return PrintJSON(RecordJSON(record));
    std::vector<Row> lines;
    for (const Field<Record>& field : Describe<Record>().Fields)
        lines.push_back({field.Name, RoundedTextOf(ValueIn(field, record))});
    PrintTable(std::cout, {{"Field"}, {"Value"}}, lines);
}

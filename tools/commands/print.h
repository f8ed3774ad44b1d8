#pragma once

#include "journal/session.h"
#include "record/fields.h"
#include "record/json.h"
#include "record/text.h"
#include "terminal/description.h"
#include "terminal/table.h"

#include <iostream>
#include <vector>

// How the commands print records: as JSON with --json, else in words.

inline void PrintJSON(const JSON& json)
{
    std::cout << json.Indented() << '\n';
}

inline WhenNarrow NarrowingOf(Use used)
{
    switch (used)
    {
    case Use::RowID:
    case Use::Title:
    case Use::Day:
        return WhenNarrow::Keep;
    case Use::Words:
        return WhenNarrow::Cut;
    case Use::Remark:
        return WhenNarrow::CutOrDrop;
    default:
        return WhenNarrow::Drop;
    }
}

// The columns of a table of records, and one of its rows.
template <typename Record> std::vector<Column> ColumnsOf()
{
    const Record defaults;
    std::vector<Column> columns;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Displayed == Display::Always)
            columns.push_back({field.Label, NarrowingOf(field.Used), IsNumber(ValueIn(field, defaults))});
    return columns;
}

template <typename Record> Row RowOf(const Record& record)
{
    Row row;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Displayed == Display::Always)
            row.push_back(ShownText(field, record));
    return row;
}

// The properties of a record that were entered.
template <typename Record> std::vector<Property> PropertiesOf(const Record& record)
{
    std::vector<Property> properties;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Displayed != Display::OnlyInJSON)
            properties.push_back({field.Label, ShownText(field, record)});
    return properties;
}

#pragma once

#include "transfer/source.h"
#include "transfer/tables.h"
#include "transfer/warnings.h"

#include <cstddef>
#include <string>
#include <vector>

// The records of a source, with their places in it.

template <typename Record> struct ImportedRow
{
    Record Value;
    std::size_t Offset = 0;
    std::vector<std::size_t> FieldOffsets; // in the order of the description's fields; NotGiven where there is none
};

// What a row has in the column `Plant`.
struct PlantName
{
    std::size_t Row = 0; // its index among the rows of the table
    std::string Name;
    std::size_t Offset = 0;
};

constexpr auto NotGiven = static_cast<std::size_t>(-1);

template <typename Record> struct ImportedTable
{
    bool Given = false; // also where it has no rows
    SourcePointer File;
    std::vector<ImportedRow<Record>> Rows;
    std::vector<PlantName> PlantNames; // of the rows that have one

    // The beginning of a message about a row, or about one of its fields.
    std::string Place(const ImportedRow<Record>& row) const { return File->Place(row.Offset) + ": "; }
    std::string Place(const ImportedRow<Record>& row, const std::string& field) const
    {
        std::size_t offset = NotGiven;
        const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (fields[i].Name == field)
                offset = row.FieldOffsets[i];
        return File->Place(offset == NotGiven ? row.Offset : offset) + ": " + field + ": ";
    }
};

using ImportedTables = Tables<ImportedTable>;

template <typename Record> ImportedTable<Record>& TableOf(ImportedTables& tables)
{
    return std::get<ImportedTable<Record>>(tables);
}

struct ImportMessages
{
    Problems Errors;
    ImportWarnings Warnings;
    bool Readable = false; // all rows were read, so that a row that seems to be missing is missing
};

// Reads the records of a source.
ImportedTables ReadImportedTables(const std::string& path, ImportMessages& messages);

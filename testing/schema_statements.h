#pragma once

#include <string>
#include <vector>

namespace support
{

// The exact statements that create and migrate a journal file.

const std::vector<std::string>& CreateTableStatements();
const std::vector<std::string>& CreateIndexStatements();
const std::vector<std::string>& RebuildStatements();

struct AddedColumn
{
    std::string Table;
    std::string Name;
    std::string Statement;
};

// The columns that the first schema did not have, in the order in which they are added.
const std::vector<AddedColumn>& AddedColumns();

// The statements of opening a file that lacks the columns `missing` and, if `oldEvents`, has an earlier event table.
std::vector<std::string> OpeningStatements(const std::vector<std::string>& missing = {}, bool oldEvents = false);

// A CREATE statement as SQLite stores it in the file.
std::string StoredStatement(std::string statement);

// `text` with `part` replaced; the text must contain it.
std::string Replaced(std::string text, const std::string& part, const std::string& replacement);

} // namespace support

#pragma once

#include <string>
#include <vector>

namespace support
{

// The statements that make a journal file and bring it up to date, to the byte: files in the field were written by
// them.

const std::vector<std::string>& CreateTableStatements();
const std::vector<std::string>& CreateIndexStatements();
const std::vector<std::string>& RebuildStatements();

struct AddedColumn
{
    std::string Table;
    std::string Name;
    std::string Statement;
};

// The columns that the first version did not have, in the order in which they are added.
const std::vector<AddedColumn>& AddedColumns();

// All that opening a file prepares and executes, where the file lacks the columns `missing` and its event table is old.
std::vector<std::string> OpeningStatements(const std::vector<std::string>& missing = {}, bool oldEvents = false);

// A CREATE statement as the file keeps it.
std::string StoredStatement(std::string statement);

// `text` with `part` replaced; the text must have it.
std::string Replaced(std::string text, const std::string& part, const std::string& replacement);

} // namespace support

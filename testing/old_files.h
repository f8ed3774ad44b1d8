#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace support
{

// A journal file with an earlier schema or the current one, as the SQL that creates it, with rows in every table. Its
// name says what the schema added.
struct OldFile
{
    std::string Name;
    std::string SQL;
};

std::ostream& operator<<(std::ostream& out, const OldFile& file);

// All files, the earliest schema first.
const std::vector<OldFile>& OldFiles();

// Whether opening the file migrates nothing.
bool HasCurrentSchema(const OldFile& file);

// Writes the file to `path` and replaces any other.
void WriteOldFile(const std::string& path, const OldFile& file);

} // namespace support

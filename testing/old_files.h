#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace support
{

// The forms that a journal file has had, each kept as the SQL text that builds a file of that form, with something in
// every table. A text is named after what its form brought.
struct OldFile
{
    std::string Name;
    std::string SQL;
};

std::ostream& operator<<(std::ostream& out, const OldFile& file);

// All of them, the oldest first.
const std::vector<OldFile>& OldFiles();

// Whether such a file lacks nothing, so that opening it has nothing to do.
bool HasCurrentSchema(const OldFile& file);

// Makes a file of that form at `path`, in the place of any that is there.
void WriteOldFile(const std::string& path, const OldFile& file);

} // namespace support

#pragma once

#include <string>
#include <vector>

// The forms that a journal file has had, each kept as the SQL text that builds a file of that form, with something in
// every table. A text is named after what its form brought.
struct OldFile
{
    std::string Name;
    std::string SQL;
};

// All of them, the oldest first.
const std::vector<OldFile>& OldFiles();

// Makes a file of that form at `path`, in the place of any that is there.
void WriteOldFile(const std::string& path, const OldFile& file);

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The source of an import, a JSON file or a directory of CSV files, is read here into rows of texts.

// A file, kept as a whole so that messages can name a place in it.
struct SourceFile
{
    std::string Name;
    std::string Bytes;
    std::vector<std::size_t> Lines; // the offset of each line

    // Returns `name:line:column`. The column counts bytes, from 1.
    std::string Place(std::size_t offset) const;
};

using SourcePointer = std::shared_ptr<const SourceFile>;

struct RawCell
{
    std::string_view Field;
    std::string_view Text;
    std::size_t Offset;
};

struct RawRow
{
    std::size_t Offset = 0;
    std::vector<RawCell> Cells;
};

// Receives what is read. The texts of a row are valid during the call only.
class RawRowReceiver
{
  public:
    RawRowReceiver() = default;
    virtual ~RawRowReceiver() = default;
    RawRowReceiver(const RawRowReceiver&) = delete;
    RawRowReceiver& operator=(const RawRowReceiver&) = delete;

    virtual void BeginTable(const std::string& name, const SourcePointer& file) = 0;
    virtual void AddRow(const RawRow& row) = 0;
};

// Messages, each of which begins with a place.
using Problems = std::vector<std::string>;

// Reads a source. Adds a message to `problems` for each part that cannot be read.
void ReadSource(const std::string& path, RawRowReceiver& receiver, Problems& problems);

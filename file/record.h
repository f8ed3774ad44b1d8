// The values of a row: https://www.sqlite.org/fileformat2.html#record_format
#pragma once

#include "page.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace plant_file
{

enum class TextEncoding : std::uint32_t
{
    UTF8 = 1, // as numbered in the file's header
    UTF16LittleEndian = 2,
    UTF16BigEndian = 3
};

enum class StorageClass
{
    Null,
    Integer,
    Real,
    Text,
    Blob
};

struct Value
{
    StorageClass Class = StorageClass::Null;
    std::int64_t Integer = 0;
    double Real = 0;
    std::string Text; // in UTF-8; or the bytes of a blob

    bool IsText() const { return Class == StorageClass::Text; }
};

using Values = std::vector<Value>;

// Reads a payload. The result is std::nullopt where its header and its size do not agree.
std::optional<Values> ReadRecord(const Bytes& payload, TextEncoding encoding);

} // namespace plant_file

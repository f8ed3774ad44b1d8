#include "record.h"

#include <cstring>
#include <iterator>

namespace plant_file
{

namespace
{

// The types of values, as numbers in the header of a record. From FirstBlob on, even numbers are blobs and odd ones
// texts.
constexpr std::int64_t RealType = 7;
constexpr std::int64_t ZeroType = 8;
constexpr std::int64_t FirstBlob = 12;

// In a damaged record, a size may exceed the memory of a 32-bit system.
std::optional<std::uint64_t> SizeOfType(std::int64_t type)
{
    constexpr std::uint64_t sizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
    if (type >= FirstBlob)
        return static_cast<std::uint64_t>(type - FirstBlob) / 2;
    const auto number = static_cast<std::uint64_t>(type); // a negative one becomes large
    return number < std::size(sizes) ? std::optional(sizes[number]) : std::nullopt;
}

void AppendUTF8(std::uint32_t point, std::string& text)
{
    const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (point < 0x80)
        return append(point);
    if (point < 0x800)
        append(0xC0U | point >> 6U);
    else
    {
        if (point < 0x10000)
            append(0xE0U | point >> 12U);
        else
        {
            append(0xF0U | point >> 18U);
            append(0x80U | (point >> 12U & 0x3FU));
        }
        append(0x80U | (point >> 6U & 0x3FU));
    }
    append(0x80U | (point & 0x3FU));
}

// Half of a pair becomes the replacement character.
std::string FromUTF16(const unsigned char* bytes, std::size_t size, bool littleEndian)
{
    constexpr std::uint32_t replacement = 0xFFFD;
    const auto unit = [&](std::size_t at) -> std::uint32_t
    {
        const std::uint32_t first = bytes[at];
        const std::uint32_t second = bytes[at + 1];
        return littleEndian ? second << 8U | first : first << 8U | second;
    };
    std::string text;
    for (std::size_t at = 0; at + 2 <= size; at += 2)
    {
        std::uint32_t point = unit(at);
        if (point >= 0xD800 && point < 0xE000)
        {
            const std::uint32_t low = at + 4 <= size ? unit(at + 2) : 0;
            if (point < 0xDC00 && low >= 0xDC00 && low < 0xE000)
            {
                point = 0x10000 + ((point - 0xD800) << 10U) + (low - 0xDC00);
                at += 2;
            }
            else
                point = replacement;
        }
        AppendUTF8(point, text);
    }
    return text;
}

Value ReadValue(const unsigned char* bytes, std::size_t size, std::int64_t type, TextEncoding encoding)
{
    Value value;
    if (type >= FirstBlob)
    {
        const bool isText = type % 2 == 1;
        value.Class = isText ? StorageClass::Text : StorageClass::Blob;
        if (isText && encoding != TextEncoding::UTF8)
            value.Text = FromUTF16(bytes, size, encoding == TextEncoding::UTF16LittleEndian);
        else
            value.Text.assign(reinterpret_cast<const char*>(bytes), size);
        return value;
    }
    if (type == 0)
        return value;
    std::uint64_t number = size != 0 && bytes[0] >= 0x80 ? ~std::uint64_t{0} : 0; // extends the sign
    for (std::size_t i = 0; i < size; ++i)
        number = number << 8U | bytes[i];
    if (type == RealType)
    {
        value.Class = StorageClass::Real;
        std::memcpy(&value.Real, &number, sizeof(number));
        return value;
    }
    value.Class = StorageClass::Integer;
    value.Integer = type >= ZeroType ? type - ZeroType : static_cast<std::int64_t>(number);
    return value;
}

} // namespace

std::optional<Values> ReadRecord(const Bytes& payload, TextEncoding encoding)
{
    std::size_t at = 0;
    const std::int64_t headerSize = ReadVarint(payload, at, payload.size()).value_or(0);
    if (headerSize < 1 || headerSize > static_cast<std::int64_t>(payload.size()))
        return std::nullopt;
    const auto bodyAt = static_cast<std::size_t>(headerSize);
    std::size_t valueAt = bodyAt;
    Values values;
    while (at < bodyAt)
    {
        const std::optional<std::int64_t> type = ReadVarint(payload, at, bodyAt);
        const std::optional<std::uint64_t> size = type ? SizeOfType(*type) : std::nullopt;
        if (!size || *size > payload.size() - valueAt)
            return std::nullopt;
        const auto length = static_cast<std::size_t>(*size);
        values.push_back(ReadValue(payload.data() + valueAt, length, *type, encoding));
        valueAt += length;
    }
    if (valueAt != payload.size())
        return std::nullopt;
    return values;
}

} // namespace plant_file

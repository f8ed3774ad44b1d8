#include "record/json.h"

#include "record/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace
{

bool IsUTF8(const std::string& text)
{
    try
    {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    }
    catch (const nlohmann::json::type_error&)
    {
        return false;
    }
}

JSON Valued(std::int64_t value)
{
    return value;
}

JSON Valued(int value)
{
    return value;
}

JSON Valued(double value)
{
    return std::isinf(value) ? JSON(TextOf(&value)) : JSON(value);
}

JSON Valued(const std::string& value)
{
    if (IsUTF8(value))
        return value;
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const char letter : value)
    {
        const auto byte = static_cast<unsigned char>(letter);
        hex += {digits[byte >> 4U], digits[byte & 0x0FU]};
    }
    return {{"Hex", hex}};
}

template <typename Enumeration>
requires std::is_enum_v<Enumeration> JSON Valued(Enumeration value)
{
    return TextOf(&value);
}

} // namespace

JSON JSONOf(const View& value)
{
    return std::visit([](const auto* of) { return Valued(*of); }, value);
}

std::string BytesFrom(const std::string& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
    {
        unsigned byte = 0;
        const char* const end = hex.data() + std::min(i + 2, hex.size());
        const std::from_chars_result result = std::from_chars(hex.data() + i, end, byte, 16);
        if (result.ec != std::errc() || result.ptr != end || hex.size() % 2 != 0)
            throw BadValue(Quoted(hex) + " are no bytes in hexadecimal digits");
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

#include "command/four_fields.h"

std::string BigEndian(std::size_t value, int bytes)
{
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * static_cast<unsigned>(i)) & 0xFF);
    return text;
}

std::string FourFields(std::size_t width, std::size_t height)
{
    std::string rows;
    for (std::size_t y = 0; y < height; ++y)
    {
        rows += '\0'; // no filter
        for (std::size_t x = 0; x < width; ++x)
        {
            const bool right = x >= width / 2;
            const bool below = y >= height / 2;
            rows += {static_cast<char>(right == below ? 0xFF : 0), static_cast<char>(right ? 0xFF : 0),
                     static_cast<char>(below ? 0xFF : 0)};
        }
    }
    std::string stored = "\x78\x01"; // a zlib stream without compression
    for (std::size_t begin = 0; begin < rows.size(); begin += 0xFFFF)
    {
        const std::string part = rows.substr(begin, 0xFFFF);
        const auto low = [](std::size_t n) {
            return std::string{static_cast<char>(n & 0xFF), static_cast<char>(n >> 8)};
        };
        stored += static_cast<char>(begin + part.size() == rows.size());
        stored += low(part.size()) + low(0xFFFF - part.size()) + part;
    }
    const auto chunk = [](const std::string& name, const std::string& data)
    { return BigEndian(data.size(), 4) + name + data + BigEndian(0, 4); }; // the checksums are not read
    return "\x89PNG\r\n\x1A\n" +
           chunk("IHDR", BigEndian(width, 4) + BigEndian(height, 4) + std::string("\x08\x02\0\0\0", 5)) +
           chunk("IDAT", stored + BigEndian(0, 4)) + chunk("IEND", "");
}

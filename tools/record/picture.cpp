#include "record/picture.h"

#include "record/photo_file.h"
#include "system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>
#include <vector>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_WRITE_STATIC
#define STBI_NO_STDIO
#define STBI_WRITE_NO_STDIO
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

namespace
{

constexpr int Channels = 3;
constexpr std::size_t MostBytes = 100'000'000;
constexpr std::int64_t MostPixels = 100'000'000;
constexpr int Quality = 80;

struct Pixels
{
    int Width;
    int Height;
    std::vector<unsigned char> Values; // Channels for each pixel, row by row

    unsigned char* At(int x, int y)
    {
        return &Values[(static_cast<std::size_t>(y) * static_cast<std::size_t>(Width) + static_cast<std::size_t>(x)) *
                       Channels];
    }
};

Pixels Blank(int width, int height)
{
    return {width, height,
            std::vector<unsigned char>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * Channels)};
}

std::string ReadPicture(const std::string& path)
{
    if (const std::string problem = PhotoFileProblem(path); !problem.empty()) // a pipe or a device would block
        throw BadPicture("the file cannot be found: " + problem);
    std::ifstream file(plant_file::PathOfText(path), std::ios::binary);
    if (!file)
        throw BadPicture("the file cannot be read: " + std::generic_category().message(errno));
    std::string bytes;
    std::array<char, 65'536> part{};
    while (file.read(part.data(), part.size()) || file.gcount() > 0)
    {
        bytes.append(part.data(), static_cast<std::size_t>(file.gcount()));
        if (bytes.size() > MostBytes)
            throw BadPicture("the file is larger than 100 MB");
    }
    return bytes;
}

Pixels Decoded(const std::string& bytes)
{
    const auto* const begin = reinterpret_cast<const unsigned char*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    int width = 0;
    int height = 0;
    int channels = 0;
    if (stbi_info_from_memory(begin, size, &width, &height, &channels) == 0)
        throw BadPicture("the file is not a JPEG or PNG picture");
    if (std::int64_t{width} * height > MostPixels)
        throw BadPicture("the picture has more than 100 million pixels");
    const std::unique_ptr<unsigned char, decltype(&stbi_image_free)> values(
        stbi_load_from_memory(begin, size, &width, &height, &channels, Channels), &stbi_image_free);
    if (values == nullptr)
        throw BadPicture("the picture is damaged");
    Pixels pixels = Blank(width, height);
    std::copy_n(values.get(), pixels.Values.size(), pixels.Values.begin());
    return pixels;
}

Pixels Scaled(Pixels pixels, int longestEdge)
{
    const int longest = std::max(pixels.Width, pixels.Height);
    if (longest <= longestEdge)
        return pixels;
    const auto scaled = [&](int edge)
    { return std::max(1, static_cast<int>(std::int64_t{edge} * longestEdge / longest)); };
    Pixels small = Blank(scaled(pixels.Width), scaled(pixels.Height));
    if (stbir_resize_uint8_srgb(pixels.Values.data(), pixels.Width, pixels.Height, 0, small.Values.data(), small.Width,
                                small.Height, 0, Channels, STBIR_ALPHA_CHANNEL_NONE, 0) == 0)
        throw std::bad_alloc();
    return small;
}

// Turns a picture as its EXIF orientation says: 2 to 4 mirror or turn it half, 5 to 8 exchange its edges, too.
Pixels Turned(Pixels pixels, int orientation)
{
    constexpr int firstThatExchanges = 5;
    const bool exchanges = orientation >= firstThatExchanges;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    Pixels turned = exchanges ? Blank(pixels.Height, pixels.Width) : Blank(pixels.Width, pixels.Height);
    for (int y = 0; y < turned.Height; ++y)
        for (int x = 0; x < turned.Width; ++x)
        {
            const int column = exchanges ? y : x;
            const int row = exchanges ? x : y;
            std::copy_n(
                pixels.At(fromRight ? pixels.Width - 1 - column : column, fromBottom ? pixels.Height - 1 - row : row),
                Channels, turned.At(x, y));
        }
    return turned;
}

std::string Encoded(const Pixels& pixels)
{
    std::string jpeg;
    stbi_write_jpg_to_func(
        [](void* text, void* data, int size)
        { static_cast<std::string*>(text)->append(static_cast<char*>(data), static_cast<std::size_t>(size)); },
        &jpeg, pixels.Width, pixels.Height, Channels, pixels.Values.data(), Quality);
    return jpeg;
}

} // namespace

std::string SmallJPEG(const std::string& path, int longestEdge)
{
    const std::string bytes = ReadPicture(path);
    return Encoded(Turned(Scaled(Decoded(bytes), longestEdge), OrientationOf(bytes)));
}

std::string DataURI(const std::string& jpeg)
{
    constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string uri = "data:image/jpeg;base64,";
    for (std::size_t i = 0; i < jpeg.size(); i += 3)
    {
        const auto byte = [&](std::size_t j)
        { return j < jpeg.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(jpeg[j])) : 0U; };
        const std::uint32_t three = byte(i) << 16U | byte(i + 1) << 8U | byte(i + 2);
        uri += digits[three >> 18U];
        uri += digits[three >> 12U & 63U];
        uri += i + 1 < jpeg.size() ? digits[three >> 6U & 63U] : '=';
        uri += i + 2 < jpeg.size() ? digits[three & 63U] : '=';
    }
    return uri;
}

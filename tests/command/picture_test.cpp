// Photos that a report holds: decoded, scaled, turned and encoded again.

#include "record/picture.h"

#include "command/four_fields.h"
#include "record/photo_file.h"
#include "testing/scratch_directory.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#include <stb/stb_image.h>

using namespace support;

namespace
{

// A JPEG with the EXIF orientation.
std::string WithOrientation(const std::string& jpeg, int orientation)
{
    const std::string tiff = std::string("MM\0*\0\0\0\x08\0\x01", 10) + std::string("\x01\x12\0\x03\0\0\0\x01\0", 9) +
                             static_cast<char>(orientation) + std::string(6, '\0');
    const std::string segment = std::string("Exif\0\0", 6) + tiff;
    return jpeg.substr(0, 2) + "\xFF\xE1" + BigEndian(segment.size() + 2, 2) + segment + jpeg.substr(2);
}

// "64x32": the size in the header of a JPEG.
std::string SizeOf(const std::string& jpeg)
{
    const std::size_t header = jpeg.find("\xFF\xC0");
    if (header == std::string::npos)
        return "not a JPEG";
    const auto number = [&](std::size_t at)
    { return static_cast<unsigned char>(jpeg[at]) * 256 + static_cast<unsigned char>(jpeg[at + 1]); };
    return std::to_string(number(header + 7)) + "x" + std::to_string(number(header + 5));
}

// "64x32 RGBW": the size of a JPEG, and the colours of its fields.
std::string FieldsOf(const std::string& jpeg)
{
    int width = 0;
    int height = 0;
    int channels = 0;
    unsigned char* const pixels = stbi_load_from_memory(reinterpret_cast<const unsigned char*>(jpeg.data()),
                                                        static_cast<int>(jpeg.size()), &width, &height, &channels, 3);
    if (pixels == nullptr)
        return "not a picture";
    std::string text = std::to_string(width) + "x" + std::to_string(height) + " ";
    for (const int y : {height / 4, height * 3 / 4})
        for (const int x : {width / 4, width * 3 / 4})
        {
            const unsigned char* const pixel = pixels + 3 * (std::ptrdiff_t{width} * y + x);
            const auto isLight = [&](int channel) { return pixel[channel] > 127; };
            text += isLight(0) && isLight(1) && isLight(2) ? 'W'
                    : isLight(0)                           ? 'R'
                    : isLight(1)                           ? 'G'
                    : isLight(2)                           ? 'B'
                                                           : '-';
        }
    stbi_image_free(pixels);
    return text;
}

class PictureTest : public testing::Test
{
  protected:
    // The picture that a photo with these bytes becomes.
    std::string Small(const std::string& bytes, int longestEdge = 1200) const
    {
        std::ofstream(Scratch.File("picture"), std::ios::binary) << bytes;
        return SmallJPEG(Scratch.File("picture"), longestEdge);
    }

    std::string Problem(const std::string& bytes) const
    {
        try
        {
            return SizeOf(Small(bytes));
        }
        catch (const BadPicture& bad)
        {
            return bad.what();
        }
    }

    ScratchDirectory Scratch;
};

TEST_F(PictureTest, APictureIsScaledToItsLongestEdge)
{
    EXPECT_EQ(SizeOf(Small(FourFields(64, 32))), "64x32");
    EXPECT_EQ(SizeOf(Small(FourFields(64, 32), 32)), "32x16");
    EXPECT_EQ(SizeOf(Small(FourFields(32, 64), 32)), "16x32");
    EXPECT_EQ(SizeOf(Small(FourFields(400, 1), 20)), "20x1");
}

TEST_F(PictureTest, APictureIsTurnedAsItsEXIFDataSays)
{
    const std::string upright = Small(FourFields(64, 32));
    EXPECT_EQ(FieldsOf(upright), "64x32 RGBW");
    const std::array<const char*, 8> turned = {"64x32 RGBW", "64x32 GRWB", "64x32 WBGR", "64x32 BWRG",
                                               "32x64 RBGW", "32x64 BRWG", "32x64 WGBR", "32x64 GWRB"};
    for (int orientation = 1; orientation <= 8; ++orientation)
    {
        const std::string photo = WithOrientation(upright, orientation);
        EXPECT_EQ(OrientationOf(photo), orientation);
        EXPECT_EQ(FieldsOf(Small(photo)), turned.at(static_cast<std::size_t>(orientation) - 1)) << orientation;
        EXPECT_EQ(FieldsOf(Small(photo, 32)).substr(6),
                  std::string(turned.at(static_cast<std::size_t>(orientation) - 1)).substr(6));
    }
}

TEST_F(PictureTest, APictureWithoutOrientationIsUpright)
{
    const std::string upright = Small(FourFields(64, 32));
    EXPECT_EQ(OrientationOf(upright), 1);
    EXPECT_EQ(OrientationOf(WithOrientation(upright, 0)), 1);
    EXPECT_EQ(OrientationOf(WithOrientation(upright, 9)), 1);
    EXPECT_EQ(OrientationOf(""), 1);
}

TEST_F(PictureTest, ABrokenPictureIsAProblemOrAPicture)
{
    EXPECT_EQ(Problem(""), "the file is not a JPEG or PNG picture");
    EXPECT_EQ(Problem("GIF89a"), "the file is not a JPEG or PNG picture");
    EXPECT_EQ(Problem(FourFields(64, 32).substr(0, 200)), "the picture is damaged");
    std::string large = FourFields(2, 2);
    large.replace(16, 8, BigEndian(16'000, 4) + BigEndian(16'000, 4));
    EXPECT_EQ(Problem(large), "the picture has more than 100 million pixels");
    const std::string whole = Small(FourFields(64, 32));
    for (std::size_t length = 0; length < whole.size(); length += 7)
        EXPECT_FALSE(Problem(whole.substr(0, length)).empty());
    EXPECT_THROW(SmallJPEG(Scratch.File("."), 10), BadPicture);
    EXPECT_THROW(SmallJPEG(Scratch.File("missing"), 10), BadPicture);
}

TEST_F(PictureTest, AnURIHoldsTheBytesInBase64)
{
    EXPECT_EQ(DataURI(""), "data:image/jpeg;base64,");
    EXPECT_EQ(DataURI("f"), "data:image/jpeg;base64,Zg==");
    EXPECT_EQ(DataURI("fo"), "data:image/jpeg;base64,Zm8=");
    EXPECT_EQ(DataURI("foo"), "data:image/jpeg;base64,Zm9v");
    EXPECT_EQ(DataURI("\xFF\xFE\xFD"), "data:image/jpeg;base64,//79");
}

} // namespace

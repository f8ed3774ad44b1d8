// Tests of the texts and numbers in pictures.

#include "report/text.h"

#include "report/svg_picture.h"
#include "support/comma_locale.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace plant_report;
using namespace support;

namespace
{

const std::string Unknown = "\xEF\xBF\xBD"; // U+FFFD

// The first and the last of some characters, and the characters before and after them.
struct Range
{
    std::string Before, First, Last, After;
};

TEST(ReportTextTest, SpecialCharactersAreEscaped)
{
    EXPECT_EQ(Escaped("<script>a && b 'c' \"d\"</script>"),
              "&lt;script&gt;a &amp;&amp; b &#39;c&#39; &quot;d&quot;&lt;/script&gt;");
    EXPECT_EQ(Escaped("Gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8C\xB1\t\n"),
              "Gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8C\xB1\t\n");
}

TEST(ReportTextTest, ALineEndsWithOneLineFeed)
{
    EXPECT_EQ(Escaped("a\r\nb\rc\r"), "a\nb\nc\n");
}

TEST(ReportTextTest, WhatXMLCannotHoldIsReplaced)
{
    EXPECT_EQ(Escaped(std::string("a\0b", 3)), "a" + Unknown + "b");
    for (const std::string bad :
         {"\x01", "\x1F", "\x7F", "\xC2\x80", "\xC2\x9F", "\xEF\xBF\xBE", "\xEF\xB7\x90", "\xEF\xBF\xBD"})
        EXPECT_EQ(Escaped(bad + "x"), Unknown + "x") << testing::PrintToString(bad);
}

TEST(ReportTextTest, EachByteOfBrokenUTF8IsReplaced)
{
    EXPECT_EQ(Escaped("\x80"), Unknown);
    EXPECT_EQ(Escaped("\xC1\x81"), Unknown + Unknown);
    EXPECT_EQ(Escaped("\xE2\x82"), Unknown + Unknown);
    EXPECT_EQ(Escaped("\xE2\x82x"), Unknown + Unknown + "x");
    EXPECT_EQ(Escaped("\xE0\x80\x80"), Unknown + Unknown + Unknown);               // too long for U+0000
    EXPECT_EQ(Escaped("\xED\xA0\x80"), Unknown + Unknown + Unknown);               // a surrogate
    EXPECT_EQ(Escaped("\xF4\x90\x80\x80"), Unknown + Unknown + Unknown + Unknown); // above U+10FFFF
    EXPECT_EQ(Escaped("\xF5"), Unknown);
    EXPECT_EQ(Escaped("\xF9\x80\x80\x80"), Unknown + Unknown + Unknown + Unknown);
}

TEST(ReportTextTest, EveryTextOfTwoBytesStaysWellFormed)
{
    std::string xml = "<x>";
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second)
            xml += Escaped(std::string{static_cast<char>(first), static_cast<char>(second)});
    EXPECT_EQ(ElementsOf(xml + "</x>").size(), 1U);
}

TEST(ReportTextTest, NumbersHaveNoTrailingZeros)
{
    EXPECT_EQ(NumberText(1.5), "1.5");
    EXPECT_EQ(NumberText(2), "2");
    EXPECT_EQ(NumberText(100), "100");
    EXPECT_EQ(NumberText(100, 0), "100");
    EXPECT_EQ(NumberText(1.239, 1), "1.2");
    EXPECT_EQ(NumberText(-0.001), "0");
    EXPECT_EQ(NumberText(1e308).size(), 309U);
}

TEST(ReportTextTest, ANumberThatIsNotFiniteIsZero)
{
    EXPECT_EQ(NumberText(std::nan("")), "0");
    EXPECT_EQ(NumberText(std::numeric_limits<double>::infinity()), "0");
}

TEST(ReportTextTest, LabelsHaveCommasBetweenThousands)
{
    EXPECT_EQ(NumberLabel(999), "999");
    EXPECT_EQ(NumberLabel(1000), "1,000");
    EXPECT_EQ(NumberLabel(-100), "-100");
    EXPECT_EQ(NumberLabel(-123456), "-123,456");
    EXPECT_EQ(NumberLabel(1234567.891), "1,234,567.89");
}

TEST(ReportTextTest, ANumberThatIsAMistakeHasAShortLabel)
{
    EXPECT_EQ(NumberLabel(1e9), "1,000,000,000");
    EXPECT_EQ(NumberLabel(1.5e9), "1.5e+09");
    EXPECT_EQ(NumberLabel(1.25e300), "1.25e+300");
    EXPECT_EQ(NumberLabel(-1.2345e300, 0), "-1.23e+300");
    EXPECT_EQ(NumberLabel(std::numeric_limits<double>::infinity()), "0");
}

TEST(ReportTextTest, AShortenedTextEndsWithAnEllipsis)
{
    EXPECT_EQ(Shortened("Basil", 5), "Basil");
    EXPECT_EQ(Shortened("Basils", 5), "Basi\xE2\x80\xA6");
    EXPECT_EQ(Shortened("", 5), "");
    EXPECT_EQ(Shortened(std::string(10'000, 'a'), 200).size(), 199U + 3);
}

TEST(ReportTextTest, AShortenedTextKeepsAccentsWithTheirLetters)
{
    const std::string accented = "e\xCC\x81";                                                  // e and an accent
    const std::string family = "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7\xF0\x9F\x8F\xBD"; // joined, with skin tone
    EXPECT_EQ(Shortened(accented + family, 2), accented + family);
    EXPECT_EQ(Shortened(accented + family + "x", 2), accented + "\xE2\x80\xA6");
    std::string pile = "a";
    for (int i = 0; i < 10'000; ++i)
        pile += "\xCC\x81";
    EXPECT_LT(Shortened(pile, 5).size(), 200U);
}

TEST(ReportTextTest, WhatIsDrawnOnALetterIsAPartOfIt)
{
    for (const Range& range : std::vector<Range>{{"\u02FF", "\u0300", "\u036F", "\u0370"},
                                                 {"\u0590", "\u0591", "\u05BD", "\u05BE"},
                                                 {"\u064A", "\u064B", "\u065F", "\u0660"},
                                                 {"\u1AAF", "\u1AB0", "\u1AFF", "\u1B00"},
                                                 {"\u200C", "\u200D", "\u200D", "\u200E"},
                                                 {"\u20CF", "\u20D0", "\u20FF", "\u2100"},
                                                 {"\uFDFF", "\uFE00", "\uFE0F", "\uFE10"},
                                                 {"\U0001F3FA", "\U0001F3FB", "\U0001F3FF", "\U0001F400"},
                                                 {"\U000E001F", "\U000E0020", "\U000E007F", "\U000E0080"}})
    {
        for (const std::string& part : {range.First, range.Last})
            EXPECT_EQ(Shortened("a" + part + "b", 2), "a" + part + "b");
        for (const std::string& letter : {range.Before, range.After})
            EXPECT_EQ(Shortened("a" + letter + "b", 2), "a\xE2\x80\xA6") << letter;
    }
}

TEST(ReportTextTest, WhatFollowsAJoinerIsAPartOfTheLetter)
{
    EXPECT_EQ(Shortened("a\u200Dbc", 2), "a\u200Dbc");
    EXPECT_EQ(Shortened("a\u200Dbcd", 2), "a\u200Db\xE2\x80\xA6");
}

TEST(ReportTextTest, ANameThatCanChangeTheDirectionIsIsolated)
{
    for (const Range& range : std::vector<Range>{{"\u058F", "\u0590", "\u08FF", "\u0900"},
                                                 {"\u200D", "\u200E", "\u200F", "\u2010"},
                                                 {"\u2029", "\u202A", "\u202E", "\u202F"},
                                                 {"\u2065", "\u2066", "\u2069", "\u206A"},
                                                 {"\uFB1C", "\uFB1D", "\uFDFF", "\uFE00"},
                                                 {"\uFE6F", "\uFE70", "\uFEFF", "\uFF00"},
                                                 {"\U000107FF", "\U00010800", "\U00010FFF", "\U00011000"},
                                                 {"\U0001E7FF", "\U0001E800", "\U0001EFFF", "\U0001F000"}})
    {
        for (const std::string& letter : {range.First, range.Last})
            EXPECT_EQ(NameInSentence("a" + letter), "\u2068a" + letter + "\u2069");
        for (const std::string& letter : {range.Before, range.After})
            EXPECT_EQ(NameInSentence("a" + letter), "a" + letter);
    }
}

TEST(ReportTextTest, ANameInASentenceKeepsItsDirectionToItself)
{
    const auto isolated = [](const std::string& text) { return "\xE2\x81\xA8" + text + "\xE2\x81\xA9"; };
    EXPECT_EQ(NameInSentence("Basil \xC3\xBC"), "Basil \xC3\xBC");
    EXPECT_EQ(NameInSentence("\xD7\xA8"), isolated("\xD7\xA8"));
    EXPECT_EQ(NameInSentence("a\xE2\x80\xAE b"), isolated("a\xE2\x80\xAE b"));
    EXPECT_EQ(NameInSentence(std::string(61, 'a')), std::string(59, 'a') + "\xE2\x80\xA6");
}

TEST(ReportTextTest, AWiderTextIsEstimatedWider)
{
    EXPECT_EQ(TextWidth("", 12), 0);
    EXPECT_DOUBLE_EQ(TextWidth("ab", 24), 2 * TextWidth("ab", 12));
    EXPECT_LT(TextWidth("il", 12), TextWidth("ae", 12));
    EXPECT_LT(TextWidth("ae", 12), TextWidth("AE", 12));
    EXPECT_LT(TextWidth("AE", 12), TextWidth("MW", 12));
    EXPECT_LT(TextWidth(" ", 12), TextWidth("i", 12));
    EXPECT_LT(TextWidth("\xC3\xA9", 12), TextWidth("\xE6\xA2\x85", 12)); // e with an accent, a Chinese sign
    for (const std::string bad : {"\x01", "\xC2\x80", "\xFF"})
        EXPECT_EQ(TextWidth(bad, 12), TextWidth(Unknown, 12)) << "what is drawn instead";
    EXPECT_EQ(TextWidth("e\xCC\x81", 12), TextWidth("e", 12));                   // an accent takes no room
    EXPECT_LT(TextWidth("\xE2\x80\xA6", 12), TextWidth("\xF0\x9F\x8C\xB1", 12)); // an ellipsis, an emoji
}

// The widths of runs of letters that Chromium draws with DejaVu Sans, Noto Color Emoji and Droid Sans Fallback.
TEST(ReportTextTest, WideLettersAreNotEstimatedTooNarrow)
{
    const auto expectAtLeast = [](const std::string& letter, double width)
    {
        EXPECT_GE(TextWidth(letter, 1), width) << letter;
        EXPECT_LE(TextWidth(letter, 1), 1.5 * width) << letter << ": names would be cut early";
    };
    expectAtLeast("W", 0.989);
    expectAtLeast("M", 0.863);
    expectAtLeast("m", 0.975);
    expectAtLeast("@", 1);
    expectAtLeast("%", 0.951);
    expectAtLeast("#", 0.838);
    expectAtLeast("D", 0.771);
    expectAtLeast("0", 0.637);
    expectAtLeast("r", 0.412);
    expectAtLeast("\xC3\x86", 0.975);                  // a joined A and E
    expectAtLeast("\xD0\xA9", 1.087);                  // a Cyrillic shcha
    expectAtLeast("\xD0\xB0", 0.613);                  // a Cyrillic a
    expectAtLeast("\xD8\xB3", 1.221);                  // an Arabic seen that stands alone
    expectAtLeast("\xE2\x80\xA6", 1);                  // an ellipsis
    expectAtLeast("\xE6\xB0\xB4", 1);                  // a Chinese sign
    expectAtLeast("\xED\x95\x9C", 1);                  // a Korean syllable
    expectAtLeast("\xF0\x9F\x8D\x85", 1.245);          // a tomato
    expectAtLeast("2\xEF\xB8\x8F\xE2\x83\xA3", 1.245); // the key of a 2, an emoji
    expectAtLeast("\xE2\x98\xBA\xEF\xB8\x8F", 1.245);  // a smile with the selector of emoji
    EXPECT_GT(TextWidth("\xEF\xB7\xBD", 1), 5);        // an Arabic sentence in one character
}

TEST(ReportTextTest, AJoinedEmojiMayBeDrawnAsItsParts)
{
    const std::string woman = "\xF0\x9F\x91\xA9";
    const std::string joiner = "\xE2\x80\x8D";
    EXPECT_DOUBLE_EQ(TextWidth(woman + joiner + woman, 1), 2 * TextWidth(woman, 1));
    EXPECT_DOUBLE_EQ(TextWidth(woman + "\xF0\x9F\x8F\xBD", 1), 2 * TextWidth(woman, 1)); // a skin tone
}

TEST(ReportTextTest, ATextThatIsTooWideFitsAfterItsCut)
{
    EXPECT_EQ(Fitting("Basil", 12, 100), "Basil");
    EXPECT_EQ(Fitting("Basil", 12, TextWidth("Basil", 12)), "Basil");
    const std::string cut = Fitting(std::string(10'000, 'a'), 12, 100);
    EXPECT_LE(TextWidth(cut, 12), 100);
    EXPECT_GT(TextWidth(cut, 12), 90);
    EXPECT_EQ(cut.substr(cut.size() - 4), "a\xE2\x80\xA6");
    EXPECT_EQ(Fitting("Basil", 12, 1), "\xE2\x80\xA6");
}

TEST(ReportTextTest, NumbersKeepTheirPointInALocaleWithCommas)
{
    const CommaLocale locale;
    EXPECT_EQ(NumberText(1.5), "1.5");
}

} // namespace

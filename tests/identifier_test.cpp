// The UUIDs of plants and photos.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

#include <gtest/gtest.h>

std::string CreatePlantUUID(); // no header declares it

namespace
{

// Whether `c` is allowed where the shape of an identifier has `place`: `x` is a digit, `y` one of `89ab`.
bool Fits(char c, char place)
{
    const std::string_view digits = "0123456789abcdef";
    if (place == 'x')
        return digits.find(c) != std::string_view::npos;
    if (place == 'y')
        return digits.substr(8, 4).find(c) != std::string_view::npos;
    return c == place;
}

TEST(IdentifierTest, AnIdentifierIsAVersion4UUIDInLowerCase)
{
    const std::string_view shape = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    for (int i = 0; i < 1'000; ++i)
    {
        const std::string uuid = CreatePlantUUID();
        ASSERT_TRUE(std::equal(uuid.begin(), uuid.end(), shape.begin(), shape.end(), Fits)) << uuid;
    }
}

TEST(IdentifierTest, NoIdentifierIsReturnedTwice)
{
    std::unordered_set<std::string> given;
    for (int i = 0; i < 100'000; ++i)
        ASSERT_TRUE(given.insert(CreatePlantUUID()).second) << "after " << i;
}

TEST(IdentifierTest, EveryDigitThatIsNotFixedIsRandom)
{
    std::set<char> seen[36];
    for (int i = 0; i < 1'000; ++i)
    {
        const std::string uuid = CreatePlantUUID();
        for (std::size_t place = 0; place < std::size(seen); ++place)
            seen[place].insert(uuid.at(place));
    }
    for (std::size_t place = 0; place < std::size(seen); ++place)
    {
        const std::string digits(seen[place].begin(), seen[place].end());
        if (place == 8 || place == 13 || place == 18 || place == 23)
            EXPECT_EQ(digits, "-");
        else if (place == 14)
            EXPECT_EQ(digits, "4");
        else if (place == 19)
            EXPECT_EQ(digits, "89ab");
        else
            EXPECT_EQ(digits, "0123456789abcdef") << "place " << place;
    }
}

// Matches a text that no earlier match has seen, and keeps it.
class NewTextMatcher
{
  public:
    explicit NewTextMatcher(std::set<std::string>& kept) : Kept(&kept) {}
    bool MatchAndExplain(const std::string& output, testing::MatchResultListener*) const
    {
        return Kept->insert(output).second;
    }
    void DescribeTo(std::ostream* out) const { *out << "is new"; }
    void DescribeNegationTo(std::ostream* out) const { *out << "is not new"; }

  private:
    std::set<std::string>* Kept;
};

TEST(IdentifierDeathTest, EveryProcessStartsWithAnotherIdentifier)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe"; // starts a new process instead of a fork of this one
    std::set<std::string> firsts;
    for (int process = 0; process < 3; ++process)
        EXPECT_EXIT((std::cerr << CreatePlantUUID(), std::_Exit(0)), testing::ExitedWithCode(0),
                    testing::MakePolymorphicMatcher(NewTextMatcher(firsts)));
}

} // namespace

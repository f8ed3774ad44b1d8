#include "record/similar_name.h"

#include "record/edit_distance.h"
#include "record/letters.h"

#include <algorithm>
#include <iterator>

namespace
{

std::string DigitsOf(const std::string& text)
{
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char letter) { return letter >= '0' && letter <= '9'; });
    return digits;
}

// Names of one or two letters, such as A and B, are labels: one letter makes them different names.
bool IsLabel(const std::string& name)
{
    constexpr std::size_t longest = 2;
    return LettersOf(name).size() <= longest;
}

std::optional<NameDifference> Compare(const std::string& left, const std::string& right)
{
    if (left == right)
        return NameDifference::None;
    const std::string a = WithoutCaseAndAccents(left);
    const std::string b = WithoutCaseAndAccents(right);
    if (a == b)
        return NameDifference::CaseOrAccents;
    if (!IsLabel(a) && !IsLabel(b) && DigitsOf(a) == DigitsOf(b) && EditDistance(a, b) == 1)
        return NameDifference::OneLetter;
    return std::nullopt;
}

} // namespace

std::optional<SimilarName> FindSimilarName(const std::string& name, const std::vector<std::string>& names)
{
    std::optional<SimilarName> similar;
    for (const std::string& other : names)
        if (!name.empty() && !other.empty())
            if (const auto difference = Compare(name, other);
                difference && (!similar || *difference < similar->Difference))
                similar = {other, *difference};
    return similar;
}

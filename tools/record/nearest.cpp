#include "record/nearest.h"

#include "record/letters.h"

#include <algorithm>

namespace
{

// Optimal string alignment: like the Levenshtein distance, with swaps of adjacent letters.
std::size_t Distance(const std::string& left, const std::string& right)
{
    const std::vector<Letter> a = LettersOf(left);
    const std::vector<Letter> b = LettersOf(right);
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j)
        {
            if (i == 0 || j == 0)
            {
                cost[i][j] = i + j;
                continue;
            }
            const bool equal = a[i - 1].Bytes == b[j - 1].Bytes;
            cost[i][j] =
                std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + (equal ? std::size_t{0} : 1)});
            if (i > 1 && j > 1 && a[i - 1].Bytes == b[j - 2].Bytes && a[i - 2].Bytes == b[j - 1].Bytes)
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    return cost[a.size()][b.size()];
}

// What is compared: without case and accents, and without the dashes of a flag.
std::string Compared(const std::string& text)
{
    return WithoutCaseAndAccents(text.substr(std::min(text.find_first_not_of('-'), text.size())));
}

bool BeginsOrIsAWordOf(const std::string& word, const std::string& candidate)
{
    constexpr std::size_t shortest = 2;
    if (word.size() < shortest)
        return false;
    for (std::size_t at = candidate.find(word); at != std::string::npos; at = candidate.find(word, at + 1))
    {
        const std::size_t end = at + word.size();
        const bool ends = end == candidate.size() || candidate[end] == '-' || candidate[end] == ' ';
        if (at == 0 || ((candidate[at - 1] == '-' || candidate[at - 1] == ' ') && ends))
            return true;
    }
    return false;
}

} // namespace

std::vector<std::string> Nearest(const std::string& word, const std::vector<std::string>& candidates)
{
    constexpr std::size_t lettersPerMistake = 3;
    constexpr std::size_t most = 3;
    const std::string compared = Compared(word);
    std::vector<std::string> nearest;
    std::size_t least = SIZE_MAX;
    for (const std::string& candidate : candidates)
    {
        if (candidate.empty())
            continue;
        const std::string other = Compared(candidate);
        std::size_t distance = Distance(compared, other);
        if (BeginsOrIsAWordOf(compared, other))
            distance = std::min<std::size_t>(distance, 1);
        else if (distance > std::max(LettersOf(compared).size(), LettersOf(other).size()) / lettersPerMistake)
            continue;
        if (distance < least)
            nearest.clear();
        least = std::min(least, distance);
        if (distance == least && std::find(nearest.begin(), nearest.end(), candidate) == nearest.end())
            nearest.push_back(candidate);
    }
    nearest.resize(std::min(nearest.size(), most));
    return nearest;
}

std::string DidYouMean(const std::vector<std::string>& suggestions)
{
    std::string question;
    for (std::size_t i = 0; i < suggestions.size(); ++i)
        question += (i == 0 ? "did you mean " : i + 1 == suggestions.size() ? " or " : ", ") + suggestions[i];
    return question.empty() ? question : question + '?';
}

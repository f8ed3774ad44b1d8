#include "record/nearest.h"

#include "record/edit_distance.h"
#include "record/letters.h"

#include <algorithm>

namespace
{

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

// Whether a candidate is a short form of the word, such as Veg of vegetative.
bool IsShortFormOf(const std::string& candidate, const std::string& word)
{
    constexpr std::size_t shortest = 3;
    return candidate.size() >= shortest && word.starts_with(candidate);
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
        std::size_t distance = EditDistance(compared, other);
        if (BeginsOrIsAWordOf(compared, other))
            distance = std::min<std::size_t>(distance, 1);
        else if (IsShortFormOf(other, compared))
            distance = std::min<std::size_t>(distance, 2); // a word with one wrong letter is nearer
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

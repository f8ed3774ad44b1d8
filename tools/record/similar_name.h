#pragma once

#include <optional>
#include <string>
#include <vector>

// Finds the name that a person may have mistyped.

// How a name differs from another one.
enum class NameDifference
{
    None,
    CaseOrAccents,
    OneLetter // inserted, removed, replaced or exchanged with its neighbour, regardless of case and accents
};

struct SimilarName
{
    std::string Name;
    NameDifference Difference;
};

// Returns the name that `name` is most likely to be mistaken for. Names with different digits are not similar: they are
// numbered. Names of one or two letters are similar only where case or accents differ.
std::optional<SimilarName> FindSimilarName(const std::string& name, const std::vector<std::string>& names);

#pragma once

#include <string>
#include <vector>

// Suggests what a person meant with a mistyped word.

// Returns the candidates that are nearest to the word, at most three, in the order of the candidates. Empty where none
// is near. The distance is the number of letters to insert, remove, replace or swap; case and accents do not count. A
// candidate of several words, such as `--dry-weight-g`, is also near if the word begins it or is one of its words.
std::vector<std::string> Nearest(const std::string& word, const std::vector<std::string>& candidates);

// Returns "did you mean A, B or C?"; empty where nothing is suggested.
std::string DidYouMean(const std::vector<std::string>& suggestions);

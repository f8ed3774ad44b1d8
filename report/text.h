// Texts and numbers in pictures and pages, for the other files of this library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace plant_report
{

// A longer title of a page or a mark is shortened.
constexpr std::size_t MostLettersOfTitle = 200;

// A text for XML: special characters are escaped, and what XML or HTML cannot hold (control characters, broken UTF-8)
// becomes U+FFFD, so that the page stays well-formed whatever a journal holds.
std::string Escaped(std::string_view text);

// A number for an attribute, with at most `decimals` decimals and without trailing zeros. The result never depends on
// the locale. A value that is not finite gives "0".
std::string NumberText(double value, int decimals = 2);

// A number for a label or a table: as NumberText(), but with commas between groups of three digits.
std::string NumberLabel(double value, int decimals = 2);

// At most `letters` letters of the text. A longer text ends with an ellipsis, which counts as a letter; a letter keeps
// its accents.
std::string Shortened(std::string_view text, std::size_t letters);

// A name within a sentence: shortened, and its writing direction does not change the order of the words around it.
std::string NameInSentence(std::string_view name);

// A width that the text is unlikely to exceed, where its letters have the height `size`. The browser chooses the font,
// so the exact width is unknown.
double TextWidth(std::string_view text, double size);

// The beginning of the text that is at most `widest` wide, with an ellipsis where it is not the whole text.
std::string Fitting(std::string_view text, double size, double widest);

} // namespace plant_report

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The letters of a text in UTF-8, of any alphabet. Only letters.cpp includes utf8proc's header.

// What a reader sees as one character (a grapheme cluster): a base with its combining marks, a joined emoji, a flag.
struct Letter
{
    std::string_view Bytes;
    std::size_t Width; // in columns of a terminal: 0, 1 or 2
    bool Printable;    // valid UTF-8, and nothing that controls the terminal or the order of letters
};

// Cuts a text into its letters, which refer to the text. A code point that is not printable is a letter of its own, and
// so is a byte that is not UTF-8.
std::vector<Letter> LettersOf(std::string_view text);

// Returns a text that is equal for two texts if they differ only in the case of letters, or in how their accents are
// encoded. A text that is not UTF-8 is returned unchanged.
std::string WithoutCase(const std::string& text);

// As WithoutCase(), and also without the accents of letters.
std::string WithoutCaseAndAccents(const std::string& text);

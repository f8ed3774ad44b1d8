#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Returns the stored names for a type of value, such as PLANT or STRAIN; none for other types. `file` is the value of
// --file. Must not throw.
using StoredNames =
    std::function<std::vector<std::string>(const std::string& type, const std::optional<std::string>& file)>;

// What a shell offers for a word.
struct Offer
{
    std::string Word; // empty: the shell offers file names
    std::string Description;
};

// Returns what can replace the last word. The other words are the command line before it, after the program's name.
std::vector<Offer> Offers(const CLI::App& program, std::vector<std::string> words, const StoredNames& stored);

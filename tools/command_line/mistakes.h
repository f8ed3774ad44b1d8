#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI
{
class App;
class ParseError;
} // namespace CLI

// A mistake in the command line, and what to do next. The exit status is 2.
class Mistake : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Describes the words that the parser does not know, each with the nearest ones that it knows, in their order. Empty
// where it knows all of them.
std::string DescribeUnknownWords(const CLI::App& program);

// Describes a mistake that the parser found after it had read all words. Options are named as in `arguments`.
std::string DescribeMistake(const CLI::App& program, const CLI::ParseError& mistake,
                            const std::vector<std::string>& arguments);

// Returns the command that the words name, for `plantjournal help WORD...`. Throws Mistake where there is none.
const CLI::App& CommandToDescribe(const CLI::App& group, const std::vector<std::string>& words);

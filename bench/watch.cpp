// Counts the instructions of a write with a watcher for each instruction without.

#include "bar_check.h"
#include "process.h"
#include "testing/scratch_directory.h"

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <string>

namespace
{

// The instructions of 1,000 care entries, without the start of the program.
double Count(const std::string& program, const std::string& mode)
{
    const support::ScratchDirectory scratch;
    const auto count = [&](const char* entries) {
        return static_cast<double>(CountInstructions({program, mode, entries}, scratch.File("callgrind")));
    };
    return count("1100") - count("100");
}

} // namespace

int main(int argc, char** argv)
try
{
    // A program for each bar, in their order.
    if (argc != 2 + static_cast<int>(std::size(bars::WatchRatios)))
    {
        std::cerr << "usage: " << argv[0] << " FAMILIES-PROGRAM PLANTS-PROGRAM OUTPUT\n";
        return 2;
    }
    BarCheck check("instructions with a watcher for each without", argv[argc - 1]);
    for (std::size_t i = 0; i < std::size(bars::WatchRatios); ++i)
        check.Compare(bars::WatchRatios[i], Count(argv[i + 1], "watched") / Count(argv[i + 1], "unwatched"));
    return check.Passed() ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

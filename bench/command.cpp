// Counts the instructions of the command on a journal with many care entries and on one without: no command that needs
// a few rows may read them all.

#include "bar_check.h"
#include "process.h"
#include "seed.h"
#include "testing/scratch_directory.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace
{

constexpr int Plants = 1000;
constexpr int CareEntries = 200'000;

void WriteJournal(const std::string& path, int careEntries)
{
    const std::unique_ptr<Implementation> journal = Implementations().front().Make();
    if (!journal->Open(path))
        throw std::runtime_error(path + ": cannot be created");
    Fill(*journal, {Plants, 0, careEntries, CareEntries / Plants});
    journal->Close();
}

// The arguments of the command that the bar is for.
std::vector<std::string> Arguments(const std::string& operation)
{
    if (operation == "strain list")
        return {"strain", "list"};
    if (operation == "feed")
        return {"feed", SeedUUID(1), "--product", "Bloom A", "--amount-ml", "500", "--ec", "1.8"};
    if (operation == "plant show")
        return {"plant", "show", SeedUUID(1)};
    throw std::invalid_argument("no arguments for " + operation);
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 3)
    {
        std::cerr << "usage: " << argv[0] << " COMMAND OUTPUT\n";
        return 2;
    }
    const support::ScratchDirectory scratch;
    const std::string journal = scratch.File("journal.db");
    const std::string empty = scratch.File("empty.db");
    const std::string full = scratch.File("full.db");
    WriteJournal(empty, 0);
    WriteJournal(full, CareEntries);

    const auto count = [&](const std::string& source, const std::string& operation)
    {
        std::filesystem::copy_file(source, journal, std::filesystem::copy_options::overwrite_existing);
        std::vector<std::string> words = {argv[1], "--file", journal};
        for (const std::string& argument : Arguments(operation))
            words.push_back(argument);
        return static_cast<double>(CountInstructions(words, scratch.File("callgrind")));
    };
    BarCheck check("instructions with 200,000 care entries for each without", argv[2]);
    for (const bars::Bar& bar : bars::CommandGrowth)
        check.Compare(bar, count(full, bar.Operation) / count(empty, bar.Operation));
    return check.Passed() ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

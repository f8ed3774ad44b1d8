// Compares answers of query/ on a journal of ten years with SQLite's shell, which runs one statement that returns the
// same rows. Verifies that both print the same rows. Counts whole processes, from loading the program to its exit.

#include "answer_statements.h"
#include "bar_check.h"
#include "process.h"
#include "seed.h"
#include "testing/scratch_directory.h"

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace
{

constexpr int Plants = 1000;
constexpr int CareEntries = 200'000;
constexpr int OtherRecords = 10'000;

void WriteJournal(const std::string& path)
{
    const std::unique_ptr<Implementation> journal = Implementations().front().Make();
    if (!journal->Open(path))
        throw std::runtime_error(path + ": cannot be created");
    Fill(*journal, {Plants, 0, CareEntries, CareEntries / Plants, OtherRecords});
    if (!journal->Execute("UPDATE Plants SET Stage='Veg',FlipDate='' WHERE ID%5=1;")) // events have their dates
        throw std::runtime_error(path + ": cannot be filled");
    journal->Close();
}

bool Compare(const std::string& program, const std::string& shell, const std::string& output)
{
    const support::ScratchDirectory scratch;
    const std::string journal = scratch.File("journal.db");
    const std::string statement = scratch.File("statement.sql");
    const std::string answerRows = scratch.File("answer.tsv");
    const std::string shellRows = scratch.File("shell.tsv");
    WriteJournal(journal);

    BarCheck check("instructions for each of SQLite's shell", output);
    for (const bars::Bar& bar : bars::ShellRatios)
    {
        std::ofstream(statement) << StatementOf(bar.Operation);
        const auto count = [&](const std::vector<std::string>& words, const Streams& streams)
        { return static_cast<double>(CountInstructions(words, scratch.File("callgrind"), streams)); };
        const double answer = count({program, bar.Operation, journal}, {.Output = answerRows});
        const double bare = count({shell, "-batch", "-bail", "-init", "/dev/null", "-separator", "\t", journal},
                                  {.Input = statement, .Output = shellRows});
        const std::string rows = support::FileBytes(answerRows);
        if (rows.empty() || rows != support::FileBytes(shellRows))
            throw std::runtime_error(std::string(bar.Operation) + ": the rows differ from those of SQLite's shell");
        check.Compare(bar, answer / bare);
    }
    return check.Passed();
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 4)
    {
        std::cerr << "usage: " << argv[0] << " PRINT_ANSWER SHELL OUTPUT\n";
        return 2;
    }
    return Compare(argv[1], argv[2], argv[3]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

// Times the command's import of care entries against SQLite's shell, which imports the same file into the same tables
// and composes the details of the events in SQL. Both leave the same journal; this is verified first.

#include "bar_check.h"
#include "process.h"
#include "seed.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <vector>

namespace
{

constexpr int Plants = 1000;
constexpr int CareEntries = 200'000;

// The files of the benchmark, in one directory.
struct Paths
{
    std::filesystem::path Directory;

    std::string Before() const { return Directory / "before.db"; }
    std::string ByCommand() const { return Directory / "command.db"; }
    std::string ByShell() const { return Directory / "shell.db"; }
    std::string Tables() const { return Directory / "tables"; }
    std::string CareEntries() const { return Directory / "tables" / "PlantCareEntries.csv"; }
    std::string Script() const { return Directory / "import.sql"; }
};

void WriteJournal(const std::string& path)
{
    std::filesystem::remove(path);
    const std::unique_ptr<Implementation> journal = Implementations().front().Make();
    if (!journal->Open(path))
        throw std::runtime_error(path + ": cannot be created");
    Fill(*journal, {Plants, 0, 0});
    journal->Close();
}

void WriteCareEntries(const std::string& path)
{
    std::ofstream file(path);
    file << "PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes\r\n";
    for (int i = 0; i < CareEntries; ++i)
    {
        file << SeedUUID(i % Plants + 1) << ",20" << 10 + i % 15 << '-' << 10 + i % 3 << '-' << 10 + i % 20 << ',';
        if (i % 2 == 0)
            file << "Water,," << 250 + i % 10 * 50 << ",0,0," << i % 5 * 10 << ',';
        else
            file << "Feed,Bloom A," << 250 + i % 10 * 50 << ",1." << i % 10 << ",6." << i % 7 << ",0,";
        file << (i % 4 == 0 ? "\"dry pot, light\"" : "") << "\r\n";
    }
    if (!file.flush())
        throw std::runtime_error(path + ": cannot be written");
}

void WriteScript(const Paths& paths)
{
    std::ofstream file(paths.Script());
    file
        << "CREATE TEMP TABLE Staged(PlantUUID TEXT,CareDate TEXT,Action TEXT,Product TEXT,AmountMl REAL,EC REAL,PH REAL,"
           "RunoffMl REAL,Notes TEXT);\n"
           ".import --csv --skip 1 \""
        << paths.CareEntries()
        << "\" Staged\n"
           "BEGIN IMMEDIATE;\n"
           "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) SELECT PlantUUID,CareDate,Action,"
           "iif(Product<>'',Product||' | ','')||printf('%.0f ml',AmountMl)||iif(EC>0,printf(' | EC %.2f',EC),'')||"
           "iif(PH>0,printf(' | pH %.2f',PH),'')||iif(RunoffMl>0,printf(' | Runoff %.0f ml',RunoffMl),'')||"
           "iif(Notes<>'',' | '||Notes,'') FROM Staged ORDER BY rowid;\n"
           "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,"
           "Notes) SELECT rowid+(SELECT max(ID) FROM PlantEvents)-(SELECT count(*) FROM Staged),PlantUUID,CareDate,"
           "Action,Product,AmountMl,EC,PH,RunoffMl,Notes FROM Staged ORDER BY rowid;\n"
           "COMMIT;\n";
    if (!file.flush())
        throw std::runtime_error(paths.Script() + ": cannot be written");
}

// Returns the seconds that the program takes with a journal that has no care entries yet.
double Time(const Paths& paths, const std::string& journal, const std::vector<std::string>& words,
            const std::string& input)
{
    std::filesystem::copy_file(paths.Before(), journal, std::filesystem::copy_options::overwrite_existing);
    const auto begin = std::chrono::steady_clock::now();
    RunProgram(words, input);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// All that a journal holds, and how many care entries.
std::string ContentOf(const std::string& journal)
{
    const support::PlainConnection connection(journal);
    if (connection.Value("SELECT count(*) FROM PlantCareEntries;") != std::to_string(CareEntries))
        throw std::runtime_error(journal + ": does not hold every care entry");
    return support::Content(connection.NativeHandle());
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 6 || std::atoi(argv[3]) < 1)
    {
        std::cerr << "usage: " << argv[0] << " COMMAND SHELL ROUNDS DIRECTORY OUTPUT\n";
        return 2;
    }
    const Paths paths{argv[4]};
    std::filesystem::create_directory(paths.Tables());
    WriteJournal(paths.Before());
    WriteCareEntries(paths.CareEntries());
    WriteScript(paths);

    const auto timeCommand = [&]
    {
        return Time(paths, paths.ByCommand(), {argv[1], "--file", paths.ByCommand(), "import", paths.Tables()},
                    "/dev/null");
    };
    const auto timeShell = [&]
    {
        return Time(paths, paths.ByShell(), {argv[2], "-batch", "-bail", "-init", "/dev/null", paths.ByShell()},
                    paths.Script());
    };

    // The first round warms up.
    timeCommand();
    timeShell();
    if (ContentOf(paths.ByCommand()) != ContentOf(paths.ByShell()))
        throw std::runtime_error("the command and SQLite's shell leave different journals");

    std::vector<double> ratios;
    for (int round = 1; round <= std::atoi(argv[3]); ++round)
    {
        // The order alternates.
        const double before = round % 2 == 0 ? timeShell() : 0;
        const double command = timeCommand();
        const double shell = round % 2 == 0 ? before : timeShell();
        ratios.push_back(command / shell);
        std::cerr << "import: " << command << " s, SQLite's shell: " << shell << " s\n";
    }
    BarCheck check("time for that of SQLite's shell", argv[5]);
    for (const bars::Bar& bar : bars::ImportRatios)
        check.Compare(bar, Median(ratios));
    return check.Passed() ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

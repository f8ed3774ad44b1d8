// Compares the command's import of care entries with SQLite's shell, which imports the same file into the same tables
// and composes the details of the events in SQL. Verifies that both leave the same journal.

#include "bar_check.h"
#include "process.h"
#include "seed.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

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

// A program that imports the care entries into a journal.
struct Importer
{
    std::string Journal;
    std::vector<std::string> Words;
    std::string Input;
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

void WriteCareEntries(const std::string& path, int count)
{
    std::ofstream file(path);
    file << "PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes\r\n";
    for (int i = 0; i < count; ++i)
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

void WriteScript(const std::string& path, const std::string& careEntries)
{
    std::ofstream file(path);
    file
        << "CREATE TEMP TABLE Staged(PlantUUID TEXT,CareDate TEXT,Action TEXT,Product TEXT,AmountMl REAL,EC REAL,PH REAL,"
           "RunoffMl REAL,Notes TEXT);\n"
           ".import --csv --skip 1 \""
        << careEntries
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
        throw std::runtime_error(path + ": cannot be written");
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The command and the shell, with a CSV file of care entries and a journal that has their plants.
class Comparison
{
  public:
    // Writes the files into `directory`.
    Comparison(const std::string& command, const std::string& shell, const std::string& directory, int careEntries)
        : Directory(directory),
          CareEntries(careEntries), Command{File("command.db"),
                                            {command, "--file", File("command.db"), "import", File("tables")},
                                            "/dev/null"},
          Shell{
              File("shell.db"), {shell, "-batch", "-bail", "-init", "/dev/null", File("shell.db")}, File("import.sql")}
    {
        std::filesystem::create_directory(File("tables"));
        WriteJournal(File("before.db"));
        WriteCareEntries(File("tables/PlantCareEntries.csv"), CareEntries);
        WriteScript(File("import.sql"), File("tables/PlantCareEntries.csv"));
    }

    // Returns the command's instructions for each of the shell's.
    double InstructionRatio() const
    {
        const double command = CountOf(Command);
        const double shell = CountOf(Shell);
        Verify();
        return command / shell;
    }

    // Returns the median of the ratios of their times. They run in turns, each of them first in every second round.
    double TimeRatio(int rounds) const
    {
        SecondsOf(Command); // warms up
        SecondsOf(Shell);
        Verify();
        std::vector<double> ratios;
        for (int round = 0; round < rounds; ++round)
        {
            const bool commandFirst = round % 2 == 0;
            const double first = SecondsOf(commandFirst ? Command : Shell);
            const double second = SecondsOf(commandFirst ? Shell : Command);
            ratios.push_back(commandFirst ? first / second : second / first);
            std::cerr << "import, time for that of SQLite's shell: " << ratios.back() << '\n';
        }
        return Median(ratios);
    }

  private:
    std::string File(const std::string& name) const { return (Directory / name).string(); }

    void Prepare(const Importer& importer) const
    {
        std::filesystem::copy_file(File("before.db"), importer.Journal,
                                   std::filesystem::copy_options::overwrite_existing);
    }

    double SecondsOf(const Importer& importer) const
    {
        Prepare(importer);
        const auto begin = std::chrono::steady_clock::now();
        RunProgram(importer.Words, {.Input = importer.Input});
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }

    double CountOf(const Importer& importer) const
    {
        Prepare(importer);
        return static_cast<double>(CountInstructions(importer.Words, File("callgrind"), {.Input = importer.Input}));
    }

    void Verify() const
    {
        const support::PlainConnection command(Command.Journal);
        const support::PlainConnection shell(Shell.Journal);
        if (command.Value("SELECT count(*) FROM PlantCareEntries;") != std::to_string(CareEntries))
            throw std::runtime_error("the command did not import every care entry");
        if (support::Content(command.NativeHandle()) != support::Content(shell.NativeHandle()))
            throw std::runtime_error("the command and SQLite's shell leave different journals");
    }

    std::filesystem::path Directory;
    int CareEntries;
    Importer Command;
    Importer Shell;
};

} // namespace

int main(int argc, char** argv)
try
{
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "count" && argc == 5)
    {
        const support::ScratchDirectory scratch;
        BarCheck check("instructions for each of SQLite's shell", argv[4]);
        check.Compare(*bars::ImportInstructions,
                      Comparison(argv[2], argv[3], scratch.File(""), 20'000).InstructionRatio());
        return check.Passed() ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (word == "time" && argc == 7 && std::stoi(argv[5]) > 0)
    {
        BarCheck check("time for that of SQLite's shell", argv[4]);
        check.Compare(*bars::ImportTimes, Comparison(argv[2], argv[3], argv[6], 200'000).TimeRatio(std::stoi(argv[5])));
        return check.Passed() ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    std::cerr << "usage: " << argv[0] << " count COMMAND SHELL OUTPUT\n       " << argv[0]
              << " time COMMAND SHELL OUTPUT ROUNDS DIRECTORY\n";
    return 2;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

#pragma once

#include "plant_database.h"
#include "support/child_process.h"
#include "testing/scratch_directory.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/types.h>

namespace support
{

using JSON = nlohmann::ordered_json;
using Words = std::vector<std::string>;

// What became of a run of a program.
struct ProgramResult
{
    int Status = 0;    // as a shell tells it: a signal that ended the program counts from 128
    std::string Out;   // on a terminal both outputs, as they came
    std::string Error; // on a terminal nothing
};

// Where a program runs.
struct Surroundings
{
    std::string Directory;
    std::vector<std::string> Environment; // all of it, NAME=value
    int Columns = 0;                      // of the terminal; 0 for none: then nobody answers, and outputs are piped
    bool AsUser = false;                  // who is not the administrator
};

// A program that runs beside the test. No wait is endless: one that takes longer than a minute is ended by SIGALRM.
class RunningProgram
{
  public:
    RunningProgram(const Words& words, const Surroundings& around, const std::string& input = {});
    ~RunningProgram(); // kills a program that still runs
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    pid_t Process() const { return Child; }
    bool Runs();
    // Waits until the terminal shows `text`; false where the program ends without.
    bool Await(const std::string& text);
    void Type(const std::string& keys) const;
    // Ctrl-C, as soon as the program has said what that is to do.
    void Interrupt();
    ProgramResult End();

  private:
    bool ReadTerminal();

    int In = -1;
    int Out = -1;
    int Error = -1;
    int Terminal = -1;
    pid_t Child = -1;
    int Status = -1; // the system's, once the program has ended
    std::string Shown;
};

// Waits until `condition` holds, but no longer than `time`; gives whether it does.
bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time = std::chrono::seconds(10));

// Another program that has the journal open: it has begun a transaction by `begin`, and commits it when told.
// It is a process of its own: the locks of this one would be gone as soon as a test looks at the file's bytes,
// https://www.sqlite.org/howtocorrupt.html section 2.2.
class OtherProgram
{
  public:
    OtherProgram(const std::string& journal, const std::string& begin);
    void Finish();

  private:
    ChildProcess Child;
};

// Runs the command as a person does: with a home and a place for data of its own, where there is no journal yet. A
// journal that is there at the end of a test must pass `check` and have left nothing beside it.
class CommandTest : public testing::Test
{
  protected:
    CommandTest();
    void TearDown() override;

    // The words are what follows the command's name.
    ProgramResult Run(const Words& words, const std::string& input = {}) const;
    ProgramResult RunOnTerminal(const Words& words, const std::string& typed = {}) const;
    // The words of the whole command line.
    static Words Line(const Words& words);

    // Does what is to succeed without a word on standard error, and gives what it printed.
    std::string Done(const Words& words, const std::string& input = {}) const;
    // As Done, without the line end.
    std::string Told(const Words& words) const;
    // What a command prints with --json.
    JSON Parsed(Words words) const;

    // Does what is to be refused, with nothing changed and nothing printed; gives the reason.
    std::string Refused(const Words& words, const std::string& input = {}) const;
    // The same for a mistake in the command line.
    std::string Mistaken(const Words& words) const;

    // Writes a file of the scratch directory.
    void Write(const std::string& name, const std::string& bytes) const;
    // The names of what lies in the journal's directory; none where it does not exist.
    std::vector<std::string> Beside() const;
    // All that the journal holds, as the library sees it and with every byte.
    std::string Content() const;
    // Lets `work` use the journal through the library.
    void Keep(const std::function<void(PlantRepository&)>& work) const;
    // A journal with something in every table, in which nothing is wrong: two plants, Basil and its clone Cutting.
    void KeepEverything() const;

    ScratchDirectory Scratch;
    Surroundings Around;
    std::string Journal = Scratch.File("data/plantjournal/journal.db");
    // What a test leaves on purpose: findings, and files beside the journal.
    bool Sound = true;
    std::vector<std::string> Left = {"journal.db"};

  private:
    std::string RefusedWith(int status, const Words& words, const std::string& input) const;
};

} // namespace support

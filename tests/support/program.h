#pragma once

#include "support/pseudo_terminal.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace support
{

using Words = std::vector<std::string>;

// The result of a run of a program.
struct ProgramResult
{
    int Status = 0;    // as in a shell: 128 plus the signal that ended the program
    std::string Out;   // on a terminal both outputs, in their order
    std::string Error; // on a terminal nothing
};

// Where a program runs.
struct Surroundings
{
    std::string Directory;
    std::vector<std::string> Environment; // all of it, NAME=value
    int Columns = 0;                      // of the terminal; 0 for none: input and outputs are files
    bool AsUser = false;                  // as a user other than root
    bool Traced = false;                  // stopped once it is loaded, for FileChanges
};

// A program that runs at the same time as the test. SIGALRM ends it after a minute, so no wait is endless.
class RunningProgram
{
  public:
    RunningProgram(const Words& words, const Surroundings& around, const std::string& input = {});
    ~RunningProgram(); // kills a program that still runs
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    pid_t Process() const { return Child; }
    bool Runs();
    // Waits until the terminal shows `text`; false where the program ends first.
    bool Await(const std::string& text);
    void Type(const std::string& keys) const { Terminal.Type(keys); }
    // Sends SIGINT once the program has installed a handler for it.
    void Interrupt();
    ProgramResult End();

  private:
    bool ReadTerminal();
    void Wait();

    int In = -1;
    int Out = -1;
    int Error = -1;
    PseudoTerminal Terminal;
    pid_t Child = -1;
    int Status = -1; // as waitpid() gives it, once the program has ended
    std::string Shown;
};

// Waits until `condition` holds, at most for `time`; returns whether it holds.
bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time = std::chrono::seconds(10));

} // namespace support

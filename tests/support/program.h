#pragma once

#include <chrono>
#include <functional>
#include <memory>
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
    bool AsUser = false;                  // as a user other than root; not on Windows
    bool Traced = false;                  // stopped once it is loaded, for FileChanges; not on Windows
};

// A program that runs at the same time as the test. It is ended after a minute, so no wait is endless.
class RunningProgram
{
  public:
    RunningProgram(const Words& words, const Surroundings& around, const std::string& input = {});
    ~RunningProgram(); // kills a program that still runs
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    pid_t Process() const;
    bool Runs();
    // Waits until the terminal shows `text`; false where the program ends first.
    bool Await(const std::string& text);
    void Type(const std::string& keys) const;
    // Sends SIGINT once the program has installed a handler for it.
    void Interrupt();
    // Ends the program at once, as signal 9 does.
    void Kill();
    void Pause();
    void Resume();
    ProgramResult End();

  private:
    class Child;

    std::unique_ptr<Child> Running;
};

// The variables of this process that programs need, such as PATH, and no others.
std::vector<std::string> NeededEnvironment();

// Runs a program in the current directory with that environment.
ProgramResult RunProgram(const Words& words);

// The user and system time that programs of this test program have taken until their ends.
double SecondsOfPrograms();

// Waits until `condition` holds, at most for `time`; returns whether it holds.
bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time = std::chrono::seconds(10));

} // namespace support

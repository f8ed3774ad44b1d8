#pragma once

#include <string>

#include <sys/types.h>

namespace support
{

// Why this system gives no pseudo-terminal; empty where it gives one.
std::string WhyNoPseudoTerminal();

// A terminal for another process. It changes no byte on the way, but Ctrl-C is a signal.
class PseudoTerminal
{
  public:
    PseudoTerminal() = default;
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Opens the terminal and forks a process that runs on it. Returns as fork().
    pid_t Fork(int columns);
    bool IsOpen() const { return Side >= 0; }

    // Waits for output and appends it. False where no process has the terminal open any longer.
    bool Read(std::string& out) const;
    void Type(const std::string& keys) const;

  private:
    int Side = -1; // the end that is not the process's
};

} // namespace support

#pragma once

#include <sys/types.h>

namespace support
{

// Follows a program from one system call that changes a file to the next, so that a test can act between any two of
// them. For a program that was started with Surroundings::Traced.
class FileChanges
{
  public:
    // Waits until the program is loaded. `process` is a RunningProgram's.
    explicit FileChanges(pid_t process);

    // Runs the program until just before its next such call; false where it ends first. Then it is no longer followed.
    bool Next();
    // Lets the program run to its end.
    void Stop() const;

  private:
    void Resume(int signal) const;

    pid_t Process;
};

} // namespace support

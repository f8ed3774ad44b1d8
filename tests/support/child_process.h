#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace support
{

// The parent as the child sees it.
class ParentProcess
{
  public:
    // Tells the parent a line. It has the line for good once this returns, even if the child is killed right after.
    void Tell(const std::string& line) const;
    // Waits for the parent's word.
    void Await() const;

  private:
    friend class ChildProcess;
    int Lines = -1;
    int Words = -1;
};

// A second process: a fork of this one that runs `work` and ends there, by an exception too, which it tells. Fork while
// no journal is open: a connection must not be carried into a child, https://www.sqlite.org/howtocorrupt.html
// section 2.6. No wait is endless: a child that takes longer than two minutes is ended by SIGALRM.
class ChildProcess
{
  public:
    explicit ChildProcess(const std::function<void(const ParentProcess&)>& work);
    ~ChildProcess(); // kills a child that still runs
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line that the child tells; none once it has ended and every line was read.
    std::optional<std::string> Line();
    // All lines that were not read yet, up to the child's end.
    std::vector<std::string> Lines();
    // Gives the child the word that it awaits.
    void GoOn() const;
    // Ends the child with signal 9 wherever it is.
    void Kill() const;
    // Waits for the child's end: "done", "failed" by an exception, or the "signal" that it died of.
    std::string End();

  private:
    std::array<int, 2> LinePipe;
    std::array<int, 2> WordPipe;
    pid_t Process;
    std::string Unread;
    std::optional<std::string> Ended;
};

} // namespace support

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace support
{

class ParentProcess;

// A fork of this process that runs `work` and ends. An exception ends it as well and is sent to the parent as a line.
// Fork while no journal is open: a connection must not be carried into a child process,
// https://www.sqlite.org/howtocorrupt.html section 2.6. A child that runs for more than two minutes is ended, so that
// every wait ends.
//
// On Windows it is a thread: each connection there holds locks of its own, as in another process.
class ChildProcess
{
  public:
    explicit ChildProcess(const std::function<void(const ParentProcess&)>& work);
    ~ChildProcess(); // ends a child that still runs
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Waits for the next line from the child. Empty once the child has ended and every line was read.
    std::optional<std::string> ReadLine();
    // Waits for the end of the child and returns all lines that were not read yet.
    std::vector<std::string> ReadLines();
    // Ends one ParentProcess::Wait of the child.
    void Continue() const;
    // Ends the child with signal 9. Not on Windows.
    void Kill() const;
    // Waits for the end of the child. Returns "done", "failed" after an exception, or "signal N".
    std::string End();

  private:
    friend class ParentProcess;
    class Connection; // of the two processes

    std::unique_ptr<Connection> Child;
};

// The parent, as the child process sees it.
class ParentProcess
{
  public:
    // Sends a line to the parent. Once this returns, the parent can read the line even if the child is killed.
    void Send(const std::string& line) const;
    // Waits until the parent calls ChildProcess::Continue.
    void Wait() const;

  private:
    friend class ChildProcess;
    explicit ParentProcess(ChildProcess::Connection& connection) : Parent(connection) {}

    ChildProcess::Connection& Parent;
};

} // namespace support

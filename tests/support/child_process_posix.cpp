#include "support/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

namespace support
{

namespace
{

void Require(bool done, const char* call)
{
    if (!done)
        throw std::system_error(errno, std::generic_category(), call);
}

std::array<int, 2> Pipe()
{
    std::array<int, 2> ends{};
    Require(pipe(ends.data()) == 0, "pipe");
    return ends;
}

} // namespace

class ChildProcess::Connection
{
  public:
    std::array<int, 2> LinePipe = Pipe();
    std::array<int, 2> SignalPipe = Pipe();
    pid_t Process = -1;
    std::string Unread;
    std::optional<std::string> Ended;
};

void ParentProcess::Send(const std::string& line) const
{
    const std::string text = line + '\n'; // one write: a kill cannot split it
    Require(write(Parent.LinePipe[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
}

void ParentProcess::Wait() const
{
    char signal = 0;
    Require(read(Parent.SignalPipe[0], &signal, 1) == 1, "read");
}

ChildProcess::ChildProcess(const std::function<void(const ParentProcess&)>& work)
    : Child(std::make_unique<Connection>())
{
    Child->Process = fork();
    Require(Child->Process >= 0, "fork");
    if (Child->Process > 0)
    {
        close(Child->LinePipe[1]); // or reading would not end with the child
        return;
    }

    // _exit ends the child: it must not unwind the stack or flush the buffers of the parent.
    alarm(120);
    const ParentProcess parent(*Child);
    try
    {
        work(parent);
        _exit(0);
    }
    catch (const std::exception& reason)
    {
        parent.Send(reason.what());
    }
    _exit(1);
}

ChildProcess::~ChildProcess()
{
    if (!Child->Ended)
    {
        kill(Child->Process, SIGKILL);
        waitpid(Child->Process, nullptr, 0);
    }
    close(Child->LinePipe[0]);
    close(Child->SignalPipe[0]);
    close(Child->SignalPipe[1]);
}

std::optional<std::string> ChildProcess::ReadLine()
{
    std::size_t end = 0;
    while ((end = Child->Unread.find('\n')) == std::string::npos)
    {
        std::array<char, 4096> bytes{};
        const ssize_t size = read(Child->LinePipe[0], bytes.data(), bytes.size());
        Require(size >= 0, "read");
        if (size == 0)
            return std::nullopt;
        Child->Unread.append(bytes.data(), static_cast<std::size_t>(size));
    }
    std::string line = Child->Unread.substr(0, end);
    Child->Unread.erase(0, end + 1);
    return line;
}

std::vector<std::string> ChildProcess::ReadLines()
{
    std::vector<std::string> lines;
    while (std::optional<std::string> line = ReadLine())
        lines.push_back(std::move(*line));
    return lines;
}

void ChildProcess::Continue() const
{
    // This process keeps the reading end open as well: writing to a child that has ended must not raise SIGPIPE.
    Require(write(Child->SignalPipe[1], "!", 1) == 1, "write");
}

void ChildProcess::Kill() const
{
    if (!Child->Ended) // the process ID may have been reused
        kill(Child->Process, SIGKILL);
}

std::string ChildProcess::End()
{
    if (!Child->Ended)
    {
        int status = 0;
        Require(waitpid(Child->Process, &status, 0) == Child->Process, "waitpid");
        if (WIFSIGNALED(status))
            Child->Ended = "signal " + std::to_string(WTERMSIG(status));
        else
            Child->Ended = WEXITSTATUS(status) == 0 ? "done" : "failed";
    }
    return *Child->Ended;
}

} // namespace support

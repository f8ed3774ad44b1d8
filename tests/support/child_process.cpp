#include "support/child_process.h"

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

void ParentProcess::Send(const std::string& line) const
{
    const std::string text = line + '\n'; // one write: a kill cannot split it
    Require(write(LineEnd, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
}

void ParentProcess::Wait() const
{
    char signal = 0;
    Require(read(SignalEnd, &signal, 1) == 1, "read");
}

ChildProcess::ChildProcess(const std::function<void(const ParentProcess&)>& work)
    : LinePipe(Pipe()), SignalPipe(Pipe()), Process(fork())
{
    Require(Process >= 0, "fork");
    if (Process > 0)
    {
        close(LinePipe[1]); // or reading would not end with the child
        return;
    }

    // _exit ends the child: it must not unwind the stack or flush the buffers of the parent.
    alarm(120);
    ParentProcess parent;
    parent.LineEnd = LinePipe[1];
    parent.SignalEnd = SignalPipe[0];
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
    if (!Ended)
    {
        kill(Process, SIGKILL);
        waitpid(Process, nullptr, 0);
    }
    close(LinePipe[0]);
    close(SignalPipe[0]);
    close(SignalPipe[1]);
}

std::optional<std::string> ChildProcess::ReadLine()
{
    std::size_t end = 0;
    while ((end = Unread.find('\n')) == std::string::npos)
    {
        std::array<char, 4096> bytes{};
        const ssize_t size = read(LinePipe[0], bytes.data(), bytes.size());
        Require(size >= 0, "read");
        if (size == 0)
            return std::nullopt;
        Unread.append(bytes.data(), static_cast<std::size_t>(size));
    }
    std::string line = Unread.substr(0, end);
    Unread.erase(0, end + 1);
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
    Require(write(SignalPipe[1], "!", 1) == 1, "write");
}

void ChildProcess::Kill() const
{
    if (!Ended) // the process ID may have been reused
        kill(Process, SIGKILL);
}

std::string ChildProcess::End()
{
    if (!Ended)
    {
        int status = 0;
        Require(waitpid(Process, &status, 0) == Process, "waitpid");
        if (WIFSIGNALED(status))
            Ended = "signal " + std::to_string(WTERMSIG(status));
        else
            Ended = WEXITSTATUS(status) == 0 ? "done" : "failed";
    }
    return *Ended;
}

} // namespace support

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

void ParentProcess::Tell(const std::string& line) const
{
    const std::string text = line + '\n'; // one write, which a kill cannot cut in two
    Require(write(Lines, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
}

void ParentProcess::Await() const
{
    char word = 0;
    Require(read(Words, &word, 1) == 1, "read");
}

ChildProcess::ChildProcess(const std::function<void(const ParentProcess&)>& work)
    : LinePipe(Pipe()), WordPipe(Pipe()), Process(fork())
{
    Require(Process >= 0, "fork");
    if (Process > 0)
    {
        close(LinePipe[1]); // else the child's end would not end its lines
        return;
    }

    // Only _exit leads out of here: what the parent has on its stack and in its buffers is the parent's.
    alarm(120);
    ParentProcess parent;
    parent.Lines = LinePipe[1];
    parent.Words = WordPipe[0];
    try
    {
        work(parent);
        _exit(0);
    }
    catch (const std::exception& reason)
    {
        parent.Tell(reason.what());
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
    close(WordPipe[0]);
    close(WordPipe[1]);
}

std::optional<std::string> ChildProcess::Line()
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

std::vector<std::string> ChildProcess::Lines()
{
    std::vector<std::string> lines;
    while (std::optional<std::string> line = Line())
        lines.push_back(std::move(*line));
    return lines;
}

void ChildProcess::GoOn() const
{
    // This process keeps the reading end, too, so that giving the word to a child that has ended is no SIGPIPE.
    Require(write(WordPipe[1], "!", 1) == 1, "write");
}

void ChildProcess::Kill() const
{
    if (!Ended) // its number may be another process's by then
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

#include "support/program.h"

#include "support/system_call.h"

#include <csignal>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support
{

namespace
{

// A file without a name.
int CreateNamelessFile(const std::string& bytes)
{
    const int file = memfd_create("plantjournal", MFD_CLOEXEC);
    RequireCall(file >= 0, "memfd_create");
    RequireCall(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
    RequireCall(lseek(file, 0, SEEK_SET) == 0, "lseek");
    return file;
}

std::string BytesOf(int file)
{
    const off_t size = lseek(file, 0, SEEK_END);
    RequireCall(size >= 0, "lseek");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    RequireCall(pread(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()), "pread");
    return bytes;
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Replaces this process with the program, or ends it.
[[noreturn]] void ExecuteProgram(Words words, Surroundings around)
{
    constexpr unsigned longest = 60; // seconds
    constexpr uid_t nobody = 65534;
    const std::vector<char*> arguments = Pointers(words);
    const std::vector<char*> environment = Pointers(around.Environment);
    alarm(longest);
    // Opened first: the user may lack access to the program's directory.
    const int program = open(arguments[0], O_RDONLY | O_CLOEXEC);
    const bool isUser =
        !around.AsUser || geteuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
    const bool isTraced = !around.Traced || ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
    if (isUser && isTraced && chdir(around.Directory.c_str()) == 0)
    {
        if (program >= 0)
            fexecve(program, arguments.data(), environment.data());
        execvpe(arguments[0], arguments.data(), environment.data());
    }
    constexpr int notFound = 127;
    _exit(notFound);
}

} // namespace

RunningProgram::RunningProgram(const Words& words, const Surroundings& around, const std::string& input)
{
    if (around.Columns > 0)
        Child = Terminal.Fork(around.Columns);
    else
    {
        In = CreateNamelessFile(input);
        Out = CreateNamelessFile({});
        Error = CreateNamelessFile({});
        Child = fork();
        if (Child == 0 &&
            (dup2(In, STDIN_FILENO) < 0 || dup2(Out, STDOUT_FILENO) < 0 || dup2(Error, STDERR_FILENO) < 0))
            _exit(1);
    }
    RequireCall(Child >= 0, "fork");
    if (Child == 0)
        ExecuteProgram(words, around);
    if (Terminal.IsOpen())
        Type(input);
}

RunningProgram::~RunningProgram()
{
    if (Runs())
    {
        kill(Child, SIGKILL);
        waitpid(Child, nullptr, 0);
    }
    for (const int file : {In, Out, Error})
        if (file >= 0)
            close(file);
}

bool RunningProgram::Runs()
{
    return Status < 0 && waitpid(Child, &Status, WNOHANG) == 0;
}

void RunningProgram::Wait()
{
    if (Status < 0)
        RequireCall(waitpid(Child, &Status, 0) == Child, "waitpid");
}

bool RunningProgram::ReadTerminal()
{
    if (Terminal.Read(Shown))
        return true;
    Wait(); // the system can report the end of a terminal before it has passed on the last lines
    return Terminal.Read(Shown);
}

bool RunningProgram::Await(const std::string& text)
{
    while (Shown.find(text) == std::string::npos)
        if (!ReadTerminal())
            return false;
    return true;
}

void RunningProgram::Interrupt()
{
    // Without a handler, the signal would end the program.
    const auto catches = [this]
    {
        std::ifstream status("/proc/" + std::to_string(Child) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("SigCgt:"))
                return ((std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1U)) & 1U) != 0;
        return false;
    };
    while (Runs() && !catches())
        std::this_thread::yield();
    if (Runs())
        kill(Child, SIGINT);
}

ProgramResult RunningProgram::End()
{
    while (Terminal.IsOpen() && ReadTerminal())
    {
    }
    Wait();
    constexpr int ofSignals = 128;
    const int status = WIFEXITED(Status) ? WEXITSTATUS(Status) : ofSignals + WTERMSIG(Status);
    if (Terminal.IsOpen())
        return {status, Shown, {}};
    return {status, BytesOf(Out), BytesOf(Error)};
}

bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace support

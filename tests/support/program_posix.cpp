#include "support/program.h"

#include "support/pseudo_terminal.h"
#include "support/system_call.h"

#include <csignal>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
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
    // Opened first: the user may lack access to the program's directory. It stays open for a script, whose interpreter
    // opens it by its number.
    const int program = open(arguments[0], O_RDONLY);
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

class RunningProgram::Child
{
  public:
    ~Child()
    {
        for (const int file : {In, Out, Error})
            if (file >= 0)
                close(file);
    }

    void Wait();
    bool ReadTerminal();

    int In = -1;
    int Out = -1;
    int Error = -1;
    PseudoTerminal Terminal;
    pid_t Process = -1;
    int Status = -1; // as waitpid() gives it, once the program has ended
    std::string Shown;
};

void RunningProgram::Child::Wait()
{
    if (Status < 0)
        RequireCall(waitpid(Process, &Status, 0) == Process, "waitpid");
}

bool RunningProgram::Child::ReadTerminal()
{
    if (Terminal.Read(Shown))
        return true;
    Wait(); // the system can report the end of a terminal before it has passed on the last lines
    return Terminal.Read(Shown);
}

RunningProgram::RunningProgram(const Words& words, const Surroundings& around, const std::string& input)
    : Running(std::make_unique<Child>())
{
    Child& child = *Running;
    if (around.Columns > 0)
        child.Process = child.Terminal.Fork(around.Columns);
    else
    {
        child.In = CreateNamelessFile(input);
        child.Out = CreateNamelessFile({});
        child.Error = CreateNamelessFile({});
        child.Process = fork();
        if (child.Process == 0 && (dup2(child.In, STDIN_FILENO) < 0 || dup2(child.Out, STDOUT_FILENO) < 0 ||
                                   dup2(child.Error, STDERR_FILENO) < 0))
            _exit(1);
    }
    RequireCall(child.Process >= 0, "fork");
    if (child.Process == 0)
        ExecuteProgram(words, around);
    if (child.Terminal.IsOpen())
        Type(input);
}

RunningProgram::~RunningProgram()
{
    if (Runs())
    {
        Kill();
        waitpid(Process(), nullptr, 0);
    }
}

pid_t RunningProgram::Process() const
{
    return Running->Process;
}

bool RunningProgram::Runs()
{
    return Running->Status < 0 && waitpid(Process(), &Running->Status, WNOHANG) == 0;
}

bool RunningProgram::Await(const std::string& text)
{
    while (Running->Shown.find(text) == std::string::npos)
        if (!Running->ReadTerminal())
            return false;
    return true;
}

void RunningProgram::Type(const std::string& keys) const
{
    Running->Terminal.Type(keys);
}

void RunningProgram::Kill()
{
    kill(Process(), SIGKILL);
}

void RunningProgram::Interrupt()
{
    // Without a handler, the signal would end the program.
    const auto catches = [this]
    {
        std::ifstream status("/proc/" + std::to_string(Process()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("SigCgt:"))
                return ((std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1U)) & 1U) != 0;
        return false;
    };
    while (Runs() && !catches())
        std::this_thread::yield();
    if (Runs())
        kill(Process(), SIGINT);
}

void RunningProgram::Pause()
{
    kill(Process(), SIGSTOP);
}

void RunningProgram::Resume()
{
    kill(Process(), SIGCONT);
}

ProgramResult RunningProgram::End()
{
    Child& child = *Running;
    while (child.Terminal.IsOpen() && child.ReadTerminal())
    {
    }
    child.Wait();
    constexpr int ofSignals = 128;
    const int status = WIFEXITED(child.Status) ? WEXITSTATUS(child.Status) : ofSignals + WTERMSIG(child.Status);
    if (child.Terminal.IsOpen())
        return {status, child.Shown, {}};
    return {status, BytesOf(child.Out), BytesOf(child.Error)};
}

double SecondsOfPrograms()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    constexpr double microsecond = 1e-6;
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           microsecond * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

std::vector<std::string> NeededEnvironment()
{
    std::vector<std::string> environment;
    for (char** variable = environ; *variable != nullptr; ++variable)
    {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        if (name == "PATH" || name.ends_with("SAN_OPTIONS") || name.starts_with("GCOV_"))
            environment.push_back(text);
    }
    return environment;
}

} // namespace support

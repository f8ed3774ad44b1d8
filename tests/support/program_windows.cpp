#include "support/program.h"

#include "testing/scratch_directory.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <windows.h>

namespace support
{

namespace
{

constexpr DWORD millisecondsToStart = 700;
constexpr UINT killedStatus = 137; // as of a process that signal 9 has ended

void RequireWindows(bool done, const char* call)
{
    if (!done)
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

std::wstring Wide(std::string_view text)
{
    const int length = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)),
                      L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

// A word of a command line, in the form that CommandLineToArgvW() reads.
std::string Quoted(const std::string& word)
{
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char letter : word)
    {
        if (letter == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = letter == '\\' ? backslashes + 1 : 0;
        quoted += letter;
    }
    quoted.append(backslashes, '\\');
    return quoted + '"';
}

std::wstring CommandLine(const Words& words)
{
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + Quoted(word);
    return Wide(line);
}

std::wstring EnvironmentBlock(const std::vector<std::string>& environment)
{
    std::wstring block;
    for (const std::string& variable : environment)
        block += Wide(variable) + L'\0';
    return block + L'\0';
}

// Ctrl-C reaches all programs that share a console. This one ignores it.
void ShareConsole()
{
    static const bool done = []
    {
        AllocConsole();
        return SetConsoleCtrlHandler([](DWORD event) -> BOOL { return event == CTRL_C_EVENT ? TRUE : FALSE; }, TRUE) !=
               0;
    }();
    RequireWindows(done, "SetConsoleCtrlHandler");
}

double secondsOfPrograms = 0;

double SecondsOf(HANDLE process)
{
    FILETIME begin = {};
    FILETIME end = {};
    FILETIME system = {};
    FILETIME user = {};
    GetProcessTimes(process, &begin, &end, &system, &user);
    constexpr double unit = 1e-7;
    constexpr double high = 4294967296.0;
    return unit * (high * (system.dwHighDateTime + user.dwHighDateTime) + system.dwLowDateTime + user.dwLowDateTime);
}

// A file that the program inherits as its input or output.
class InheritedFile
{
  public:
    InheritedFile(const std::string& path, DWORD access, DWORD disposition)
    {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        Handle = CreateFileW(Wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
        RequireWindows(Handle != INVALID_HANDLE_VALUE, "CreateFile");
    }
    ~InheritedFile() { CloseHandle(Handle); }
    InheritedFile(const InheritedFile&) = delete;
    InheritedFile& operator=(const InheritedFile&) = delete;

    HANDLE Handle;
};

} // namespace

class RunningProgram::Child
{
  public:
    ~Child()
    {
        CloseHandle(Process.hThread);
        CloseHandle(Process.hProcess);
    }

    ScratchDirectory Scratch; // of the input and the outputs
    PROCESS_INFORMATION Process = {};
};

RunningProgram::RunningProgram(const Words& words, const Surroundings& around, const std::string& input)
    : Running(std::make_unique<Child>())
{
    if (around.Columns > 0 || around.AsUser || around.Traced)
        throw std::logic_error("no such surroundings on Windows");
    ShareConsole();
    const ScratchDirectory& scratch = Running->Scratch;
    std::ofstream(scratch.File("in"), std::ios::binary) << input;
    const InheritedFile in(scratch.File("in"), GENERIC_READ, OPEN_EXISTING);
    const InheritedFile out(scratch.File("out"), GENERIC_WRITE, CREATE_NEW);
    const InheritedFile error(scratch.File("error"), GENERIC_WRITE, CREATE_NEW);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.Handle;
    startup.hStdOutput = out.Handle;
    startup.hStdError = error.Handle;
    std::wstring line = CommandLine(words);
    std::wstring environment = EnvironmentBlock(around.Environment);
    const std::wstring directory = Wide(around.Directory);
    RequireWindows(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                                  environment.data(), directory.empty() ? nullptr : directory.c_str(), &startup,
                                  &Running->Process) != 0,
                   "CreateProcess");
}

RunningProgram::~RunningProgram()
{
    Kill();
}

pid_t RunningProgram::Process() const
{
    return static_cast<pid_t>(Running->Process.dwProcessId);
}

bool RunningProgram::Runs()
{
    return WaitForSingleObject(Running->Process.hProcess, 0) == WAIT_TIMEOUT;
}

bool RunningProgram::Await(const std::string& /*text*/)
{
    throw std::logic_error("no terminal on Windows");
}

void RunningProgram::Type(const std::string& /*keys*/) const
{
    throw std::logic_error("no terminal on Windows");
}

void RunningProgram::Interrupt()
{
    // Before a program is attached to the console, Ctrl-C does not reach it. The system does not show whether the
    // program has installed its handler.
    const auto isAttached = [this]
    {
        std::array<DWORD, 64> processes = {};
        const DWORD count = GetConsoleProcessList(processes.data(), processes.size());
        return std::find(processes.begin(), processes.begin() + std::min<DWORD>(count, processes.size()),
                         Running->Process.dwProcessId) != processes.begin() + std::min<DWORD>(count, processes.size());
    };
    support::Await(isAttached);
    WaitForSingleObject(Running->Process.hProcess, millisecondsToStart);
    RequireWindows(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0, "GenerateConsoleCtrlEvent");
}

void RunningProgram::Kill()
{
    if (Runs())
        TerminateProcess(Running->Process.hProcess, killedStatus);
    WaitForSingleObject(Running->Process.hProcess, INFINITE);
}

void RunningProgram::Pause()
{
    SuspendThread(Running->Process.hThread);
}

void RunningProgram::Resume()
{
    ResumeThread(Running->Process.hThread);
}

ProgramResult RunningProgram::End()
{
    constexpr DWORD longest = 60'000; // milliseconds
    if (WaitForSingleObject(Running->Process.hProcess, longest) == WAIT_TIMEOUT)
        Kill();
    DWORD status = 0;
    secondsOfPrograms += SecondsOf(Running->Process.hProcess);
    RequireWindows(GetExitCodeProcess(Running->Process.hProcess, &status) != 0, "GetExitCodeProcess");
    return {static_cast<int>(status), FileBytes(Running->Scratch.File("out")),
            FileBytes(Running->Scratch.File("error"))};
}

double SecondsOfPrograms()
{
    return secondsOfPrograms;
}

std::vector<std::string> NeededEnvironment()
{
    std::vector<std::string> environment;
    for (char** variable = environ; *variable != nullptr; ++variable)
    {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        static const std::set<std::string> needed = {"LC_ALL",     "PATH", "Path", "SYSTEMROOT",
                                                     "SystemRoot", "TEMP", "TMP"};
        if (needed.contains(name) || name.starts_with("WINE"))
            environment.push_back(text);
    }
    return environment;
}

} // namespace support

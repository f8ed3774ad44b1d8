#include "refusal.h"
#include "system.h"
#include "terminal/console.h"

#include <atomic>
#include <cstdio>
#include <deque>
#include <iterator>
#include <string_view>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace
{

// The only object that the handler of interrupts changes. The system runs it on a thread of its own.
std::atomic<bool> interrupted = false; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

// Returns LOCALAPPDATA; empty where it is not set. A relative path does not count: it would be another place in each
// directory.
std::filesystem::path LocalDirectory()
{
    std::filesystem::path directory = plant_file::PathOfText(Environment("LOCALAPPDATA"));
    return directory.is_absolute() ? directory : std::filesystem::path();
}

bool IsTerminal(DWORD stream)
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

// Texts are UTF-8, lines end in a line feed alone, and colours are escape sequences, as on other systems.
void PrepareStream(DWORD stream, FILE* file)
{
    _setmode(_fileno(file), _O_BINARY);
    const HANDLE console = GetStdHandle(stream);
    if (DWORD mode = 0; GetConsoleMode(console, &mode) != 0)
        SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// Reads a line from the console. Returns nothing where the input ends or Ctrl-C is pressed.
std::optional<std::string> ReadConsoleLine()
{
    std::wstring line;
    while (line.empty() || line.back() != L'\n')
    {
        wchar_t part[256] = {};
        DWORD count = 0;
        const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
        if (ReadConsoleW(console, part, static_cast<DWORD>(std::size(part)), &count, nullptr) == 0 || count == 0)
            return std::nullopt;
        line.append(part, count);
    }
    if (line.front() == L'\x1A') // Ctrl-Z
        return std::nullopt;
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    return plant_file::TextOfPath(line) + '\n';
}

} // namespace

std::vector<std::string> StartConsole(int /*count*/, char** /*arguments*/)
{
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdin), _O_BINARY);
    PrepareStream(STD_OUTPUT_HANDLE, stdout);
    PrepareStream(STD_ERROR_HANDLE, stderr);
    // The arguments of main() are in the code page of the program, and a pattern in them is replaced by file names.
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(plant_file::TextOfPath(wide[i]));
    LocalFree(wide);
    return arguments;
}

std::string Environment(const char* name)
{
    const std::wstring wideName = plant_file::PathOfText(name).native();
    std::wstring value(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return plant_file::TextOfPath(value);
}

std::string ShellWord(const std::string& text)
{
    constexpr std::string_view special = " \t&'()+,;=@[]^`{}~"; // a file name has no double quote
    return !text.empty() && text.find_first_of(special) == std::string::npos ? text : '"' + text + '"';
}

std::filesystem::path DataDirectory()
{
    std::filesystem::path directory = LocalDirectory();
    if (directory.empty())
        throw Refusal("LOCALAPPDATA is not set; pass --file to name the journal");
    return directory;
}

std::filesystem::path StateDirectory()
{
    std::filesystem::path directory = LocalDirectory();
    if (directory.empty())
        throw Refusal("LOCALAPPDATA is not set; set it");
    return directory;
}

bool InputIsTerminal()
{
    return IsTerminal(STD_INPUT_HANDLE);
}

bool OutputIsTerminal()
{
    return IsTerminal(STD_OUTPUT_HANDLE);
}

bool ErrorsAreTerminal()
{
    return IsTerminal(STD_ERROR_HANDLE);
}

std::size_t TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    const bool isKnown = GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) != 0;
    const int columns = info.srWindow.Right - info.srWindow.Left + 1;
    return isKnown && columns > 1 ? static_cast<std::size_t>(columns) : 80;
}

std::optional<char> TypedByte()
{
    static std::deque<char> typed; // the rest of the line that was read last
    if (typed.empty() && !Interrupted())
        if (const std::optional<std::string> line = ReadConsoleLine())
            typed.assign(line->begin(), line->end());
    if (typed.empty() || Interrupted())
        return std::nullopt;
    const char next = typed.front();
    typed.pop_front();
    return next;
}

void CatchInterrupts()
{
    const auto handler = [](DWORD event) -> BOOL
    {
        if (event != CTRL_C_EVENT)
            return FALSE;
        interrupted = true;
        return TRUE;
    };
    SetConsoleCtrlHandler(handler, TRUE);
}

bool Interrupted()
{
    return interrupted;
}

#include "refusal.h"
#include "terminal/console.h"

#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

namespace
{

#ifdef __APPLE__
constexpr const char* DataInHome = "Library/Application Support";
constexpr const char* StateInHome = DataInHome;
#else
constexpr const char* DataInHome = ".local/share";
constexpr const char* StateInHome = ".local/state";
#endif

// A directory of the user: `variable`, else `fallback` in the home directory. Throws Refusal with the advice where the
// user has none. A relative path does not count: it would be another place in each directory.
std::filesystem::path UserDirectory(const char* variable, const char* fallback, const std::string& advice)
{
    if (std::filesystem::path directory = Environment(variable); directory.is_absolute())
        return directory;
    const std::filesystem::path home = Environment("HOME");
    if (home.is_absolute())
        return home / fallback;
    throw Refusal((home.empty() ? "HOME is not set; " : "HOME is not an absolute path; ") + advice);
}

// The only object that the signal handler changes.
volatile std::sig_atomic_t interrupted = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

} // namespace

std::vector<std::string> StartConsole(int count, char** arguments)
{
    return {std::next(arguments), std::next(arguments, count)};
}

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string ShellWord(const std::string& text)
{
    constexpr std::string_view special = " \t\n!\"#$&'()*;<>?[\\]^`{|}~";
    if (!text.empty() && text.find_first_of(special) == std::string::npos)
        return text;
    std::string word = "'";
    for (const char letter : text)
        word += letter == '\'' ? "'\\''" : std::string(1, letter);
    return word + '\'';
}

std::filesystem::path DataDirectory()
{
    return UserDirectory("XDG_DATA_HOME", DataInHome, "pass --file to name the journal");
}

std::filesystem::path StateDirectory()
{
    return UserDirectory("XDG_STATE_HOME", StateInHome, "set it or XDG_STATE_HOME");
}

bool InputIsTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

bool OutputIsTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

bool ErrorsAreTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

std::size_t TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::optional<char> TypedByte()
{
    // SIGINT is blocked between the check and the wait, so that a Ctrl-C there also ends the wait.
    sigset_t interrupt;
    sigset_t before;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before);
    fd_set input;
    FD_ZERO(&input);
    FD_SET(STDIN_FILENO, &input);
    const bool typed = !Interrupted() && pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, &before) == 1;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    char byte = 0;
    return typed && read(STDIN_FILENO, &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
}

void CatchInterrupts()
{
    struct sigaction action
    {
    };
    action.sa_handler = [](int) { interrupted = 1; };
    sigaction(SIGINT, &action, nullptr); // without SA_RESTART: a read of an answer ends, too
}

bool Interrupted()
{
    return interrupted != 0;
}

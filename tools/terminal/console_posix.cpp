#include "refusal.h"
#include "terminal/console.h"

#include <csignal>
#include <cstdlib>
#include <iterator>

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

// A directory of the user: `variable`, else `fallback` in the home directory, else none.
std::filesystem::path UserDirectory(const char* variable, const char* fallback)
{
    // The XDG base directory rules say to ignore a relative path.
    if (std::filesystem::path directory = Environment(variable); directory.is_absolute())
        return directory;
    const std::string home = Environment("HOME");
    return home.empty() ? std::filesystem::path() : std::filesystem::path(home) / fallback;
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

std::filesystem::path DataDirectory()
{
    std::filesystem::path directory = UserDirectory("XDG_DATA_HOME", DataInHome);
    if (directory.empty())
        throw Refusal("HOME is not set; pass --file to name the journal");
    return directory;
}

std::filesystem::path StateDirectory()
{
    std::filesystem::path directory = UserDirectory("XDG_STATE_HOME", StateInHome);
    if (directory.empty())
        throw Refusal("HOME is not set; set it or XDG_STATE_HOME, or name the backup or its directory");
    return directory;
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

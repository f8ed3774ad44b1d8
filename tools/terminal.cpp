#include "terminal.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cwchar>
#include <iostream>
#include <string_view>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

// All that a signal may touch.
volatile std::sig_atomic_t interrupted = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

std::size_t TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

bool Coloured()
{
    const char* const noColour = std::getenv("NO_COLOR"); // https://no-color.org
    return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
}

struct Letter
{
    std::string_view Bytes;
    std::size_t Width;
};

constexpr std::string_view Unprintable = "\xEF\xBF\xBD"; // U+FFFD

// Cuts a text into the letters that a terminal shows. The program's locale is UTF-8.
std::vector<Letter> Letters(std::string_view text)
{
    std::vector<Letter> letters;
    std::mbstate_t state{};
    while (!text.empty())
    {
        wchar_t letter = 0;
        const std::size_t length = std::mbrtowc(&letter, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) // a zero byte, or none of UTF-8's
        {
            letters.push_back({Unprintable, 1});
            text.remove_prefix(1);
            state = {};
            continue;
        }
        const int width = wcwidth(letter);
        if (letter == L'\n' || letter == L'\t' || letter == L'\r')
            letters.push_back({" ", 1});
        else if (width < 0)
            letters.push_back({Unprintable, 1});
        else
            letters.push_back({text.substr(0, length), static_cast<std::size_t>(width)});
        text.remove_prefix(length);
    }
    return letters;
}

std::string Cut(const std::string& text, std::size_t width)
{
    if (Width(text) <= width)
        return text;
    std::string cut;
    std::size_t used = 1; // the ellipsis
    for (const Letter& letter : Letters(text))
    {
        if ((used += letter.Width) > width)
            break;
        cut += letter.Bytes;
    }
    return cut + "…";
}

std::string Padded(const std::string& text, std::size_t width, bool right)
{
    const std::string blanks(width - std::min(width, Width(text)), ' ');
    return right ? blanks + text : text + blanks;
}

void PrintRow(std::ostream& out, const Row& row, const std::vector<Column>& columns,
              const std::vector<std::size_t>& widths)
{
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i)
        line += (i > 0 ? "  " : "") + Padded(Cut(row[i], widths[i]), widths[i], columns[i].Right);
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

} // namespace

void CatchInterrupts()
{
    struct sigaction action
    {
    };
    action.sa_handler = [](int) { interrupted = 1; };
    sigaction(SIGINT, &action, nullptr); // without SA_RESTART: a question ends, too
}

bool Interrupted()
{
    return interrupted != 0;
}

void StopIfInterrupted()
{
    if (Interrupted())
        throw Refusal("interrupted; nothing was changed");
}

bool Confirm(const std::string& question, const std::string& flag)
{
    if (isatty(STDIN_FILENO) != 1)
        throw Refusal(question + " Nobody is here to answer; say " + flag + " to go ahead");
    std::cerr << question << " [y/N] " << std::flush;
    // A Ctrl-C that comes between looking and waiting ends the waiting, too.
    sigset_t interrupt;
    sigset_t before;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before);
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    const bool answered = !Interrupted() && ppoll(&input, 1, nullptr, &before) == 1;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    std::string answer;
    if (answered)
        std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

Progress::Progress(std::string what) : What(std::move(what)), Terminal(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress()
{
    if (Drawn)
        std::cerr << "\r\x1B[K" << std::flush;
}

void Progress::Show(std::int64_t done, std::int64_t total)
{
    constexpr std::int64_t length = 40;
    const auto now = std::chrono::steady_clock::now();
    if (!Terminal || now < Next || total <= 0)
        return;
    Next = now + std::chrono::milliseconds(100);
    Drawn = true;
    const std::int64_t share = std::clamp<std::int64_t>(done * length / total, 0, length);
    std::cerr << '\r' << What << " [" << std::string(static_cast<std::size_t>(share), '#')
              << std::string(static_cast<std::size_t>(length - share), '.') << "] " << share * 100 / length << " %"
              << std::flush;
}

std::string Printable(const std::string& text)
{
    std::string printable;
    for (const Letter& letter : Letters(text))
        printable += letter.Bytes;
    return printable;
}

std::size_t Width(const std::string& text)
{
    std::size_t width = 0;
    for (const Letter& letter : Letters(text))
        width += letter.Width;
    return width;
}

void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows)
{
    constexpr std::size_t gap = 2;
    constexpr std::size_t narrowest = 5;
    std::vector<Row> printable = {{}};
    for (const Column& column : columns)
        printable.front().push_back(column.Heading);
    for (const Row& row : rows)
        std::transform(row.begin(), row.end(), std::back_inserter(printable.emplace_back()), Printable);

    std::vector<std::size_t> widths(columns.size());
    for (const Row& row : printable)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], Width(row[i]));
    if (isatty(STDOUT_FILENO) == 1)
    {
        std::size_t total = gap * (widths.size() - 1);
        for (const std::size_t width : widths)
            total += width;
        for (const std::size_t limit = TerminalWidth(); total > limit; --total) // the widest gives way
        {
            const auto widest = std::max_element(widths.begin(), widths.end());
            if (*widest <= narrowest)
                break;
            --*widest;
        }
    }

    const bool coloured = Coloured();
    for (std::size_t i = 0; i < printable.size(); ++i)
    {
        if (i == 0 && coloured)
            out << "\x1B[1m";
        PrintRow(out, printable[i], columns, widths);
        if (i == 0 && coloured)
            out << "\x1B[0m" << std::flush;
    }
}

#include "terminal/prompt.h"

#include "refusal.h"
#include "terminal/interrupt.h"

#include <csignal>
#include <iostream>

#include <poll.h>
#include <unistd.h>

namespace
{

// Reads one byte, so that what is typed ahead stays for the next question. Returns nothing where the input ends or
// Ctrl-C is pressed.
std::optional<char> TypedByte()
{
    // SIGINT is blocked between the check and the wait, so that a Ctrl-C there also ends the wait.
    sigset_t interrupt;
    sigset_t before;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before);
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    const bool typed = !Interrupted() && ppoll(&input, 1, nullptr, &before) == 1;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    char byte = 0;
    return typed && read(STDIN_FILENO, &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
}

} // namespace

bool CanAsk()
{
    return isatty(STDIN_FILENO) == 1;
}

bool Confirm(const std::string& question, const std::string& flag)
{
    if (!CanAsk())
        throw Refusal(question + " Standard input is not a terminal; pass " + flag + " to confirm");
    const std::optional<std::string> answer = Ask(question + " [y/N]");
    return answer == "y" || answer == "Y" || answer == "yes";
}

std::optional<std::string> Ask(const std::string& question)
{
    std::cerr << question << ' ' << std::flush;
    std::string answer;
    std::optional<char> byte = TypedByte();
    for (; byte && *byte != '\n'; byte = TypedByte())
        answer += *byte;
    return byte ? std::optional(answer) : std::nullopt;
}

#include "terminal/prompt.h"

#include "refusal.h"
#include "terminal/interrupt.h"

#include <csignal>
#include <iostream>

#include <poll.h>
#include <unistd.h>

bool Confirm(const std::string& question, const std::string& flag)
{
    if (isatty(STDIN_FILENO) != 1)
        throw Refusal(question + " Standard input is not a terminal; pass " + flag + " to confirm");
    std::cerr << question << " [y/N] " << std::flush;
    // SIGINT is blocked between the check and the wait, so that a Ctrl-C there also ends the wait.
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

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

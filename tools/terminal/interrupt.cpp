#include "terminal/interrupt.h"

#include "refusal.h"

#include <csignal>

namespace
{

// The only object that the signal handler changes.
volatile std::sig_atomic_t interrupted = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

} // namespace

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

void StopIfInterrupted()
{
    if (Interrupted())
        throw Refusal("interrupted; nothing was changed; run the command again");
}

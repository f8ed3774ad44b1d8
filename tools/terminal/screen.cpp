#include "terminal/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

bool OutputIsTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

std::size_t TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

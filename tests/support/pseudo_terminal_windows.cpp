#include "support/pseudo_terminal.h"

namespace support
{

std::string WhyNoPseudoTerminal()
{
    return "the tests have no pseudo-terminal for Windows";
}

} // namespace support

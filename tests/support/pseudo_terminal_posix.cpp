#include "support/pseudo_terminal.h"

#include "support/system_call.h"

#include <array>
#include <cstring>

#include <pty.h>
#include <unistd.h>

namespace support
{

namespace
{

termios PlainSettings()
{
    termios settings{};
    cfmakeraw(&settings);
    settings.c_lflag |= ISIG | ICANON;
    settings.c_iflag |= ICRNL;
    settings.c_cc[VINTR] = '\x03';
    settings.c_cc[VEOF] = '\x04';
    return settings;
}

} // namespace

std::string WhyNoPseudoTerminal()
{
    int testSide = -1;
    int programSide = -1;
    if (openpty(&testSide, &programSide, nullptr, nullptr, nullptr) != 0)
        return std::string("no pseudo-terminal: openpty: ") + std::strerror(errno);
    close(testSide);
    close(programSide);
    return {};
}

PseudoTerminal::~PseudoTerminal()
{
    if (IsOpen())
        close(Side);
}

pid_t PseudoTerminal::Fork(int columns)
{
    constexpr unsigned short lines = 24;
    const termios settings = PlainSettings();
    const winsize size = {lines, static_cast<unsigned short>(columns), 0, 0};
    return forkpty(&Side, nullptr, &settings, &size);
}

bool PseudoTerminal::Read(std::string& out) const
{
    std::array<char, 4096> bytes{};
    const ssize_t size = read(Side, bytes.data(), bytes.size());
    if (size > 0)
        out.append(bytes.data(), static_cast<std::size_t>(size));
    return size > 0;
}

void PseudoTerminal::Type(const std::string& keys) const
{
    RequireCall(write(Side, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()), "write");
}

} // namespace support

#include "terminal/progress.h"

#include "terminal/console.h"

#include <algorithm>
#include <iostream>
#include <utility>

Progress::Progress(std::string what) : What(std::move(what)), Terminal(ErrorsAreTerminal()) {}

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

std::function<bool(std::int64_t done, std::int64_t total)> ShownOn(Progress& bar)
{
    return [&bar](std::int64_t done, std::int64_t total)
    {
        bar.Show(done, total);
        return !Interrupted();
    };
}

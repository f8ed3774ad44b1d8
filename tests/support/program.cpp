#include "support/program.h"

#include <filesystem>
#include <thread>

namespace support
{

ProgramResult RunProgram(const Words& words)
{
    Surroundings around;
    around.Directory = std::filesystem::current_path().string();
    around.Environment = NeededEnvironment();
    return RunningProgram(words, around).End();
}

bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace support

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

// A progress bar on standard error, if that is a terminal. It appears when the work takes longer than a second, and the
// destructor erases it.
class Progress
{
  public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::int64_t done, std::int64_t total);

  private:
    std::string What;
    std::chrono::steady_clock::time_point Begin = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point Next = Begin + std::chrono::seconds(1);
    bool Terminal;
    bool Drawn = false;
};

// Shows the progress of a work in the library on `bar`, and ends the work when the user interrupts it.
std::function<bool(std::int64_t done, std::int64_t total)> ShownOn(Progress& bar);

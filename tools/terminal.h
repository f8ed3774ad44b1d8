#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

// The person at the other end: what fits, what is asked, and what is said on the way.

// What was refused or failed, and what to do about it: the command's last words, with status 1.
class Refusal : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Makes Ctrl-C a request that long work looks for, so that it ends with everything whole.
void CatchInterrupts();
bool Interrupted();
// Throws where it was asked for.
void StopIfInterrupted();

// Asks on the terminal; throws where there is none to ask at, naming the flag that answers.
bool Confirm(const std::string& question, const std::string& flag);

// A bar on the terminal, from the moment on that work takes longer than a second; gone when done.
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

struct Column
{
    std::string Heading;
    bool Right = false; // numbers
};

using Row = std::vector<std::string>;

// Prints lines of equal columns, cut to the width of the terminal where the output goes to one.
void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows);

// A text on one line, safe for a terminal: what is no letter, no sign and no blank is shown as a question mark.
std::string Printable(const std::string& text);
// How many columns of a terminal a printable text takes.
std::size_t Width(const std::string& text);

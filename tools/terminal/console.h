// What the command needs of the operating system, apart from files: its arguments and environment, the user's
// directories, the terminal, and interrupts. console_posix.cpp and console_windows.cpp implement it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// ---- The process

// Prepares standard output and error for UTF-8, and returns the arguments without the program's name, in UTF-8.
std::vector<std::string> StartConsole(int count, char** arguments);

// The value of an environment variable, in UTF-8; empty where it is not set.
std::string Environment(const char* name);

// The text as one word of a command line: in quotes where the shell would split or change it.
std::string ShellWord(const std::string& text);

// The user's directories for data, and for what a program keeps between its runs. Both throw Refusal where the user has
// none.
std::filesystem::path DataDirectory();
std::filesystem::path StateDirectory();

// ---- The terminal

bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorsAreTerminal();

// The number of columns of the terminal that standard output is; 80 where that is not known.
std::size_t TerminalWidth();

// Reads one byte from standard input, so that what is typed ahead stays for the next question. Returns nothing where
// the input ends or Ctrl-C is pressed.
std::optional<char> TypedByte();

// ---- Interrupts

// Records Ctrl-C from now on instead of ending the process. Long work checks for it and ends cleanly.
void CatchInterrupts();

// Whether Ctrl-C was pressed.
bool Interrupted();

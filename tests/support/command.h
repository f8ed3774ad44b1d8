#pragma once

#include "plant_database.h"
#include "support/on_windows.h"
#include "support/other_program.h"
#include "support/program.h"
#include "testing/scratch_directory.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace support
{

using JSON = nlohmann::ordered_json;

// Runs the command as a person does, with a home directory and a data directory of its own. No journal exists at first.
// A journal that exists at the end of a test must pass `check`, and its directory must hold no other files.
class CommandTest : public testing::Test
{
  protected:
    CommandTest();
    void TearDown() override;

    // The words follow the command's name.
    ProgramResult Run(const Words& words, const std::string& input = {}) const;
    ProgramResult RunOnTerminal(const Words& words, const std::string& typed = {}, int columns = 80) const;
    // The words of the whole command line.
    static Words Line(const Words& words);

    // Runs a command that must succeed and print nothing on standard error; returns its output.
    std::string Done(const Words& words, const std::string& input = {}) const;
    // As Done(), for an output of one line; returns it without the line end.
    std::string DoneLine(const Words& words) const;
    // Runs a command that must succeed; returns what it prints on standard error.
    std::string NoticesOf(const Words& words) const;
    // As Done() for a command that stores one record; returns its row ID or UUID, which --quiet prints.
    std::string Stored(Words words) const;
    // Returns the output of a command with --json.
    JSON Parsed(Words words) const;

    // Runs a command that must fail with status 1, print nothing on standard output and change nothing; returns the
    // message.
    std::string Refused(const Words& words, const std::string& input = {}) const;
    // Likewise for a mistake in the command line: status 2.
    std::string Mistaken(const Words& words) const;

    // Sets or removes a variable in the command's environment.
    void SetVariable(const std::string& name, const std::string& value);
    void RemoveVariable(const std::string& name);

    // Writes a file of the scratch directory.
    void Write(const std::string& name, const std::string& bytes) const;
    // The names of the files in the journal's directory, without those of StateDirectory; empty where it does not
    // exist.
    std::vector<std::string> Beside() const;
    // The whole content of the journal, as one text to compare.
    std::string Content() const;
    // Calls `work` with the journal, opened through the library.
    void Keep(const std::function<void(PlantRepository&)>& work) const;
    // Stores a journal without findings and with rows in every table: two plants, Basil and its clone Cutting.
    void KeepEverything() const;

    // Skips the test where the system has no pseudo-terminal. Call it in SetUp(): from a test it could not return.
    static void SkipWithoutTerminal();

    ScratchDirectory Scratch;
    Surroundings Around;
    std::string Journal = Scratch.File("data/plantjournal/journal.db");
    // What the command keeps besides journals. On Windows it is the journal's directory.
    std::string StateDirectory = Scratch.File(OnWindows ? "data/plantjournal" : "home/.local/state/plantjournal");
    // What the end of the test expects: whether `check` has no findings, and the files in the journal's directory.
    bool Sound = true;
    std::vector<std::string> Left = {"journal.db"};

  private:
    std::string RefusedWith(int status, const Words& words, const std::string& input) const;
};

// A test that needs a terminal.
class TerminalTest : public CommandTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

} // namespace support

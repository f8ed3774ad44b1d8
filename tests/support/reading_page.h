#pragma once

#include "plant_database.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <string>

#include <gtest/gtest.h>

namespace support
{

// A number as the answers below contain it, however a program has written it.
std::string NumberText(double number);
// The text, or NumberText() of its number where the whole text is a number.
std::string SameNumber(const std::string& text);
// The rows of a CSV file, with the heading. No cell contains a line break.
Rows CsvRows(const std::string& csv);
// The name of a file of docs/reading.md, which its first line contains.
std::string FileNameOf(const std::string& block);

// The files of docs/reading.md and its two journals, in a directory.
class ReadingPage : public testing::Test
{
  protected:
    ReadingPage();

    // Runs a command line in the directory. Returns its output without spaces at the ends of the lines.
    std::string Run(const std::string& line) const;
    void Write(const std::string& file, const std::string& text) const;
    // The answer of a statement, from the shell, with the heading.
    Rows ShellAnswer(const std::string& journal, const std::string& file) const;
    // The same without the heading.
    Rows Answer(const std::string& journal, const std::string& file) const;

    const std::string PageName = "docs/reading.md";
    ScratchDirectory Scratch;
    mutable int Status = 0; // of the last command line

  private:
    void WriteGarden() const;
};

} // namespace support

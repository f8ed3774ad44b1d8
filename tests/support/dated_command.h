#pragma once

#include "support/chosen_day.h"
#include "support/command.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace support
{

// Runs the command on chosen days.
class DatedCommandTest : public CommandTest
{
  protected:
    ProgramResult On(const std::string& day, const Words& words, const std::string& typed = {}) const
    {
        Words line = Line(words);
        line.front() = PLANTJOURNAL_ON_A_DAY;
        return RunningProgram(line, OnDay(day, Around), typed).End();
    }
    // The command succeeds; returns what it prints on standard error.
    std::string NoticeOn(const std::string& day, const Words& words) const
    {
        const ProgramResult outcome = On(day, words);
        EXPECT_EQ(outcome.Status, 0) << outcome.Error;
        return outcome.Error;
    }
    // The command succeeds without a notice; returns its output.
    std::string DoneOn(const std::string& day, const Words& words) const
    {
        const ProgramResult outcome = On(day, words);
        EXPECT_EQ(outcome.Status, 0) << outcome.Error;
        EXPECT_EQ(outcome.Error, "");
        return outcome.Out;
    }

    // The only directory of backups in a directory.
    std::string BackUpDirectoryIn(const std::string& parent) const
    {
        std::string found;
        for (const auto& entry : std::filesystem::directory_iterator(parent))
        {
            EXPECT_EQ(found, "");
            found = entry.path().string();
        }
        return found;
    }
    // Overwrites the middle of the journal with zeros.
    void DamageJournal() const
    {
        const auto size = std::filesystem::file_size(Journal);
        std::fstream file(Journal, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(size / 4));
        file << std::string(static_cast<std::size_t>(size / 2), '\0');
    }

    std::string State = PathIn(StateDirectory, "backups");
};

} // namespace support

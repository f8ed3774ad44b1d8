#pragma once

#include <optional>
#include <string>

// Which backup a restoration takes.
struct BackUpChoice
{
    std::string Wanted;              // a file, a date, a date with a time, or empty for the newest
    std::optional<std::string> From; // the directory of --from
};

// Why the file cannot be restored; empty if it is a good backup.
std::string WhyNotGood(const std::string& path);

// The path of the chosen backup of `journal`. A file that was named is not examined; of the dated backups, it is a good
// one, and notices name those that are not used. Throws Refusal.
std::string ChosenBackUp(const std::string& journal, const BackUpChoice& choice);

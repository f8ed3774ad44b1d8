#pragma once

#include <string>
#include <string_view>
#include <vector>

// What `undo` needs to change a journal back.
struct UndoRecord
{
    enum class Kind
    {
        ChangeSet, // Content is the change set of the command
        Copy       // a copy of the journal from before the command exists; Content is the header of the copy
    };

    std::string Journal;                // its canonical path
    std::string Header;                 // of the journal after the command
    std::vector<std::string> Summaries; // what the command reported, at least one
    Kind Kept = Kind::ChangeSet;
    std::string Content;

    bool operator==(const UndoRecord&) const = default;
};

// The bytes of the record's file. They begin with the version of their form and end with a checksum.
std::string Encoded(const UndoRecord& record);

// Reads the bytes of the file `path`. Throws Refusal where they are damaged or of a newer version.
UndoRecord Decoded(std::string_view bytes, const std::string& path);

// A hash that is the same on every system and in every version.
std::string StableHash(std::string_view bytes);

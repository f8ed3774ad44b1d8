#pragma once

#include "journal/undo_record.h"

#include <filesystem>
#include <optional>
#include <string>

// The files of `undo` for one journal: a record of its last change, and for an import a copy of the journal. They are
// in a directory of their own in the user's state directory. Only a process that has locked the journal against writes
// may change them, apart from files with temporary names.
class UndoStore
{
  public:
    // Creates no file. The journal must exist. Throws Refusal.
    explicit UndoStore(const std::string& journal);

    const std::string& Journal() const { return CanonicalJournal; }
    std::string CopyPath() const;

    // Creates the directory, which only its owner can read, and returns the beginning of a temporary name in it. Throws
    // Refusal.
    std::string TemporaryPrefix() const;

    // Returns the record, or nothing where none is stored. Throws Refusal where it cannot be read or belongs to another
    // journal.
    std::optional<UndoRecord> Load() const;

    // Stores the record in place of an earlier one, and removes the copy of that one. A copy's own record takes over
    // the file `copy`. After a failure or a killed process, the earlier record may remain; the journal has changed
    // since then. Throws Refusal.
    void Save(const UndoRecord& record, const std::string& copy = {}) const;

    // Removes the record and the copy.
    void Remove() const;

  private:
    void SyncDirectory() const;
    std::filesystem::path RecordPath() const { return Directory / "last-change"; }

    std::string CanonicalJournal;
    std::filesystem::path Directory;
};

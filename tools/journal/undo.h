#pragma once

#include "journal/change_set.h"
#include "journal/undo_store.h"

#include <cstdint>
#include <string>
#include <vector>

// Records what a command changes in a journal, so that `undo` can change it back.
class UndoRecording
{
  public:
    // Begins to record. `connection` must live longer than the recording. Throws Refusal.
    UndoRecording(sqlite3* connection, std::string path);

    // Stores the changes so far, unless there are none. Throws Refusal.
    void Save(const std::vector<std::string>& summaries) const;
    // As Save() for pages that were replaced, which SQLite does not record: `copy` is a file of UndoStore's directory
    // that holds the journal from before. The journal must be locked since then.
    void SaveCopy(const std::vector<std::string>& summaries, const std::string& copy) const;

  private:
    sqlite3* Connection;
    std::string Path;
    std::int64_t DataVersion;
    ChangeRecorder Recorder;
};

// Throws Refusal if the journal at `path` has changed since the command of the record.
void RequireUnchangedSince(sqlite3* connection, const std::string& path, const UndoRecord& record);

// Changes the journal at `path` back to before the command of the record, and removes the record. Throws Refusal,
// without a change, if the journal has changed since that command. For a copy, the connection must then be closed.
void Undo(sqlite3* connection, const std::string& path, const UndoStore& store, const UndoRecord& record);

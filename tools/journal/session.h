#pragma once

#include "journal/undo.h"
#include "plant_database.h"
#include "plant_query.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

using TypedFlags = std::set<std::string>;

// One run of the command on one journal.
class Session
{
  public:
    std::optional<std::string> File; // --file
    bool AsJSON = false;             // --json
    bool Quiet = false;              // --quiet
    TypedFlags Flags;                // in the command line, as they were typed

    Session();
    // Stores what `undo` needs. A failure is reported as a notice on standard error. After a change, offers a backup if
    // the last one is old.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The path of the journal. Throws Refusal where none can be determined.
    std::string Path() const;

    // Whether the journal has been created. Throws Refusal where that cannot be determined.
    bool Exists() const;

    // Opens the journal. Write() creates a missing one, Read() throws Refusal instead. A journal with an earlier schema
    // is backed up in its directory, then migrated. `undo` can roll back what changes after the first Write().
    PlantRepository& Read();
    PlantRepository& Write();

    // As Read(), for the queries of plant_query.h.
    PlantDatabase& ReadDatabase();

    // Adds a line that describes a change which the command has made. `undo` shows these lines.
    void AddSummary(const std::string& line) { Summaries.push_back(line); }

    sqlite3* Connection() const { return Database.NativeHandle(); }

    // Throws Refusal with the reason where an operation of the repository failed; `what` describes the failure.
    // `advice` is what to do where SQLite's error does not decide it. Call it before anything else runs on the
    // connection.
    void Require(bool done, const std::string& what, const std::string& advice = {}) const;
    // Likewise after reading a list, also where reading ended early.
    void RequireList(bool done, const std::string& what) const;
    // Likewise after a query of plant_query.h.
    void RequireAnswer(const PlantQueryResult& result) const;

    // Stores what `undo` needs after an import: `copy` holds the journal from before. See UndoRecording::SaveCopy().
    void SaveCopyForUndo(const std::string& copy) const;

  private:
    void Open(bool create);

    PlantDatabase Database;
    PlantRepository Repository{Database};
    std::vector<std::string> Summaries;
    std::optional<UndoRecording> Recording;
};

// Prints a notice on standard error: why `undo` cannot roll back the change of this command.
void PrintNoUndo(const std::string& reason);

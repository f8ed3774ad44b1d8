#pragma once

#include "journal/session.h"
#include "record/json.h"

#include <string>

enum class Records
{
    One, // the command stores one record
    Many // it can store several; with --json they are printed as an array
};

// Prints what a command stored: a line that says what it did, or only the identifier with --quiet, or the record with
// --json. Hands the lines to the session, so that `undo` can repeat them.
class Outcome
{
  public:
    // `session` must live as long as this.
    Outcome(Session& session, Records records) : Journal(session), Stored(records) {}

    // Reports a stored record, in one line such as "Fed Basil: 500 ml (care 17)". Lines are printed at once. The
    // identifier is a row ID or a UUID.
    void Add(const std::string& summary, const std::string& identifier, JSON record);

    // Prints the records with --json. Call it at the end, also where nothing was stored.
    void Finish();

  private:
    Session& Journal;
    Records Stored;
    JSON All = JSON::Array();
};

// Reports the only record that a command stored.
void ReportStored(Session& session, const std::string& summary, const std::string& identifier, JSON record);
// Reports that the journal was copied to another file, which `undo` does not remove. --quiet and --json print nothing.
void ReportCopy(const Session& session, const std::string& summary);
// Reports a change that leaves no record to print, such as a deletion. --quiet and --json print nothing.
void ReportChange(Session& session, const std::string& summary);

#pragma once

#include "plant_database.h"
#include "support/journal_test.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <string>

#include <gtest/gtest.h>

namespace support
{

// SQLite's message for a ROLLBACK outside a transaction.
inline constexpr auto NoTransaction = "cannot rollback - no transaction is active";

// What a file lacks of the current schema. A file that lacks nothing has the current schema.
struct EarlierForm
{
    Statements MissingColumns;
    bool OldEvents = false; // the event table knows fewer types
    bool NoIndexes = false;
};

// A file that lacks everything that an earlier version did not have.
EarlierForm OldestForm();

// Whether a file of this form lacks `column`.
bool Lacks(const EarlierForm& form, const std::string& column);

// The statements that create the tables of a file of this form.
Statements TablesOf(const EarlierForm& form);

// Writes a file of this form with a row in every table and a value in every added column that it has.
void WriteEarlierFile(const std::string& path, const EarlierForm& form);

// A database in memory with the tables of the current schema.
struct CurrentTables : PlainConnection
{
    CurrentTables();
};

// A closed database and the path of a file.
class MigrationTest : public testing::Test
{
  protected:
    // Opens the file, which migrates it, and closes it.
    void Migrate();

    void ExpectClosed() const;

    // Expects that opening the file fails with the message `reason`.
    void ExpectFailure(const std::string& reason);

    // Writes a file with this definition and these rows of the event table.
    void WriteFileWithEvents(const std::string& definition, const std::string& rows = {}) const;

    void RunSQL(const std::string& sql) const { PlainConnection(Path).RunSQL(sql); }
    Rows QueryRows(const std::string& sql) const { return PlainConnection(Path).QueryRows(sql); }
    std::string Content() const { return support::Content(PlainConnection(Path).NativeHandle()); }

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
    PlantDatabase Database;
};

} // namespace support

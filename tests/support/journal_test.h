#pragma once

#include "plant_database.h"
#include "support/sqlite_calls.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/scratch_directory.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace support
{

// An empty, open journal in a scratch directory.
class JournalTest : public testing::Test
{
  protected:
    JournalTest();
    ~JournalTest() override;

    // Opens the journal at Path.
    void OpenJournal();
    // Stores a new plant.
    Plant NewPlant(const std::string& name, const std::string& strain = {}, const std::string& mother = {});
    // Reads a stored plant.
    Plant StoredPlant(const std::string& uuid);

    Rows QueryRows(const std::string& sql) const { return support::QueryRows(Database.NativeHandle(), sql); }
    void RunSQL(const std::string& sql) const { support::RunSQL(Database.NativeHandle(), sql); }
    std::string Content() const { return support::Content(Database.NativeHandle()); }
    // The number of rows of `table` for which the condition holds.
    int RowCount(const std::string& table, const std::string& condition = "1") const;

    // The texts of the statements that `work` prepares and executes.
    template <typename Work> static std::vector<std::string> StatementsOf(const Work& work)
    {
        const CallRecorder recorder;
        work();
        return recorder.Statements();
    }

    // Whether `operation` returns false without any call of SQLite.
    template <typename Work> static bool RefusedWithoutACall(const Work& operation)
    {
        const CallRecorder recorder;
        return !operation() && recorder.Calls().empty();
    }

    // The records that a list operation returns for a plant.
    template <typename Type>
    std::vector<Type> Listed(bool (PlantRepository::*list)(const std::string&, std::vector<Type>&),
                             const std::string& plantUUID)
    {
        std::vector<Type> records;
        EXPECT_TRUE((Repository.*list)(plantUUID, records));
        return records;
    }

    // Replaces `text` in the stored definitions of all tables. The file then has a schema that no version of the
    // library creates.
    void ReplaceInDefinitions(const std::string& text, const std::string& replacement) const;

    // Expects that no statement and no transaction is open. The end of every test expects it, too.
    void ExpectNothingOpen() const;

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
    PlantDatabase Database;
    PlantRepository Repository{Database};
};

using Statements = std::vector<std::string>;

} // namespace support

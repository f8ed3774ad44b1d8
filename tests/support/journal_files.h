#pragma once

#include "plant_database.h"
#include "support/repository_operations.h"
#include "testing/scratch_directory.h"

#include <string>

#include <gtest/gtest.h>

namespace support
{

// Opens a journal. Throws std::runtime_error with the reason if that fails.
void OpenOrThrow(PlantDatabase& database, const std::string& path);

// Opens and closes a journal. Returns "open", or the reason why it could not be opened.
std::string OpeningResult(const std::string& path);

// Opens a journal, which must succeed and find no damage, and returns its content.
std::string ContentOnceOpen(const std::string& path);

// Stores a plant in the journal, which is created if the file is missing. The UUID of the plant is its name.
void CreateNamedPlant(const std::string& path, const std::string& name);

// Creates a journal with the sample records.
SampleRecords CreateSampleJournal(const std::string& path);

// Overwrites the first page of a table or index. The schema stays intact.
void OverwritePage(const std::string& path, const std::string& name);

// Whether the operation only reads.
bool IsRead(const Operation& operation);

// A care entry that is not stored.
PlantCareEntry WaterEntry(const std::string& plantUUID, const std::string& notes);

// A test with the path of a journal, which does not exist at first.
class JournalFileTest : public testing::Test
{
  protected:
    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
};

} // namespace support

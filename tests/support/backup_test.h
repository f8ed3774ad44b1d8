#pragma once

#include "plant_file.h"

#include "support/journal_test.h"
#include "support/sample_records.h"

#include <map>
#include <set>
#include <string>

namespace support
{

using Names = std::set<std::string>;

// The names of the files in a directory.
inline Names NamesOf(const std::map<std::string, std::string>& files)
{
    Names names;
    for (const auto& [name, bytes] : files)
        names.insert(name);
    return names;
}

// A closed journal with something in every table, and a destination next to it.
class BackUpTest : public JournalTest
{
  protected:
    BackUpTest()
    {
        StoreSampleRecords(Repository);
        Database.Close();
    }

    // Backs up to the destination, and returns the error.
    std::string BackUp(const PlantBackUpProgress& progress = {}, PlantBackUpMode mode = PlantBackUpMode::Keep) const
    {
        return BackUpPlantDatabase(Path, Destination, progress, mode).Error;
    }
    // Adds a thousand pages to the journal, so that copying takes several steps.
    void Grow() const
    {
        PlainConnection(Path).RunSQL("WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT 4000) "
                                     "INSERT INTO PlantJournalEntries(PlantUUID,Details) SELECT "
                                     "'11111111-1111-4111-8111-111111111111',printf('%.1000c','x') FROM N;");
    }
    // The destination is undamaged and has the journal's content.
    void ExpectWhole() const
    {
        const PlainConnection copy(Destination);
        EXPECT_EQ(support::Content(copy.NativeHandle()), support::Content(PlainConnection(Path).NativeHandle()));
        EXPECT_EQ(Damage(copy.NativeHandle()), "ok");
    }

    std::string Destination = Scratch.File("copy.db");
};

} // namespace support

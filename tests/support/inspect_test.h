#pragma once

#include "plant_file.h"

#include "support/journal_test.h"

#include <ostream>
#include <string>
#include <vector>

std::ostream& operator<<(std::ostream& out, PlantFileKind kind); // found by GoogleTest

inline std::ostream& operator<<(std::ostream& out, PlantFileKind kind)
{
    return out << PlantFileKindName(kind);
}

namespace support
{

// What InspectPlantDatabase() finds in a file. It replaces all that `out` holds.
inline PlantFileInspection Inspected(const std::string& path)
{
    PlantFileInspection found;
    found.Steps = {"stale"};
    const PlantFileResult result = InspectPlantDatabase(path, found);
    EXPECT_TRUE(result) << result.Error;
    return found;
}

inline PlantFileKind InspectedKind(const std::string& path)
{
    return Inspected(path).Kind;
}

// A closed, empty journal to inspect.
class InspectTest : public JournalTest
{
  protected:
    InspectTest() { Database.Close(); }

    // What is found in the journal after these statements. The inspection changes no file and creates none.
    PlantFileInspection After(const std::string& sql)
    {
        PlainConnection(Path).RunSQL(sql);
        const auto before = Scratch.Files();
        PlantFileInspection found = Inspected(Path);
        EXPECT_TRUE(Scratch.Files() == before) << sql;
        return found;
    }
};

} // namespace support

#pragma once

#include "support/command.h"

namespace support
{

inline const Words TableNames = {"Strains",
                                 "Plants",
                                 "PlantEvents",
                                 "PlantCareEntries",
                                 "HarvestRecords",
                                 "PlantPhotos",
                                 "PlantHealthObservations",
                                 "PlantJournalEntries"};

// What the tests of export and import have in common.
class TransferTest : public CommandTest
{
  protected:
    // Returns the bytes of an export, of all files if it is a directory.
    std::string ExportBytes(const std::string& name) const
    {
        if (!std::filesystem::is_directory(Scratch.File(name)))
            return FileBytes(Scratch.File(name));
        std::string bytes;
        for (const std::string& table : TableNames)
            bytes += table + ":\n" + FileBytes(Scratch.File(name) + '/' + table + ".csv");
        return bytes;
    }

    std::string Exported() const { return Done({"export", "-"}); }

    // Imports this text as JSON, which must be refused, and returns the message.
    std::string RefusedText(const std::string& json) const
    {
        Write("source.json", json);
        return Refused({"import", "source.json"});
    }
};

} // namespace support

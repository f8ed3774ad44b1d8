#pragma once

#include "transfer/imported.h"

#include <string>
#include <unordered_map>
#include <vector>

// The plants to which an imported row can belong: those of the journal and those of the import.
class KnownPlants
{
  public:
    // The plants must live as long as this.
    void Add(const Plant& plant);

    // Returns null where no plant has this UUID. Of several plants, the first added counts.
    const Plant* WithUUID(const std::string& uuid) const;
    const std::vector<const Plant*>& WithName(const std::string& name) const;

  private:
    std::unordered_map<std::string, const Plant*> ByUUID;
    std::unordered_map<std::string, std::vector<const Plant*>> ByName;
};

// Checks that each row belongs to a known plant. Sets the PlantUUID of the rows that name it only in the column
// `Plant`.
template <typename Record>
void LinkOwners(ImportedTable<Record>& table, const KnownPlants& plants, ImportMessages& messages);

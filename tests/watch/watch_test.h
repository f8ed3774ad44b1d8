#pragma once

#include "plant_watcher.h"
#include "support/journal_test.h"

#include <ostream>
#include <set>
#include <string>
#include <vector>

// For GoogleTest.
std::ostream& operator<<(std::ostream& out, const PlantChanges& changes);

namespace support
{

using Family = PlantRecordFamily;
using Families = std::vector<PlantRecordFamily>;

// Every family, in the order of the enumerators.
Families EveryFamily();

// An open journal with a watcher. The tests run with a watcher that names plants and with one that does not.
class WatchTest : public JournalTest
{
  protected:
    // Reports the changes; expects that the poll succeeds.
    static PlantChanges Poll(PlantWatcher& watcher);
    // Expects these changes of this connection and none of another: exactly, or what a watcher without plants reports
    // for them. `plants` may be in any order.
    static void ExpectOwn(PlantWatcher& watcher, const Families& families, const std::set<std::string>& plants);
    static void ExpectNothing(PlantWatcher& watcher);
    static void ExpectEverything(const PlantChanges& changes);
    // Runs statements without results on another connection.
    void RunElsewhere(const std::string& sql) const { PlainConnection(Path).RunSQL(sql); }
};

} // namespace support

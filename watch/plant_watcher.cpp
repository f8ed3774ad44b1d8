#include "plant_watcher.h"

#include "tables.h"
#include "watch.h"

#include <cstddef>

namespace
{

// Attaches a watch, where that is possible now.
std::unique_ptr<plant_watch::Watch> Attach(PlantDatabase& database)
{
    const plant_watch::NoWaiting noWaiting(database.NativeHandle());
    return std::make_unique<plant_watch::Watch>(database.NativeHandle());
}

} // namespace

const char* PlantRecordFamilyName(PlantRecordFamily family)
{
    const auto number = static_cast<std::size_t>(family);
    return plant_watch::Tables[number < plant_watch::Tables.size() ? number : 0].FamilyName;
}

bool PlantWatcher::NamesPlants()
{
    return plant_watch::RowHook::FindsPlants;
}

PlantWatcher::PlantWatcher(PlantDatabase& database) : Database(database)
{
    if (!database.IsOpen())
        return;
    try
    {
        Attached = Attach(database);
    }
    catch (const plant_watch::Failure&) // the polls try again, and report why
    {
    }
}

PlantWatcher::~PlantWatcher() = default;

PlantWatchResult PlantWatcher::Poll(PlantChanges& out)
{
    out = {};
    try
    {
        if (Attached != nullptr && Attached->WatchedConnection() != Database.NativeHandle())
            Attached.reset();
        if (!Database.IsOpen())
            throw plant_watch::Failure{"the database is closed"};
        const plant_watch::NoWaiting noWaiting(Database.NativeHandle());
        if (Attached == nullptr)
        {
            Attached = std::make_unique<plant_watch::Watch>(Database.NativeHandle());
            Attached->AddEverything();
        }
        out = Attached->TakeChanges();
    }
    catch (const plant_watch::Failure& failure)
    {
        if (!failure.Locked)
            return {"watching the journal: " + failure.Reason};
        out.AskAgain = true;
    }
    return {};
}

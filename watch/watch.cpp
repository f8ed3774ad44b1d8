#include "watch.h"

namespace plant_watch
{

// A list of the objects themselves: it needs no memory, and no destruction at the end of the program.
Registration::List& Registration::All()
{
    static List all;
    return all;
}

Registration::Registration(sqlite3* connection) : Connection(connection)
{
    List& all = All();
    const std::lock_guard lock(all.Mutex);
    for (const Registration* other = all.First; other != nullptr; other = other->Next)
        if (other->Connection == connection)
            throw Failure{"another watcher watches this connection"};
    Next = all.First;
    all.First = this;
}

Registration::~Registration()
{
    List& all = All();
    const std::lock_guard lock(all.Mutex);
    Registration** link = &all.First;
    while (*link != this)
        link = &(*link)->Next;
    *link = Next;
}

Watch::Watch(sqlite3* connection)
    : Connection(connection), Registered(connection), DataVersion(connection, "PRAGMA main.data_version;"),
      KnownVersion(DataVersion.Value()), Hooks(connection, KnownVersion), Rows(connection, Hooks)
{
}

void Watch::AddEverything() noexcept
{
    Hooks.Committed(std::nullopt).AddEverything();
    OthersChanged = true;
}

PlantChanges Watch::TakeChanges()
{
    const std::optional<int> version = DataVersion.ValueUnlessLocked();
    ChangeSet& committed = Hooks.Committed(version);
    PlantChanges changes = committed.Listed();
    changes.AskAgain = !version;
    if (version)
    {
        changes.OthersChanged = OthersChanged || *version != KnownVersion;
        KnownVersion = *version;
        OthersChanged = false;
    }
    committed.Clear();
    return changes;
}

} // namespace plant_watch

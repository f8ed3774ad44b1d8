// All work on the journal, on a thread of its own. Knows no Qt.
#pragma once

#include "plant_file.h"
#include "plant_view.h"
#include "plant_watcher.h"
#include "store_record.h"
#include "worker_thread.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// What the worker reports without being asked: the state of the journal, after it was opened and after each change,
// also by another program. The functions run on the worker's thread.
struct JournalEvents
{
    std::function<void(const std::vector<PlantStatus>&)> PlantsRead;
    std::function<void(const PlantView&)> PlantRead; // the plant of the last Show()
    // The reason why the journal cannot be read, so that what was reported before may be old. Empty once it was read.
    std::function<void(const std::string&)> ReadFailed;
};

// Each function returns at once. The functions given as `then` run on the worker's thread, in the order of the calls.
class JournalWorker
{
  public:
    // Looks for changes every `interval`.
    JournalWorker(JournalEvents events, std::chrono::milliseconds interval);

    // Inspects the file at `path`, to know whether and how to open it.
    void Inspect(std::string path, std::function<void(const PlantFileResult&, const PlantFileInspection&)> then);
    // Closes the journal and opens the one at `path`. First stores a backup at `backup`, unless that is empty. `then`
    // receives the error, empty on success.
    void Open(std::string path, std::string backup, std::function<void(const std::string&)> then);
    // From now on, reports the plant with this UUID, with charts of this width. The empty text means none.
    void Show(std::string uuid, double chartWidth);
    void Store(FormRecord record, std::function<void(const StoreResult&)> then);
    void Check(std::function<void(const PlantFileResult&, const std::vector<PlantFileFinding>&)> then);
    void BackUp(std::string destination, std::function<void(const PlantFileResult&)> then);

  private:
    void LookForChanges();
    PlantQueryResult Read();

    // Only the worker's thread uses these.
    const JournalEvents Events;
    PlantDatabase Database;
    std::optional<PlantWatcher> Watcher; // ends before the database closes
    std::string Shown;
    double ChartWidth = 0;
    bool Stale = false; // what was reported is not the present state
    std::string LastFailure;

    WorkerThread Thread; // the last member: it ends before the others
};

#include "journal_worker.h"

#include <algorithm>
#include <utility>

JournalWorker::JournalWorker(JournalEvents events, std::chrono::milliseconds interval)
    : Events(std::move(events)), Thread([this] { LookForChanges(); }, interval)
{
}

void JournalWorker::Inspect(std::string path,
                            std::function<void(const PlantFileResult&, const PlantFileInspection&)> then)
{
    Thread.Post(
        [path = std::move(path), then = std::move(then)]
        {
            PlantFileInspection inspection;
            const PlantFileResult result = InspectPlantSchema(path, inspection);
            then(result, inspection);
        });
}

void JournalWorker::Open(std::string path, std::string backup, std::function<void(const std::string&)> then)
{
    Thread.Post(
        [this, path = std::move(path), backup = std::move(backup), then = std::move(then)]
        {
            std::string error;
            if (!backup.empty())
                error = BackUpPlantDatabase(path, backup).Error;
            if (error.empty())
            {
                Shown.clear();
                Watcher.reset();
                Stale = Database.Open(path, &error);
                if (Stale)
                    Watcher.emplace(Database); // before the first read, so that no change is missed
            }
            then(error);
        });
}

void JournalWorker::Show(std::string uuid, double chartWidth)
{
    // Only notes the wish, so that quick selections of plants do not read each of them.
    Thread.Post(
        [this, uuid = std::move(uuid), chartWidth]
        {
            Shown = uuid;
            ChartWidth = chartWidth;
            Stale = true;
        });
}

void JournalWorker::Store(FormRecord record, std::function<void(const StoreResult&)> then)
{
    Thread.Post([this, record = std::move(record), then = std::move(then)] { then(StoreRecord(Database, record)); });
}

void JournalWorker::Check(std::function<void(const PlantFileResult&, const std::vector<PlantFileFinding>&)> then)
{
    Thread.Post(
        [this, then = std::move(then)]
        {
            std::vector<PlantFileFinding> findings;
            const PlantFileResult result = CheckPlantDatabase(Database.Path(), findings);
            then(result, findings);
        });
}

void JournalWorker::BackUp(std::string destination, std::function<void(const PlantFileResult&)> then)
{
    Thread.Post([this, destination = std::move(destination), then = std::move(then)]
                { then(BackUpPlantDatabase(Database.Path(), destination)); });
}

void JournalWorker::LookForChanges()
{
    if (!Watcher)
        return;
    PlantChanges changes;
    const PlantWatchResult polled = Watcher->Poll(changes);
    if (!polled || changes.OthersChanged || !changes.Families.empty())
        Stale = true;
    if (!Stale)
        return;
    const std::string failure = polled ? Read().Error : polled.Error;
    Stale = !failure.empty(); // then the next call tries again
    if (failure != std::exchange(LastFailure, failure))
        Events.ReadFailed(failure);
}

PlantQueryResult JournalWorker::Read()
{
    std::vector<PlantStatus> plants;
    PlantQueryResult read = QueryPlantStatus(Database, {}, PlantEventCurrentDate(), plants);
    if (!read)
        return read;
    Events.PlantsRead(plants);
    // Another program may have deleted the plant.
    if (std::none_of(plants.begin(), plants.end(),
                     [this](const PlantStatus& plant) { return plant.PlantUUID == Shown; }))
        return read;
    PlantView view;
    read = ReadPlantView(Database, Shown, ChartWidth, view);
    if (read)
        Events.PlantRead(view);
    return read;
}

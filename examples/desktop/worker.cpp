#include "worker.h"

#include "plant_file.h"

Worker::Worker(std::function<void(Call)> toWindow, std::function<void(const JournalView&)> show,
               std::chrono::milliseconds interval)
    : ToWindow(std::move(toWindow)), Show(std::move(show)), Interval(interval), Thread([this] { Run(); })
{
}

Worker::~Worker()
{
    Add([this] { Ending = true; });
    Thread.join();
}

void Worker::Open(std::string path, std::string backup, std::function<void(const std::string&)> answer)
{
    const auto open = [this, path = std::move(path), backup = std::move(backup)](PlantDatabase& /*before*/)
    {
        std::string error = backup.empty() ? "" : BackUpPlantDatabase(path, backup).Error;
        auto opened = std::make_unique<PlantDatabase>();
        if (!error.empty() || !opened->Open(path, &error))
            return error;
        Watcher.reset();
        Database = std::move(opened);
        Watcher.emplace(*Database); // before the first read, so that no change is missed
        Stale = true;
        return error;
    };
    Do(open, std::move(answer));
}

void Worker::Select(std::string uuid)
{
    // Reads nothing yet, so that quick selections of plants do not read each of them.
    Add(
        [this, uuid = std::move(uuid)]
        {
            Selected = uuid;
            Stale = true;
        });
}

void Worker::Add(Call job)
{
    const std::lock_guard<std::mutex> lock(Mutex);
    Jobs.push_back(std::move(job));
    Wakened.notify_one();
}

void Worker::Run()
{
    while (!Ending)
    {
        std::unique_lock<std::mutex> lock(Mutex);
        if (Jobs.empty())
        {
            lock.unlock(); // so that the window never waits for the journal
            ShowChanges();
            lock.lock();
            Wakened.wait_for(lock, Interval, [this] { return !Jobs.empty(); });
        }
        else
        {
            const Call job = std::move(Jobs.front());
            Jobs.pop_front();
            lock.unlock();
            job();
        }
    }
}

void Worker::ShowChanges()
{
    PlantChanges changes;
    const bool polled = Watcher && Watcher->Poll(changes); // otherwise, the next call polls again
    Stale = Stale || (polled && (changes.OthersChanged || !changes.Families.empty()));
    if (!Stale)
        return;
    JournalView view = ReadJournal(*Database, Selected);
    Stale = !view.Error.empty(); // then the next call reads again
    ToWindow([show = Show, view = std::move(view)] { show(view); });
}

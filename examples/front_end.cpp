// A front end whose window stays alive while another program holds the journal's lock. The window is the terminal: it
// reads commands and prints what the worker sends. docs/front-end.md explains the program.

#include "plant_file.h"
#include "plant_query.h"
#include "plant_validation.h"
#include "plant_watcher.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <iostream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

// [open]
// Opens the journal at `path`. Returns the reason if it cannot be opened; the file is then unchanged or has a backup.
std::string OpenSafely(PlantDatabase& journal, const std::string& path)
{
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantSchema(path, file); !result)
        return result.Error;
    switch (file.Kind)
    {
    case PlantFileKind::Foreign:
    case PlantFileKind::NotADatabase:
    case PlantFileKind::Damaged:
    case PlantFileKind::Locked:
        return path + ": " + PlantFileKindName(file.Kind);
    case PlantFileKind::Older: // `file.Steps` describes the migration: ask the user here
    case PlantFileKind::Interrupted:
        if (const PlantFileResult copied = BackUpPlantDatabase(path, path + ".backup"); !copied)
            return copied.Error;
        break;
    case PlantFileKind::Missing: // `Open` creates it: ask the user here
    case PlantFileKind::Empty:
    case PlantFileKind::Current:
        break;
    }
    std::string error;
    journal.Open(path, &error);
    return error;
}
// [end]

// [store]
struct StoreResult
{
    bool Stored = false;
    std::vector<PlantProblem> Problems; // for the fields of the form
    std::string Reason;                 // for the whole form
};

// Stores what a form holds, unless a value is wrong. The form keeps its values.
StoreResult Store(PlantDatabase& journal, const PlantCareEntry& form)
{
    StoreResult result;
    if (const PlantValidationResult read = Validate(form, journal, result.Problems); !read)
    {
        result.Reason = read.Error;
        return result;
    }
    for (const PlantProblem& problem : result.Problems)
        if (problem.Kind != PlantProblemKind::Unlikely)
            return result;
    PlantCareEntry entry = form; // `Explain` needs the record as it was before
    result.Stored = PlantRepository(journal).CreatePlantCareEntry(entry);
    if (!result.Stored)
        result.Reason = Explain(journal, form);
    return result;
}
// [end]

// [queue]
// Calls that one thread runs, in their order. Any thread may add one.
class Queue
{
  public:
    void Add(std::function<void()> call)
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        Calls.push_back(std::move(call));
        Added.notify_one();
    }

    // Waits for the first call, at most for `time`. Returns an empty call if none came.
    std::function<void()> Take(std::chrono::milliseconds time)
    {
        std::unique_lock<std::mutex> lock(Mutex);
        if (!Added.wait_for(lock, time, [this] { return !Calls.empty(); }))
            return {};
        const std::function<void()> call = std::move(Calls.front());
        Calls.pop_front();
        return call;
    }

  private:
    std::mutex Mutex;
    std::condition_variable Added;
    std::deque<std::function<void()>> Calls;
};
// [end]

// [worker]
// Owns the journal. Everything that uses it runs on the worker's thread; the answers run on the window's.
class Worker
{
  public:
    Worker(Queue& window, std::function<void(const std::vector<PlantStatus>&)> show)
        : Window(window), Show(std::move(show)), Thread([this] { Run(); })
    {
    }

    ~Worker() // completes the jobs that wait, then closes the journal
    {
        Jobs.Add([this] { Ending = true; });
        Thread.join();
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Runs `job` on the worker's thread, then `answer` with its result on the window's. Returns at once.
    template <typename Result>
    void Do(std::function<Result(PlantDatabase&)> job, std::function<void(const Result&)> answer)
    {
        Jobs.Add([this, job = std::move(job), answer = std::move(answer)]
                 { Window.Add([answer, result = job(Journal)] { answer(result); }); });
    }

  private:
    void Run()
    {
        while (!Ending)
        {
            if (const std::function<void()> job = Jobs.Take(std::chrono::milliseconds(250)))
                job();
            if (Journal.IsOpen())
                LookForChanges();
        }
        Watcher.reset(); // before the journal closes
    }

    void LookForChanges();

    Queue& Window;
    const std::function<void(const std::vector<PlantStatus>&)> Show;
    Queue Jobs;

    // Used on the worker's thread only.
    PlantDatabase Journal;
    std::optional<PlantWatcher> Watcher;
    bool Stale = false; // the window shows an earlier state
    bool Ending = false;

    std::thread Thread; // the last member, because it uses the others
};
// [end]

// [watch]
// Called after each job and four times a second.
void Worker::LookForChanges()
{
    if (!Watcher)
    {
        Watcher.emplace(Journal); // before the first read, so that no change is missed
        Stale = true;
    }
    PlantChanges changes;
    if (!Watcher->Poll(changes))
        return; // the next call tries again
    Stale = Stale || changes.OthersChanged || !changes.Families.empty();
    std::vector<PlantStatus> plants;
    if (!Stale || !QueryPlantStatus(Journal, {}, PlantEventCurrentDate(), plants))
        return; // `Stale` stays set until a read succeeds
    Stale = false;
    Window.Add([this, plants = std::move(plants)] { Show(plants); });
}
// [end]

class Window
{
  public:
    // Runs until the end of the input. Returns the exit status.
    int Run(const std::string& path)
    {
        TheWorker.emplace(Calls, [this](const std::vector<PlantStatus>& plants) { ShowPlants(plants); });
        TheWorker->Do<std::string>([path](PlantDatabase& journal) { return OpenSafely(journal, path); },
                                   [this](const std::string& error) { ReadCommands(error); });
        RunLoop();
        return Status;
    }

  private:
    // [loop]
    // The event loop. It never waits for the journal.
    void RunLoop()
    {
        while (!Closed)
            if (const std::function<void()> call = Calls.Take(std::chrono::hours(1)))
                call();
        TheWorker.reset(); // stores what still waits
        while (const std::function<void()> call = Calls.Take(std::chrono::milliseconds(0)))
            call(); // its answers
        Input.join();
    }
    // [end]

    // Reads on a thread of its own, as a window gets its events from elsewhere.
    void ReadCommands(const std::string& error)
    {
        if (!error.empty())
        {
            std::cerr << error << '\n';
            Status = 1;
        }
        Input = std::thread(
            [this, isOpen = error.empty()]
            {
                std::string line;
                while (isOpen && std::getline(std::cin, line) && line != "quit")
                    Calls.Add([this, line] { Handle(line); });
                Calls.Add([this] { Closed = true; });
            });
    }

    void Handle(const std::string& line)
    {
        std::istringstream words(line);
        std::string command;
        std::string plant;
        words >> command;
        if (command == "feed")
        {
            Form = {};
            words >> plant >> Form.AmountMl >> Form.PH;
            Form.PlantUUID = UUIDOf(plant);
            Form.CareDate = PlantEventCurrentDate();
            Form.Action = PlantCareAction::Feed;
            Save();
        }
        else if (command == "again")
            Save();
        else if (command == "timeline" && words >> plant)
            ShowTimeline(UUIDOf(plant));
        else if (command == "stages")
            ShowStages();
        else
            std::cout << "feed PLANT ML [PH] | again | timeline PLANT | stages | quit" << std::endl;
    }

    std::string UUIDOf(const std::string& name) const
    {
        const auto found =
            std::find_if(Plants.begin(), Plants.end(), [&](const PlantStatus& plant) { return plant.Name == name; });
        return found == Plants.end() ? "" : found->PlantUUID;
    }

    // [show]
    void ShowPlants(const std::vector<PlantStatus>& plants)
    {
        Plants = plants;
        for (const PlantStatus& plant : plants)
            std::cout << plant.Name << ": " << PlantStageName(plant.Stage) << ", fed " << plant.LastFeedDate << '\n';
        std::cout << std::flush;
    }

    void ShowTimeline(const std::string& uuid)
    {
        struct Timeline
        {
            std::string Error;
            std::vector<PlantActivity> Activities;
        };
        TheWorker->Do<Timeline>(
            [uuid](PlantDatabase& journal)
            {
                Timeline timeline;
                timeline.Error = QueryPlantTimeline(journal, uuid, timeline.Activities).Error;
                return timeline;
            },
            [](const Timeline& timeline)
            {
                for (const PlantActivity& activity : timeline.Activities)
                    std::cout << activity.Date << "  " << activity.Kind << "  " << activity.Text << '\n';
                std::cout << timeline.Error << std::endl;
            });
    }
    // [end]

    // [stages]
    // What a list to choose from holds.
    static void ShowStages()
    {
        for (const PlantStage stage : PlantStages)
            std::cout << PlantStageName(stage) << ' ';
        std::cout << std::endl;
    }
    // [end]

    // [save]
    void Save()
    {
        std::cout << "Saving..." << std::endl;
        TheWorker->Do<StoreResult>([form = Form](PlantDatabase& journal) { return Store(journal, form); },
                                   [](const StoreResult& result)
                                   {
                                       for (const PlantProblem& problem : result.Problems)
                                           std::cout << problem.Field << ": " << problem.Description << '\n';
                                       std::cout << (result.Stored ? "Saved." : "Not saved. ") << result.Reason
                                                 << std::endl;
                                   });
    }
    // [end]

    Queue Calls;
    std::optional<Worker> TheWorker;
    std::thread Input;
    std::vector<PlantStatus> Plants;
    PlantCareEntry Form; // keeps its values if they are not stored
    int Status = 0;
    bool Closed = false;
};

} // namespace

int main(int argc, char** argv)
{
    return Window().Run(argc > 1 ? argv[1] : "journal.db");
}

// The thread that does all work on the journal. Knows no Qt.
#pragma once

#include "journal.h"
#include "plant_watcher.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

// Each public function returns at once, and any thread may call it. Jobs run in the order of the calls.
class Worker
{
  public:
    using Call = std::function<void()>;

    // `toWindow` runs a call on the window's thread. There, `show` receives the journal: after it was opened and after
    // each change, also by another program. The worker looks for changes after its jobs, and every `interval`.
    Worker(std::function<void(Call)> toWindow, std::function<void(const JournalView&)> show,
           std::chrono::milliseconds interval = std::chrono::milliseconds(250));
    // Completes the jobs that wait, then closes the journal.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Runs `job` with the database on the worker's thread, then `answer` with its result on the window's.
    template <typename Job, typename Answer> void Do(Job job, Answer answer)
    {
        Add([this, job = std::move(job), answer = std::move(answer)]
            { ToWindow([answer, result = job(*Database)] { answer(result); }); });
    }

    // Opens the journal at `path`. First stores a backup at `backup`, unless that is empty. `answer` receives the
    // error; empty on success. After an error, the journal that was open before stays open.
    void Open(std::string path, std::string backup, std::function<void(const std::string&)> answer);
    // Selects the plant to read.
    void Select(std::string uuid);

  private:
    void Add(Call job);
    void Run();
    void ShowChanges();

    const std::function<void(Call)> ToWindow;
    const std::function<void(const JournalView&)> Show;
    const std::chrono::milliseconds Interval;

    // Only the worker's thread uses these.
    std::unique_ptr<PlantDatabase> Database = std::make_unique<PlantDatabase>();
    std::optional<PlantWatcher> Watcher; // ends before the database closes
    std::string Selected;
    bool Stale = false; // the window shows an earlier state

    std::mutex Mutex; // protects the members below
    std::condition_variable Wakened;
    std::deque<Call> Jobs;
    bool Ending = false;
    std::thread Thread; // the last member: it uses the others
};

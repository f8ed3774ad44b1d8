// A thread with a queue of jobs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

class WorkerThread
{
  public:
    using Job = std::function<void()>;

    // Calls `whenIdle` on the new thread whenever no job is waiting: after the last job, and then every `interval`.
    WorkerThread(Job whenIdle, std::chrono::milliseconds interval);
    // Runs the jobs that are waiting, then ends the thread.
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    // Adds a job to the queue. Any thread may call this. Jobs run in the order of the calls.
    void Post(Job job);

  private:
    void Run();
    // Waits for a job, at most for the interval. Returns an empty job where none came.
    Job Next();

    const Job WhenIdle;
    const std::chrono::milliseconds Interval;
    std::mutex Mutex; // protects the members below
    std::condition_variable Wakened;
    std::deque<Job> Jobs;
    bool Ending = false;
    std::thread Thread; // the last member: it uses the others
};

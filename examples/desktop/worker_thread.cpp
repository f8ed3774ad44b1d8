#include "worker_thread.h"

#include <utility>

WorkerThread::WorkerThread(Job whenIdle, std::chrono::milliseconds interval)
    : WhenIdle(std::move(whenIdle)), Interval(interval), Thread([this] { Run(); })
{
}

WorkerThread::~WorkerThread()
{
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        Ending = true;
    }
    Wakened.notify_one();
    Thread.join();
}

void WorkerThread::Post(Job job)
{
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        Jobs.push_back(std::move(job));
    }
    Wakened.notify_one();
}

void WorkerThread::Run()
{
    for (bool ending = false; !ending;)
    {
        if (const Job job = Next())
            job();
        bool idle = false;
        {
            const std::lock_guard<std::mutex> lock(Mutex);
            idle = Jobs.empty();
            ending = idle && Ending;
        }
        if (idle && !ending)
            WhenIdle(); // without the mutex, so that Post() never waits for it
    }
}

WorkerThread::Job WorkerThread::Next()
{
    std::unique_lock<std::mutex> lock(Mutex);
    Wakened.wait_for(lock, Interval, [this] { return Ending || !Jobs.empty(); });
    if (Jobs.empty())
        return {};
    Job job = std::move(Jobs.front());
    Jobs.pop_front();
    return job;
}

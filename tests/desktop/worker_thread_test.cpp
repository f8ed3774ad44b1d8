// The thread with a queue of jobs.

#include "worker_thread.h"

#include <atomic>
#include <future>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using namespace std::chrono_literals;

constexpr std::chrono::hours Never(1);

TEST(WorkerThreadTest, JobsRunInTheOrderOfTheCalls)
{
    std::vector<int> run;
    {
        WorkerThread thread([] {}, Never);
        for (int job = 0; job < 100; ++job)
            thread.Post([&run, job] { run.push_back(job); });
    } // ends the thread
    ASSERT_EQ(run.size(), 100);
    for (int job = 0; job < 100; ++job)
        EXPECT_EQ(run[static_cast<std::size_t>(job)], job);
}

TEST(WorkerThreadTest, JobsRunOnOneOtherThread)
{
    std::vector<std::thread::id> ids;
    {
        WorkerThread thread([&] { ids.push_back(std::this_thread::get_id()); }, 1ms);
        for (int job = 0; job < 3; ++job)
            thread.Post([&] { ids.push_back(std::this_thread::get_id()); });
    }
    ASSERT_GE(ids.size(), 3);
    for (const std::thread::id& id : ids)
    {
        EXPECT_EQ(id, ids.front());
        EXPECT_NE(id, std::this_thread::get_id());
    }
}

TEST(WorkerThreadTest, PostDoesNotWaitForTheRunningJob)
{
    std::promise<void> end;
    std::atomic<bool> ended = false;
    WorkerThread thread([] {}, Never);
    thread.Post(
        [&]
        {
            end.get_future().wait();
            ended = true;
        });
    thread.Post([] {});
    EXPECT_FALSE(ended);
    end.set_value();
}

TEST(WorkerThreadTest, JobsMayBePostedFromSeveralThreads)
{
    int run = 0; // only the jobs use it
    {
        WorkerThread thread([] {}, Never);
        std::vector<std::future<void>> posting;
        for (int poster = 0; poster < 4; ++poster)
            posting.push_back(std::async(std::launch::async,
                                         [&]
                                         {
                                             for (int job = 0; job < 250; ++job)
                                                 thread.Post([&run] { ++run; });
                                         }));
        for (std::future<void>& each : posting)
            each.get();
    }
    EXPECT_EQ(run, 1000);
}

TEST(WorkerThreadTest, AJobMayPostAnotherJob)
{
    bool run = false;
    {
        WorkerThread thread([] {}, Never);
        thread.Post([&] { thread.Post([&] { run = true; }); });
    }
    EXPECT_TRUE(run);
}

TEST(WorkerThreadTest, TheIdleFunctionRunsAfterTheLastJob)
{
    std::vector<char> run;
    std::promise<void> posted;
    std::promise<void> idle;
    {
        WorkerThread thread(
            [&]
            {
                run.push_back('i');
                idle.set_value();
            },
            Never);
        thread.Post([&] { posted.get_future().wait(); });
        thread.Post([&] { run.push_back('a'); });
        thread.Post([&] { run.push_back('b'); });
        posted.set_value(); // from here on, the thread never waits for a job
        EXPECT_EQ(idle.get_future().wait_for(10s), std::future_status::ready);
    }
    EXPECT_EQ(run, (std::vector<char>{'a', 'b', 'i'}));
}

TEST(WorkerThreadTest, TheIdleFunctionRunsAtEachInterval)
{
    std::atomic<int> run = 0;
    std::promise<void> third;
    WorkerThread thread(
        [&]
        {
            if (++run == 3)
                third.set_value();
        },
        1ms);
    EXPECT_EQ(third.get_future().wait_for(10s), std::future_status::ready);
}

TEST(WorkerThreadTest, AThreadWithoutJobsEndsAtOnce)
{
    const auto begin = std::chrono::steady_clock::now();
    const std::optional<WorkerThread> thread(
        std::in_place, [] {}, Never);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

} // namespace

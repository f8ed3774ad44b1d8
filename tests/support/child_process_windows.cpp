#include "support/child_process.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace support
{

namespace
{

constexpr std::chrono::minutes longestWait(2);

} // namespace

class ChildProcess::Connection
{
  public:
    // Waits until `condition` holds; false where the test ends the child first.
    template <typename Condition> bool Await(const Condition& condition)
    {
        std::unique_lock lock(Mutex);
        if (!Changed.wait_for(lock, longestWait, [&] { return Abandoned || condition(); }))
            throw std::runtime_error("a child process waited for too long");
        return !Abandoned;
    }
    template <typename Change> void Apply(const Change& change)
    {
        const std::lock_guard lock(Mutex);
        change();
        Changed.notify_all();
    }

    std::mutex Mutex;
    std::condition_variable Changed;
    std::deque<std::string> Lines;
    int Signals = 0;
    bool Abandoned = false;
    std::string Result; // once it has ended
    std::thread Thread;
};

void ParentProcess::Send(const std::string& line) const
{
    Parent.Apply([&] { Parent.Lines.push_back(line); });
}

void ParentProcess::Wait() const
{
    if (!Parent.Await([&] { return Parent.Signals > 0; }))
        throw std::runtime_error("the test has ended");
    Parent.Apply([&] { --Parent.Signals; });
}

ChildProcess::ChildProcess(const std::function<void(const ParentProcess&)>& work)
    : Child(std::make_unique<Connection>())
{
    Child->Thread = std::thread(
        [work, &connection = *Child]
        {
            std::string result = "done";
            try
            {
                work(ParentProcess(connection));
            }
            catch (const std::exception& reason)
            {
                result = "failed";
                connection.Apply([&] { connection.Lines.emplace_back(reason.what()); });
            }
            connection.Apply([&] { connection.Result = result; });
        });
}

ChildProcess::~ChildProcess()
{
    Child->Apply([&] { Child->Abandoned = true; });
    if (Child->Thread.joinable())
        Child->Thread.join();
}

std::optional<std::string> ChildProcess::ReadLine()
{
    Child->Await([&] { return !Child->Lines.empty() || !Child->Result.empty(); });
    if (Child->Lines.empty())
        return std::nullopt;
    std::string line;
    Child->Apply(
        [&]
        {
            line = std::move(Child->Lines.front());
            Child->Lines.pop_front();
        });
    return line;
}

std::vector<std::string> ChildProcess::ReadLines()
{
    std::vector<std::string> lines;
    while (std::optional<std::string> line = ReadLine())
        lines.push_back(std::move(*line));
    return lines;
}

void ChildProcess::Continue() const
{
    Child->Apply([&] { ++Child->Signals; });
}

void ChildProcess::Kill() const
{
    throw std::logic_error("a thread cannot be killed");
}

std::string ChildProcess::End()
{
    if (Child->Thread.joinable())
        Child->Thread.join();
    return Child->Result;
}

} // namespace support

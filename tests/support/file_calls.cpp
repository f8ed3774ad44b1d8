#include "support/file_call_gate.h"

#include <utility>

namespace support
{

namespace
{

thread_local FileCallFailure* fileCallFailure = nullptr;
thread_local AfterFileCall* afterFileCall = nullptr;
thread_local FileCallListener* listener = nullptr;

} // namespace

std::optional<int> FileCallGate::Failure(FileCall call)
{
    if (fileCallFailure == nullptr || !fileCallFailure->Calls.contains(call))
        return std::nullopt;
    const int number = ++fileCallFailure->Made;
    const bool fails = fileCallFailure->Number == FileCallFailure::EveryCall || fileCallFailure->Number == number;
    return fails ? std::optional(fileCallFailure->Error) : std::nullopt;
}

void FileCallGate::Returned(FileCall call)
{
    if (afterFileCall != nullptr && afterFileCall->Call == call && ++afterFileCall->Made == afterFileCall->Number)
        afterFileCall->Act();
}

FileCallListener* FileCallGate::Listener()
{
    return listener;
}

FileCallFailure::FileCallFailure(std::set<FileCall> calls, int number, int error)
    : Calls(std::move(calls)), Number(number), Error(error)
{
    fileCallFailure = this;
}

FileCallFailure::~FileCallFailure()
{
    fileCallFailure = nullptr;
}

AfterFileCall::AfterFileCall(FileCall call, std::function<void()> act, int number)
    : Call(call), Act(std::move(act)), Number(number)
{
    afterFileCall = this;
}

AfterFileCall::~AfterFileCall()
{
    afterFileCall = nullptr;
}

FileCallListener::FileCallListener()
{
    listener = this;
}

FileCallListener::~FileCallListener()
{
    listener = nullptr;
}

} // namespace support

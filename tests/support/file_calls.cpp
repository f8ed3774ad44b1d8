#include "support/file_calls.h"

#include <cstdio>
#include <utility>

#include <dirent.h>
#include <dlfcn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support
{

namespace
{

thread_local FileCallFailure* fileCallFailure = nullptr;
thread_local AfterFileCall* afterFileCall = nullptr;
thread_local FileCallListener* listener = nullptr;

// Passes a call that has returned on to the listener, if it succeeded.
template <typename... Arguments>
int Announce(int result, void (FileCallListener::*receive)(Arguments...), Arguments... arguments)
{
    if (listener != nullptr && result != -1)
        (listener->*receive)(arguments...);
    return result;
}

} // namespace

class FileCallGate
{
  public:
    template <typename Result, typename... Arguments>
    static Result Pass(FileCall call, const char* name, Result failed, Arguments... arguments)
    {
        if (fileCallFailure != nullptr && fileCallFailure->Calls.contains(call))
        {
            const int number = ++fileCallFailure->Made;
            if (fileCallFailure->Number == FileCallFailure::EveryCall || fileCallFailure->Number == number)
            {
                errno = fileCallFailure->Error;
                return failed;
            }
        }
        const Result result = reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
        const int error = errno;
        if (afterFileCall != nullptr && afterFileCall->Call == call && ++afterFileCall->Made == afterFileCall->Number)
            afterFileCall->Act();
        errno = error;
        return result;
    }
};

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

using support::Announce;
using support::FileCall;
using support::FileCallGate;
using support::FileCallListener;

extern "C"
{
    int link(const char* from, const char* to) noexcept
    {
        const int result = FileCallGate::Pass(FileCall::Link, "link", -1, from, to);
        return Announce(result, &FileCallListener::Linked, from, to);
    }

    int rename(const char* from, const char* to) noexcept
    {
        const int result = FileCallGate::Pass(FileCall::Rename, "rename", -1, from, to);
        return Announce(result, &FileCallListener::Renamed, from, to);
    }

    int fsync(int file)
    {
        return Announce(FileCallGate::Pass(FileCall::Sync, "fsync", -1, file), &FileCallListener::Synced, file);
    }

    int fchmod(int file, mode_t mode) noexcept
    {
        return FileCallGate::Pass(FileCall::ChangeMode, "fchmod", -1, file, mode);
    }

    DIR* opendir(const char* name)
    {
        return FileCallGate::Pass(FileCall::OpenDirectory, "opendir", static_cast<DIR*>(nullptr), name);
    }

    int mkostemp(char* name, int flags)
    {
        const int result = FileCallGate::Pass(FileCall::CreateTemporary, "mkostemp", -1, name, flags);
        return Announce<const char*>(result, &FileCallListener::Created, name);
    }

    int mkostemp64(char* name, int flags) // mkostemp with file offsets of 64 bits
    {
        return FileCallGate::Pass(FileCall::CreateTemporary, "mkostemp64", -1, name, flags);
    }

    int flock(int file, int operation) noexcept
    {
        return FileCallGate::Pass(FileCall::Lock, "flock", -1, file, operation);
    }

    int remove(const char* name) noexcept
    {
        return Announce(FileCallGate::Pass(FileCall::Remove, "remove", -1, name), &FileCallListener::Removed, name);
    }
}

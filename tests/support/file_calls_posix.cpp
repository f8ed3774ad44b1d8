#include "support/file_call_gate.h"

#include <cerrno>
#include <cstdio>

#include <dirent.h>
#include <dlfcn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using support::FileCall;
using support::FileCallListener;

namespace
{

template <typename Result, typename... Arguments>
Result Pass(FileCall call, const char* name, Result failed, Arguments... arguments)
{
    if (const std::optional<int> error = support::FileCallGate::Failure(call))
    {
        errno = *error;
        return failed;
    }
    int error = errno; // a caller of readdir finds the end of the directory by an unchanged number
    auto* const original = reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name));
    errno = error;
    const Result result = original(arguments...);
    error = errno;
    support::FileCallGate::Returned(call);
    errno = error;
    return result;
}

// Passes a call that has returned on to the listener, if it succeeded.
template <typename... Arguments>
int Announce(int result, void (FileCallListener::*receive)(Arguments...), Arguments... arguments)
{
    FileCallListener* const listener = support::FileCallGate::Listener();
    if (listener != nullptr && result != -1)
        (listener->*receive)(arguments...);
    return result;
}

} // namespace

extern "C"
{
    int link(const char* from, const char* to) noexcept
    {
        const int result = Pass(FileCall::Link, "link", -1, from, to);
        return Announce(result, &FileCallListener::Linked, from, to);
    }

    int rename(const char* from, const char* to) noexcept
    {
        const int result = Pass(FileCall::Rename, "rename", -1, from, to);
        return Announce(result, &FileCallListener::Renamed, from, to);
    }

    int fsync(int file)
    {
        return Announce(Pass(FileCall::Sync, "fsync", -1, file), &FileCallListener::Synced, file);
    }

    int fchmod(int file, mode_t mode) noexcept
    {
        return Pass(FileCall::ChangeMode, "fchmod", -1, file, mode);
    }

    DIR* opendir(const char* name)
    {
        return Pass(FileCall::OpenDirectory, "opendir", static_cast<DIR*>(nullptr), name);
    }

    dirent* readdir(DIR* directory)
    {
        return Pass(FileCall::ReadDirectory, "readdir", static_cast<dirent*>(nullptr), directory);
    }

    dirent64* readdir64(DIR* directory) // readdir with file offsets of 64 bits
    {
        return Pass(FileCall::ReadDirectory, "readdir64", static_cast<dirent64*>(nullptr), directory);
    }

    int mkostemp(char* name, int flags)
    {
        const int result = Pass(FileCall::CreateTemporary, "mkostemp", -1, name, flags);
        return Announce<const char*>(result, &FileCallListener::Created, name);
    }

    int mkostemp64(char* name, int flags) // mkostemp with file offsets of 64 bits
    {
        const int result = Pass(FileCall::CreateTemporary, "mkostemp64", -1, name, flags);
        return Announce<const char*>(result, &FileCallListener::Created, name);
    }

    int flock(int file, int operation) noexcept
    {
        return Pass(FileCall::Lock, "flock", -1, file, operation);
    }

    int mkdir(const char* name, mode_t mode) noexcept
    {
        const int result = Pass(FileCall::AddDirectory, "mkdir", -1, name, mode);
        return Announce(result, &FileCallListener::AddedDirectory, name);
    }

    int remove(const char* name) noexcept
    {
        return Announce(Pass(FileCall::Remove, "remove", -1, name), &FileCallListener::Removed, name);
    }
}

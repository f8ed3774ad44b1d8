#include "support/file_call_gate.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <windows.h>

using support::FileCall;

namespace
{

// The error of Windows in the place of one of POSIX
DWORD WindowsError(int error)
{
    switch (error)
    {
    case EACCES:
        return ERROR_ACCESS_DENIED;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOSPC:
        return ERROR_DISK_FULL;
    case ENOTSUP:
        return ERROR_NOT_SUPPORTED;
    default:
        return ERROR_IO_DEVICE;
    }
}

template <typename Function> Function* Original(const char* name)
{
    const HMODULE kernel = GetModuleHandleA("kernel32.dll");
    void* const function = kernel == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(kernel, name));
    if (function == nullptr)
        std::abort();
    return reinterpret_cast<Function*>(function);
}

template <typename Result, typename... Parameters, typename... Arguments>
Result Pass(FileCall call, Result(WINAPI* original)(Parameters...), Result failed, Arguments... arguments)
{
    if (const std::optional<int> error = support::FileCallGate::Failure(call))
    {
        SetLastError(WindowsError(*error));
        return failed;
    }
    const Result result = original(arguments...);
    const DWORD error = GetLastError();
    support::FileCallGate::Returned(call);
    SetLastError(error);
    return result;
}

BOOL WINAPI MoveGated(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    const FileCall call = (flags & MOVEFILE_REPLACE_EXISTING) != 0 ? FileCall::Rename : FileCall::Link;
    return Pass(call, Original<decltype(MoveFileExW)>("MoveFileExW"), FALSE, from, to, flags);
}

BOOL WINAPI FlushGated(HANDLE file)
{
    return Pass(FileCall::Sync, Original<decltype(FlushFileBuffers)>("FlushFileBuffers"), FALSE, file);
}

BOOL WINAPI SetInformationGated(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID information, DWORD size)
{
    return Pass(FileCall::ChangeMode, Original<decltype(SetFileInformationByHandle)>("SetFileInformationByHandle"),
                FALSE, file, kind, information, size);
}

HANDLE WINAPI FindFirstGated(LPCWSTR pattern, LPWIN32_FIND_DATAW found)
{
    auto* const original = Original<decltype(FindFirstFileW)>("FindFirstFileW");
    const std::wstring_view text = pattern;
    if (text.empty() || text.back() != L'*') // looks for one file
        return original(pattern, found);
    return Pass(FileCall::OpenDirectory, original, INVALID_HANDLE_VALUE, pattern, found);
}

BOOL WINAPI FindNextGated(HANDLE search, LPWIN32_FIND_DATAW found)
{
    return Pass(FileCall::ReadDirectory, Original<decltype(FindNextFileW)>("FindNextFileW"), FALSE, search, found);
}

HANDLE WINAPI CreateGated(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                          DWORD flags, HANDLE pattern)
{
    auto* const original = Original<decltype(CreateFileW)>("CreateFileW");
    if (disposition != CREATE_NEW)
        return original(name, access, share, security, disposition, flags, pattern);
    return Pass(FileCall::CreateTemporary, original, INVALID_HANDLE_VALUE, name, access, share, security, disposition,
                flags, pattern);
}

BOOL WINAPI LockGated(HANDLE file, DWORD flags, DWORD reserved, DWORD low, DWORD high, LPOVERLAPPED begin)
{
    return Pass(FileCall::Lock, Original<decltype(LockFileEx)>("LockFileEx"), FALSE, file, flags, reserved, low, high,
                begin);
}

BOOL WINAPI AddDirectoryGated(LPCWSTR name, LPSECURITY_ATTRIBUTES security)
{
    return Pass(FileCall::AddDirectory, Original<decltype(CreateDirectoryW)>("CreateDirectoryW"), FALSE, name,
                security);
}

BOOL WINAPI DeleteGated(LPCWSTR name)
{
    return Pass(FileCall::Remove, Original<decltype(DeleteFileW)>("DeleteFileW"), FALSE, name);
}

} // namespace

// The program calls the functions of Windows by these addresses.
extern "C"
{
    decltype(&MoveGated) __imp_MoveFileExW = MoveGated;
    decltype(&FlushGated) __imp_FlushFileBuffers = FlushGated;
    decltype(&SetInformationGated) __imp_SetFileInformationByHandle = SetInformationGated;
    decltype(&FindFirstGated) __imp_FindFirstFileW = FindFirstGated;
    decltype(&FindNextGated) __imp_FindNextFileW = FindNextGated;
    decltype(&CreateGated) __imp_CreateFileW = CreateGated;
    decltype(&LockGated) __imp_LockFileEx = LockGated;
    decltype(&AddDirectoryGated) __imp_CreateDirectoryW = AddDirectoryGated;
    decltype(&DeleteGated) __imp_DeleteFileW = DeleteGated;
}

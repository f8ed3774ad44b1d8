#include "support/file_changes.h"

#include "support/system_call.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <set>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace support
{

namespace
{

bool ChangesFiles(const __ptrace_syscall_info& info)
{
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY)
        return false;
    static const std::set<std::uint64_t> calls = {
        SYS_write,       SYS_pwrite64,  SYS_fsync,    SYS_fdatasync, SYS_ftruncate,
        SYS_linkat,      SYS_renameat2, SYS_unlinkat, SYS_mkdirat,   SYS_fchmod,
#ifdef SYS_rename // newer architectures do not have these
        SYS_rename,      SYS_unlink,    SYS_mkdir,    SYS_link,      SYS_chmod,
#endif
#ifdef SYS_ftruncate64 // for 32-bit programs
        SYS_ftruncate64,
#endif
#ifdef SYS_renameat
        SYS_renameat,
#endif
    };
    return calls.contains(info.entry.nr) || (info.entry.nr == SYS_openat && (info.entry.args[2] & O_CREAT) != 0);
}

// Waits until the process stops and returns the signal. The result is 0 where it ends; its status can still be read.
int AwaitStop(pid_t process)
{
    siginfo_t info = {};
    RequireCall(waitid(P_PID, static_cast<id_t>(process), &info, WSTOPPED | WEXITED | WNOWAIT) == 0, "waitid");
    if (info.si_code != CLD_TRAPPED && info.si_code != CLD_STOPPED)
        return 0;
    int status = 0;
    RequireCall(waitpid(process, &status, 0) == process, "waitpid");
    return WSTOPSIG(status);
}

} // namespace

FileChanges::FileChanges(pid_t process) : Process(process)
{
    RequireCall(AwaitStop(Process) == SIGTRAP, "ptrace");
    RequireCall(ptrace(PTRACE_SETOPTIONS, Process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) == 0, "ptrace");
}

void FileChanges::Resume(int signal) const
{
    RequireCall(ptrace(PTRACE_SYSCALL, Process, nullptr, signal) == 0, "ptrace");
}

bool FileChanges::Next()
{
    constexpr int systemCallStop = SIGTRAP | 0x80;
    for (int signal = 0;;)
    {
        Resume(signal);
        const int stop = AwaitStop(Process);
        if (stop == 0)
            return false;
        signal = stop == systemCallStop || stop == SIGTRAP ? 0 : stop;
        if (stop != systemCallStop)
            continue;
        __ptrace_syscall_info info = {};
        RequireCall(ptrace(PTRACE_GET_SYSCALL_INFO, Process, sizeof info, &info) > 0, "ptrace");
        if (ChangesFiles(info))
            return true;
    }
}

void FileChanges::Stop() const
{
    RequireCall(ptrace(PTRACE_DETACH, Process, nullptr, nullptr) == 0 || errno == ESRCH, "ptrace"); // or it was killed
}

} // namespace support

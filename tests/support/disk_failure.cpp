#include "support/disk_failure.h"

#include <cstdlib>
#include <optional>
#include <ostream>

#include <sqlite3.h>

namespace support
{

namespace
{

std::optional<DiskFault> inForce;
int made = 0; // calls of its kind

// The error that the call returns instead of reaching the disk, or SQLITE_OK if it must reach the disk.
int Failure(DiskCall call, int ioError)
{
    if (!inForce || inForce->Call != call)
        return SQLITE_OK;
    ++made;
    if (made < inForce->Number || (made > inForce->Number && !inForce->Lasting))
        return SQLITE_OK;
    return inForce->Error == DiskError::Full ? SQLITE_FULL : ioError;
}

sqlite3_vfs* real = nullptr;

// The file of the real file system follows this one in memory.
sqlite3_file* Real(sqlite3_file* file)
{
    return file + 1;
}

template <auto Method, typename... Arguments> int Pass(sqlite3_file* file, Arguments... arguments)
{
    return (Real(file)->pMethods->*Method)(Real(file), arguments...);
}

template <DiskCall Call, int IOError, auto Method, typename... Arguments>
int Fail(sqlite3_file* file, Arguments... arguments)
{
    const int failure = Failure(Call, IOError);
    return failure != SQLITE_OK ? failure : Pass<Method>(file, arguments...);
}

// A full disk stores what still fits.
int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset)
{
    const int failure = Failure(DiskCall::Write, SQLITE_IOERR_WRITE);
    if (failure == SQLITE_OK)
        return Pass<&sqlite3_io_methods::xWrite>(file, bytes, count, offset);
    if (failure == SQLITE_FULL)
        Pass<&sqlite3_io_methods::xWrite>(file, bytes, count / 2, offset);
    return failure;
}

// Version 1 has no shared memory and no memory maps, which a journal does not use.
const sqlite3_io_methods FailingFileMethods = {
    1,
    Pass<&sqlite3_io_methods::xClose>,
    Fail<DiskCall::Read, SQLITE_IOERR_READ, &sqlite3_io_methods::xRead>,
    Write,
    Fail<DiskCall::Truncate, SQLITE_IOERR_TRUNCATE, &sqlite3_io_methods::xTruncate>,
    Fail<DiskCall::Sync, SQLITE_IOERR_FSYNC, &sqlite3_io_methods::xSync>,
    Fail<DiskCall::Size, SQLITE_IOERR_FSTAT, &sqlite3_io_methods::xFileSize>,
    Fail<DiskCall::Lock, SQLITE_IOERR_LOCK, &sqlite3_io_methods::xLock>,
    Pass<&sqlite3_io_methods::xUnlock>,
    Fail<DiskCall::Lock, SQLITE_IOERR_CHECKRESERVEDLOCK, &sqlite3_io_methods::xCheckReservedLock>,
    Pass<&sqlite3_io_methods::xFileControl>,
    Pass<&sqlite3_io_methods::xSectorSize>,
    Pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr; // nothing to close
    if (const int failure = Failure(DiskCall::Open, SQLITE_CANTOPEN); failure != SQLITE_OK)
        return failure;
    const int result = real->xOpen(real, name, Real(file), flags, outFlags);
    if (Real(file)->pMethods != nullptr)
        file->pMethods = &FailingFileMethods;
    return result;
}

int Delete(sqlite3_vfs*, const char* name, int syncDirectory)
{
    const int failure = Failure(DiskCall::Delete, SQLITE_IOERR_DELETE);
    return failure != SQLITE_OK ? failure : real->xDelete(real, name, syncDirectory);
}

int Access(sqlite3_vfs*, const char* name, int flags, int* result)
{
    const int failure = Failure(DiskCall::Access, SQLITE_IOERR_ACCESS);
    return failure != SQLITE_OK ? failure : real->xAccess(real, name, flags, result);
}

sqlite3_vfs failing;

} // namespace

std::ostream& operator<<(std::ostream& out, DiskCall call)
{
    constexpr const char* names[] = {"open", "read", "write", "truncate", "sync", "size", "lock", "delete", "access"};
    return out << names[static_cast<int>(call)];
}

std::ostream& operator<<(std::ostream& out, const DiskFault& fault)
{
    return out << fault.Call << ' ' << fault.Number << (fault.Lasting ? " and all after it" : "")
               << (fault.Error == DiskError::Full ? ": disk full" : ": I/O error");
}

FailingDisk::FailingDisk()
{
    real = sqlite3_vfs_find(nullptr);
    failing = *real; // the other functions are those of the real file system
    failing.zName = "failing";
    failing.szOsFile += static_cast<int>(sizeof(sqlite3_file));
    failing.xOpen = Open;
    failing.xDelete = Delete;
    failing.xAccess = Access;
    if (sqlite3_vfs_register(&failing, 1) != SQLITE_OK)
        std::abort();
}

FailingDisk::~FailingDisk()
{
    sqlite3_vfs_unregister(&failing);
}

DiskFailure::DiskFailure(const DiskFault& fault)
{
    inForce = fault;
    made = 0;
}

DiskFailure::~DiskFailure()
{
    inForce.reset();
}

bool DiskFailure::Happened() const
{
    return made >= inForce->Number;
}

} // namespace support

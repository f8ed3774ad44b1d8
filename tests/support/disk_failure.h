#pragma once

#include <iosfwd>

namespace support
{

// SQLite reads and writes its files through a table of functions, which a program can replace:
// https://www.sqlite.org/vfs.html

enum class DiskCall
{
    Open,
    Read,
    Write,
    Truncate,
    Sync,
    Size,
    Lock, // taking or testing a lock; releasing one never fails, since SQLite would report a failure of a completed
          // write
    Delete,
    Access // tests whether a file exists
};

enum class DiskError
{
    IO,  // nothing is done
    Full // half of a write is done
};

// The calls that fail, and the error.
struct DiskFault
{
    DiskCall Call;
    DiskError Error;
    bool Lasting; // the call and all after it
    int Number;   // of the call among those of its kind, counted from 1
};

std::ostream& operator<<(std::ostream& out, DiskCall call);
std::ostream& operator<<(std::ostream& out, const DiskFault& fault);

// While in scope, connections use a file system that DiskFailure can make fail, unless they name another. It passes its
// calls on to the default file system. Only one at a time.
class FailingDisk
{
  public:
    FailingDisk();
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;
};

// While in scope, makes calls of the failing disk fail. Only one at a time, and not for several threads.
class DiskFailure
{
  public:
    explicit DiskFailure(const DiskFault& fault);
    ~DiskFailure();
    DiskFailure(const DiskFailure&) = delete;
    DiskFailure& operator=(const DiskFailure&) = delete;

    // Whether the call failed: there may be fewer of its kind.
    bool Happened() const;
};

} // namespace support

#pragma once

#include <iosfwd>

namespace support
{

// SQLite reaches its files through a table of functions, and a program may put a table of its own in front:
// https://www.sqlite.org/vfs.html

enum class DiskCall
{
    Open,
    Read,
    Write,
    Truncate,
    Sync,
    Size,
    Lock, // taken or asked for; one is given back without fail, since SQLite would call a write failed that is done
    Delete,
    Access // whether a file is there
};

enum class DiskError
{
    IO,  // nothing was done
    Full // of a write, the first half was done
};

// Which calls fail, and how.
struct DiskFault
{
    DiskCall Call;
    DiskError Error;
    bool Lasting; // every call from that one on
    int Number;   // which call of its kind, counted from 1
};

std::ostream& operator<<(std::ostream& out, DiskCall call);
std::ostream& operator<<(std::ostream& out, const DiskFault& fault);

// While in scope, a connection that is opened without naming a file system gets one that can be made to fail, in front
// of the one that it would have got. One at a time.
class FailingDisk
{
  public:
    FailingDisk();
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;
};

// Makes calls of the failing disk fail while in scope. One at a time, and not for several threads.
class DiskFailure
{
  public:
    explicit DiskFailure(const DiskFault& fault);
    ~DiskFailure();
    DiskFailure(const DiskFailure&) = delete;
    DiskFailure& operator=(const DiskFailure&) = delete;

    // Whether that many calls of the kind were made at all.
    bool Happened() const;
};

} // namespace support

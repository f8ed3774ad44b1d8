#pragma once

namespace support
{

enum class Allocator
{
    New,   // operator new, whose failure is an exception
    SQLite // SQLite's own, whose failure is a result
};

// Makes one allocation of the thread fail while in scope, the `number`-th, counted from 1; where it is `lasting`, all
// that follow, too. One at a time.
class AllocationFailure
{
  public:
    AllocationFailure(Allocator allocator, int number, bool lasting = false);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    // Whether that many allocations were asked for at all.
    bool Happened() const;
};

} // namespace support

#pragma once

namespace support
{

enum class Allocator
{
    New,   // operator new, which throws
    SQLite // the allocator of SQLite, which returns null
};

// While in scope, makes the `number`-th allocation of the thread fail, counted from 1, and if `lasting` all after it.
// Only one at a time.
class AllocationFailure
{
  public:
    AllocationFailure(Allocator allocator, int number, bool lasting = false);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    // Whether the allocation failed: there may be fewer than `number`.
    bool Happened() const;
};

} // namespace support

#include "support/allocation_failure.h"

#include "support/memory_peak.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include <sqlite3.h>

namespace support
{

namespace
{

thread_local int untilNewFails = 0; // 0: no failure
thread_local int untilSQLiteFails = 0;
thread_local bool fromThenOn = false;
thread_local bool happened = false;

bool FailsNow(int& remaining)
{
    if (remaining == 0 || --remaining > 0)
        return false;
    happened = true;
    if (fromThenOn)
        remaining = 1;
    return true;
}

sqlite3_mem_methods original;

void* Allocate(int bytes)
{
    void* const memory = FailsNow(untilSQLiteFails) ? nullptr : original.xMalloc(bytes);
    if (memory != nullptr)
        MemoryPeak::Count(original.xSize(memory));
    return memory;
}

void* Reallocate(void* memory, int bytes)
{
    const int before = original.xSize(memory);
    void* const moved = FailsNow(untilSQLiteFails) ? nullptr : original.xRealloc(memory, bytes);
    if (moved != nullptr)
        MemoryPeak::Count(original.xSize(moved) - before);
    return moved;
}

void Free(void* memory)
{
    MemoryPeak::Count(-original.xSize(memory));
    original.xFree(memory);
}

// SQLite accepts another allocator only before its first use.
const bool Installed = []
{
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &original) != SQLITE_OK)
        std::abort();
    sqlite3_mem_methods failing = original;
    failing.xMalloc = Allocate;
    failing.xRealloc = Reallocate;
    failing.xFree = Free;
    if (sqlite3_config(SQLITE_CONFIG_MALLOC, &failing) != SQLITE_OK)
        std::abort();
    return true;
}();

} // namespace

} // namespace support

// The replacements of the standard operators are global.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    void* const memory = support::FailsNow(support::untilNewFails) ? nullptr : std::malloc(size);
    support::MemoryPeak::CountNew(memory);
    return memory;
}

void* operator new(std::size_t size)
{
    void* memory = operator new(size, std::nothrow);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept
{
    support::MemoryPeak::CountDelete(memory);
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    support::MemoryPeak::CountDelete(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    support::MemoryPeak::CountDelete(memory);
    std::free(memory);
}

namespace support
{

AllocationFailure::AllocationFailure(Allocator allocator, int number, bool lasting)
{
    happened = false;
    fromThenOn = lasting;
    (allocator == Allocator::New ? untilNewFails : untilSQLiteFails) = number;
}

AllocationFailure::~AllocationFailure()
{
    untilNewFails = 0;
    untilSQLiteFails = 0;
}

bool AllocationFailure::Happened() const
{
    return happened;
}

} // namespace support

#include "support/allocation_failure.h"

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
    return FailsNow(untilSQLiteFails) ? nullptr : original.xMalloc(bytes);
}

void* Reallocate(void* memory, int bytes)
{
    return FailsNow(untilSQLiteFails) ? nullptr : original.xRealloc(memory, bytes);
}

// SQLite accepts another allocator only before its first use.
const bool Installed = []
{
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &original) != SQLITE_OK)
        std::abort();
    sqlite3_mem_methods failing = original;
    failing.xMalloc = Allocate;
    failing.xRealloc = Reallocate;
    if (sqlite3_config(SQLITE_CONFIG_MALLOC, &failing) != SQLITE_OK)
        std::abort();
    return true;
}();

} // namespace

} // namespace support

// The replacements of the standard operators are global.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return support::FailsNow(support::untilNewFails) ? nullptr : std::malloc(size);
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
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
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

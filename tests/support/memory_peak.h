#pragma once

#include <cstdint>

namespace support
{

// While in scope, counts the memory that the thread uses at once, beyond what it used before: that of operator new and
// that of SQLite. One at a time.
class MemoryPeak
{
  public:
    MemoryPeak();
    ~MemoryPeak();
    MemoryPeak(const MemoryPeak&) = delete;
    MemoryPeak& operator=(const MemoryPeak&) = delete;

    // The most bytes at once.
    std::int64_t Bytes() const { return Most; }

    // Called by the allocators. A negative number of bytes is freed.
    static void Count(std::int64_t bytes);
    // Called by operator new and operator delete.
    static void CountNew(void* memory);
    static void CountDelete(void* memory);

  private:
    std::int64_t InUse = 0;
    std::int64_t Most = 0;
};

} // namespace support

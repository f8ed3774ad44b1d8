#include "support/memory_peak.h"

#include <algorithm>

#include <malloc.h>

namespace support
{

namespace
{

thread_local MemoryPeak* memoryPeak = nullptr;

} // namespace

MemoryPeak::MemoryPeak()
{
    memoryPeak = this;
}

MemoryPeak::~MemoryPeak()
{
    memoryPeak = nullptr;
}

void MemoryPeak::Count(std::int64_t bytes)
{
    if (memoryPeak == nullptr)
        return;
    memoryPeak->InUse += bytes;
    memoryPeak->Most = std::max(memoryPeak->Most, memoryPeak->InUse);
}

void MemoryPeak::CountNew(void* memory)
{
    if (memoryPeak != nullptr)
        Count(static_cast<std::int64_t>(malloc_usable_size(memory)));
}

void MemoryPeak::CountDelete(void* memory)
{
    if (memoryPeak != nullptr)
        Count(-static_cast<std::int64_t>(malloc_usable_size(memory)));
}

} // namespace support

#pragma once

#include <chrono>
#include <cstdint>

namespace support
{

// The tests under faults/ have two forms. The short form runs with every build. Its random choices begin at a fixed
// seed, so that every run is the same. The long form, PLANTJOURNAL_SOAK=1 in the environment, begins at a fresh seed.
// PLANTJOURNAL_SEED sets the seed of either form.

bool IsLongForm();

template <typename Value> Value ShortOrLong(Value inShort, Value inLong)
{
    return IsLongForm() ? inLong : inShort;
}

std::uint64_t Seed();

// Ends a test that repeats itself in the long form: after PLANTJOURNAL_SECONDS seconds, 120 where not set. The limit is
// never over in the short form, where the test ends by its counts alone.
class TimeLimit
{
  public:
    bool IsOver() const;

  private:
    std::chrono::steady_clock::time_point Begin = std::chrono::steady_clock::now();
};

} // namespace support

#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace support
{

// The tests under faults/ have two forms. The short one runs with every build and begins its random choices at a fixed
// seed, so that it always runs the same; the long one, PLANTJOURNAL_SOAK=1 in the environment, begins at a fresh seed.
// PLANTJOURNAL_SEED sets the seed of either. At its end the program prints the seed and what it counted.

// Whether this is the long form.
bool Soaking();

// What fits the form.
template <typename Value> Value ShortOrLong(Value inShort, Value inLong)
{
    return Soaking() ? inLong : inShort;
}

std::uint64_t Seed();

// Adds to a figure that the program prints at its end, and tells what it has come to. Not for several threads.
std::uint64_t Count(const std::string& figure, std::uint64_t number = 1);

// The end of a test that runs on in the long form until its time is up: PLANTJOURNAL_SECONDS each, 120 where not set.
// In the short form the time is never up: there the count alone decides.
class TimeLimit
{
  public:
    bool IsOver() const;

  private:
    std::chrono::steady_clock::time_point Begin = std::chrono::steady_clock::now();
};

} // namespace support

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace support
{

// A random operation with random arguments, as bytes: the first byte chooses the operation, the others choose its
// arguments. A byte of 0 chooses the plainest value.
using StepBytes = std::array<std::uint8_t, 16>;

// Reads the choices of a step in their order. After the last, every choice is 0.
class Choices
{
  public:
    explicit Choices(const StepBytes& step) : Bytes(step) {}

    std::uint8_t Next() { return At < Bytes.size() ? Bytes.at(At++) : std::uint8_t{0}; }

    // One of several values, the plainest first.
    template <typename Values> auto OneOf(const Values& values)
    {
        return *(std::begin(values) + static_cast<std::ptrdiff_t>(Next() % std::size(values)));
    }

  private:
    const StepBytes& Bytes;
    std::size_t At = 0;
};

} // namespace support

#include "support/test_form.h"

#include <cstdlib>
#include <random>
#include <string>

namespace support
{

namespace
{

std::uint64_t EnvironmentNumber(const char* name, std::uint64_t otherwise)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::stoull(text) : otherwise;
}

} // namespace

bool IsLongForm()
{
    static const bool isLong = EnvironmentNumber("PLANTJOURNAL_SOAK", 0) != 0;
    return isLong;
}

std::uint64_t Seed()
{
    static const std::uint64_t seed = EnvironmentNumber("PLANTJOURNAL_SEED", IsLongForm() ? std::random_device{}() : 1);
    return seed;
}

bool TimeLimit::IsOver() const
{
    static const std::chrono::seconds limit(EnvironmentNumber("PLANTJOURNAL_SECONDS", 120));
    return IsLongForm() && std::chrono::steady_clock::now() - Begin > limit;
}

} // namespace support

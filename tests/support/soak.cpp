#include "support/soak.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace support
{

namespace
{

std::uint64_t Setting(const char* name, std::uint64_t otherwise)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::stoull(text) : otherwise;
}

std::map<std::string, std::uint64_t>& Figures()
{
    static std::map<std::string, std::uint64_t> figures;
    return figures;
}

class Report : public testing::Environment
{
    void TearDown() override
    {
        std::cout << "seed " << Seed() << (Soaking() ? ", long form\n" : ", short form\n");
        for (const auto& [figure, number] : Figures())
            std::cout << figure << ": " << number << '\n';
    }
};

const testing::Environment* const Registered = testing::AddGlobalTestEnvironment(new Report);

} // namespace

bool Soaking()
{
    static const bool soaking = Setting("PLANTJOURNAL_SOAK", 0) != 0;
    return soaking;
}

std::uint64_t Seed()
{
    static const std::uint64_t seed = Setting("PLANTJOURNAL_SEED", Soaking() ? std::random_device{}() : 1);
    return seed;
}

std::uint64_t Count(const std::string& figure, std::uint64_t number)
{
    return Figures()[figure] += number;
}

bool TimeLimit::IsOver() const
{
    static const std::chrono::seconds limit(Setting("PLANTJOURNAL_SECONDS", 120));
    return Soaking() && std::chrono::steady_clock::now() - Begin > limit;
}

} // namespace support

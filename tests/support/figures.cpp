#include "support/figures.h"

#include "support/test_form.h"

#include <iostream>
#include <map>

#include <gtest/gtest.h>

namespace support
{

namespace
{

std::map<std::string, std::uint64_t>& Figures()
{
    static std::map<std::string, std::uint64_t> figures;
    return figures;
}

class FigurePrinter : public testing::Environment
{
    void TearDown() override
    {
        std::cout << "seed " << Seed() << (IsLongForm() ? ", long form\n" : ", short form\n");
        for (const auto& [figure, number] : Figures())
            std::cout << figure << ": " << number << '\n';
    }
};

const testing::Environment* const Registered = testing::AddGlobalTestEnvironment(new FigurePrinter);

} // namespace

std::uint64_t AddToFigure(const std::string& figure, std::uint64_t number)
{
    return Figures()[figure] += number;
}

} // namespace support

#include "support/comma_numbers.h"

#include <clocale>

namespace support
{

CommaNumbers::CommaNumbers() : Before(std::setlocale(LC_NUMERIC, nullptr))
{
    if (std::setlocale(LC_NUMERIC, "German_Germany") == nullptr)
        Reason = "this system has no locale with a decimal comma";
}

CommaNumbers::~CommaNumbers()
{
    std::setlocale(LC_NUMERIC, Before.c_str());
}

} // namespace support

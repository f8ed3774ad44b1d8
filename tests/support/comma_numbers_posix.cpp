#include "support/comma_numbers.h"

#include "support/environment.h"
#include "testing/scratch_directory.h"

#include <clocale>
#include <cstdlib>

namespace support
{

// The tool of the system compiles the locale: few systems have one installed.
CommaNumbers::CommaNumbers() : Before(std::setlocale(LC_NUMERIC, nullptr))
{
    const ScratchDirectory locales;
    const EnvironmentVariable place("LOCPATH", locales.File(""));
    const std::string compile =
        "localedef -i de_DE -f UTF-8 '" + locales.File("de_DE.UTF-8") + "' >'" + locales.File("log") + "' 2>&1";
    if (std::system(compile.c_str()) != 0)
        Reason = "this system cannot compile a locale with a decimal comma";
    else
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
}

CommaNumbers::~CommaNumbers()
{
    std::setlocale(LC_NUMERIC, Before.c_str());
}

} // namespace support

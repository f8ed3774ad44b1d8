#include "support/environment.h"

#include <cstdlib>
#include <utility>

namespace support
{

EnvironmentVariable::EnvironmentVariable(std::string name, const std::string& value) : Name(std::move(name))
{
    if (const char* previous = std::getenv(Name.c_str()))
        Previous = previous;
    setenv(Name.c_str(), value.c_str(), 1);
}

EnvironmentVariable::~EnvironmentVariable()
{
    if (Previous)
        setenv(Name.c_str(), Previous->c_str(), 1);
    else
        unsetenv(Name.c_str());
}

} // namespace support

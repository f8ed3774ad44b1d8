#include "support/environment.h"

#include <cstdlib>
#include <utility>

namespace support
{

EnvironmentVariable::EnvironmentVariable(std::string name, const std::string& value) : Name(std::move(name))
{
    if (const char* previous = std::getenv(Name.c_str()))
        Previous = previous;
    _putenv_s(Name.c_str(), value.c_str());
}

EnvironmentVariable::~EnvironmentVariable()
{
    _putenv_s(Name.c_str(), Previous.value_or("").c_str()); // an empty value removes it
}

} // namespace support

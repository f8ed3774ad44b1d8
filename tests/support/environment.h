#pragma once

#include <optional>
#include <string>

namespace support
{

// Sets a variable of the environment while in scope.
class EnvironmentVariable
{
  public:
    EnvironmentVariable(std::string name, const std::string& value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    std::string Name;
    std::optional<std::string> Previous;
};

} // namespace support

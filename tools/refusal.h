#pragma once

#include <stdexcept>

// Why a command failed, and what to do next. `main` prints it and ends with status 1.
class Refusal : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

#pragma once

#include "support/file_calls.h"

#include <optional>

namespace support
{

// For the functions that replace the system's.
class FileCallGate
{
  public:
    // Counts a call that is about to be made. Returns the number of the error with which it must fail, if any.
    static std::optional<int> Failure(FileCall call);
    // Acts where a test asked for it.
    static void Returned(FileCall call);
    // None where no test listens.
    static FileCallListener* Listener();
};

} // namespace support

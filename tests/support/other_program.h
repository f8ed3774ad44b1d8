#pragma once

#include "support/child_process.h"

#include <string>

namespace support
{

// Another program that has the journal open: it begins a transaction with `begin`, and Finish() commits it. It is a
// process of its own, since a process loses its locks when it closes any descriptor of the file:
// https://www.sqlite.org/howtocorrupt.html section 2.2.
class OtherProgram
{
  public:
    OtherProgram(const std::string& journal, const std::string& begin);
    void Finish();

  private:
    ChildProcess Child;
};

} // namespace support

#pragma once

#include <string>

namespace support
{

// While in scope, the functions of the C library read and write numbers with a decimal comma.
class CommaNumbers
{
  public:
    CommaNumbers();
    ~CommaNumbers();
    CommaNumbers(const CommaNumbers&) = delete;
    CommaNumbers& operator=(const CommaNumbers&) = delete;

    // Why the system has no such locale; empty where it has one.
    const std::string& WhyNot() const { return Reason; }

  private:
    std::string Before;
    std::string Reason;
};

} // namespace support

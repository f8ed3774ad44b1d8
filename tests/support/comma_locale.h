#pragma once

#include <locale>
#include <string>

namespace support
{

// While in scope, the process writes 1234.5 as 1.234,5.
class CommaLocale
{
  public:
    CommaLocale() : Previous(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    ~CommaLocale() { std::locale::global(Previous); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

  private:
    struct Punctuation : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale Previous;
};

} // namespace support

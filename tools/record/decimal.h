#pragma once

#include <charconv>

/// Reads a number as `std::from_chars` does: the same texts, the nearest `double`, independent of the locale. But a
/// number whose nearest `double` is 0 is read as 0. Only a number that is too large is `result_out_of_range`. libc++
/// has `std::from_chars` for `double` only since version 20; with an earlier version, this calls DecimalByStrtod.
std::from_chars_result DecimalFromChars(const char* begin, const char* end, double& out);

/// The same with `std::strtod`, but without the letters in parentheses that may follow a NaN. Do not call it while
/// another thread changes the locale of C.
std::from_chars_result DecimalByStrtod(const char* begin, const char* end, double& out);

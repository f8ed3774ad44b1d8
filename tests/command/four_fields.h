#pragma once

#include <cstddef>
#include <string>

// A PNG file of four fields of one colour each: red and green above, blue and white below.
std::string FourFields(std::size_t width, std::size_t height);

// A number of so many bytes, the highest first.
std::string BigEndian(std::size_t value, int bytes);

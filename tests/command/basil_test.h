#pragma once

#include "support/command.h"

// Compares the fields of `expected`; `object` can have more.
inline void ExpectFields(const support::JSON& object, const support::JSON& expected)
{
    for (const auto& [name, value] : expected.items())
        EXPECT_EQ(object.at(name), value) << name;
}

// A journal with one plant, Basil, of the strain Genovese.
class BasilTest : public support::CommandTest
{
  protected:
    BasilTest() { Done({"plant", "add", "Basil", "--uuid", "b1", "--strain", "Genovese"}); }

    support::JSON Basil() const { return Parsed({"plant", "show", "b1"}); }
};

#include "support/privileges.h"

#include "support/system_call.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace support
{

WithoutPrivileges::WithoutPrivileges() : Before(geteuid())
{
    constexpr uid_t nobody = 65534;
    RequireCall(Before != 0 || seteuid(nobody) == 0, "seteuid");
}

WithoutPrivileges::~WithoutPrivileges()
{
    EXPECT_EQ(seteuid(Before), 0);
}

} // namespace support

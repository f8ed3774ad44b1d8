#include "support/privileges.h"

namespace support
{

WithoutPrivileges::WithoutPrivileges() = default;

WithoutPrivileges::~WithoutPrivileges()
{
    Before = 0;
}

} // namespace support

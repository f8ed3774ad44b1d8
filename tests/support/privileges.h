#pragma once

namespace support
{

// While in scope, this process cannot read and write every file as root. On Windows, the permissions that tests change
// apply to every user.
class WithoutPrivileges
{
  public:
    WithoutPrivileges();
    ~WithoutPrivileges();
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

  private:
    unsigned Before = 0; // the user
};

} // namespace support

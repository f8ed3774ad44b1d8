#pragma once

#include <memory>
#include <string>

class NameLock;

// The name of a file or directory that is removed at the end of the scope: a prefix and a number.
//
// A killed process leaves its files behind. A lock on the file `NAME.lock` shows that a process still uses the name.
// The process ID alone cannot show that: IDs are used again, and processes of other containers or hosts have the same
// ones. The lock is on a file of its own, because closing a second descriptor of a database drops SQLite's locks:
// https://www.sqlite.org/howtocorrupt.html section 2.2.
class TemporaryName
{
  public:
    // Removes what killed processes left under such names, and takes a free one. Throws Refusal.
    explicit TemporaryName(const std::string& prefix);
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    const std::string& Path() const { return Name; }

  private:
    std::string Name;
    std::unique_ptr<NameLock> Lock;
};

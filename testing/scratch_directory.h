#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace support
{

// A new, empty directory, removed with all that it holds at the end of its scope. It is in memory where the system has
// a place for that: no test here cuts the power, and waiting for a disk at every commit would only make them slow.
class ScratchDirectory
{
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    // The path of `name` inside the directory.
    std::string File(const std::string& name) const { return (Root / name).string(); }
    // All files in it by their names, with their bytes. Reading a file drops the locks that this process holds on it.
    std::map<std::string, std::string> Files() const;

  private:
    std::filesystem::path Root;
};

// All bytes of a file.
std::string FileBytes(const std::string& path);

} // namespace support

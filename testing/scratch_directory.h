#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace support
{

// A new, empty directory, which is removed with its files at the end of its scope. It is in memory if the system has
// /dev/shm: the tests need no durable files, and every commit would wait for a disk.
class ScratchDirectory
{
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    // The path of `name` inside the directory.
    std::string File(const std::string& name) const { return (Root / name).make_preferred().string(); }
    // The bytes of all files, by their names. Reading a file releases the locks of this process on it.
    std::map<std::string, std::string> Files() const;

  private:
    std::filesystem::path Root;
};

// All bytes of a file.
std::string FileBytes(const std::string& path);

} // namespace support

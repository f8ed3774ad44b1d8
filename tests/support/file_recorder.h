#pragma once

#include "support/file_calls.h"
#include "support/simulated_disk.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace support
{

// What a program did to files, which can be repeated on a simulated disk.
struct DiskStep
{
    std::string Call; // for messages, such as "rename"
    std::function<bool(SimulatedDisk&)> Repeat;
};

// While in scope, records each change and each sync of the files in a directory by this thread. The program of the test
// defines the system's functions for that, in addition to those of file_calls.h.
class FileRecorder : private FileCallListener
{
  public:
    explicit FileRecorder(const std::string& directory);
    ~FileRecorder() override;

    const std::vector<DiskStep>& Steps() const { return Recorded; }

    // The calls of the system.
    void Linked(const char* from, const char* to) override;
    void Renamed(const char* from, const char* to) override;
    void Synced(int file) override;
    void Created(const char* name) override;
    void Removed(const char* name) override;
    void AddedDirectory(const char* name) override;
    void Wrote(int file, const void* bytes, std::size_t count, std::size_t offset);
    void Truncated(int file, std::size_t size);

  private:
    bool IsInIt(const std::string& path) const;
    // The name on the simulated disk of a path; empty for the directory itself.
    std::string NameOf(const std::string& path) const;
    void Add(const char* call, std::function<bool(SimulatedDisk&)> repeat);

    std::string Root;
    std::vector<DiskStep> Recorded;
};

} // namespace support

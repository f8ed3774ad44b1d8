// The unfinished copy of a backup.
#pragma once

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace plant_file
{

// Opens a file, or creates one that only its owner may read. The result is -1 where that fails.
int OpenFile(const std::string& path, int flags);

class FileDescriptor
{
  public:
    explicit FileDescriptor(int number) : Number(number) {}
    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int Get() const { return Number; }
    // Closes the present one. True where that succeeds.
    bool Replace(int number);

  private:
    int Number; // -1 for none
};

// Two files next to a destination, removed at the end of its scope: a lock file named like the destination with
// `.part-` and six letters or digits after it, and the copy itself, with `-copy` after that. A lock on the first file
// shows that the process which made both is alive. It is a file of its own since closing any descriptor of an SQLite
// file drops all locks that the program's connections hold on it: no other process or thread may open the copy to see
// whether it is locked.
class PartFile
{
  public:
    // First removes the files that killed processes left for the same destination.
    explicit PartFile(const std::filesystem::path& destination);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    const std::string& CopyPath() const { return Copy; }
    // Syncs and closes the copy. It has to be closed before other threads can find it under its final name.
    void Finish(mode_t permissions);

  private:
    PartFile(); // the other constructor delegates to it so that the destructor runs where that one fails

    std::string Lock;
    std::string Copy;
    FileDescriptor LockDescriptor;
    FileDescriptor CopyDescriptor;
};

} // namespace plant_file

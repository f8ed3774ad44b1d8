// The unfinished copy of a backup.
#pragma once

#include "system.h"

#include <filesystem>

namespace plant_file
{

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

    const std::filesystem::path& CopyPath() const { return Copy; }
    // Syncs and closes the copy. It has to be closed before other threads can find it under its final name.
    void Finish(std::filesystem::perms permissions);

  private:
    PartFile() = default; // the other constructor delegates to it so that the destructor runs where that one fails

    std::filesystem::path Lock;
    std::filesystem::path Copy;
    OpenedFile LockFile;
    OpenedFile CopyFile;
};

} // namespace plant_file

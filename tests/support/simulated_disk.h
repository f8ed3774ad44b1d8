#pragma once

#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

// A disk in memory whose machine can lose its power. What a program writes is safe only once it was synced, and a
// file's name only once its directory was: when the power goes, each change not synced is kept, dropped or torn at a
// sector. A copy of it is a disk of its own, as it was at that moment.
class SimulatedDisk
{
  public:
    // Whether a name that was removed stays so when the power goes. On some file systems it comes back, with its file,
    // where the directory was not synced since.
    bool UnlinksLast = true;

    // ---- What the operating system offers to programs. Changes fail on a dead machine.

    bool Exists(const std::string& name) const { return !Dead && Directory.contains(name); }
    // The number of the file, which is made where there is none.
    int Open(const std::string& name);
    std::string_view Bytes(int file) const { return Files.at(file).Bytes; }
    bool Write(int file, std::size_t offset, std::string_view bytes);
    bool Truncate(int file, std::size_t size);
    bool Sync(int file);
    bool SyncDirectory();
    bool Unlink(const std::string& name);

    // ---- What befalls the machine.

    // Syncs everything.
    void Settle();
    // The power goes at the `call`-th write, truncation, sync or unlink from now, counted from 1. That call still
    // reaches the disk, unsynced as it is, but does not return.
    void DieAt(int call);
    // The power goes now.
    void Die() { Dead = true; }
    bool IsDead() const { return Dead; }
    // The calls since the last DieAt.
    int Calls() const { return Made; }
    // The power is back. What was not synced meets its fate.
    void Reboot(std::mt19937_64& random);

  private:
    // A write, or a truncation, which has no bytes and sets the end of the file.
    struct Change
    {
        bool IsTruncation = false;
        std::size_t Offset = 0;
        std::string Bytes;
    };
    struct File
    {
        std::string Bytes; // as programs see it
        std::string Synced;
        std::vector<Change> Unsynced;
    };
    using Names = std::map<std::string, int>;

    bool Survived();
    void ForgetFilesWithoutName();

    std::map<int, File> Files;
    Names Directory; // as programs see it
    Names SyncedDirectory;
    int LastFile = 0;
    bool Dead = false;
    int Made = 0;
    int Death = 0; // 0: it does not come
};

// While in scope, SQLite keeps its files on this disk, in the way in which it does on Unix. One connection at a time:
// there are no locks. Temporary files are not on the disk. What SQLite takes for chance is the same every time.
class DiskInUse
{
  public:
    explicit DiskInUse(SimulatedDisk& disk);
    ~DiskInUse();
    DiskInUse(const DiskInUse&) = delete;
    DiskInUse& operator=(const DiskInUse&) = delete;
};

} // namespace support

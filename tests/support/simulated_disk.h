#pragma once

#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

// A disk in memory whose machine can lose its power. A write is safe once the file was synced, and the name of a file
// once its directory was synced. After a power loss, each other change is kept, dropped or torn at a sector. A copy is
// an independent disk with the same state. A name is a path, such as "backups/copy.db".
class SimulatedDisk
{
  public:
    // Whether an unlink survives a power loss. On some file systems it does not until the directory is synced.
    bool UnlinksPersist = true;

    // ---- The calls of programs. They fail while the power is off.

    bool Exists(const std::string& name) const { return !Off && Directory.contains(name); }
    // Returns the number of the file, which is created if it does not exist.
    int Open(const std::string& name);
    std::string_view Bytes(int file) const { return Files.at(file).Bytes; }
    bool Write(int file, std::size_t offset, std::string_view bytes);
    bool Truncate(int file, std::size_t size);
    bool Sync(int file);
    // Syncs the names in a directory. The empty path is the root.
    bool SyncDirectory(const std::string& directory = {});
    bool Unlink(const std::string& name);
    bool AddDirectory(const std::string& name);
    // The second name replaces a file that has it.
    bool Rename(const std::string& from, const std::string& to);
    bool Link(const std::string& from, const std::string& to);

    // ---- The power.

    // Syncs everything.
    void SyncAll();
    // Cuts the power at the `call`-th change or sync from now, counted from 1. That call may reach the disk, but fails.
    void CutPowerAt(int call);
    void CutPower() { Off = true; }
    bool IsOff() const { return Off; }
    // The calls since the last CutPowerAt.
    int Calls() const { return Made; }
    // Turns the power on. Chooses at random what becomes of each change that was not synced.
    void Reboot(std::mt19937_64& random);

    // ---- The files of a real directory.

    // Reads all files and directories. All is synced.
    void Load(const std::string& directory);
    // Replaces all that the directory contains.
    void Store(const std::string& directory) const;

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
        bool IsDirectory = false; // then it has no bytes
    };
    using Names = std::map<std::string, int>;

    bool StaysOn();
    void ForgetFilesWithoutName();

    std::map<int, File> Files;
    Names Directory; // as programs see it
    Names SyncedDirectory;
    int LastFile = 0;
    bool Off = false;
    int Made = 0;
    int LastCall = 0; // the call that loses the power; 0: none
};

// While in scope, SQLite keeps its files on this disk, in the same way as on Unix. The disk has no locks, so only
// one connection may be open at a time. Temporary files are not on the disk. The random numbers of SQLite are fixed.
class DiskInUse
{
  public:
    explicit DiskInUse(SimulatedDisk& disk);
    ~DiskInUse();
    DiskInUse(const DiskInUse&) = delete;
    DiskInUse& operator=(const DiskInUse&) = delete;
};

} // namespace support

#include "support/simulated_disk.h"

#include "testing/scratch_directory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include <sqlite3.h>

namespace support
{

// ---- The disk

namespace
{

// A disk writes whole sectors. The smallest sectors in use tear a write into the most pieces.
constexpr std::size_t SectorSize = 512;

void Put(std::string& file, std::size_t offset, std::string_view bytes)
{
    if (file.size() < offset + bytes.size())
        file.resize(offset + bytes.size(), '\0');
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(offset));
}

// The directory in which a name is; empty for the root.
std::string DirectoryOf(const std::string& name)
{
    return std::filesystem::path(name).parent_path().string();
}

// A part of a file that has grown but was not written has the earlier bytes of the disk.
void Grow(std::string& file, std::size_t size, std::mt19937_64& random)
{
    while (file.size() < size)
        file += static_cast<char>(random() & 0xFF);
}

// Writes some of the sectors.
template <typename IsWritten>
void PutSectors(std::string& file, std::size_t offset, std::string_view bytes, const IsWritten& isWritten,
                std::mt19937_64& random)
{
    Grow(file, offset + bytes.size(), random);
    while (!bytes.empty())
    {
        const std::string_view inSector = bytes.substr(0, SectorSize - offset % SectorSize);
        if (isWritten())
            Put(file, offset, inSector);
        offset += inSector.size();
        bytes.remove_prefix(inSector.size());
    }
}

} // namespace

int SimulatedDisk::Open(const std::string& name)
{
    const auto [entry, isNew] = Directory.try_emplace(name, LastFile + 1);
    if (isNew)
        Files[++LastFile];
    return entry->second;
}

// Counts a call. Returns false if the power is lost at it.
bool SimulatedDisk::StaysOn()
{
    Off = ++Made == LastCall;
    return !Off;
}

bool SimulatedDisk::Write(int file, std::size_t offset, std::string_view bytes)
{
    if (Off)
        return false;
    File& written = Files.at(file);
    Put(written.Bytes, offset, bytes);
    written.Unsynced.push_back({false, offset, std::string(bytes)});
    return StaysOn();
}

bool SimulatedDisk::Truncate(int file, std::size_t size)
{
    if (Off)
        return false;
    File& truncated = Files.at(file);
    truncated.Bytes.resize(size);
    truncated.Unsynced.push_back({true, size, {}});
    return StaysOn();
}

bool SimulatedDisk::Sync(int file)
{
    if (Off || !StaysOn())
        return false;
    File& synced = Files.at(file);
    synced.Synced = synced.Bytes;
    synced.Unsynced.clear();
    return true;
}

bool SimulatedDisk::SyncDirectory(const std::string& directory)
{
    if (Off || !StaysOn())
        return false;
    const auto isInIt = [&](const auto& entry) { return DirectoryOf(entry.first) == directory; };
    std::erase_if(SyncedDirectory, isInIt);
    std::copy_if(Directory.begin(), Directory.end(), std::inserter(SyncedDirectory, SyncedDirectory.end()), isInIt);
    ForgetFilesWithoutName();
    return true;
}

bool SimulatedDisk::AddDirectory(const std::string& name)
{
    if (Off)
        return false;
    Files.at(Open(name)).IsDirectory = true;
    return StaysOn();
}

bool SimulatedDisk::Rename(const std::string& from, const std::string& to)
{
    if (Off)
        return false;
    Directory[to] = Directory.at(from);
    Directory.erase(from);
    return StaysOn();
}

bool SimulatedDisk::Link(const std::string& from, const std::string& to)
{
    if (Off)
        return false;
    Directory[to] = Directory.at(from);
    return StaysOn();
}

bool SimulatedDisk::Unlink(const std::string& name)
{
    if (Off)
        return false;
    Directory.erase(name);
    if (!StaysOn())
        return false;
    if (UnlinksPersist)
        SyncedDirectory.erase(name);
    ForgetFilesWithoutName();
    return true;
}

void SimulatedDisk::ForgetFilesWithoutName()
{
    const auto names = [](const Names& directory, int file) {
        return std::any_of(directory.begin(), directory.end(), [&](const auto& entry) { return entry.second == file; });
    };
    std::erase_if(Files, [&](const auto& file)
                  { return !names(Directory, file.first) && !names(SyncedDirectory, file.first); });
}

void SimulatedDisk::SyncAll()
{
    for (auto& [number, file] : Files)
        Sync(number);
    SyncedDirectory = Directory;
    ForgetFilesWithoutName();
}

void SimulatedDisk::CutPowerAt(int call)
{
    Made = 0;
    LastCall = call;
}

void SimulatedDisk::Reboot(std::mt19937_64& random)
{
    // With even odds, a reboot would almost never keep all of many changes, or drop all.
    const std::uint64_t luck = random() % 5;
    const auto lucky = [&] { return random() % 4 < luck; };

    for (auto& [number, file] : Files)
    {
        for (const Change& change : file.Unsynced)
        {
            const bool kept = lucky();
            if (change.IsTruncation && kept)
                file.Synced.resize(change.Offset);
            else if (!change.IsTruncation && (kept || random() % 2 == 0))
                PutSectors(
                    file.Synced, change.Offset, change.Bytes, [&] { return kept || random() % 2 == 0; }, random);
        }
        file.Unsynced.clear();
        file.Bytes = file.Synced;
    }

    Names names;
    for (const Names* directory : {&Directory, &SyncedDirectory})
        for (const auto& [name, file] : *directory)
            names[name] = 0;
    for (auto& [name, file] : names)
    {
        const Names& survivor = lucky() ? Directory : SyncedDirectory;
        const auto entry = survivor.find(name);
        file = entry != survivor.end() ? entry->second : 0;
    }
    std::erase_if(names, [](const auto& entry) { return entry.second == 0; });
    Directory.clear();
    for (const auto& entry : names) // a directory sorts before the names in it
        if (const std::string directory = DirectoryOf(entry.first); directory.empty() || Directory.contains(directory))
            Directory.insert(entry);
    SyncedDirectory = Directory;
    ForgetFilesWithoutName();
    Off = false;
    CutPowerAt(0);
}

void SimulatedDisk::Load(const std::string& directory)
{
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
    {
        const std::string name = std::filesystem::relative(entry.path(), directory).generic_string();
        if (entry.is_directory())
            AddDirectory(name);
        else
            Write(Open(name), 0, FileBytes(entry.path().string()));
    }
    SyncAll();
}

void SimulatedDisk::Store(const std::string& directory) const
{
    std::filesystem::remove_all(directory);
    std::filesystem::create_directory(directory);
    for (const auto& [name, number] : Directory) // a directory sorts before the names in it
    {
        const std::filesystem::path path = std::filesystem::path(directory) / name;
        if (Files.at(number).IsDirectory)
            std::filesystem::create_directory(path);
        else
            std::ofstream(path, std::ios::binary) << Files.at(number).Bytes;
    }
}

// ---- The files of SQLite on the disk

namespace
{

struct FileOfSQLite
{
    sqlite3_file Base;
    SimulatedDisk* Disk; // null: a temporary file
    int Number;
    bool SyncsDirectory; // so does the first sync of a new journal
    std::string* Temporary;
};

FileOfSQLite& FileIn(sqlite3_file* file)
{
    return reinterpret_cast<FileOfSQLite&>(*file);
}

std::string_view BytesOf(const FileOfSQLite& file)
{
    return file.Disk != nullptr ? file.Disk->Bytes(file.Number) : *file.Temporary;
}

int CloseFile(sqlite3_file* file)
{
    delete FileIn(file).Temporary;
    return SQLITE_OK;
}

int ReadFile(sqlite3_file* file, void* into, int amount, sqlite3_int64 offset)
{
    const FileOfSQLite& read = FileIn(file);
    if (read.Disk != nullptr && read.Disk->IsOff())
        return SQLITE_IOERR_READ;
    const std::string_view bytes = BytesOf(read);
    const auto begin = std::min(static_cast<std::size_t>(offset), bytes.size());
    const std::string_view found = bytes.substr(begin, static_cast<std::size_t>(amount));
    std::memset(into, 0, static_cast<std::size_t>(amount));
    std::memcpy(into, found.data(), found.size());
    return found.size() == static_cast<std::size_t>(amount) ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
}

int WriteFile(sqlite3_file* file, const void* from, int amount, sqlite3_int64 offset)
{
    const FileOfSQLite& written = FileIn(file);
    const std::string_view bytes(static_cast<const char*>(from), static_cast<std::size_t>(amount));
    if (written.Disk == nullptr)
        Put(*written.Temporary, static_cast<std::size_t>(offset), bytes);
    else if (!written.Disk->Write(written.Number, static_cast<std::size_t>(offset), bytes))
        return SQLITE_IOERR_WRITE;
    return SQLITE_OK;
}

int TruncateFile(sqlite3_file* file, sqlite3_int64 size)
{
    const FileOfSQLite& truncated = FileIn(file);
    if (truncated.Disk == nullptr)
        truncated.Temporary->resize(static_cast<std::size_t>(size));
    else if (!truncated.Disk->Truncate(truncated.Number, static_cast<std::size_t>(size)))
        return SQLITE_IOERR_TRUNCATE;
    return SQLITE_OK;
}

int SyncFile(sqlite3_file* file, int)
{
    FileOfSQLite& synced = FileIn(file);
    if (synced.Disk == nullptr)
        return SQLITE_OK;
    if (!synced.Disk->Sync(synced.Number))
        return SQLITE_IOERR_FSYNC;
    if (synced.SyncsDirectory && !synced.Disk->SyncDirectory())
        return SQLITE_IOERR_DIR_FSYNC;
    synced.SyncsDirectory = false;
    return SQLITE_OK;
}

int SizeOfFile(sqlite3_file* file, sqlite3_int64* size)
{
    *size = static_cast<sqlite3_int64>(BytesOf(FileIn(file)).size());
    return SQLITE_OK;
}

int LockFile(sqlite3_file*, int)
{
    return SQLITE_OK;
}

int LookForLock(sqlite3_file*, int* locked)
{
    *locked = 0;
    return SQLITE_OK;
}

int ControlFile(sqlite3_file*, int, void*)
{
    return SQLITE_NOTFOUND;
}

int SectorSizeAsOnUnix(sqlite3_file*)
{
    return 4096;
}

int PropertiesAsOnUnix(sqlite3_file*)
{
    return SQLITE_IOCAP_POWERSAFE_OVERWRITE;
}

constexpr sqlite3_io_methods SimulatedFileMethods = []
{
    sqlite3_io_methods methods{};
    methods.iVersion = 1; // neither shared memory nor mapped files
    methods.xClose = CloseFile;
    methods.xRead = ReadFile;
    methods.xWrite = WriteFile;
    methods.xTruncate = TruncateFile;
    methods.xSync = SyncFile;
    methods.xFileSize = SizeOfFile;
    methods.xLock = LockFile;
    methods.xUnlock = LockFile;
    methods.xCheckReservedLock = LookForLock;
    methods.xFileControl = ControlFile;
    methods.xSectorSize = SectorSizeAsOnUnix;
    methods.xDeviceCharacteristics = PropertiesAsOnUnix;
    return methods;
}();

SimulatedDisk& DiskOf(sqlite3_vfs* vfs)
{
    return *static_cast<SimulatedDisk*>(vfs->pAppData);
}

int OpenFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* given)
{
    FileOfSQLite& opened = FileIn(file);
    opened.Base.pMethods = nullptr; // nothing to close after a failure
    opened.Disk = nullptr;
    opened.Number = 0;
    opened.SyncsDirectory = false;
    opened.Temporary = nullptr;
    if (name == nullptr)
        opened.Temporary = new std::string;
    else
    {
        SimulatedDisk& disk = DiskOf(vfs);
        if (disk.IsOff() || (!disk.Exists(name) && (flags & SQLITE_OPEN_CREATE) == 0))
            return SQLITE_CANTOPEN;
        opened.Disk = &disk;
        opened.Number = disk.Open(name);
        opened.SyncsDirectory = (flags & SQLITE_OPEN_CREATE) != 0 && (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
    }
    if (given != nullptr)
        *given = flags;
    opened.Base.pMethods = &SimulatedFileMethods;
    return SQLITE_OK;
}

int DeleteFile(sqlite3_vfs* vfs, const char* name, int syncDirectory)
{
    SimulatedDisk& disk = DiskOf(vfs);
    if (!disk.IsOff() && !disk.Exists(name))
        return SQLITE_IOERR_DELETE_NOENT;
    if (!disk.Unlink(name))
        return SQLITE_IOERR_DELETE;
    return syncDirectory == 0 || disk.SyncDirectory() ? SQLITE_OK : SQLITE_IOERR_DIR_FSYNC;
}

int LookForFile(sqlite3_vfs* vfs, const char* name, int flags, int* found)
{
    SimulatedDisk& disk = DiskOf(vfs);
    if (disk.IsOff())
        return SQLITE_IOERR_ACCESS;
    // On Unix, SQLite takes an empty file for a missing one.
    *found = disk.Exists(name) && (flags != SQLITE_ACCESS_EXISTS || !disk.Bytes(disk.Open(name)).empty()) ? 1 : 0;
    return SQLITE_OK;
}

int FullNameOfFile(sqlite3_vfs*, const char* name, int size, char* fullName)
{
    sqlite3_snprintf(size, fullName, "%s", name);
    return SQLITE_OK;
}

int FixedRandomness(sqlite3_vfs*, int size, char* bytes)
{
    std::fill_n(bytes, size, 'r');
    return size;
}

std::optional<sqlite3_vfs> inUse;

} // namespace

DiskInUse::DiskInUse(SimulatedDisk& disk)
{
    inUse = *sqlite3_vfs_find(nullptr);
    inUse->pNext = nullptr;
    inUse->zName = "simulated disk";
    inUse->szOsFile = sizeof(FileOfSQLite);
    inUse->pAppData = &disk;
    inUse->xOpen = OpenFile;
    inUse->xDelete = DeleteFile;
    inUse->xAccess = LookForFile;
    inUse->xFullPathname = FullNameOfFile;
    inUse->xRandomness = FixedRandomness;
    sqlite3_vfs_register(&*inUse, 1);
    sqlite3_randomness(0, nullptr); // restarts it with the bytes of this VFS
}

DiskInUse::~DiskInUse()
{
    sqlite3_vfs_unregister(&*inUse);
    sqlite3_randomness(0, nullptr);
}

} // namespace support

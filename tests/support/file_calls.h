#pragma once

#include <cerrno>
#include <functional>
#include <set>

namespace support
{

// The tests' executable defines the system's functions that the library calls for its backups. The linker and the
// loader find these definitions first. They pass each call on to the system's own function unless a test makes it fail.

enum class FileCall
{
    Link,            // link
    Rename,          // rename
    Sync,            // fsync
    ChangeMode,      // fchmod
    OpenDirectory,   // opendir
    ReadDirectory,   // readdir, readdir64
    CreateTemporary, // mkostemp, mkostemp64
    Lock,            // flock
    AddDirectory,    // mkdir
    Remove           // remove, which std::filesystem::remove calls
};

// Makes calls of the thread fail while in scope, without their reaching the system: the `number`-th of all calls of
// these kinds, counted from 1, or EveryCall. One at a time.
class FileCallFailure
{
  public:
    static constexpr int EveryCall = 0;

    FileCallFailure(std::set<FileCall> calls, int number, int error = EIO);
    ~FileCallFailure();
    FileCallFailure(const FileCallFailure&) = delete;
    FileCallFailure& operator=(const FileCallFailure&) = delete;

    // Whether that many calls were made at all.
    bool Happened() const { return Made > 0 && Made >= Number; }

  private:
    friend class FileCallGate;
    std::set<FileCall> Calls;
    int Number;
    int Error;
    int Made = 0;
};

// Acts, while in scope, right after the thread's `number`-th call of this kind has returned, counted from 1. One at a
// time.
class AfterFileCall
{
  public:
    AfterFileCall(FileCall call, std::function<void()> act, int number = 1);
    ~AfterFileCall();
    AfterFileCall(const AfterFileCall&) = delete;
    AfterFileCall& operator=(const AfterFileCall&) = delete;

    bool Happened() const { return Made >= Number; }

  private:
    friend class FileCallGate;
    FileCall Call;
    std::function<void()> Act;
    int Number;
    int Made = 0;
};

// Receives the thread's calls that have succeeded, while in scope. One at a time.
class FileCallListener
{
  public:
    FileCallListener();
    virtual ~FileCallListener();
    FileCallListener(const FileCallListener&) = delete;
    FileCallListener& operator=(const FileCallListener&) = delete;

    virtual void Linked(const char* from, const char* to) = 0;
    virtual void Renamed(const char* from, const char* to) = 0;
    virtual void Synced(int file) = 0;
    virtual void Created(const char* name) = 0; // by mkostemp
    virtual void AddedDirectory(const char* name) = 0;
    virtual void Removed(const char* name) = 0;
};

} // namespace support

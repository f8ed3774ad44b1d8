#pragma once

#include <unistd.h>

// Closes an open file at the end of its scope.
class FileDescriptor
{
  public:
    explicit FileDescriptor(int number) : Number(number) {}
    ~FileDescriptor()
    {
        if (Number >= 0)
            close(Number);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool IsOpen() const { return Number >= 0; }

    const int Number; // negative if the file could not be opened
};

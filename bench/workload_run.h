#pragma once

#include "workload.h"

#include <memory>
#include <string>

enum class Medium
{
    Memory,
    Disk
};

// A workload with the implementation that runs it and that implementation's journal.
class WorkloadRun
{
  public:
    // Creates and fills the journal, on disk in `directory`, which must exist. Throws std::runtime_error.
    WorkloadRun(const ImplementationKind& kind, const Workload& workload, Medium medium, const std::string& directory);

    // Returns a step to be called `Steps` times.
    Step Prepare();
    void Restore();
    void Close() { Runner->Close(); }
    const std::string& Path() const { return JournalPath; }

  private:
    const Workload& Work;
    std::unique_ptr<Implementation> Runner;
    std::string JournalPath;
};

// Whether this implementation can run the workload: some cannot create a UUID.
bool CanRun(const ImplementationKind& kind, const Workload& workload);

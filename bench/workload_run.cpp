#include "workload_run.h"

#include <filesystem>
#include <stdexcept>

namespace
{

void Require(bool done, const std::string& what)
{
    if (!done)
        throw std::runtime_error(what + " failed");
}

} // namespace

WorkloadRun::WorkloadRun(const ImplementationKind& kind, const Workload& workload, Medium medium,
                         const std::string& directory)
    : Work(workload), Runner(kind.Make()),
      JournalPath(medium == Medium::Memory ? ":memory:"
                                           : (std::filesystem::path(directory) / (kind.Name + ".db")).string())
{
    if (medium == Medium::Disk)
        std::filesystem::remove(JournalPath);
    Require(Runner->Open(JournalPath), kind.Name + ": opening " + JournalPath);
    Fill(*Runner, Work.Holds);
}

Step WorkloadRun::Prepare()
{
    return Work.Prepare(*Runner, JournalPath);
}

void WorkloadRun::Restore()
{
    if (!Work.Restore.empty())
        Require(Runner->Execute(Work.Restore), "restoring: " + Work.Title());
}

bool CanRun(const ImplementationKind& kind, const Workload& workload)
{
    return workload.Name != "create a UUID" || !kind.Make()->CreateUUID().empty();
}

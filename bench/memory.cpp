// Counts the heap allocations of every workload for every implementation: allocations for each step, and the most bytes
// held at a time beyond those held before it. SQLite's allocations count, too.

#include "bar_check.h"
#include "workload_run.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>

#include <malloc.h>

namespace
{

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): the program has one heap, so it has one count
bool counting = false;
std::size_t allocations = 0;
std::ptrdiff_t held = 0;
std::ptrdiff_t most = 0;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void* Allocated(void* memory)
{
    if (counting && memory != nullptr)
    {
        ++allocations;
        held += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
        most = std::max(most, held);
    }
    return memory;
}

void* Released(void* memory)
{
    if (counting && memory != nullptr)
        held -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    return memory;
}

} // namespace

// These replace the C library's functions, which it also offers under other names:
// https://www.gnu.org/software/libc/manual/html_node/Replacing-malloc.html
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the C library's names
extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t nmemb, std::size_t size);
    void* __libc_realloc(void* ptr, std::size_t size);
    void __libc_free(void* ptr);

    void* malloc(std::size_t size)
    {
        return Allocated(__libc_malloc(size));
    }
    void* calloc(std::size_t nmemb, std::size_t size)
    {
        return Allocated(__libc_calloc(nmemb, size));
    }
    void* realloc(void* ptr, std::size_t size)
    {
        return Allocated(__libc_realloc(Released(ptr), size));
    }
    void free(void* ptr)
    {
        __libc_free(Released(ptr));
    }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace
{

// Allocations for each step, and the most bytes that were held at a time.
struct Counts
{
    double Allocations = 0;
    std::ptrdiff_t Peak = 0;
};

Counts Count(const Workload& workload, const ImplementationKind& kind)
{
    WorkloadRun run(kind, workload, Medium::Memory, "");
    for (const bool warm : {false, true})
    {
        const Step step = run.Prepare();
        allocations = 0;
        held = most = 0;
        counting = warm;
        bool done = true;
        for (int i = 0; i < workload.Steps && done; ++i)
            done = step();
        counting = false;
        if (!done)
            throw std::runtime_error(kind.Name + " fails to " + workload.Title());
        run.Restore();
    }
    return {static_cast<double>(allocations) / workload.Steps, most};
}

// The library's allocations by workload.
using Allocations = std::map<std::string, double>;

Allocations CountAll(std::ostream& out)
{
    Allocations library;
    out << "workload\tsize\timplementation\tallocations\tpeak\n";
    for (const Workload& workload : Workloads())
        for (const ImplementationKind& kind : Implementations())
        {
            if (!workload.InMemory || workload.Rounds != 0 || !CanRun(kind, workload))
                continue;
            const Counts counts = Count(workload, kind);
            out << workload.Name << '\t' << workload.Size << '\t' << kind.Name << '\t' << counts.Allocations << '\t'
                << counts.Peak << '\n';
            if (&kind == &Implementations().front())
                library[workload.Title()] = counts.Allocations;
        }
    return library;
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 3)
    {
        std::cerr << "usage: " << argv[0] << " OUTPUT BARS\n";
        return 2;
    }
    std::ofstream out(argv[1]);
    const Allocations library = CountAll(out);
    BarCheck check("allocations for each record", argv[2]);
    for (const bars::Bar& bar : bars::AllocationsPerRecord)
        check.Compare(bar, library.at(bar.Operation) / WorkloadTitled(bar.Operation).Size);
    return check.Passed() && out.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

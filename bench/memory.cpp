// Counts what every workload takes from the heap, for every contender: allocations a step, and the most that is held at
// a time beyond what was held before it. SQLite's own allocations count like all others.

#include "workload.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <stdexcept>

#include <malloc.h>

namespace
{

// The heap is one for the whole program, and so is its count.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
bool counting = false;
std::size_t allocations = 0;
std::ptrdiff_t held = 0;
std::ptrdiff_t most = 0;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void* Taken(void* memory)
{
    if (counting && memory != nullptr)
    {
        ++allocations;
        held += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
        most = std::max(most, held);
    }
    return memory;
}

void* GivenBack(void* memory)
{
    if (counting && memory != nullptr)
        held -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    return memory;
}

} // namespace

// In front of the C library's own, which it offers by these names, too:
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
        return Taken(__libc_malloc(size));
    }
    void* calloc(std::size_t nmemb, std::size_t size)
    {
        return Taken(__libc_calloc(nmemb, size));
    }
    void* realloc(void* ptr, std::size_t size)
    {
        return Taken(__libc_realloc(GivenBack(ptr), size));
    }
    void free(void* ptr)
    {
        __libc_free(GivenBack(ptr));
    }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace
{

// What people will notice first: allocations for each record that a list gives, where the records' texts are short.
constexpr struct
{
    const char* Workload;
    double AllocationsOfARecord;
} Bars[] = {
    {"list events, 1,000", 2},
    {"list plants, 1,000", 3.5},
};

bool HoldsBar(const Workload& workload, double allocationsOfAStep)
{
    const auto* const bar =
        std::find_if(std::begin(Bars), std::end(Bars), [&](const auto& b) { return workload.Title() == b.Workload; });
    if (bar == std::end(Bars))
        return true;
    const double ofARecord = allocationsOfAStep / workload.Size;
    const bool holds = ofARecord <= bar->AllocationsOfARecord;
    std::cout << workload.Title() << ": " << std::fixed << std::setprecision(3) << ofARecord
              << " allocations for each record, at most " << bar->AllocationsOfARecord
              << (holds ? "\n" : ": TOO MANY\n");
    return holds;
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 2)
    {
        std::cerr << "usage: " << argv[0] << " OUTPUT\n";
        return 2;
    }
    std::ofstream out(argv[1]);
    out << "workload\tsize\tcontender\tallocations\tpeak\n";
    bool allHeld = true;
    for (const Workload& workload : Workloads())
        for (const ContenderKind& kind : Contenders())
        {
            if (!workload.InMemory || workload.Rounds != 0 ||
                (workload.Name == "an identifier" && kind.Make()->CreateIdentifier().empty()))
                continue;
            Bout bout(kind, workload, Medium::Memory, "");
            const auto takeTurn = [&]
            {
                const Step step = bout.Prepare();
                allocations = 0;
                held = most = 0;
                counting = true;
                bool done = true;
                for (int i = 0; i < workload.Steps && done; ++i)
                    done = step();
                counting = false;
                if (!done)
                    throw std::runtime_error(kind.Name + " fails to " + workload.Title());
                bout.Restore();
            };
            takeTurn(); // warms up
            takeTurn();
            const double perStep = static_cast<double>(allocations) / workload.Steps;
            out << workload.Name << '\t' << workload.Size << '\t' << kind.Name << '\t' << perStep << '\t' << most
                << '\n';
            if (&kind == &Contenders().front())
                allHeld = HoldsBar(workload, perStep) && allHeld;
        }
    return allHeld && out ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

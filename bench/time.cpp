// Times every workload for every implementation, in memory and on disk. In each round all of them run once, in random
// order, so that other load on the machine slows all of them. Prints one line for each run: report.py computes ratios
// from runs of the same round.

#include "testing/scratch_directory.h"
#include "workload_run.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>

using namespace support;

namespace
{

// Keeps the time of one run, in nanoseconds for each step.
class RunTime : public benchmark::BenchmarkReporter
{
  public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            Nanoseconds = run.GetAdjustedRealTime();
    }

    double Nanoseconds = 0;
};

// Returns false where a step failed.
bool RunOnce(benchmark::State& state, WorkloadRun& run)
{
    const Step step = run.Prepare();
    bool done = true;
    for (auto _ : state)
        done = step() && done;
    run.Restore();
    return done;
}

void Measure(const Workload& workload, Medium medium, int rounds, const std::string& directory, std::ostream& out)
{
    std::vector<std::pair<std::string, std::unique_ptr<WorkloadRun>>> runs;
    for (const ImplementationKind& kind : Implementations())
    {
        if (CanRun(kind, workload))
            runs.emplace_back(kind.Name, std::make_unique<WorkloadRun>(kind, workload, medium, directory));
    }
    std::mt19937 generator(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same order in every run
    // The first round warms up and is not kept. A workload that takes seconds needs none.
    for (int round = workload.Rounds == 0 ? 0 : 1; round <= rounds; ++round)
    {
        std::shuffle(runs.begin(), runs.end(), generator);
        for (const auto& entry : runs)
        {
            WorkloadRun& run = *entry.second;
            bool done = false;
            benchmark::ClearRegisteredBenchmarks();
            benchmark::RegisterBenchmark(workload.Name.c_str(),
                                         [&](benchmark::State& state) { done = RunOnce(state, run); })
                ->Iterations(workload.Steps)
                ->Unit(benchmark::kNanosecond)
                ->UseRealTime();
            RunTime time;
            benchmark::RunSpecifiedBenchmarks(&time);
            if (!done)
                throw std::runtime_error(entry.first + " fails to " + workload.Title());
            if (round > 0)
                out << workload.Name << '\t' << workload.Size << '\t' << (medium == Medium::Memory ? "memory" : "disk")
                    << '\t' << entry.first << '\t' << round << '\t' << time.Nanoseconds << '\n';
        }
    }
    out.flush();
}

// Prints the build and the libraries, as comments in front of the figures.
void PrintBuild(std::ostream& out)
{
    out << "# compiler\t" << BENCH_COMPILER << '\n' << "# SQLite\t" << sqlite3_libversion() << '\n';
    for (int i = 0; sqlite3_compileoption_get(i) != nullptr; ++i)
        out << "# SQLite option\t" << sqlite3_compileoption_get(i) << '\n';
    for (const ImplementationKind& kind : Implementations())
        out << "# implementation\t" << kind.Name << '\t' << kind.Version << '\n';
    for (const std::string& name : AbsentImplementations())
        out << "# absent\t" << name << '\n';
}

} // namespace

int main(int argc, char** argv)
try
{
    benchmark::Initialize(&argc, argv);
    if (argc != 4)
    {
        std::cerr << "usage: " << argv[0] << " ROUNDS DIRECTORY OUTPUT\n";
        return 2;
    }
    // To return memory to the system and to request it again would cost one implementation or another by chance.
    mallopt(M_TRIM_THRESHOLD, INT_MAX); // NOLINT(concurrency-mt-unsafe): the program has one thread
    mallopt(M_MMAP_THRESHOLD, INT_MAX); // NOLINT(concurrency-mt-unsafe): the same

    const int rounds = std::stoi(argv[1]);
    const std::string directory = argv[2];
    std::ofstream out(argv[3]);
    PrintBuild(out);
    out << "workload\tsize\tmedium\timplementation\tround\tnanoseconds\n";
    for (const Workload& workload : Workloads())
        for (const Medium medium : {Medium::Memory, Medium::Disk})
            if (medium == Medium::Memory ? workload.InMemory : workload.OnDisk)
            {
                std::cerr << workload.Title() << (medium == Medium::Memory ? ", in memory\n" : ", on disk\n");
                Measure(workload, medium, workload.Rounds == 0 ? rounds : std::min(rounds, workload.Rounds), directory,
                        out);
            }
    return out ? EXIT_SUCCESS : EXIT_FAILURE;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

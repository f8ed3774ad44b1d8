// Times every workload for every contender, in memory and on disk: in each round all of them take their turn, in random
// order, so that what slows the machine for a while slows all of them. Prints one line a turn: the ratios are made from
// turns of the same round.

#include "testing/scratch_directory.h"
#include "workload.h"

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

// Takes what one turn took, in nanoseconds a step.
class Turn : public benchmark::BenchmarkReporter
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

// False where a step failed.
bool TakeTurn(benchmark::State& state, Bout& bout)
{
    const Step step = bout.Prepare();
    bool done = true;
    for (auto _ : state)
        done = step() && done;
    bout.Restore();
    return done;
}

void Measure(const Workload& workload, Medium medium, int rounds, const std::string& directory, std::ostream& out)
{
    std::vector<std::pair<std::string, std::unique_ptr<Bout>>> bouts;
    for (const ContenderKind& kind : Contenders())
    {
        if (workload.Name == "an identifier" && kind.Make()->CreateIdentifier().empty())
            continue;
        bouts.emplace_back(kind.Name, std::make_unique<Bout>(kind, workload, medium, directory));
    }
    std::mt19937 generator(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same order in every run
    // The first round warms up and is not kept; what takes seconds needs none.
    for (int round = workload.Rounds == 0 ? 0 : 1; round <= rounds; ++round)
    {
        std::shuffle(bouts.begin(), bouts.end(), generator);
        for (const auto& entry : bouts)
        {
            Bout& bout = *entry.second;
            bool done = false;
            benchmark::ClearRegisteredBenchmarks();
            benchmark::RegisterBenchmark(workload.Name.c_str(),
                                         [&](benchmark::State& state) { done = TakeTurn(state, bout); })
                ->Iterations(workload.Steps)
                ->Unit(benchmark::kNanosecond)
                ->UseRealTime();
            Turn turn;
            benchmark::RunSpecifiedBenchmarks(&turn);
            if (!done)
                throw std::runtime_error(entry.first + " fails to " + workload.Title());
            if (round > 0)
                out << workload.Name << '\t' << workload.Size << '\t' << (medium == Medium::Memory ? "memory" : "disk")
                    << '\t' << entry.first << '\t' << round << '\t' << turn.Nanoseconds << '\n';
        }
    }
    out.flush();
}

// What the figures were made with, as comments in front of them.
void TellCircumstances(std::ostream& out)
{
    out << "# compiler\t" << BENCH_COMPILER << '\n' << "# SQLite\t" << sqlite3_libversion() << '\n';
    for (int i = 0; sqlite3_compileoption_get(i) != nullptr; ++i)
        out << "# SQLite option\t" << sqlite3_compileoption_get(i) << '\n';
    for (const ContenderKind& kind : Contenders())
        out << "# contender\t" << kind.Name << '\t' << kind.Version << '\n';
    for (const std::string& name : AbsentContenders())
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
    // Giving memory back to the system and taking it again costs now one, now the other contender, as chance has laid
    // out the heap.
    mallopt(M_TRIM_THRESHOLD, INT_MAX); // NOLINT(concurrency-mt-unsafe): there is but one thread
    mallopt(M_MMAP_THRESHOLD, INT_MAX); // NOLINT(concurrency-mt-unsafe): the same

    const int rounds = std::stoi(argv[1]);
    const std::string directory = argv[2];
    std::ofstream out(argv[3]);
    TellCircumstances(out);
    out << "workload\tsize\tmedium\tcontender\tround\tnanoseconds\n";
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

// Counts the instructions of the small operations and the lists, for plantjournal and for the baseline: bare SQLite
// with the same statements, prepared for each call. Counts do not depend on the load of the machine: a ratio rises
// above its bar only by a change of the code.
//
//   valgrind --tool=callgrind --callgrind-out-file=DUMPS ... instructions count
//   instructions compare DUMPS OUTPUT

#include "bar_check.h"
#include "workload_run.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>

#include <sqlite3.h>
#include <valgrind/callgrind.h>

namespace
{

constexpr const char* Baseline = "SQLite";

// The bars are for this compiler and this SQLite. Others differ by a few hundredths on either side.
bool BarsHoldHere()
{
#if defined(__GNUC__) && !defined(__clang__)
    return __GNUC__ == 12 && sqlite3_libversion_number() / 1000 == 3040;
#else
    return false;
#endif
}

void Count(const Workload& workload, const ImplementationKind& kind)
{
    WorkloadRun run(kind, workload, Medium::Memory, "");
    const auto runOnce = [&]
    {
        const Step step = run.Prepare();
        bool done = true;
        CALLGRIND_START_INSTRUMENTATION;
        for (int i = 0; i < workload.Steps; ++i)
            done = step() && done;
        CALLGRIND_STOP_INSTRUMENTATION;
        if (!done)
            throw std::runtime_error(kind.Name + " fails to " + workload.Title());
        run.Restore();
    };
    runOnce(); // warms up
    CALLGRIND_ZERO_STATS;
    runOnce();
    const std::string title = workload.Title() + '\t' + kind.Name; // read after the macro's own expression
    CALLGRIND_DUMP_STATS_AT(title.c_str());
}

void CountAll()
{
    const auto count = [](const bars::Bar& bar)
    {
        for (const char* const name : {Implementations().front().Name.c_str(), Baseline})
            Count(WorkloadTitled(bar.Operation), ImplementationNamed(name));
    };
    std::for_each(std::begin(bars::InstructionRatios), std::end(bars::InstructionRatios), count);
    std::for_each(std::begin(bars::Instructions), std::end(bars::Instructions), count);
}

// The instructions of each dump, by its title.
std::map<std::string, std::int64_t> ReadDumps(const std::filesystem::path& dumps)
{
    std::map<std::string, std::int64_t> counts;
    const std::string trigger = "desc: Trigger: Client Request: ";
    for (const auto& entry : std::filesystem::directory_iterator(dumps.parent_path()))
    {
        if (entry.path().stem() != dumps.filename())
            continue;
        std::ifstream dump(entry.path());
        std::string title;
        for (std::string line; std::getline(dump, line);)
            if (line.rfind(trigger, 0) == 0)
                title = line.substr(trigger.size());
            else if (line.rfind("totals: ", 0) == 0)
                counts[title] = std::stoll(line.substr(line.find(' ')));
    }
    return counts;
}

bool Compare(const std::filesystem::path& dumps, const std::string& output)
{
    const std::map<std::string, std::int64_t> counts = ReadDumps(dumps);
    const auto perStep = [&](const bars::Bar& bar, const std::string& name)
    { return static_cast<double>(counts.at(bar.Operation + ('\t' + name))) / WorkloadTitled(bar.Operation).Steps; };
    const std::string& library = Implementations().front().Name;
    BarCheck check("instructions for each of the baseline's, or of a step", output);
    for (const bars::Bar& bar : bars::InstructionRatios)
        check.Compare(bar, perStep(bar, library) / perStep(bar, Baseline));
    for (const bars::Bar& bar : bars::Instructions)
        check.Compare(bar, perStep(bar, library));
    if (BarsHoldHere())
        return check.Passed();
    std::cout << "The bars are for g++ 12 and SQLite 3.40; this build differs, and may exceed them.\n";
    return true;
}

} // namespace

int main(int argc, char** argv)
try
{
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "count" && argc == 2)
        CountAll();
    else if (word == "compare" && argc == 4)
        return Compare(argv[2], argv[3]) ? EXIT_SUCCESS : EXIT_FAILURE;
    else
    {
        std::cerr << "usage: " << argv[0] << " count | compare DUMPS OUTPUT\n";
        return 2;
    }
    return EXIT_SUCCESS;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

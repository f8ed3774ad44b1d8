// Counts the instructions of the small operations and the lists, for plantjournal and for the floor: bare SQLite with
// the same statements, prepared for each call. Counts do not depend on what else the machine does, so that a ratio that
// rises above its bar is a change of ours.
//
//   valgrind --tool=callgrind --callgrind-out-file=DUMPS ... instructions count
//   instructions judge DUMPS OUTPUT

#include "workload.h"

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

#include <sqlite3.h>
#include <valgrind/callgrind.h>

namespace
{

// What is counted, and the most that it may be: plantjournal's instructions for each of the floor's, or, where there is
// no floor, for each step.
constexpr struct
{
    const char* Workload;
    double Bar;
} Counted[] = {
    {"create a plant, 1,000", 1.01},
    {"create a clone, 1,000", 0.96},
    {"list events, 10", 0.99},
    {"list events, 1,000", 0.955},
    {"list plants, 1,000", 0.985},
    {"get a plant, 1,000", 0.985},
    {"create a care entry, 1,000", 0.98},
    {"update a care entry, 1,000", 0.98},
    {"delete a care entry, 1,000", 1.005},
    {"save a new harvest, 1,000", 0.99},
    {"save a harvest again, 1,000", 0.99},
    {"strain summary, 1,000", 1.002},
    {"an identifier", 1150},
};
constexpr const char* Floor = "SQLite";

// The bars are those of this compiler and this SQLite. Others make a few hundredths more or less of either side.
bool BarsHoldHere()
{
#if defined(__GNUC__) && !defined(__clang__)
    return __GNUC__ == 12 && sqlite3_libversion_number() / 1000 == 3040;
#else
    return false;
#endif
}

void Count(const Workload& workload, const ContenderKind& kind)
{
    Bout bout(kind, workload, Medium::Memory, "");
    const auto takeTurn = [&]
    {
        const Step step = bout.Prepare();
        bool done = true;
        CALLGRIND_START_INSTRUMENTATION;
        for (int i = 0; i < workload.Steps; ++i)
            done = step() && done;
        CALLGRIND_STOP_INSTRUMENTATION;
        if (!done)
            throw std::runtime_error(kind.Name + " fails to " + workload.Title());
        bout.Restore();
    };
    takeTurn(); // warms up
    CALLGRIND_ZERO_STATS;
    takeTurn();
    const std::string title = workload.Title() + '\t' + kind.Name; // read after the macro's own expression
    CALLGRIND_DUMP_STATS_AT(title.c_str());
}

int CountAll()
{
    for (const auto& counted : Counted)
        for (const char* const name : {Contenders().front().Name.c_str(), Floor})
            Count(WorkloadTitled(counted.Workload), ContenderNamed(name));
    return EXIT_SUCCESS;
}

// The instructions of each dump, by what it was taken of.
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

int Judge(const std::filesystem::path& dumps, const std::string& output)
{
    const std::map<std::string, std::int64_t> counts = ReadDumps(dumps);
    std::ofstream out(output);
    out << "workload\tsize\tplantjournal\tfloor\tbar\n";
    std::cout << std::left << std::setw(30) << "instructions of a step" << std::right << std::setw(14) << "plantjournal"
              << std::setw(14) << "floor" << std::setw(10) << "ratio" << std::setw(10) << "bar" << '\n';
    bool held = true;
    for (const auto& counted : Counted)
    {
        const Workload& workload = WorkloadTitled(counted.Workload);
        const auto perStep = [&](const std::string& name)
        { return static_cast<double>(counts.at(workload.Title() + '\t' + name)) / workload.Steps; };
        const double ours = perStep(Contenders().front().Name);
        const double floor = perStep(Floor);
        const double judged = counted.Bar > 10 ? ours : ours / floor;
        const bool holds = judged <= counted.Bar;
        held = held && holds;
        out << workload.Name << '\t' << workload.Size << '\t' << ours << '\t' << floor << '\t' << counted.Bar << '\n';
        std::cout << std::left << std::setw(30) << workload.Title() << std::right << std::fixed << std::setprecision(0)
                  << std::setw(14) << ours << std::setw(14) << floor << std::setprecision(4) << std::setw(10)
                  << ours / floor << std::setprecision(3) << std::setw(10) << counted.Bar
                  << (holds ? "\n" : "  TOO HIGH\n");
    }
    if (!BarsHoldHere())
        std::cout << "The bars are those of g++ 12 and SQLite 3.40, and not held here.\n";
    return (held || !BarsHoldHere()) && out ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
try
{
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "count" && argc == 2)
        return CountAll();
    if (word == "judge" && argc == 4)
        return Judge(argv[2], argv[3]);
    std::cerr << "usage: " << argv[0] << " count | judge DUMPS OUTPUT\n";
    return 2;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

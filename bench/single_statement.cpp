// Counts the instructions of the answers of query/ that read their records with one statement, after the plants, and
// those of the baseline: bare SQLite with the same statements. Verifies that both run the same statements and return
// the same records.
//
//   single_statement run library|baseline OPERATION JOURNAL
//   single_statement compare OUTPUT

#include "answer_rows.h"
#include "bar_check.h"
#include "bare_answers.h"
#include "process.h"
#include "seed.h"
#include "testing/scratch_directory.h"

#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <stdexcept>

#include <sqlite3.h>
#include <valgrind/callgrind.h>

namespace
{

// Computes an answer, and returns a function that returns its rows, so that only the computation is counted.
using Computation = std::function<std::function<std::string()>(PlantDatabase& journal)>;

struct SingleAnswer
{
    Computation Library;
    Computation Baseline;
};

template <typename Answer, typename Filter, typename Query> Computation ByLibrary(const Filter& filter, Query query)
{
    return [filter, query](PlantDatabase& journal)
    {
        std::vector<Answer> answer;
        if (const PlantQueryResult result = query(journal, filter, answer); !result)
            throw std::runtime_error(result.Error);
        return [answer = std::move(answer)] { return TabbedRows(answer); };
    };
}

template <typename Answer> Computation ByBaseline(std::vector<Answer> (*compute)(sqlite3*))
{
    return [compute](PlantDatabase& journal)
    { return [answer = compute(journal.NativeHandle())] { return TabbedRows(answer); }; };
}

SingleAnswer AnswerTo(const std::string& operation)
{
    PlantTotalFilter totals;
    PlantActivityFilter activity;
    if (operation == "totals by month, 20,000 care entries")
    {
        totals.Period = PlantPeriod::Month;
        return {ByLibrary<PlantTotal>(totals, QueryPlantTotals), ByBaseline(BareTotalsByMonth)};
    }
    if (operation == "totals by product, 20,000 care entries")
    {
        totals.Group = PlantTotalGroup::Product;
        return {ByLibrary<PlantTotal>(totals, QueryPlantTotals), ByBaseline(BareTotalsByProduct)};
    }
    if (operation == "activity, 1,000 photos")
    {
        activity.Kinds = {"Photo"};
        return {ByLibrary<PlantActivity>(activity, QueryPlantActivity), ByBaseline(BarePhotos)};
    }
    throw std::invalid_argument("no answer for " + operation);
}

void Open(PlantDatabase& journal, const std::string& path)
{
    std::string error;
    if (!journal.Open(path, &error))
        throw std::runtime_error(path + ": " + error);
}

void RunMarked(const Computation& compute, const std::string& path)
{
    PlantDatabase journal;
    Open(journal, path);
    compute(journal); // warms up
    CALLGRIND_START_INSTRUMENTATION;
    const auto rows = compute(journal);
    CALLGRIND_STOP_INSTRUMENTATION;
    if (rows().empty())
        throw std::runtime_error("an answer is empty");
}

// The statements that a computation runs, and the rows of its answer.
std::string StatementsAndRows(const Computation& compute, const std::string& path)
{
    PlantDatabase journal;
    Open(journal, path);
    std::string text;
    const auto add = [](unsigned /*event*/, void* added, void* statement, void* /*sql*/)
    {
        *static_cast<std::string*>(added) += std::string(sqlite3_sql(static_cast<sqlite3_stmt*>(statement))) + '\n';
        return 0;
    };
    sqlite3_trace_v2(journal.NativeHandle(), SQLITE_TRACE_STMT, add, &text);
    const auto rows = compute(journal);
    return text + rows();
}

bool Compare(const std::string& program, const std::string& output)
{
    const support::ScratchDirectory scratch;
    const std::string path = scratch.File("journal.db");
    const std::unique_ptr<Implementation> journal = Implementations().front().Make();
    if (!journal->Open(path))
        throw std::runtime_error(path + ": cannot be created");
    Fill(*journal, {100, 0, 20'000, 200, 1'000});
    journal->Close();

    BarCheck check("instructions for each of the baseline's", output);
    for (const bars::Bar& bar : bars::AnswerRatios)
    {
        const SingleAnswer answer = AnswerTo(bar.Operation);
        if (StatementsAndRows(answer.Library, path) != StatementsAndRows(answer.Baseline, path))
            throw std::runtime_error(std::string(bar.Operation) + ": the baseline differs in its statements or rows");
        const auto count = [&](const std::string& name)
        {
            return static_cast<double>(
                CountMarkedInstructions({program, "run", name, bar.Operation, path}, scratch.File("callgrind")));
        };
        check.Compare(bar, count("library") / count("baseline"));
    }
    return check.Passed();
}

} // namespace

int main(int argc, char** argv)
try
{
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "run" && argc == 5)
    {
        const SingleAnswer answer = AnswerTo(argv[3]);
        RunMarked(argv[2] == std::string("library") ? answer.Library : answer.Baseline, argv[4]);
        return EXIT_SUCCESS;
    }
    if (word == "compare" && argc == 3)
        return Compare(argv[0], argv[2]) ? EXIT_SUCCESS : EXIT_FAILURE;
    std::cerr << "usage: " << argv[0] << " run library|baseline OPERATION JOURNAL | compare OUTPUT\n";
    return 2;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

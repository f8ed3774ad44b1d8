// Prints an answer of query/ on a journal, as a program that is linked with nothing else.

#include "answer_rows.h"
#include "answer_statements.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>

namespace
{

// Returns the rows of an answer, a vector that `query` fills.
template <typename Answer, typename Query> std::string RowsOf(const Query& query)
{
    Answer answer;
    if (const PlantQueryResult result = query(answer); !result)
        throw std::runtime_error(result.Error);
    return TabbedRows(answer);
}

std::string AnswerTo(const std::string& operation, PlantDatabase& journal)
{
    if (operation == "activity of a week")
    {
        PlantActivityFilter filter;
        filter.From = FirstDayOfWeek;
        filter.To = LastDayOfWeek;
        return RowsOf<std::vector<PlantActivity>>([&](auto& out) { return QueryPlantActivity(journal, filter, out); });
    }
    if (operation == "status of 20 plants")
    {
        PlantSet plants;
        plants.UUIDs = PlantsWithStatus();
        return RowsOf<std::vector<PlantStatus>>([&](auto& out)
                                                { return QueryPlantStatus(journal, plants, StatusDay, out); });
    }
    if (operation == "totals by month")
    {
        PlantTotalFilter filter;
        filter.Period = PlantPeriod::Month;
        return RowsOf<std::vector<PlantTotal>>([&](auto& out) { return QueryPlantTotals(journal, filter, out); });
    }
    throw std::invalid_argument("no answer for " + operation);
}

void Print(const std::string& operation, const std::string& path)
{
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(path, &error))
        throw std::runtime_error(path + ": " + error);
    std::cout << AnswerTo(operation, journal);
}

} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 3)
    {
        std::cerr << "usage: " << argv[0] << " OPERATION JOURNAL\n";
        return 2;
    }
    Print(argv[1], argv[2]);
    return EXIT_SUCCESS;
}
catch (const std::exception& e)
{
    std::cerr << e.what() << '\n';
    return EXIT_FAILURE;
}

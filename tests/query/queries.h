#pragma once

#include "plant_query.h"
#include "query/print.h"

#include <functional>
#include <iosfwd>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace support
{

// The result of a query, with its answer printed.
struct Reply
{
    std::string Error; // "no memory" after std::bad_alloc
    std::string Answer;
};

using Work = std::function<void()>;

// A function of the library with its arguments, for a journal of sample records.
struct Query
{
    std::string Name;
    std::string EmptyAnswer;
    // Calls the function inside `around`, which may do something before and after the call.
    std::function<Reply(PlantDatabase& database, const std::function<void(const Work& call)>& around)> AskInside;

    Reply Ask(PlantDatabase& database) const
    {
        return AskInside(database, [](const Work& call) { call(); });
    }
};

std::ostream& operator<<(std::ostream& out, const Query& query);

// Every function of the library. A function with several ways to read occurs several times.
const std::vector<Query>& Queries();

// `ask` is a function (PlantDatabase&, Out&) that returns a PlantQueryResult. `old` is what `out` contains before.
template <typename Out, typename Function> Query QueryOf(std::string name, const Out& old, const Function& ask)
{
    const auto askInside = [=](PlantDatabase& database, const std::function<void(const Work&)>& around)
    {
        Out out = old;
        Reply reply;
        around(
            [&]
            {
                try
                {
                    reply.Error = ask(database, out).Error;
                }
                catch (const std::bad_alloc&)
                {
                    reply.Error = "no memory";
                }
            });
        reply.Answer = Printed(out);
        return reply;
    };
    return {std::move(name), Printed(Out{}), askInside};
}

} // namespace support

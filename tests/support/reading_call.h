#pragma once

#include "support/journal_test.h"

#include <functional>
#include <iosfwd>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace support
{

// The result of a function that reads a journal, with its answer printed.
struct Reply
{
    std::string Error; // "no memory" after std::bad_alloc
    std::string Answer;
};

using Work = std::function<void()>;

// A function that reads a journal, with its arguments for a journal of sample records.
struct ReadingCall
{
    std::string Name;
    std::string EmptyAnswer;
    // Calls the function inside `around`, which may do something before and after the call.
    std::function<Reply(PlantDatabase& database, const std::function<void(const Work& call)>& around)> AskInside;
};

std::ostream& operator<<(std::ostream& out, const ReadingCall& call);

// `ask` is a function (PlantDatabase&, Out&) that returns a result with an `Error`. `old` is what `out` contains
// before.
template <typename Out, typename Function, typename Print>
ReadingCall ReadingCallOf(std::string name, const Out& old, const Function& ask, const Print& print)
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
        reply.Answer = print(out);
        return reply;
    };
    return {std::move(name), print(Out{}), askInside};
}

// Each program that runs the tests of reading_call_test.cpp defines it: every function of its library that reads a
// journal. A function with several ways to read occurs several times.
const std::vector<ReadingCall>& ReadingCalls();

// A journal of sample records and one of these functions.
class ReadingCallTest : public JournalTest, public testing::WithParamInterface<ReadingCall>
{
  protected:
    ReadingCallTest();

    Reply Ask();
    // Asks inside `around`.
    Reply AskInside(const std::function<void(const Work& ask)>& around);
    // Expects an error that contains `error`, an empty answer, and that the next call succeeds.
    void ExpectRefused(const Reply& reply, const std::string& error);

    std::string Whole; // the answer
};

inline std::string NameOfReadingCall(const testing::TestParamInfo<ReadingCall>& test)
{
    return test.param.Name;
}

} // namespace support

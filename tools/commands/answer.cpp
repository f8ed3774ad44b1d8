#include "commands/answer.h"

ExactValue Exact(const std::string& text)
{
    return {JSONOf(text), text};
}

ExactValue Exact(std::int64_t number)
{
    return {JSONOf(number), TextOf(&number)};
}

ExactValue Exact(double number)
{
    return {JSONOf(ConstValueRef(&number)), TextOf(&number)};
}

ExactValue ExactlyNothing()
{
    return {JSON::Null(), ""};
}

void AddCSV(CLI::App& command, bool& asCSV)
{
    AddSwitch(command, "--csv", "print CSV", asCSV);
}

bool IsForPrograms(const Session& session, bool asCSV)
{
    if (session.AsJSON && asCSV)
        RefuseUsage("--json and --csv exclude each other; give one of them");
    return session.AsJSON || asCSV;
}

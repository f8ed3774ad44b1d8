#include "commands/outcome.h"

#include "commands/print.h"
#include "terminal/printable.h"

#include <iostream>
#include <utility>

void Outcome::Add(const std::string& summary, const std::string& identifier, JSON record)
{
    Journal.AddSummary(summary);
    if (!Journal.AsJSON)
        std::cout << Printable(Journal.Quiet ? identifier : summary) << '\n';
    else if (Stored == Records::One)
        PrintJSON(record);
    else
        All.Add(std::move(record));
}

void Outcome::Finish()
{
    if (Journal.AsJSON && Stored == Records::Many)
        PrintJSON(All);
}

void ReportStored(Session& session, const std::string& summary, const std::string& identifier, JSON record)
{
    Outcome(session, Records::One).Add(summary, identifier, std::move(record));
}

void ReportCopy(const Session& session, const std::string& summary)
{
    if (!session.AsJSON && !session.Quiet)
        std::cout << Printable(summary) << '\n';
}

void ReportChange(Session& session, const std::string& summary)
{
    session.AddSummary(summary);
    ReportCopy(session, summary);
}

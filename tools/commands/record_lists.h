#pragma once

#include "commands/print.h"
#include "journal/find_record.h"
#include "record/operations.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

// The records of one plant, the newest first.
template <typename Record> std::vector<Record> RecordsOf(Session& session, const Plant& plant)
{
    std::vector<Record> records;
    session.RequireList(ListRecords(session.Read(), plant.UUID, records),
                        std::string("the ") + Describe<Record>().Plural + " cannot be listed");
    return records;
}

// Adds `list` to the group of commands of a kind of record. `session` must live as long as the program.
template <typename Record> void AddListCommand(CLI::App& group, Session& session);

#pragma once

#include "journal/session.h"
#include "record/fields.h"

#include <optional>
#include <string>
#include <vector>

// The rules of plant_validation.h, applied to records that a command is about to write. A command on several plants
// checks all records before it writes the first:
//
//     Notices notices;
//     for (const Plant& plant : plants)
//         Append(notices, CheckValues(entry, plant, session.Flags));
//     PrintNotices(notices);
//     session.Write();

// An unlikely value.
struct Notice
{
    std::string What;    // the record: "care of Basil"
    std::string Problem; // the flag, the value and the reason
};

using Notices = std::vector<Notice>;

// Returns the unlikely values of a record of `plant`. Throws a mistake in the command line (exit status 2) for an
// impossible value. A message names a flag as it was `typed`. An edit passes the fields that it `sets`: only problems
// in which one of them takes part count.
template <typename Record>
[[nodiscard]] Notices CheckValues(const Record& record, const Plant& plant, const TypedFlags& typed,
                                  const std::optional<FieldNames>& sets = {});

// Likewise for a plant or a strain, whose values have one flag each.
[[nodiscard]] Notices CheckValues(const Plant& plant, const std::optional<FieldNames>& sets = {});
[[nodiscard]] Notices CheckValues(const Strain& strain, const std::optional<FieldNames>& sets = {});

void Append(Notices& notices, const Notices& more);

// Prints each different problem on one line of standard error.
void PrintNotices(const Notices& notices);

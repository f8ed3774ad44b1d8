#pragma once

#include "support/journal_test.h"

#include <sstream>
#include <string>

// What the tests of docs/errors.md share.
namespace pages
{

inline const std::string ErrorsPage = "docs/errors.md";

// The log function of the page: prints a line to the std::ostream `log`.
void KeepLog(void* log, int code, const char* message);

// SQLite's error log, captured as text. SQLite accepts a log function only before it is initialized, so SQLite is shut
// down first.
class ErrorLog
{
  protected:
    ErrorLog();
    ~ErrorLog();

    std::ostringstream Log;
};

class ErrorsPageTest : protected ErrorLog, public support::JournalTest
{
  protected:
    ErrorsPageTest();

    int Code() const;
    std::string Message() const;
};

} // namespace pages

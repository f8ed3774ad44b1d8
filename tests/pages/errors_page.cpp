#include "pages/errors_page.h"

#include <ostream>

#include <sqlite3.h>

namespace pages
{

// [log]
void KeepLog(void* log, int code, const char* message)
{
    *static_cast<std::ostream*>(log) << code << ": " << message << '\n';
}
// [end]

ErrorLog::ErrorLog()
{
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_LOG, KeepLog, static_cast<void*>(&Log));
}

ErrorLog::~ErrorLog()
{
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_LOG, nullptr, nullptr);
}

ErrorsPageTest::ErrorsPageTest()
{
    sqlite3_busy_timeout(Database.NativeHandle(), 0); // a test that waits for a lock takes long and shows nothing more
}

int ErrorsPageTest::Code() const
{
    return sqlite3_extended_errcode(Database.NativeHandle());
}

std::string ErrorsPageTest::Message() const
{
    return sqlite3_errmsg(Database.NativeHandle());
}

} // namespace pages

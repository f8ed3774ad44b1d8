// A program that passes the connection of the library to SQLite itself. Both must use the same SQLite library.

#include "plant_database.h"

#include <iostream>

#include <sqlite3.h>

int main()
{
    PlantDatabase journal;
    sqlite3_stmt* count = nullptr;
    if (!journal.Open("journal.db") ||
        sqlite3_prepare_v2(journal.NativeHandle(), "SELECT COUNT(*) FROM Plants", -1, &count, nullptr) != SQLITE_OK ||
        sqlite3_step(count) != SQLITE_ROW)
        return 1;
    std::cout << "plants: " << sqlite3_column_int(count, 0) << '\n';
    sqlite3_finalize(count);
}

#include "support/sqlite_calls.h"

#include "support/original_function.h"

#include <algorithm>

#include <sqlite3.h>

namespace support
{

namespace
{

thread_local CallRecorder* recorder = nullptr;
thread_local CallFailure* failure = nullptr;
thread_local AfterCall* after = nullptr;
thread_local int depth = 0; // SQLite calls its own functions too; only the outermost call is the library's

struct Depth
{
    Depth() { ++depth; }
    ~Depth() { --depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
};

} // namespace

class CallGate
{
  public:
    template <typename Function> static Function* Original(const char* name)
    {
        return reinterpret_cast<Function*>(OriginalFunction(name));
    }

    template <typename Pass> static int Through(SQLiteCall call, const char* sql, const Pass& pass)
    {
        if (depth > 0)
            return pass();
        const Depth inside;
        if (recorder != nullptr)
            recorder->Recorded.push_back({call, sql});
        if (failure != nullptr && failure->Call == call && std::string_view(sql).starts_with(failure->SQL) &&
            failure->Remaining > 0 && --failure->Remaining == 0)
            return failure->Result;
        const int result = pass();
        if (after != nullptr && after->Call == call && after->Remaining > 0 && --after->Remaining == 0)
            after->Act();
        return result;
    }
};

CallRecorder::CallRecorder()
{
    recorder = this;
}

CallRecorder::~CallRecorder()
{
    recorder = nullptr;
}

std::vector<std::string> CallRecorder::Statements() const
{
    std::vector<std::string> statements;
    for (const RecordedCall& recorded : Recorded)
        if (recorded.Call == SQLiteCall::Exec || recorded.Call == SQLiteCall::Prepare)
            statements.push_back(recorded.SQL);
    return statements;
}

int CallRecorder::CallCount(SQLiteCall call) const
{
    return static_cast<int>(std::count_if(Recorded.begin(), Recorded.end(),
                                          [&](const RecordedCall& recorded) { return recorded.Call == call; }));
}

CallFailure::CallFailure(SQLiteCall call, int number, int result, std::string sql)
    : Call(call), Remaining(number), Result(result), SQL(std::move(sql))
{
    failure = this;
}

CallFailure::~CallFailure()
{
    failure = nullptr;
}

AfterCall::AfterCall(SQLiteCall call, int number, std::function<void()> act)
    : Call(call), Remaining(number), Act(std::move(act))
{
    after = this;
}

AfterCall::~AfterCall()
{
    after = nullptr;
}

// ---- SQLite's functions, as the library meets them.

} // namespace support

extern "C"
{
    int sqlite3_open_v2(const char* filename, sqlite3** db, int flags, const char* vfs)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_open_v2)>("sqlite3_open_v2");
        return support::CallGate::Through(support::SQLiteCall::Open, filename,
                                          [&] { return original(filename, db, flags, vfs); });
    }

    int sqlite3_exec(sqlite3* db, const char* sql, int (*callback)(void*, int, char**, char**), void* argument,
                     char** message)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_exec)>("sqlite3_exec");
        return support::CallGate::Through(support::SQLiteCall::Exec, sql,
                                          [&] { return original(db, sql, callback, argument, message); });
    }

    int sqlite3_prepare_v2(sqlite3* db, const char* sql, int bytes, sqlite3_stmt** statement, const char** tail)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_prepare_v2)>("sqlite3_prepare_v2");
        return support::CallGate::Through(support::SQLiteCall::Prepare, sql,
                                          [&] { return original(db, sql, bytes, statement, tail); });
    }

    int sqlite3_bind_text(sqlite3_stmt* statement, int index, const char* text, int bytes, void (*destructor)(void*))
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_bind_text)>("sqlite3_bind_text");
        return support::CallGate::Through(support::SQLiteCall::Bind, sqlite3_sql(statement),
                                          [&] { return original(statement, index, text, bytes, destructor); });
    }

    int sqlite3_bind_text64(sqlite3_stmt* statement, int index, const char* text, sqlite3_uint64 bytes,
                            void (*destructor)(void*), unsigned char encoding)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_bind_text64)>("sqlite3_bind_text64");
        return support::CallGate::Through(support::SQLiteCall::Bind, sqlite3_sql(statement),
                                          [&]
                                          { return original(statement, index, text, bytes, destructor, encoding); });
    }

    int sqlite3_bind_int(sqlite3_stmt* statement, int index, int value)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_bind_int)>("sqlite3_bind_int");
        return support::CallGate::Through(support::SQLiteCall::Bind, sqlite3_sql(statement),
                                          [&] { return original(statement, index, value); });
    }

    int sqlite3_bind_int64(sqlite3_stmt* statement, int index, sqlite3_int64 value)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_bind_int64)>("sqlite3_bind_int64");
        return support::CallGate::Through(support::SQLiteCall::Bind, sqlite3_sql(statement),
                                          [&] { return original(statement, index, value); });
    }

    int sqlite3_bind_double(sqlite3_stmt* statement, int index, double value)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_bind_double)>("sqlite3_bind_double");
        return support::CallGate::Through(support::SQLiteCall::Bind, sqlite3_sql(statement),
                                          [&] { return original(statement, index, value); });
    }

    int sqlite3_step(sqlite3_stmt* statement)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_step)>("sqlite3_step");
        return support::CallGate::Through(support::SQLiteCall::Step, sqlite3_sql(statement),
                                          [&] { return original(statement); });
    }

    int sqlite3_finalize(sqlite3_stmt* statement)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_finalize)>("sqlite3_finalize");
        if (statement == nullptr) // harmless, and no statement's end
            return original(statement);
        return support::CallGate::Through(support::SQLiteCall::Finalize, sqlite3_sql(statement),
                                          [&] { return original(statement); });
    }

    sqlite3_backup* sqlite3_backup_init(sqlite3* to, const char* toName, sqlite3* from, const char* fromName)
    {
        static const auto original = support::CallGate::Original<decltype(sqlite3_backup_init)>("sqlite3_backup_init");
        sqlite3_backup* backup = nullptr;
        support::CallGate::Through(support::SQLiteCall::BackUp, "",
                                   [&]
                                   {
                                       backup = original(to, toName, from, fromName);
                                       return backup != nullptr ? SQLITE_OK : SQLITE_ERROR;
                                   });
        return backup;
    }
}

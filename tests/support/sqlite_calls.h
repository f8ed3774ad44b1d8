#pragma once

#include <functional>
#include <string>
#include <vector>

namespace support
{

// The tests stand between the library and SQLite: the functions that the library calls are defined in the tests'
// executable too, where the linker and the loader find them first, and pass on to SQLite's own. What goes by can be
// watched, and one call can be made to fail.

enum class SQLiteCall
{
    Open,
    Exec,
    Prepare,
    Bind,
    Step,
    Finalize,
    BackUp // sqlite3_backup_init, which has no statement; a failure returns no backup
};

// One call of the library: for Exec and Prepare the statement's text, for the others the text of their statement.
struct RecordedCall
{
    SQLiteCall Call;
    std::string SQL;
};

// Records the calls that the thread makes while it is in scope. One at a time.
class CallRecorder
{
  public:
    CallRecorder();
    ~CallRecorder();
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;

    const std::vector<RecordedCall>& Calls() const { return Recorded; }
    // The texts that were prepared or executed, in their order.
    std::vector<std::string> Statements() const;
    int CallCount(SQLiteCall call) const;

  private:
    friend class CallGate;
    std::vector<RecordedCall> Recorded;
};

// Makes one call fail while in scope, without its reaching SQLite: the `number`-th, counted from 1, of those of the
// kind `call` whose statement's text begins with `sql`. One at a time.
class CallFailure
{
  public:
    CallFailure(SQLiteCall call, int number, int result, std::string sql = {});
    ~CallFailure();
    CallFailure(const CallFailure&) = delete;
    CallFailure& operator=(const CallFailure&) = delete;

    bool Happened() const { return Remaining == 0; }

  private:
    friend class CallGate;
    SQLiteCall Call;
    int Remaining;
    int Result;
    std::string SQL;
};

// Acts, while in scope, right after the `number`-th call of the kind `call` has come back, counted from 1. One at a
// time.
class AfterCall
{
  public:
    AfterCall(SQLiteCall call, int number, std::function<void()> act);
    ~AfterCall();
    AfterCall(const AfterCall&) = delete;
    AfterCall& operator=(const AfterCall&) = delete;

    bool Happened() const { return Remaining == 0; }

  private:
    friend class CallGate;
    SQLiteCall Call;
    int Remaining;
    std::function<void()> Act;
};

} // namespace support

#include "journal/undo.h"

#include "journal/sql.h"
#include "plant_database.h"
#include "plant_file.h"
#include "record/text.h"
#include "refusal.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace
{

constexpr const char* NothingChanged = "; nothing was changed; edit or delete the records instead";

using Rows = std::multiset<std::string>;

// Foreign keys are off while this object lives. Create it outside a transaction.
class ForeignKeysOff
{
  public:
    explicit ForeignKeysOff(const SQL& journal) : Journal(journal) { Journal.Run("PRAGMA foreign_keys=OFF;"); }
    ~ForeignKeysOff()
    {
        try
        {
            Journal.Run("PRAGMA foreign_keys=ON;");
        }
        catch (const std::exception&)
        {
            // The connection is closed next.
        }
    }
    ForeignKeysOff(const ForeignKeysOff&) = delete;
    ForeignKeysOff& operator=(const ForeignKeysOff&) = delete;

  private:
    const SQL& Journal;
};

// The rows whose references lead nowhere.
Rows BrokenReferences(const SQL& journal)
{
    Rows rows;
    Statement check(journal, "PRAGMA foreign_key_check;");
    while (check.Step())
        rows.insert(check.Text(0) + ' ' + check.Text(1) + ' ' + check.Text(2) + ' ' + check.Text(3));
    return rows;
}

void RequireUnchanged(const SQL& journal, const std::string& path, const UndoRecord& record)
{
    if (journal.FileHeader() == record.Header)
        return;
    const std::string more =
        record.Summaries.size() > 1 ? " and " + std::to_string(record.Summaries.size() - 1) + " more" : "";
    throw Refusal(path + ": undo: the journal has changed since " + InQuotes(record.Summaries.front()) + more +
                  NothingChanged);
}

void ChangeRowsBack(sqlite3* connection, const SQL& journal, const std::string& path, const UndoRecord& record)
{
    const ForeignKeysOff off(journal);
    Transaction transaction(journal);
    RequireUnchanged(journal, path, record);
    const Rows before = BrokenReferences(journal);
    try
    {
        ApplyInverse(connection, record.Content);
    }
    catch (const Refusal& reason)
    {
        throw Refusal(path + ": undo: " + reason.what() + NothingChanged);
    }
    const Rows after = BrokenReferences(journal);
    if (!std::includes(before.begin(), before.end(), after.begin(), after.end()))
        throw Refusal(path + ": undo: it would leave records without their plant" + NothingChanged);
    transaction.Commit();
}

void CopyBack(const SQL& journal, const std::string& path, const UndoStore& store, const UndoRecord& record)
{
    const std::string copyPath = store.CopyPath();
    std::vector<PlantFileFinding> findings;
    if (const PlantFileResult result = CheckPlantDatabase(copyPath, findings); !result)
        throw Refusal(result.Error + NothingChanged);
    for (const PlantFileFinding& finding : findings)
        if (finding.Kind == PlantFindingKind::Damage)
            throw Refusal(copyPath + ": checking: " + finding.Description + NothingChanged);
    PlantDatabase copy;
    if (std::string error; !copy.Open(copyPath, &error))
        throw Refusal(copyPath + ": opening: " + error + NothingChanged);
    if (SQL(copy.NativeHandle(), copyPath + ": reading").FileHeader() != record.Content)
        throw Refusal(copyPath + ": not the journal from before " + InQuotes(record.Summaries.front()) +
                      NothingChanged);
    journal.LockUntilClosed();
    RequireUnchanged(journal, path, record);
    journal.CopyPagesFrom(copy.NativeHandle());
}

// Another process may have stored a new record since the journal was changed back.
void RemoveRecord(const SQL& journal, const UndoStore& store, const UndoRecord& record)
{
    const Transaction transaction(journal);
    if (store.Load() == record)
        store.Remove();
}

} // namespace

UndoRecording::UndoRecording(sqlite3* connection, std::string path)
    : Connection(connection), Path(std::move(path)), DataVersion(SQL(connection, Path + ": reading").DataVersion()),
      Recorder(connection)
{
}

void UndoRecording::Save(const std::vector<std::string>& summaries) const
{
    if (Recorder.IsEmpty())
        return;
    const SQL journal(Connection, Path + ": locking", "");
    const Transaction transaction(journal); // keeps other programs from writing, and from storing a record
    const bool onlyWriter = journal.DataVersion() == DataVersion;
    const std::string changes = Recorder.ChangeSet();
    if (changes.empty())
        return;
    if (!onlyWriter)
        throw Refusal(Path + ": another program wrote to it at the same time");
    const UndoStore store(Path);
    const std::vector<std::string> failed = {"The stored part of a command that failed"};
    store.Save({store.Journal(), journal.FileHeader(), summaries.empty() ? failed : summaries,
                UndoRecord::Kind::ChangeSet, changes});
}

void UndoRecording::SaveCopy(const std::vector<std::string>& summaries, const std::string& copy) const
{
    PlantDatabase before;
    if (std::string error; !before.Open(copy, &error))
        throw Refusal(copy + ": opening: " + error);
    const std::string header = SQL(before.NativeHandle(), copy + ": reading", "").FileHeader();
    before.Close();
    const UndoStore store(Path);
    store.Save({store.Journal(), SQL(Connection, Path + ": reading", "").FileHeader(), summaries,
                UndoRecord::Kind::Copy, header},
               copy);
}

void RequireUnchangedSince(sqlite3* connection, const std::string& path, const UndoRecord& record)
{
    const SQL journal(connection, path + ": undo");
    const Transaction transaction(journal);
    RequireUnchanged(journal, path, record);
}

void Undo(sqlite3* connection, const std::string& path, const UndoStore& store, const UndoRecord& record)
{
    const SQL journal(connection, path + ": undo");
    if (record.Kept == UndoRecord::Kind::Copy)
        CopyBack(journal, path, store, record);
    else
        ChangeRowsBack(connection, journal, path, record);
    try
    {
        RemoveRecord(journal, store, record);
    }
    catch (const Refusal&)
    {
        // The record stays. The journal has changed since, so that a further `undo` refuses it.
    }
}

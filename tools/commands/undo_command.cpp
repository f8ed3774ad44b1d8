#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/undo.h"
#include "refusal.h"
#include "terminal/printable.h"
#include "terminal/prompt.h"

#include <iostream>
#include <memory>
#include <utility>

namespace
{

void ConfirmUndo(const UndoRecord& record)
{
    for (const std::string& summary : record.Summaries)
        std::cerr << Printable(summary) << '\n';
    const std::size_t count = record.Summaries.size();
    if (!Confirm(count == 1 ? "Undo this change?" : "Undo these " + std::to_string(count) + " changes?", "--yes"))
        throw Refusal("nothing was undone; answer y, or pass --yes");
}

void UndoLastChange(Session& session, bool confirmed)
{
    if (!CanRecordChanges())
        throw Refusal("undo: this command uses an SQLite library without the session extension, so it records no "
                      "changes; nothing was changed; edit or delete the records instead");
    session.Read();
    const std::string path = session.Path();
    const UndoStore store(path);
    const std::optional<UndoRecord> record = store.Load();
    if (!record)
        throw Refusal(path + ": nothing to undo; only the last change that plantjournal made can be undone; what "
                             "undo needs is stored outside the journal file, for each user");
    RequireUnchangedSince(session.Connection(), path, *record); // before the question, and again after it
    if (!confirmed)
        ConfirmUndo(*record);
    Undo(session.Connection(), path, store, *record);
    session.AddSummary("Undone"); // a change, after which a backup is offered
    if (session.AsJSON)
    {
        JSON object = JSON::Object();
        object.Add("Undone", JSONOf(record->Summaries));
        return PrintJSON(object);
    }
    for (const std::string& summary : session.Quiet ? std::vector<std::string>() : record->Summaries)
        std::cout << "Undone: " << Printable(summary) << '\n';
}

} // namespace

void AddUndoCommand(CLI::App& program, Session& session)
{
    auto confirmed = std::make_shared<bool>(false);
    CLI::App& command = AddCommand(program, "undo",
                                   "Undo the last change that plantjournal made; refused if something has changed the "
                                   "journal since",
                                   "undo\nundo --yes", [&session, confirmed] { UndoLastChange(session, *confirmed); });
    AddSwitch(command, "-y,--yes", "undo without asking", *confirmed);
}

#include "commands/note_shortcut.h"

#include "command_line/parser.h"
#include "commands/check_values.h"
#include "commands/field_flags.h"
#include "commands/outcome.h"
#include "commands/selection.h"
#include "commands/summary.h"
#include "journal/find_record.h"
#include "journal/sql.h"
#include "record/text.h"
#include "refusal.h"

#include <memory>

namespace
{

struct NoteRequest
{
    Selection Plants; // the last of the words is the text
    std::optional<FieldFlags<PlantJournalEntry>> Fields;
};

// Removes the text from the end of the words and returns it.
std::string TakeText(const std::vector<Plant>& plants, Selection& selection)
{
    if (selection.Named.empty() || (selection.Named.size() == 1 && !selection.HasSelectors()))
        RefuseUsage("the text is missing; write it after the plants");
    std::string text = selection.Named.back();
    if (IsExactName(plants, text))
        RefuseUsage(InQuotes(text) + " is a plant; write the text after the plants");
    selection.Named.pop_back();
    return text;
}

std::vector<Plant> PlantsOf(const std::vector<Plant>& plants, const Selection& selection)
{
    try
    {
        return SelectPlants(plants, selection);
    }
    catch (const Refusal& refusal)
    {
        if (selection.Named.size() < 2)
            throw;
        throw Refusal(refusal.what() + std::string("\nA text of several words needs quotes."));
    }
}

// Stores the entries of all plants or nothing.
void StoreAll(Session& session, const std::vector<Plant>& plants, std::vector<PlantJournalEntry>& entries)
{
    PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": the journal entries could not be stored");
    Transaction transaction(journal);
    for (std::size_t i = 0; i < plants.size(); ++i)
        session.Require(repository.CreatePlantJournalEntry(entries[i]),
                        "the journal entry of " + DisplayName(plants[i]) +
                            " could not be stored, and nothing was changed");
    transaction.Commit();
}

void AddNotes(Session& session, const NoteRequest& request)
{
    const std::vector<Plant> all = AllPlants(session);
    Selection selection = request.Plants;
    PlantJournalEntry pattern;
    request.Fields->Apply(session, FlagsFor::Add, pattern);
    pattern.Details = TakeText(all, selection);
    const std::vector<Plant> plants = PlantsOf(all, selection);
    std::vector<PlantJournalEntry> entries;
    Notices notices;
    for (const Plant& plant : plants)
    {
        entries.push_back(pattern);
        entries.back().PlantUUID = plant.UUID;
        Append(notices, CheckValues(entries.back(), plant, session.Flags));
    }
    PrintNotices(notices);
    StoreAll(session, plants, entries);
    Outcome outcome(session, selection.RecordsStored());
    for (std::size_t i = 0; i < plants.size(); ++i)
    {
        outcome.Add(SummaryOfNew(plants[i], entries[i]), std::to_string(entries[i].ID),
                    RecordJSON(entries[i], plants[i]));
    }
    outcome.Finish();
}

} // namespace

void AddNoteShortcut(CLI::App& noteGroup, Session& session)
{
    auto request = std::make_shared<NoteRequest>();
    RunWithoutCommand(noteGroup,
                      "note Basil \"Four new pairs of leaves\"\n"
                      "note --tent Big \"New lamp\" --type milestone --date yesterday",
                      [&session, request] { AddNotes(session, *request); });
    AddArguments(noteGroup, "PLANT", "plants, then the text of the entry", request->Plants.Named, Need::Optional);
    AddSelectors(noteGroup, request->Plants);
    request->Fields.emplace(noteGroup, FlagsFor::Add, "Details");
}

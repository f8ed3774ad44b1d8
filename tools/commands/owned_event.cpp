#include "commands/owned_event.h"

#include "journal/sql.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

namespace
{

struct Owner
{
    std::int64_t ID = 0;
    std::string Plant;
};

std::optional<Owner> OwnerIn(const Session& session, const std::string& table, std::int64_t event)
{
    const SQL journal(session.Connection(), session.Path() + ": reading the owner of an event");
    Statement query(journal, "SELECT ID,PlantUUID FROM " + table + " WHERE TimelineEventID=?;");
    query.Bind(1, event);
    if (!query.Step())
        return std::nullopt;
    return Owner{query.Number(0), query.Text(1)};
}

// A word of a shell's command line.
std::string Word(const std::string& text)
{
    return text.find_first_of(" \t\n\"'\\$`&|;<>()*?[]{}~#!") == std::string::npos ? text : InQuotes(text);
}

[[noreturn]] void Refuse(const PlantEvent& event, const std::string& owner, const std::string& command,
                         const std::string& operation)
{
    throw Refusal("timeline event " + std::to_string(event.ID) + ": it belongs to " + owner + "; `plantjournal " +
                  Printable(command) + "` " + operation + "s both");
}

} // namespace

void RefuseOwnedEvent(Session& session, const std::string& plant, const PlantEvent& event, const std::string& operation)
{
    const auto named = [&](const Owner& owner) { return Word(owner.Plant == event.PlantUUID ? plant : owner.Plant); };
    if (const auto care = OwnerIn(session, "PlantCareEntries", event.ID))
        Refuse(event, "care entry " + std::to_string(care->ID),
               "care " + operation + ' ' + named(*care) + ' ' + std::to_string(care->ID), operation);
    if (const auto harvest = OwnerIn(session, "HarvestRecords", event.ID))
        Refuse(event, "a harvest record", "harvest " + operation + ' ' + named(*harvest), operation);
}

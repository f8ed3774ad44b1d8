#include "access.h"
#include "damage.h"
#include "plant_database.h"
#include "schema.h"
#include "system.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace plant_file
{

namespace
{

void AddFinding(std::vector<PlantFileFinding>& findings, PlantFindingKind kind, const std::string& table,
                std::int64_t rowID, const std::string& description)
{
    findings.push_back({kind, table, rowID, description});
}

// The checks of the rows. Call them in one ReadTransaction.
struct RowChecks
{
    sqlite3* Database;
    std::vector<PlantFileFinding>& Findings;

    void AddFinding(PlantFindingKind kind, const std::string& table, std::int64_t rowID,
                    const std::string& description) const
    {
        plant_file::AddFinding(Findings, kind, table, rowID, description);
    }

    void ForEachRowOf(const std::string& table, const std::string& sql,
                      const std::function<void(sqlite3_stmt*)>& read) const
    {
        ForEachRow(Database, "checking " + table, sql, read);
    }

    // Links to mothers and events have findings of their own kinds.
    void CheckForeignKeys() const
    {
        ForEachRow(Database, "checking the foreign keys", "PRAGMA foreign_key_check;",
                   [&](sqlite3_stmt* row)
                   {
                       const std::string table = ColumnText(row, 0);
                       const std::string parent = ColumnText(row, 2);
                       if (table != parent && parent != "PlantEvents")
                           AddFinding(PlantFindingKind::ForeignKey, table, sqlite3_column_int64(row, 1),
                                      "It refers to a row of " + parent + " that does not exist.");
                   });
    }

    template <typename Enum>
    void CheckNames(const std::string& table, const std::string& column, Enum (*fromName)(const std::string&),
                    const char* (*nameOf)(Enum)) const
    {
        ForEachRowOf(table, "SELECT ID," + column + " FROM " + table + ';',
                     [&](sqlite3_stmt* row)
                     {
                         const std::string name = ColumnText(row, 1);
                         const std::string read = nameOf(fromName(name));
                         if (read != name)
                             AddFinding(PlantFindingKind::UnknownName, table, sqlite3_column_int64(row, 0),
                                        "Its " + column + ' ' + QuotedExcerpt(name) + " is unknown and reads as " +
                                            QuotedExcerpt(read) + '.');
                     });
    }

    void CheckSeverities() const
    {
        ForEachRowOf("PlantHealthObservations",
                     "SELECT ID,Severity FROM PlantHealthObservations WHERE COALESCE(Severity,0) NOT BETWEEN 1 AND 5;",
                     [&](sqlite3_stmt* row)
                     {
                         AddFinding(PlantFindingKind::Severity, "PlantHealthObservations", sqlite3_column_int64(row, 0),
                                    "Its severity " + QuotedExcerpt(ColumnText(row, 1)) + " is not from 1 to 5.");
                     });
    }

    void CheckMothers() const
    {
        ForEachRowOf(
            "Plants",
            "SELECT ID,MotherPlantID FROM Plants WHERE MotherPlantID NOT IN (SELECT ID FROM Plants) ORDER BY ID;",
            [&](sqlite3_stmt* row)
            {
                AddFinding(PlantFindingKind::MissingMother, "Plants", sqlite3_column_int64(row, 0),
                           "Its mother, row " + ColumnText(row, 1) + ", does not exist.");
            });
    }

    void CheckLineage() const
    {
        std::vector<std::int64_t> clones;
        std::unordered_map<std::int64_t, std::int64_t> mothers;
        ForEachRowOf("Plants", "SELECT ID,MotherPlantID FROM Plants WHERE MotherPlantID IS NOT NULL ORDER BY ID;",
                     [&](sqlite3_stmt* row)
                     {
                         clones.push_back(sqlite3_column_int64(row, 0));
                         mothers[clones.back()] = sqlite3_column_int64(row, 1);
                     });
        std::unordered_map<std::int64_t, std::int64_t> firstVisits; // by plant: the clone whose walk visited it first
        for (const std::int64_t clone : clones)
        {
            std::int64_t current = clone;
            while (mothers.count(current) != 0 && firstVisits.emplace(current, clone).second)
                current = mothers[current];
            if (mothers.count(current) == 0 || firstVisits[current] != clone)
                continue;
            const std::int64_t first = current; // this walk visited it twice
            do
            {
                AddFinding(PlantFindingKind::LineageCycle, "Plants", current, "It descends from itself.");
                current = mothers[current];
            } while (current != first);
        }
    }

    void CheckStrains() const
    {
        ForEachRowOf("Plants",
                     "SELECT ID,Strain FROM Plants WHERE Strain<>'' AND "
                     "Strain NOT IN (SELECT Name FROM Strains WHERE Name IS NOT NULL) ORDER BY ID;",
                     [&](sqlite3_stmt* row)
                     {
                         AddFinding(PlantFindingKind::MissingStrain, "Plants", sqlite3_column_int64(row, 0),
                                    "Its strain " + QuotedExcerpt(ColumnText(row, 1)) + " does not exist.");
                     });
    }

    // The row begins with the owner's ID, its link, and the event's ID, plant, date, type and details.
    void CompareEvent(sqlite3_stmt* row, const std::string& table, const PlantEvent& expected) const
    {
        const std::int64_t rowID = sqlite3_column_int64(row, 0);
        const std::string link = ColumnText(row, 1);
        if (link.empty())
            return AddFinding(PlantFindingKind::MissingEvent, table, rowID, "It has no event.");
        if (sqlite3_column_type(row, 2) == SQLITE_NULL)
            return AddFinding(PlantFindingKind::MissingEvent, table, rowID,
                              "Its event, row " + link + ", does not exist.");
        std::string differences;
        const auto compare = [&](const char* what, int column, const std::string& text)
        {
            if (ColumnText(row, column) == text)
                return;
            if (!differences.empty())
                differences += " and ";
            differences += what;
        };
        compare("plant", 3, expected.PlantUUID);
        compare("date", 4, expected.EventDate);
        compare("type", 5, PlantEventTypeName(expected.Type));
        compare("details", 6, expected.Details);
        if (!differences.empty())
            AddFinding(PlantFindingKind::EventDiffers, table, rowID,
                       "Its event, row " + link + ", differs in " + differences + '.');
    }

    void CheckCareEvents() const
    {
        PlantDatabase closed; // composing the details reads no file
        const PlantRepository composer(closed);
        ForEachRowOf("PlantCareEntries",
                     "SELECT o.ID,o.TimelineEventID,e.ID,e.PlantUUID,e.EventDate,e.EventType,e.Details,o.PlantUUID,"
                     "o.CareDate,o.Action,o.Product,o.AmountMl,o.EC,o.PH,o.RunoffMl,o.Notes "
                     "FROM PlantCareEntries o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID;",
                     [&](sqlite3_stmt* row)
                     {
                         PlantCareEntry entry;
                         entry.Action = PlantCareActionFromName(ColumnText(row, 9));
                         entry.Product = ColumnText(row, 10);
                         entry.AmountMl = sqlite3_column_double(row, 11);
                         entry.EC = sqlite3_column_double(row, 12);
                         entry.PH = sqlite3_column_double(row, 13);
                         entry.RunoffMl = sqlite3_column_double(row, 14);
                         entry.Notes = ColumnText(row, 15);
                         PlantEvent expected;
                         expected.PlantUUID = ColumnText(row, 7);
                         expected.EventDate = ColumnText(row, 8);
                         expected.Type =
                             entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
                         expected.Details = composer.CareTimelineDetails(entry);
                         CompareEvent(row, "PlantCareEntries", expected);
                     });
    }

    // The library composes a harvest's details only when it saves the record: each is saved to a journal in memory.
    void CheckHarvestEvents(bool withSeedYield) const
    {
        constexpr const char* step = "composing the details of a harvest";
        PlantDatabase journal;
        PlantRepository repository(journal);
        Plant plant;
        const auto require = [&](bool done)
        {
            if (!done)
                Fail(step, sqlite3_errmsg(journal.NativeHandle()));
        };
        require(journal.Open(":memory:"));
        require(repository.CreatePlant(plant));
        HarvestRecord record;
        const auto compare = [&](sqlite3_stmt* row)
        {
            record.WetWeightG = sqlite3_column_double(row, 9);
            record.DryWeightG = sqlite3_column_double(row, 10);
            record.QualityRating = sqlite3_column_double(row, 11);
            record.CureOutcome = ColumnText(row, 12);
            record.Notes = ColumnText(row, 13);
            record.SeedYield = sqlite3_column_int(row, 14);
            require(repository.SaveHarvestRecord(plant, record));
            PlantEvent expected;
            expected.PlantUUID = ColumnText(row, 7);
            expected.EventDate = ColumnText(row, 8);
            expected.Type = PlantEventType::Harvest;
            ForEachRow(journal.NativeHandle(), step, "SELECT Details FROM PlantEvents;",
                       [&](sqlite3_stmt* event) { expected.Details = ColumnText(event, 0); });
            CompareEvent(row, "HarvestRecords", expected);
        };
        ForEachRowOf("HarvestRecords",
                     std::string("SELECT o.ID,o.TimelineEventID,e.ID,e.PlantUUID,e.EventDate,e.EventType,e.Details,"
                                 "o.PlantUUID,o.HarvestDate,o.WetWeightG,o.DryWeightG,o.QualityRating,o.CureOutcome,"
                                 "o.Notes,") +
                         (withSeedYield ? "o.SeedYield" : "0") +
                         " FROM HarvestRecords o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID;",
                     compare);
    }

    // Their files are looked for after the transaction, so that a slow disk does not keep writers waiting.
    std::vector<PlantPhoto> ReadPhotos() const
    {
        std::vector<PlantPhoto> photos;
        ForEachRowOf("PlantPhotos", "SELECT ID,FilePath FROM PlantPhotos;",
                     [&](sqlite3_stmt* row)
                     {
                         PlantPhoto& photo = photos.emplace_back();
                         photo.ID = sqlite3_column_int64(row, 0);
                         photo.FilePath = ColumnText(row, 1);
                     });
        return photos;
    }
};

// Checks the tables that the journal has, and returns its photos.
std::vector<PlantPhoto> CheckRows(sqlite3* db, std::vector<PlantFileFinding>& findings)
{
    const SchemaComparison schema = CompareSchema(db);
    RequireJournal(schema.Kind, schema.Reasons);
    const auto has = [&](std::initializer_list<const char*> tables)
    { return std::all_of(tables.begin(), tables.end(), [&](const char* table) { return schema.HasTable(table); }); };

    const RowChecks rows{db, findings};
    FindDamage(db, findings);
    rows.CheckForeignKeys();
    if (has({"Plants"}))
        rows.CheckNames("Plants", "Stage", PlantStageFromName, PlantStageName);
    if (schema.HasColumn("Plants", "Sex"))
        rows.CheckNames("Plants", "Sex", PlantSexFromName, PlantSexName);
    if (has({"PlantEvents"}))
        rows.CheckNames("PlantEvents", "EventType", PlantEventTypeFromName, PlantEventTypeName);
    if (has({"PlantCareEntries"}))
        rows.CheckNames("PlantCareEntries", "Action", PlantCareActionFromName, PlantCareActionName);
    if (has({"PlantJournalEntries"}))
        rows.CheckNames("PlantJournalEntries", "Type", PlantJournalTypeFromName, PlantJournalTypeName);
    if (has({"PlantHealthObservations"}))
        rows.CheckSeverities();
    if (has({"Plants"}))
    {
        rows.CheckMothers();
        rows.CheckLineage();
    }
    if (has({"Plants", "Strains"}))
        rows.CheckStrains();
    if (has({"PlantCareEntries", "PlantEvents"}))
        rows.CheckCareEvents();
    if (has({"HarvestRecords", "PlantEvents"}))
        rows.CheckHarvestEvents(schema.HasColumn("HarvestRecords", "SeedYield"));
    return has({"PlantPhotos"}) ? rows.ReadPhotos() : std::vector<PlantPhoto>();
}

void CheckPhotoFile(const PlantPhoto& photo, const std::filesystem::path& directory,
                    std::vector<PlantFileFinding>& findings)
{
    std::error_code error;
    if (std::filesystem::is_regular_file(directory / PathOfText(photo.FilePath), error))
        return;
    std::string reason = "not a regular file";
    if (error)
        reason = error.message();
    AddFinding(findings, PlantFindingKind::MissingPhotoFile, "PlantPhotos", photo.ID,
               "Its file " + QuotedExcerpt(photo.FilePath) + " cannot be found: " + reason + '.');
}

void CheckFile(const std::filesystem::path& file, std::vector<PlantFileFinding>& findings)
{
    std::vector<PlantPhoto> photos;
    {
        const Connection connection(file, SQLITE_OPEN_READONLY);
        const ReadTransaction reading(connection.Handle(), ReadingSchema);
        photos = CheckRows(connection.Handle(), findings);
    }
    for (const PlantPhoto& photo : photos)
        CheckPhotoFile(photo, file.parent_path(), findings);
}

} // namespace

} // namespace plant_file

PlantFileResult CheckPlantDatabase(const std::string& path, std::vector<PlantFileFinding>& out)
{
    std::vector<PlantFileFinding> findings;
    PlantFileResult result =
        plant_file::Attempt(path, [&] { plant_file::CheckFile(plant_file::AbsolutePath(path), findings); });
    out = std::move(findings);
    return result;
}

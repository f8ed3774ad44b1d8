#include "transfer/copy_builder.h"

#include "journal/sql.h"
#include "plant_database.h"
#include "record/text.h"
#include "refusal.h"

#include <algorithm>
#include <unordered_map>
#include <variant>

namespace
{

template <typename Record> std::string InsertStatementText()
{
    std::vector<std::string> columns;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Used != Use::Mother) // LinkMothers() sets it when all plants are there
            columns.emplace_back(field.Column);
    const std::vector<std::string> parameters(columns.size(), "?");
    return std::string("INSERT INTO ") + Describe<Record>().Table + "(" + Joined(columns, ",") + ") VALUES(" +
           Joined(parameters, ",") + ");";
}

enum class RowID
{
    Keep,
    Assign
};

// Inserts records through one prepared statement.
template <typename Record> class RecordInserter
{
  public:
    explicit RecordInserter(const SQL& copy) : Copy(copy), Insertion(copy, InsertStatementText<Record>()) {}

    // Returns the row ID.
    std::int64_t Insert(const Record& record, RowID id)
    {
        int index = 0;
        for (const Field<Record>& field : Describe<Record>().Fields)
            switch (field.Used)
            {
            case Use::Mother:
                break;
            case Use::RowID:
                ++index;
                if (id == RowID::Keep) // otherwise it is NULL, and SQLite assigns one
                    Insertion.Bind(index, record.ID);
                break;
            case Use::Link:
                ++index;
                if (const auto event = *std::get<const std::int64_t*>(ValueIn(field, record)); event != 0)
                    Insertion.Bind(index, event);
                break;
            default:
                BindValue(++index, ValueIn(field, record));
            }
        Insertion.Step();
        Insertion.Reset();
        return Copy.LastRowID();
    }

  private:
    void BindValue(int index, const ConstValueRef& value)
    {
        if (const auto* const number = std::get_if<const double*>(&value))
            Insertion.Bind(index, **number);
        else if (const auto* const text = std::get_if<const std::string*>(&value))
            Insertion.Bind(index, **text);
        else
            Insertion.Bind(index, TextOf(value)); // the type of the column makes a number of the digits
    }

    const SQL& Copy;
    Statement Insertion;
};

class CopyBuilder
{
  public:
    CopyBuilder(PlantDatabase& journal, ImportedTables& tables, const std::function<void()>& onRow)
        : Repository(journal), Copy(journal.NativeHandle(), journal.Path() + ": building the copy"), Tables(tables),
          OnRow(onRow)
    {
    }

    AddedCounts Build()
    {
        // The copy is discarded after a failure, so that it needs neither a rollback journal nor syncing.
        Copy.Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-65536;");
        Copy.Run("BEGIN;");
        const bool hasEvents = TableOf<PlantEvent>(Tables).Given;
        ForEachTable(Tables,
                     [&]<typename Record>(ImportedTable<Record>& table)
                     {
                         if (hasEvents || !OwnsEvent<Record>)
                             InsertTable(table);
                     });
        LinkMothers();
        if (!TableOf<Strain>(Tables).Given)
            RegisterStrains();
        if (!hasEvents)
            EnterCareEntries();
        Copy.Run("COMMIT;");
        if (!hasEvents)
            EnterHarvestRecords();
        return Added;
    }

  private:
    // Rows keep their IDs if all have one and none is taken. Otherwise all get new ones: in the order of their IDs if
    // all have one, else in the order of the source.
    template <typename Record> RowID SortByIDs(std::vector<ImportedRow<Record>>& rows)
    {
        if (std::any_of(rows.begin(), rows.end(), [](const auto& row) { return row.Value.ID == 0; }))
            return RowID::Assign;
        std::sort(rows.begin(), rows.end(),
                  [](const auto& left, const auto& right) { return left.Value.ID < right.Value.ID; });
        Statement taken(Copy, std::string("SELECT 1 FROM ") + Describe<Record>().Table + " WHERE ID=?;");
        const auto isTaken = [&](const ImportedRow<Record>& row)
        {
            taken.Reset();
            taken.Bind(1, row.Value.ID);
            return taken.Step();
        };
        return std::any_of(rows.begin(), rows.end(), isTaken) ? RowID::Assign : RowID::Keep;
    }

    template <typename Record> void InsertTable(ImportedTable<Record>& table)
    {
        const RowID rowIDs = SortByIDs(table.Rows);
        RecordInserter<Record> inserter(Copy);
        for (ImportedRow<Record>& row : table.Rows)
        {
            OnRow();
            if constexpr (OwnsEvent<Record>)
                if (row.Value.TimelineEventID != 0)
                    row.Value.TimelineEventID = NewEventIDs.at(row.Value.TimelineEventID);
            const std::int64_t id = inserter.Insert(row.Value, rowIDs);
            if constexpr (std::is_same_v<Record, PlantEvent>)
                NewEventIDs[row.Value.ID] = id;
        }
        Count<Record>() += static_cast<std::int64_t>(table.Rows.size());
    }

    // Does what PlantRepository::CreatePlantCareEntry does, with two statements for all entries.
    void EnterCareEntries()
    {
        ImportedTable<PlantCareEntry>& table = TableOf<PlantCareEntry>(Tables);
        RecordInserter<PlantEvent> events(Copy);
        RecordInserter<PlantCareEntry> entries(Copy);
        for (ImportedRow<PlantCareEntry>& row : table.Rows)
        {
            OnRow();
            PlantCareEntry& entry = row.Value;
            if (entry.PlantUUID.empty())
                Refuse(table, row);
            const auto type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
            entry.TimelineEventID = events.Insert(
                {0, entry.PlantUUID, entry.CareDate, type, Repository.CareTimelineDetails(entry)}, RowID::Assign);
            entries.Insert(entry, RowID::Assign);
        }
        Count<PlantEvent>() += static_cast<std::int64_t>(table.Rows.size());
        Count<PlantCareEntry>() += static_cast<std::int64_t>(table.Rows.size());
    }

    // The library has no other way to compose the event of a harvest record. It begins a transaction of its own.
    void EnterHarvestRecords()
    {
        ImportedTable<HarvestRecord>& table = TableOf<HarvestRecord>(Tables);
        for (ImportedRow<HarvestRecord>& row : table.Rows)
        {
            OnRow();
            Plant plant;
            plant.UUID = row.Value.PlantUUID;
            row.Value.ID = 0;
            if (!Repository.SaveHarvestRecord(plant, row.Value))
                Refuse(table, row);
        }
        Count<PlantEvent>() += static_cast<std::int64_t>(table.Rows.size());
        Count<HarvestRecord>() += static_cast<std::int64_t>(table.Rows.size());
    }

    void LinkMothers()
    {
        Statement link(Copy, "UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE UUID=?) WHERE UUID=?;");
        for (const ImportedRow<Plant>& row : TableOf<Plant>(Tables).Rows)
        {
            if (row.Value.MotherPlantUUID.empty())
                continue;
            link.Bind(1, row.Value.MotherPlantUUID);
            link.Bind(2, row.Value.UUID);
            link.Step();
            link.Reset();
        }
    }

    // Does for the strains of the plants what PlantRepository::CreatePlant does.
    void RegisterStrains()
    {
        const std::int64_t before = Copy.Number("SELECT COUNT(*) FROM Strains;");
        Statement insertion(Copy, "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;");
        for (const ImportedRow<Plant>& row : TableOf<Plant>(Tables).Rows)
        {
            if (row.Value.Strain.empty())
                continue;
            insertion.Bind(1, row.Value.Strain);
            insertion.Step();
            insertion.Reset();
        }
        Count<Strain>() += Copy.Number("SELECT COUNT(*) FROM Strains;") - before;
    }

    template <typename Record>
    [[noreturn]] static void Refuse(const ImportedTable<Record>& table, const ImportedRow<Record>& row)
    {
        throw Refusal(table.Place(row) +
                      "the journal cannot store this row; nothing was changed; correct it and import again");
    }

    template <typename Record> std::int64_t& Count() { return std::get<AddedRows<Record>>(Added).Count; }

    PlantRepository Repository;
    const SQL Copy;
    ImportedTables& Tables;
    const std::function<void()>& OnRow;
    std::unordered_map<std::int64_t, std::int64_t> NewEventIDs; // by the ID in the source
    AddedCounts Added;
};

} // namespace

AddedCounts AddRows(const std::string& path, ImportedTables& tables, const std::function<void()>& onRow)
{
    PlantDatabase copy;
    if (std::string error; !copy.Open(path, &error))
        throw Refusal(path + ": opening the copy: " + error +
                      "; nothing was changed; `plantjournal check` examines the journal");
    return CopyBuilder(copy, tables, onRow).Build();
}

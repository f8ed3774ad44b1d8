#include "damaged_journal.h"

#include "free_list.h"
#include "index_entries.h"
#include "old_event.h"
#include "page_format.h"
#include "page_rows.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>

namespace plant_file
{

namespace
{

// How many of the rows of a table an index of it may lack: a damaged row ID is not in the index.
constexpr std::size_t MostMissing = 10; // percent

// Whether the definition of an entry of the schema begins with this statement and the name.
bool IsDefinedBy(std::string_view statement, const std::string& name, const std::string& definition)
{
    constexpr std::string_view quotes = "\"'`[";
    constexpr std::string_view behindName = "\"'`]( \t\r\n";
    if (definition.compare(0, statement.size(), statement) != 0)
        return false;
    const std::size_t at =
        statement.size() + (quotes.find(definition[statement.size()]) != std::string_view::npos ? 1 : 0);
    return definition.compare(at, name.size(), name) == 0 &&
           behindName.find(definition[at + name.size()]) != std::string_view::npos;
}

// Whether the type and the name of an entry of the schema agree with its definition. Other programs may have added
// tables, views and triggers. No table depends on an index.
bool IsConsistent(const Values& entry)
{
    constexpr std::pair<std::string_view, std::string_view> statements[] = {
        {"table", "CREATE TABLE "}, {"view", "CREATE VIEW "}, {"trigger", "CREATE TRIGGER "}};
    const std::string& type = entry[0].Text;
    return type == "index" || std::any_of(std::begin(statements), std::end(statements),
                                          [&](const auto& statement) {
                                              return type == statement.first &&
                                                     IsDefinedBy(statement.second, entry[1].Text, entry[4].Text);
                                          });
}

} // namespace

DamagedJournal::DamagedJournal(const std::filesystem::path& path, const std::vector<JournalTable>& tables,
                               const PlantBackUpProgress& progress)
    : Bytes(path, progress)
{
    for (const JournalTable& table : tables)
        Tables.push_back({table, FormsOf(table), {}});
    Tables.push_back({SchemaTable(), FormsOf(SchemaTable()), {}});
    const std::optional<PageFormat> format = FindPageFormat(Bytes, Tables);
    bool isJournal = false;
    if (format)
    {
        Pages.emplace(Bytes, *format);
        Map.emplace(*Pages, Tables, FindFreePages(*Pages));
        FollowTables(ReadSchema());
        for (std::size_t table = 0; table + 1 < Tables.size(); ++table)
            if (!Map->LeavesOf(table).empty())
                isJournal = true;
    }
    if (!isJournal)
        Fail("", "no table of a journal was found in it");
}

// The result is whether no damage was found in the schema.
bool DamagedJournal::ReadSchema()
{
    const std::size_t schema = Tables.size() - 1;
    Map->FollowTree(schema, 1);
    bool isWhole = Tables[schema].Gaps.empty();
    Map->AssignOrphans();
    for (const PageNumber number : Map->LeavesOf(schema))
    {
        const PageRows rows =
            ReadPageRows(*Pages, Pages->Read(number), Tables[schema].Table, Tables[schema].Forms.front());
        isWhole = rows.IsWhole && isWhole;
        for (const PageRow& row : rows.List)
        {
            AddSchemaEntry(row.Stored);
            isWhole = IsConsistent(row.Stored) && isWhole;
        }
    }
    return isWhole;
}

void DamagedJournal::AddSchemaEntry(const Values& values)
{
    SchemaEntry& entry = Schema.emplace_back();
    entry.Type = values[0].Text;
    entry.Name = values[1].Text;
    entry.Table = values[2].Text;
    entry.Root = static_cast<PageNumber>(values[3].Integer);
    const std::string& definition = values[4].Text;
    for (MappedTable& table : Tables)
        if (entry.Type == "table" && entry.Name == table.Table.Name)
        {
            if (const std::optional<RowForm> form = FormOfDefinition(table.Table, definition))
                table.Forms.assign(1, *form);
            if (entry.Name == "PlantEvents")
                HasOldEvents = IsDefinitionOfOldEvents(definition);
        }
}

void DamagedJournal::FollowTables(bool schemaIsWhole)
{
    for (std::size_t table = 0; table + 1 < Tables.size(); ++table)
    {
        const auto entry = std::find_if(Schema.begin(), Schema.end(),
                                        [&](const SchemaEntry& each)
                                        { return each.Type == "table" && each.Name == Tables[table].Table.Name; });
        if (entry != Schema.end())
            Map->FollowTree(table, entry->Root);
        else if (!schemaIsWhole)
            Tables[table].Gaps.emplace_back();
    }
    for (std::size_t table = 0; table + 1 < Tables.size(); ++table)
        CompareWithIndexes(table);
    Map->AssignOrphans();
    for (std::size_t table = 0; table + 1 < Tables.size(); ++table)
        ChooseForm(table);
}

void DamagedJournal::ForEachRowID(std::size_t table, const std::function<void(std::int64_t rowID)>& read)
{
    for (const PageNumber number : Map->LeavesOf(table))
        for (const std::optional<Cell>& cell : CellsOf(Pages->Read(number)))
            if (cell)
                read(cell->RowID);
}

// Whether a whole index has more entries than the pages of the table have rows. Needs no memory for them.
bool DamagedJournal::LacksRows(std::size_t table)
{
    std::int64_t found = 0;
    ForEachRowID(table, [&](std::int64_t /*rowID*/) { ++found; });
    for (const SchemaEntry& entry : Schema)
    {
        if (entry.Type != "index" || entry.Table != Tables[table].Table.Name)
            continue;
        std::int64_t indexed = 0;
        const bool isWhole =
            ForEachIndexEntry(*Pages, entry.Root, [&](const Values& /*values*/, std::int64_t /*rowID*/) { ++indexed; });
        if (isWhole)
            return indexed > found;
    }
    return false;
}

// An index can show that the pages of the table are not all of its pages, or that one of them lost rows. As many
// entries as rows can still be other row IDs, but then the index may be wrong.
void DamagedJournal::CompareWithIndexes(std::size_t table)
{
    if (!LacksRows(table))
        return;
    RowIDs found;
    ForEachRowID(table, [&](std::int64_t rowID) { found.insert(rowID); });
    const std::optional<RowIDs> indexed = IndexedRows(table, found);
    if (!indexed)
        return;
    if (Map->HasShallowLeaves(table) && indexed->size() * 100 > found.size() * (100 + MostMissing))
        Map->DistrustShallowLeaves(table);
    std::vector<std::int64_t> lost;
    std::copy_if(indexed->begin(), indexed->end(), std::back_inserter(lost),
                 [&](std::int64_t rowID) { return found.count(rowID) == 0; });
    Map->ExpectRows(table, lost);
}

// Without a definition, the rows themselves show in which order their columns are.
void DamagedJournal::ChooseForm(std::size_t table)
{
    constexpr std::int64_t fitting = 100; // more than a row has dates
    MappedTable& mapped = Tables[table];
    std::vector<std::int64_t> points(mapped.Forms.size());
    if (mapped.Forms.size() > 1)
        for (const PageNumber number : Map->LeavesOf(table))
        {
            const Page page = Pages->Read(number);
            for (const std::optional<Cell>& cell : CellsOf(page))
                if (const std::optional<Values> values = cell ? Pages->ReadValues(page, *cell) : std::nullopt)
                    for (std::size_t i = 0; i < points.size(); ++i)
                        if (FitsOnly(mapped.Table, mapped.Forms[i], *values))
                            points[i] += fitting + CountDates(mapped.Table, mapped.Forms[i], *values);
        }
    const auto best = std::max_element(points.begin(), points.end()) - points.begin();
    const RowForm form = mapped.Forms[static_cast<std::size_t>(best)];
    mapped.Forms.assign(1, form);
}

void DamagedJournal::CopyTable(std::size_t table, SalvagedJournal& journal)
{
    const MappedTable& mapped = Tables[table];
    const bool convertsEvents = HasOldEvents && mapped.Table.Name == "PlantEvents";
    std::int64_t damaged = 0;
    bool isWhole = mapped.Gaps.empty();
    const std::vector<PageNumber> leaves = Map->LeavesOf(table);
    const bool hasDoubtful = !leaves.empty() && Map->IsDoubtful(leaves.back());
    RowIDs copied; // only where the table has doubtful pages
    std::optional<RowIDs> indexed;
    bool isFirstDoubtful = true;
    for (const PageNumber number : leaves)
    {
        const bool isDoubtful = Map->IsDoubtful(number);
        if (isDoubtful && std::exchange(isFirstDoubtful, false))
            indexed = IndexedRows(table, copied);
        const PageRows rows = ReadPageRows(*Pages, Pages->Read(number), mapped.Table, mapped.Forms.front());
        damaged += rows.Damaged;
        isWhole = rows.IsWhole && isWhole;
        for (const PageRow& row : rows.List)
        {
            if (isDoubtful && (copied.count(row.RowID) != 0 || (indexed && indexed->count(row.RowID) == 0)))
                continue;
            if (hasDoubtful && !isDoubtful)
                copied.insert(row.RowID);
            Values values = InOrder(mapped.Table, mapped.Forms.front(), row.Stored);
            if (convertsEvents)
                ConvertOldEvent(values[mapped.Table.IndexOf("EventType")].Text,
                                values[mapped.Table.IndexOf("Details")].Text);
            journal.Add(table, row.RowID, values);
        }
        Bytes.AddDone(Pages->Format().PageSize);
    }
    if (!isWhole)
        journal.AddDamaged(table, damaged, AddEntriesOfIndexes(table, journal));
}

// The row IDs in an index of the table; std::nullopt where no index is whole and has the rows that were copied.
std::optional<DamagedJournal::RowIDs> DamagedJournal::IndexedRows(std::size_t table, const RowIDs& copied)
{
    for (const SchemaEntry& entry : Schema)
    {
        if (entry.Type != "index" || entry.Table != Tables[table].Table.Name)
            continue;
        RowIDs rows;
        bool isEachNew = true;
        const bool isWhole = ForEachIndexEntry(*Pages, entry.Root,
                                               [&](const Values& /*values*/, std::int64_t rowID)
                                               { isEachNew = rows.insert(rowID).second && isEachNew; });
        const auto missing =
            std::count_if(copied.begin(), copied.end(), [&](std::int64_t rowID) { return rows.count(rowID) == 0; });
        if (isWhole && isEachNew && static_cast<std::size_t>(missing) * 100 <= copied.size() * MostMissing)
            return rows;
    }
    return std::nullopt;
}

// The result is whether an index of the table could be read whole.
bool DamagedJournal::AddEntriesOfIndexes(std::size_t table, SalvagedJournal& journal)
{
    constexpr const char* indexOfUUIDs = "sqlite_autoindex_Plants_1";
    bool isAnyWhole = false;
    for (const SchemaEntry& entry : Schema)
        if (entry.Type == "index" && entry.Table == Tables[table].Table.Name)
        {
            const bool hasUUIDs = entry.Name == indexOfUUIDs;
            const bool isWhole =
                ForEachIndexEntry(*Pages, entry.Root,
                                  [&](const Values& values, std::int64_t rowID)
                                  { journal.AddLost(table, rowID, hasUUIDs ? values.front().Text : std::string()); });
            isAnyWhole = isAnyWhole || isWhole;
        }
    return isAnyWhole;
}

void DamagedJournal::CopyTo(SalvagedJournal& journal)
{
    for (std::size_t table = 0; table + 1 < Tables.size(); ++table)
        CopyTable(table, journal);
    Bytes.AddRest();
}

} // namespace plant_file

#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/session.h"
#include "journal/sql.h"
#include "plant_file.h"
#include "record/dates.h"
#include "record/operations.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "terminal/printable.h"
#include "terminal/progress.h"
#include "transfer/import_source.h"
#include "transfer/transfer.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include <unistd.h>

// An import in five steps, of which only the last one touches the journal: read, check, build in a copy, check the
// copy, write it into the journal.

std::string CreatePlantUUID(); // the library's

namespace
{

// ---- 1. Reading: rows become records.

template <typename Record> struct Imported
{
    Record Value;
    std::size_t Offset = 0;
    std::map<std::string, std::size_t> Cells = {}; // where its fields are
};

template <typename Record> struct Import
{
    bool Brought = false; // the table is there, perhaps without a row
    std::shared_ptr<const Source> From;
    std::vector<Imported<Record>> Rows;

    // Where the row stands, and where one of its fields does.
    std::string Place(const Imported<Record>& row) const { return From->Place(row.Offset) + ": "; }
    std::string Place(const Imported<Record>& row, const std::string& field) const
    {
        const auto cell = row.Cells.find(field);
        return From->Place(cell == row.Cells.end() ? row.Offset : cell->second) + ": " + field + ": ";
    }
};

using Imports = Tables<Import>;

template <typename Record> Import<Record>& In(Imports& all)
{
    return std::get<Import<Record>>(all);
}

struct Messages
{
    Problems Errors;
    Problems Warnings;
    bool Whole = false; // all rows could be read, so that what seems to be missing is
};

template <typename Record>
void SetField(const Field<Record>& field, const RawCell& cell, const Source& from, Record& record, Messages& messages)
{
    const std::string place = from.Place(cell.Offset) + ": " + field.Name + ": ";
    try
    {
        if (cell.Text.find('\0') != std::string::npos)
            throw BadValue("holds a zero byte");
        if (!cell.Text.empty() ||
            !IsNumber(ValueIn(field, record))) // a number that is not given is the record's default
            ParseField(cell.Text, field, record);
    }
    catch (const BadValue& bad)
    {
        messages.Errors.push_back(place + Printable(bad.what()));
    }
    if ((field.Used == Use::Date || field.Used == Use::Day) && !cell.Text.empty() && !IsDate(cell.Text))
        messages.Warnings.push_back(place + InQuotes(Printable(cell.Text)) + " does not sort as a date");
}

template <typename Record> void ReadRows(const RawTable& table, Import<Record>& import, Messages& messages)
{
    const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
    import.Brought = true;
    import.From = table.From;
    for (const RawRow& row : table.Rows)
    {
        Imported<Record>& imported = import.Rows.emplace_back();
        imported.Offset = row.Offset;
        for (const RawCell& cell : row.Cells)
        {
            const auto field = std::find_if(fields.begin(), fields.end(),
                                            [&](const Field<Record>& known) { return known.Name == cell.Field; });
            if (field == fields.end())
                messages.Errors.push_back(table.From->Place(cell.Offset) + ": " + table.Name + " has no field " +
                                          InQuotes(Printable(cell.Field)));
            else if (!imported.Cells.emplace(cell.Field, cell.Offset).second)
                messages.Errors.push_back(table.From->Place(cell.Offset) + ": " + cell.Field + " is given twice");
            else
                SetField(*field, cell, *table.From, imported.Value, messages);
        }
    }
}

Imports ReadImports(const std::string& path, Messages& messages)
{
    Imports all;
    const std::vector<RawTable> tables = ReadTables(path, messages.Errors);
    messages.Whole = messages.Errors.empty();
    for (const RawTable& table : tables)
    {
        bool known = false;
        ForEachTable(all,
                     [&]<typename Record>(Import<Record>& import)
                     {
                         if (table.Name != Describe<Record>().Table)
                             return;
                         known = true;
                         ReadRows(table, import, messages);
                     });
        if (!known)
            messages.Errors.push_back(table.From->Place(0) + ": there is no table " + InQuotes(Printable(table.Name)));
    }
    return all;
}

// ---- 2. Checking: what no row can tell by itself.

// What the journal has already.
struct Existing
{
    std::map<std::string, Plant> Plants;   // by UUID
    std::map<std::string, Strain> Strains; // by name
    std::set<std::string> Photos;          // UUIDs
    std::set<std::string> Harvested;       // plants
};

Existing ReadExisting(Session& session)
{
    Existing existing;
    if (!session.Exists())
        return existing;
    PlantRepository& repository = session.Read();
    std::vector<Plant> plants;
    std::vector<Strain> strains;
    session.Require(repository.ListPlants(plants) && repository.ListStrains(strains), "the journal cannot be listed");
    for (const Strain& strain : strains)
        existing.Strains.emplace(strain.Name, strain);
    for (const Plant& plant : plants)
    {
        std::vector<PlantPhoto> photos;
        std::vector<HarvestRecord> harvests;
        session.Require(repository.ListPlantPhotos(plant.UUID, photos), "the photos cannot be listed");
        for (const PlantPhoto& photo : photos)
            existing.Photos.insert(photo.UUID);
        if (ListRecords(repository, plant.UUID, harvests); !harvests.empty())
            existing.Harvested.insert(plant.UUID);
        existing.Plants.emplace(plant.UUID, plant);
    }
    return existing;
}

template <typename Record> void CheckNumbers(const Import<Record>& import, Problems& errors)
{
    std::set<std::int64_t> seen;
    for (const Imported<Record>& row : import.Rows)
        if (row.Value.ID != 0 && !seen.insert(row.Value.ID).second)
            errors.push_back(import.Place(row, "ID") + std::to_string(row.Value.ID) + " is here twice");
}

// Takes away the strains that the journal has already.
void CheckStrains(Import<Strain>& import, const Existing& existing, Problems& errors)
{
    std::set<std::string> seen;
    std::vector<Imported<Strain>> added;
    for (const Imported<Strain>& row : import.Rows)
    {
        const Strain& strain = row.Value;
        const auto known = existing.Strains.find(strain.Name);
        if (strain.Name.empty())
            errors.push_back(import.Place(row, "Name") + "is empty");
        else if (!seen.insert(strain.Name).second)
            errors.push_back(import.Place(row, "Name") + InQuotes(Printable(strain.Name)) + " is here twice");
        else if (known == existing.Strains.end())
            added.push_back(row);
        else if (known->second.Breeder != strain.Breeder || known->second.FloweringWeeks != strain.FloweringWeeks ||
                 known->second.Notes != strain.Notes)
            errors.push_back(import.Place(row, "Name") + "the journal has " + InQuotes(Printable(strain.Name)) +
                             " already, with other particulars");
    }
    import.Rows = std::move(added);
}

using Mothers = std::map<std::string, std::string>; // by the plant's UUID

Mothers CheckPlants(const Import<Plant>& import, const Existing& existing, Problems& errors)
{
    Mothers mothers;
    for (const auto& [uuid, plant] : existing.Plants)
        mothers.emplace(uuid, plant.MotherPlantUUID);
    for (const Imported<Plant>& row : import.Rows)
        if (const Plant& plant = row.Value;
            !plant.UUID.empty() && !mothers.emplace(plant.UUID, plant.MotherPlantUUID).second)
            errors.push_back(import.Place(row, "UUID") + InQuotes(Printable(plant.UUID)) +
                             (existing.Plants.contains(plant.UUID) ? " is in the journal already" : " is here twice"));
    for (const Imported<Plant>& row : import.Rows)
    {
        std::string mother = row.Value.MotherPlantUUID;
        if (!mother.empty() && !mothers.contains(mother))
            errors.push_back(import.Place(row, "MotherPlantUUID") + "there is no plant " + InQuotes(Printable(mother)));
        for (std::size_t steps = 0; !mother.empty(); ++steps)
        {
            if (mother == row.Value.UUID || steps > mothers.size())
            {
                errors.push_back(import.Place(row, "MotherPlantUUID") + "the plant descends from itself");
                break;
            }
            const auto next = mothers.find(mother);
            mother = next == mothers.end() ? "" : next->second;
        }
    }
    return mothers;
}

template <typename Record> void CheckOwners(const Import<Record>& import, const Mothers& plants, Problems& errors)
{
    for (const Imported<Record>& row : import.Rows)
        if (!plants.contains(row.Value.PlantUUID))
            errors.push_back(import.Place(row, "PlantUUID") + "there is no plant " +
                             InQuotes(Printable(row.Value.PlantUUID)));
}

template <typename Record>
void CheckLinks(const Import<Record>& import, const Import<PlantEvent>& events, Problems& errors)
{
    std::set<std::int64_t> known = {0};
    for (const Imported<PlantEvent>& row : events.Rows)
        known.insert(row.Value.ID);
    for (const Imported<Record>& row : import.Rows)
        if (!known.contains(row.Value.TimelineEventID))
            errors.push_back(import.Place(row, "TimelineEventID") + "there is no event " +
                             std::to_string(row.Value.TimelineEventID) + " in this import");
}

// Names that may occur but once, here and in the journal.
template <typename Record>
void CheckOnce(const Import<Record>& import, std::string Record::*name, const char* field, std::set<std::string> taken,
               const std::string& what, Problems& errors)
{
    for (const Imported<Record>& row : import.Rows)
        if (!(row.Value.*name).empty() && !taken.insert(row.Value.*name).second)
            errors.push_back(import.Place(row, field) + what);
}

void CheckImports(Imports& all, const Existing& existing, Problems& errors)
{
    CheckStrains(In<Strain>(all), existing, errors);
    const Mothers plants = CheckPlants(In<Plant>(all), existing, errors);
    ForEachTable(all,
                 [&]<typename Record>(const Import<Record>& import)
                 {
                     CheckNumbers(import, errors);
                     if constexpr (!std::is_same_v<Record, Strain> && !std::is_same_v<Record, Plant>)
                         CheckOwners(import, plants, errors);
                     if constexpr (requires(Record record) { record.TimelineEventID; })
                         CheckLinks(import, In<PlantEvent>(all), errors);
                 });
    CheckOnce(In<HarvestRecord>(all), &HarvestRecord::PlantUUID, "PlantUUID", existing.Harvested,
              "the plant has a harvest record already", errors);
    CheckOnce(In<PlantPhoto>(all), &PlantPhoto::UUID, "UUID", existing.Photos, "there is such a photo already", errors);
}

// ---- 3. Building, in a copy of the journal

// A whole number's text becomes a number in its column.
void BindValue(Statement& statement, int index, const ConstValueRef& value)
{
    if (const auto* const number = std::get_if<const double*>(&value))
        statement.Bind(index, **number);
    else
        statement.Bind(index, TextOf(value));
}

// Whether the rows can keep their numbers: all have one, and none is taken. Else they get new ones, in the same order.
template <typename Record> bool KeepsNumbers(const SQL& connection, std::vector<Imported<Record>>& rows)
{
    if (std::any_of(rows.begin(), rows.end(), [](const Imported<Record>& row) { return row.Value.ID == 0; }))
        return false;
    std::sort(rows.begin(), rows.end(),
              [](const auto& left, const auto& right) { return left.Value.ID < right.Value.ID; });
    Statement taken(connection, std::string("SELECT 1 FROM ") + Describe<Record>().Table + " WHERE ID=?;");
    return std::none_of(rows.begin(), rows.end(),
                        [&](const Imported<Record>& row)
                        {
                            taken.Bind(1, row.Value.ID);
                            const bool found = taken.Step();
                            taken.Reset();
                            return found;
                        });
}

using NewNumbers = std::map<std::int64_t, std::int64_t>; // of events, by the old ones

template <typename Record> std::string InsertStatement()
{
    std::string columns;
    std::string values;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.Used != Use::Mother) // set when all plants are there
        {
            columns += columns.empty() ? "" : ",";
            columns += field.Column;
            values += values.empty() ? "?" : ",?";
        }
    return std::string("INSERT INTO ") + Describe<Record>().Table + "(" + columns + ") VALUES(" + values + ");";
}

template <typename Record>
void InsertRows(const SQL& connection, Import<Record>& import, NewNumbers& events, const std::function<void()>& onward)
{
    const bool keep = KeepsNumbers(connection, import.Rows);
    Statement insert(connection, InsertStatement<Record>());
    for (Imported<Record>& row : import.Rows)
    {
        onward();
        int index = 0;
        for (const Field<Record>& field : Describe<Record>().Fields)
        {
            const ConstValueRef value = ValueIn(field, row.Value);
            const bool number = field.Used == Use::RowID || field.Used == Use::Link;
            const std::int64_t id = number ? *std::get<const std::int64_t*>(value) : 0;
            index += field.Used == Use::Mother ? 0 : 1;
            if (field.Used == Use::RowID ? keep : field.Used == Use::Link && id != 0)
                insert.Bind(index, field.Used == Use::RowID ? id : events.at(id));
            else if (!number && field.Used != Use::Mother) // what is not bound is NULL
                BindValue(insert, index, value);
        }
        insert.Step();
        insert.Reset();
        if constexpr (std::is_same_v<Record, PlantEvent>)
            events[row.Value.ID] = connection.LastRowID();
    }
}

// Enters care and harvests as a person would, with their events.
template <typename Record>
void EnterRows(PlantRepository& repository, Import<Record>& import, const std::function<void()>& onward)
{
    for (Imported<Record>& row : import.Rows)
    {
        onward();
        Plant plant;
        plant.UUID = row.Value.PlantUUID;
        row.Value.ID = 0;
        if (!CreateRecord(repository, plant, row.Value))
            throw Refusal(import.Place(row) + "the copy refused it; nothing was changed");
    }
}

// Where an import brings no strains, those of its plants are added, as for plants that are added by hand.
void RegisterStrains(const SQL& connection, const Import<Plant>& plants)
{
    Statement insert(connection, "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;");
    for (const Imported<Plant>& row : plants.Rows)
    {
        if (row.Value.Strain.empty())
            continue;
        insert.Bind(1, row.Value.Strain);
        insert.Step();
        insert.Reset();
    }
}

void LinkMothers(const SQL& connection, const Import<Plant>& plants)
{
    Statement link(connection, "UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE UUID=?) WHERE UUID=?;");
    for (const Imported<Plant>& row : plants.Rows)
    {
        if (row.Value.MotherPlantUUID.empty())
            continue;
        link.Bind(1, row.Value.MotherPlantUUID);
        link.Bind(2, row.Value.UUID);
        link.Step();
        link.Reset();
    }
}

template <typename Record> void MakeUUIDs(Import<Record>& import)
{
    for (Imported<Record>& row : import.Rows)
        if (row.Value.UUID.empty())
            row.Value.UUID = CreatePlantUUID();
}

void Build(const std::string& path, Imports& all, const std::function<void()>& onward)
{
    PlantDatabase copy;
    PlantRepository repository(copy);
    std::string error;
    if (!copy.Open(path, &error))
        throw Refusal(path + ": opening the copy: " + error + "; nothing was changed");
    const SQL connection(copy.NativeHandle(), path + ": building the copy");
    connection.Run("PRAGMA synchronous=OFF;"); // should the power fail, the copy is of no use anyway
    connection.Run("BEGIN;");

    MakeUUIDs(In<Plant>(all));
    MakeUUIDs(In<PlantPhoto>(all));
    NewNumbers events;
    // Care and harvests that come without the timeline are entered when all others are there.
    const bool timeline = In<PlantEvent>(all).Brought;
    ForEachTable(all,
                 [&]<typename Record>(Import<Record>& import)
                 {
                     constexpr bool mirrored = requires(Record record)
                     {
                         record.TimelineEventID;
                     };
                     if (timeline || !mirrored)
                         InsertRows(connection, import, events, onward);
                 });
    LinkMothers(connection, In<Plant>(all));
    if (!In<Strain>(all).Brought)
        RegisterStrains(connection, In<Plant>(all));
    connection.Run("COMMIT;");
    if (timeline)
        return;
    EnterRows(repository, In<PlantCareEntry>(all), onward);
    EnterRows(repository, In<HarvestRecord>(all), onward);
}

// ---- 4. Checking the copy

std::size_t CountFindings(const std::string& path)
{
    std::vector<PlantFileFinding> findings;
    if (const PlantFileResult result = CheckPlantDatabase(path, findings); !result)
        throw Refusal(result.Error + "; nothing was changed");
    for (const PlantFileFinding& finding : findings)
        if (finding.Kind == PlantFindingKind::Damage || finding.Kind == PlantFindingKind::ForeignKey)
            throw Refusal(path + ": checking: " + finding.Description + "; nothing was changed");
    return findings.size();
}

// ---- 5. Writing

// Puts the copy in the journal's place, page by page in one transaction, unless somebody wrote to the journal since its
// data version was looked at. The lock that is taken for that look stays until the connection ends: SQLite's backup
// takes a destination without an open transaction only.
void WriteBack(Session& session, const std::string& path, std::int64_t version)
{
    const SQL journal(session.Connection(), session.Path() + ": writing");
    journal.Run("PRAGMA locking_mode=EXCLUSIVE;");
    journal.Run("BEGIN EXCLUSIVE;");
    const bool changed = journal.Number("PRAGMA data_version;") != version;
    journal.Run("COMMIT;");
    if (changed)
        throw Refusal(session.Path() + ": another program wrote to it meanwhile; nothing was changed, import again");

    PlantDatabase copy;
    std::string error;
    if (!copy.Open(path, &error))
        throw Refusal(path + ": opening the copy: " + error + "; nothing was changed");
    StopIfInterrupted(); // the last time: what follows is whole in any case
    journal.CopyPagesFrom(copy.NativeHandle());
}

class Copy
{
  public:
    explicit Copy(const std::string& journal) : Path(journal + ".import-" + std::to_string(getpid()))
    {
        if (const PlantFileResult result = BackUpPlantDatabase(journal, Path); !result)
            throw Refusal(result.Error + "; nothing was changed");
    }
    ~Copy()
    {
        std::error_code ignored;
        std::filesystem::remove(Path, ignored);
        std::filesystem::remove(Path + "-journal", ignored);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    const std::string Path;
};

void Report(const Problems& problems, const std::string& kind)
{
    for (const std::string& problem : problems)
        std::cerr << kind << problem << '\n';
}

void ImportFrom(Session& session, const std::string& path)
{
    Messages messages;
    Imports all = ReadImports(path, messages);
    if (messages.Whole)
        CheckImports(all, ReadExisting(session), messages.Errors);
    Report(messages.Warnings, "warning: ");
    Report(messages.Errors, "");
    if (!messages.Errors.empty())
        throw Refusal(path + ": bad values: " + std::to_string(messages.Errors.size()) + "; nothing was imported");

    session.Write();
    const std::int64_t version = SQL(session.Connection(), session.Path() + ": reading").Number("PRAGMA data_version;");
    const Copy copy(session.Path());
    JSON counts = JSON::Object();
    std::vector<Row> rows;
    std::int64_t total = 0;
    ForEachTable(all,
                 [&]<typename Record>(const Import<Record>& import)
                 {
                     counts.Add(Describe<Record>().Table, JSONOf(static_cast<std::int64_t>(import.Rows.size())));
                     rows.push_back({Describe<Record>().Table, std::to_string(import.Rows.size())});
                     total += static_cast<std::int64_t>(import.Rows.size());
                 });
    {
        Progress bar("Importing");
        Build(copy.Path, all,
              [&, done = std::int64_t{0}]() mutable
              {
                  StopIfInterrupted();
                  bar.Show(++done, total);
              });
    }
    const std::size_t before = CountFindings(session.Path());
    const std::size_t after = CountFindings(copy.Path);
    WriteBack(session, copy.Path, version);
    if (after > before)
        std::cerr << "warning: `plantjournal check` finds more than before: " << after - before << '\n';
    if (session.AsJSON)
        PrintJSON(counts);
    else
        PrintTable(std::cout, {{"Imported"}, {"Rows", true}}, rows);
}

} // namespace

void AddImportCommand(CLI::App& program, Session& session)
{
    auto source = std::make_shared<std::string>();
    AddArgument(
        AddCommand(program, "import", "Add everything that an export holds, or CSV files of the same form, or nothing",
                   "import journal.json\nimport journal-csv", [&session, source] { ImportFrom(session, *source); }),
        "SOURCE", "a file of JSON, or a directory of CSV files", *source);
}

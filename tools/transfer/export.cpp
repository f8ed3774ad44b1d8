#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/outcome.h"
#include "journal/file_result.h"
#include "journal/session.h"
#include "journal/sql.h"
#include "plant_file.h"
#include "record/csv.h"
#include "record/json.h"
#include "record/operations.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "transfer/new_file.h"
#include "transfer/tables.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace
{

template <typename Record> using RecordList = std::vector<Record>;
using AllRecords = Tables<RecordList>;

// While it lives, the journal is read as it was at one moment.
class ReadTransaction
{
  public:
    explicit ReadTransaction(const Session& session) : Journal(session.Connection(), session.Path() + ": reading")
    {
        Journal.Run("BEGIN;");
    }
    ~ReadTransaction()
    {
        try
        {
            Journal.Run("ROLLBACK;");
        }
        catch (const Refusal&)
        {
            // closing the connection also ends the transaction
        }
    }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

  private:
    const SQL Journal;
};

// A list may end early, and a row whose plant is missing is in no list.
void RequireAllRows(const Session& session, const AllRecords& all)
{
    PlantFileInspection file;
    RequireRead(InspectPlantDatabase(session.Path(), file), session.Path());
    ForEachTable(all,
                 [&]<typename Record>(const RecordList<Record>& records)
                 {
                     const std::string name = Describe<Record>().Table;
                     for (const PlantFileTable& table : file.Tables)
                         if (table.Name == name && table.Rows != static_cast<std::int64_t>(records.size()))
                             throw Refusal(session.Path() + ": only " + std::to_string(records.size()) + " of " +
                                           std::to_string(table.Rows) + " rows of " + name +
                                           " could be read; nothing was written; run `plantjournal check`");
                 });
}

AllRecords ReadAllRecords(Session& session)
{
    PlantRepository& repository = session.Read();
    const ReadTransaction transaction(session);
    AllRecords all;
    session.RequireList(repository.ListStrains(std::get<RecordList<Strain>>(all)), "the strains could not be listed");
    auto& plants = std::get<RecordList<Plant>>(all);
    session.RequireList(repository.ListPlants(plants), "the plants could not be listed");
    Progress bar("Reading");
    for (std::size_t i = 0; i < plants.size(); ++i)
    {
        StopIfInterrupted();
        bar.Show(static_cast<std::int64_t>(i), static_cast<std::int64_t>(plants.size()));
        ForEachTable(all,
                     [&]<typename Record>(RecordList<Record>& records)
                     {
                         if constexpr (!std::is_same_v<Record, Plant> && !std::is_same_v<Record, Strain>)
                         {
                             RecordList<Record> listed;
                             session.RequireList(ListRecords(repository, plants[i].UUID, listed),
                                                 std::string(Describe<Record>().Table) + " could not be listed");
                             std::move(listed.begin(), listed.end(), std::back_inserter(records));
                         }
                     });
    }
    RequireAllRows(session, all);
    ForEachTable(all,
                 [](auto& records) {
                     std::sort(records.begin(), records.end(),
                               [](const auto& left, const auto& right) { return left.ID < right.ID; });
                 });
    return all;
}

// Each record is on a line of its own, so that tools that compare lines compare records.
std::string JSONText(const AllRecords& all)
{
    std::string text = "{\"Format\": " + std::to_string(ExportFormat);
    ForEachTable(all,
                 [&]<typename Record>(const RecordList<Record>& records)
                 {
                     text += std::string(",\n\"") + Describe<Record>().Table + "\": [";
                     const char* separator = "\n";
                     for (const Record& record : records)
                     {
                         text += separator + RecordJSON(record).OnOneLine();
                         separator = ",\n";
                     }
                     text += "\n]";
                 });
    return text + "\n}\n";
}

template <typename Record> std::string CSVText(const RecordList<Record>& records)
{
    const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
    std::vector<std::string> cells(fields.size());
    std::transform(fields.begin(), fields.end(), cells.begin(), [](const Field<Record>& field) { return field.Name; });
    std::string text;
    AppendCSVLine(text, cells);
    for (const Record& record : records)
    {
        std::transform(fields.begin(), fields.end(), cells.begin(),
                       [&](const Field<Record>& field) { return TextOf(field, record); });
        AppendCSVLine(text, cells);
    }
    return text;
}

void WriteCSVDirectory(const std::filesystem::path& directory, const AllRecords& all)
{
    MakeDirectory(directory);
    ForEachTable(all, [&]<typename Record>(const RecordList<Record>& records)
                 { WriteFile(directory / (std::string(Describe<Record>().Table) + ".csv"), CSVText(records)); });
}

void Export(Session& session, const std::string& destination, bool asCSV)
{
    const bool toStandardOutput = destination == "-";
    if (asCSV && toStandardOutput)
        RefuseUsage("a directory of CSV files cannot be written to standard output; name a directory");
    const AllRecords all = ReadAllRecords(session);
    if (toStandardOutput)
    {
        std::cout << JSONText(all);
        return;
    }
    if (asCSV)
        WriteAtomically(destination, Existing::Keep,
                        [&](const std::filesystem::path& directory) { WriteCSVDirectory(directory, all); });
    else
        WriteAtomically(destination, Existing::Keep,
                        [&](const std::filesystem::path& file) { WriteFile(file, JSONText(all)); });
    ReportCopy(session, "Exported " + session.Path() + " to " + destination);
}

} // namespace

void AddExportCommand(CLI::App& program, Session& session)
{
    struct Options
    {
        std::string Destination;
        bool AsCSV = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App& command = AddCommand(program, "export", "Write all records as JSON, or as a directory of CSV files",
                                   "export journal.json\nexport --csv journal-csv\nexport - | jq '.Plants[].Name'",
                                   [&session, options] { Export(session, options->Destination, options->AsCSV); });
    AddArgument(command, "DESTINATION", "new file or directory, or - for standard output", options->Destination);
    AddSwitch(command, "--csv", "write a directory with a CSV file for each table", options->AsCSV);
}

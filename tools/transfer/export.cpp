#include "command_line/parser.h"
#include "commands/commands.h"
#include "journal/session.h"
#include "journal/sql.h"
#include "plant_file.h"
#include "record/json.h"
#include "record/operations.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "transfer/transfer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

template <typename Record> using Records = std::vector<Record>;
using Everything = Tables<Records>;

// One moment's view of a journal: nobody can change it while this is in scope.
class Snapshot
{
  public:
    explicit Snapshot(const SQL& connection) : Connection(connection) { Connection.Run("BEGIN;"); }
    ~Snapshot()
    {
        try
        {
            Connection.Run("ROLLBACK;");
        }
        catch (const Refusal&) // closing the connection rolls back, too
        {
        }
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

  private:
    const SQL& Connection;
};

Everything ReadAll(Session& session)
{
    PlantRepository& repository = session.Read();
    const SQL sql(session.Connection(), session.Path() + ": reading");
    const Snapshot snapshot(sql);
    Everything all;
    session.Require(repository.ListStrains(std::get<Records<Strain>>(all)), "the strains cannot be listed");
    auto& plants = std::get<Records<Plant>>(all);
    session.Require(repository.ListPlants(plants), "the plants cannot be listed");
    Progress bar("Reading");
    for (std::size_t i = 0; i < plants.size(); ++i)
    {
        StopIfInterrupted();
        bar.Show(static_cast<std::int64_t>(i), static_cast<std::int64_t>(plants.size()));
        ForEachTable(all,
                     [&]<typename Record>(Records<Record>& records)
                     {
                         if constexpr (!std::is_same_v<Record, Plant> && !std::is_same_v<Record, Strain>)
                         {
                             Records<Record> listed;
                             session.Require(ListRecords(repository, plants[i].UUID, listed),
                                             std::string(Describe<Record>().Table) + " cannot be listed");
                             std::move(listed.begin(), listed.end(), std::back_inserter(records));
                         }
                     });
    }

    // A list may end early, and a row whose plant is missing is in none.
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(session.Path(), file); !result)
        throw Refusal(result.Error);
    ForEachTable(all,
                 [&]<typename Record>(Records<Record>& records)
                 {
                     std::sort(records.begin(), records.end(),
                               [](const Record& left, const Record& right) { return left.ID < right.ID; });
                     const std::string name = Describe<Record>().Table;
                     for (const PlantFileTable& table : file.Tables)
                         if (table.Name == name && table.Rows != static_cast<std::int64_t>(records.size()))
                             throw Refusal(session.Path() + ": of " + std::to_string(table.Rows) + " rows of " + name +
                                           " only " + std::to_string(records.size()) +
                                           " could be read; `plantjournal check` may tell why. Nothing was written");
                 });
    return all;
}

// A record a line, so that a line of a message or of a comparison is a record.
std::string JSONFrom(const Everything& all)
{
    std::string text = "{\"Format\": " + std::to_string(TransferFormat);
    ForEachTable(all,
                 [&]<typename Record>(const Records<Record>& records)
                 {
                     text += std::string(",\n\"") + Describe<Record>().Table + "\": [";
                     for (std::size_t i = 0; i < records.size(); ++i)
                         text += (i > 0 ? ",\n" : "\n") + RecordJSON(records[i]).OnOneLine();
                     text += "\n]";
                 });
    return text + "\n}\n";
}

// RFC 4180, with the line ends of this system.
std::string CSVCell(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char letter : text)
        quoted += letter == '"' ? std::string("\"\"") : std::string(1, letter);
    return quoted + '"';
}

template <typename Record> std::string CSVFrom(const Records<Record>& records)
{
    std::string text;
    const auto addLine = [&](const auto& cellOf)
    {
        const char* separator = "";
        for (const Field<Record>& field : Describe<Record>().Fields)
        {
            text += separator;
            text += CSVCell(cellOf(field));
            separator = ",";
        }
        text += '\n';
    };
    addLine([](const Field<Record>& field) { return std::string(field.Name); });
    for (const Record& record : records)
        addLine([&](const Field<Record>& field) { return TextOf(field, record); });
    return text;
}

[[noreturn]] void Fail(const std::filesystem::path& path, const std::string& step)
{
    throw Refusal(path.string() + ": " + step + ": " + std::strerror(errno) + "; nothing was written");
}

// Writes a new file, down to the disk.
void WriteNew(const std::filesystem::path& path, const std::string& bytes)
{
    constexpr mode_t everyone = 0666; // less the umask
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everyone);
    if (file < 0)
        Fail(path, "creating");
    const std::unique_ptr<const int, void (*)(const int*)> closer(&file, [](const int* open) { close(*open); });
    for (std::size_t written = 0; written < bytes.size();)
    {
        const ssize_t count = write(file, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR)
            Fail(path, "writing");
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
        StopIfInterrupted();
    }
    if (fsync(file) != 0)
        Fail(path, "syncing");
}

// Lets `write` make a file or a directory under a passing name, which then takes `destination`'s place, where nothing
// may be.
void WriteWhole(const std::string& destination, const std::function<void(const std::filesystem::path&)>& write)
{
    const std::filesystem::path path = destination;
    if (std::filesystem::exists(std::filesystem::symlink_status(path)))
        throw Refusal(destination + ": exists already; nothing was written");
    const std::filesystem::path partial = destination + ".partial-" + std::to_string(getpid());
    const std::unique_ptr<const std::filesystem::path, void (*)(const std::filesystem::path*)> remover(
        &partial,
        [](const std::filesystem::path* left)
        {
            std::error_code ignored;
            std::filesystem::remove_all(*left, ignored);
        });
    write(partial);
    // No other process takes the place in between: renaming itself refuses to replace.
    if (renameat2(AT_FDCWD, partial.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0)
        Fail(path, "renaming into place");
}

void Export(Session& session, const std::string& destination, bool asCSV)
{
    if (asCSV && destination == "-")
        RefuseUsage("a directory of CSV files cannot go to the standard output");
    const Everything all = ReadAll(session);
    if (destination == "-")
        std::cout << JSONFrom(all);
    else if (asCSV)
        WriteWhole(destination,
                   [&](const std::filesystem::path& directory)
                   {
                       if (mkdir(directory.c_str(), 0777) != 0)
                           Fail(directory, "creating");
                       ForEachTable(all,
                                    [&]<typename Record>(const Records<Record>& records) {
                                        WriteNew(directory / (std::string(Describe<Record>().Table) + ".csv"),
                                                 CSVFrom(records));
                                    });
                   });
    else
        WriteWhole(destination, [&](const std::filesystem::path& file) { WriteNew(file, JSONFrom(all)); });
}

} // namespace

void AddExportCommand(CLI::App& program, Session& session)
{
    struct Wanted
    {
        std::string Destination;
        bool AsCSV = false;
    };
    auto wanted = std::make_shared<Wanted>();
    CLI::App& command = AddCommand(program, "export", "Write everything as JSON, or as a directory of CSV files",
                                   "export journal.json\nexport --csv journal-csv\nexport - | jq '.Plants[].Name'",
                                   [&session, wanted] { Export(session, wanted->Destination, wanted->AsCSV); });
    AddArgument(command, "DESTINATION", "a new file, or a new directory; - for the standard output",
                wanted->Destination);
    AddSwitch(command, "--csv", "a directory with a CSV file for each table", wanted->AsCSV);
}

#include "transfer/source.h"

#include "plant_file.h"
#include "record/csv.h"
#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "transfer/json_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

using plant_file::PathOfText;
using plant_file::TextOfPath;

namespace
{

[[noreturn]] void FailToRead(const std::filesystem::path& path, const std::string& reason)
{
    throw Refusal(TextOfPath(path) + ": cannot be read: " + reason +
                  "; name a JSON file, or a directory of CSV files, that you can read");
}

// Refuses a file that is neither JSON nor one of several CSV files, with what to do with it.
void RequireNoOtherKind(const std::string& path)
{
    PlantFileInspection file;
    if (InspectPlantSchema(path, file) && file.Kind != PlantFileKind::Missing && file.Kind != PlantFileKind::Empty &&
        file.Kind != PlantFileKind::NotADatabase)
        throw Refusal(path + (file.Kind == PlantFileKind::Foreign
                                  ? ": a database, and not a journal; name a JSON file, or a directory of CSV files"
                                  : ": that is a journal: use --file " + path));
    if (PathOfText(path).extension() == ".csv")
        throw Refusal(path + ": a single CSV file; name the directory that contains it");
}

SourcePointer ReadSourceFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad())
        FailToRead(path, std::strerror(errno));
    std::vector<std::size_t> lines = {0};
    for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', end + 1))
        lines.push_back(end + 1);
    return std::make_shared<const SourceFile>(SourceFile{TextOfPath(path), std::move(bytes), std::move(lines)});
}

void ReadCSVRows(const SourceFile& file, RawRowReceiver& receiver, Problems& problems)
{
    CSVReader lines(file.Bytes);
    try
    {
        if (lines.AtEnd())
            throw BadValue("the header line is missing");
        std::vector<CSVCell> headings;
        lines.ReadLine(headings);
        std::vector<CSVCell> cells;
        RawRow row;
        while (!lines.AtEnd())
        {
            row.Offset = lines.Offset();
            lines.ReadLine(cells);
            if (cells.size() != headings.size())
                problems.push_back(file.Place(row.Offset) + ": " + std::to_string(cells.size()) + " values for " +
                                   std::to_string(headings.size()) + " columns");
            row.Cells.clear();
            for (std::size_t i = 0; i < std::min(headings.size(), cells.size()); ++i)
                row.Cells.push_back({headings[i].Text, cells[i].Text, cells[i].Offset});
            receiver.AddRow(row);
        }
    }
    catch (const BadValue& bad)
    {
        problems.push_back(file.Place(lines.Offset()) + ": " + bad.what());
    }
}

void ReadCSVDirectory(const std::filesystem::path& path, RawRowReceiver& receiver, Problems& problems)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (entry->path().extension() == ".csv")
            files.push_back(entry->path());
    if (error)
        FailToRead(path, error.message());
    std::sort(files.begin(), files.end());
    if (files.empty())
        throw Refusal(TextOfPath(path) +
                      ": the directory contains no CSV file; `plantjournal export --csv` shows their form");
    for (const std::filesystem::path& name : files)
    {
        const SourcePointer file = ReadSourceFile(name);
        receiver.BeginTable(TextOfPath(name.stem()), file);
        ReadCSVRows(*file, receiver, problems);
    }
}

} // namespace

std::string SourceFile::Place(std::size_t offset) const
{
    const std::size_t at = std::min(offset, Bytes.size());
    const auto next = std::upper_bound(Lines.begin(), Lines.end(), at);
    return Name + ":" + std::to_string(std::distance(Lines.begin(), next)) + ":" +
           std::to_string(1 + at - *std::prev(next));
}

void ReadSource(const std::string& path, RawRowReceiver& receiver, Problems& problems)
{
    const std::filesystem::path file = PathOfText(path);
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored))
        return ReadCSVDirectory(file, receiver, problems);
    RequireNoOtherKind(path);
    ReadJSONSource(ReadSourceFile(file), receiver, problems);
}

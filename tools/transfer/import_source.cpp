#include "transfer/import_source.h"

#include "record/json.h"
#include "record/text.h"
#include "refusal.h"
#include "transfer/transfer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include <nlohmann/json.hpp>

namespace
{

std::shared_ptr<const Source> ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad())
        throw Refusal(path.string() + ": cannot be read: " + std::strerror(errno));
    std::vector<std::size_t> lines = {0};
    for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', end + 1))
        lines.push_back(end + 1);
    return std::make_shared<const Source>(Source{path.string(), std::move(bytes), std::move(lines)});
}

// ---- JSON

// Walks over the bytes of a source and lets others see where it is: the parser itself tells that of errors only.
// NOLINTBEGIN(readability-identifier-naming): the names are the standard library's and the parser's
class Cursor
{
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    Cursor(const std::string& bytes, std::size_t begin, std::size_t& offset) : Bytes(&bytes), At(begin), Offset(&offset)
    {
    }
    reference operator*() const { return (*Bytes)[At]; }
    Cursor& operator++()
    {
        *Offset = ++At;
        return *this;
    }
    bool operator==(const Cursor& other) const { return At == other.At; }

  private:
    const std::string* Bytes;
    std::size_t At;
    std::size_t* Offset;
};

// Takes the parser's findings: an object of tables, each an array of records, each an object of values, each a text, a
// number or an object with the bytes of a text.
class TableReader
{
  public:
    TableReader(std::shared_ptr<const Source> source, Problems& problems) : From(std::move(source)), Found(problems) {}

    std::vector<RawTable> Tables;
    std::size_t Offset = 0; // the parser's

    bool null() { return RefuseValue("null is no value"); }
    bool boolean(bool) { return RefuseValue("neither true nor false is a value"); }
    bool binary(nlohmann::json::binary_t&) { return Refuse("no value"); }
    bool number_integer(std::int64_t value) { return Take(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) { return Take(std::to_string(value)); }
    bool number_float(double, const std::string& text) { return Take(text); }
    bool string(const std::string& text) { return Take(text); }

    bool start_object(std::size_t)
    {
        ++Depth;
        if (Depth != Bytes)
            Begin = Offset - 1;
        if (Depth == Record)
            Tables.back().Rows.push_back({Begin, {}});
        return Depth == Root || Depth == Record || Depth == Bytes || Refuse("an object does not belong here");
    }
    bool end_object()
    {
        --Depth;
        return true;
    }
    bool start_array(std::size_t)
    {
        ++Depth;
        if (Depth != Table || Key == "Format")
            return Refuse("an array does not belong here");
        if (std::any_of(Tables.begin(), Tables.end(), [&](const RawTable& table) { return table.Name == Key; }))
            return Refuse("the table \"" + Key + "\" is here twice");
        Tables.push_back({Key, From, {}});
        return true;
    }
    bool end_array()
    {
        --Depth;
        return true;
    }
    bool key(const std::string& name)
    {
        if (Depth == Bytes)
        {
            BytesKey = name;
            return true;
        }
        Key = name;
        const std::size_t colon = From->Bytes.find(':', Offset);
        Begin = std::min(From->Bytes.find_first_not_of(" \t\r\n", colon + 1), From->Bytes.size());
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error)
    {
        const std::string_view message = error.what();
        const std::size_t words = message.find("column "); // what comes before says the place once more
        const std::size_t begin = words == std::string_view::npos ? 0 : message.find(": ", words) + 2;
        Found.push_back(From->Place(Offset > 0 ? Offset - 1 : 0) + ": " + std::string(message.substr(begin)));
        return false;
    }

    // NOLINTEND(readability-identifier-naming)

  private:
    enum : int
    {
        Root = 1,
        Table,
        Record,
        Bytes
    };

    bool Take(const std::string& text)
    {
        if (Depth == Root && Key == "Format")
            return text == std::to_string(TransferFormat) ||
                   Refuse("this form of export, " + text + ", is not known; a newer version may know it");
        if (Depth == Bytes && BytesKey == "Hex")
            return TakeBytes(text);
        if (Depth != Record)
            return Refuse("a value does not belong here");
        Tables.back().Rows.back().Cells.push_back({Key, text, Begin});
        return true;
    }

    bool TakeBytes(const std::string& hex)
    {
        try
        {
            Tables.back().Rows.back().Cells.push_back({Key, BytesFromHex(hex), Begin});
            return true;
        }
        catch (const BadValue& bad)
        {
            Refuse(bad.what());
            return true;
        }
    }

    bool Refuse(const std::string& reason)
    {
        Found.push_back(From->Place(Begin) + ": " + reason);
        return false;
    }

    // After a bad value of a record the others can be read still.
    bool RefuseValue(const std::string& reason) { return Refuse(reason) || Depth == Record; }

    std::shared_ptr<const Source> From;
    Problems& Found;
    std::string Key;
    std::string BytesKey;
    std::size_t Begin = 0; // of the value that the parser has just read, or of its object
    int Depth = 0;
};

std::vector<RawTable> ReadJSON(const std::filesystem::path& path, Problems& problems)
{
    const std::shared_ptr<const Source> source = ReadFile(path);
    TableReader reader(source, problems);
    nlohmann::json::sax_parse(Cursor(source->Bytes, 0, reader.Offset),
                              Cursor(source->Bytes, source->Bytes.size(), reader.Offset), &reader);
    return std::move(reader.Tables);
}

// ---- CSV, RFC 4180; a line may end without its carriage return.

class LineReader
{
  public:
    explicit LineReader(const std::string& bytes) : Bytes(bytes), At(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0) {}

    bool AtEnd() const { return At >= Bytes.size(); }

    // The next line's cells; throws BadValue, after which there is no going on.
    std::vector<RawCell> Next()
    {
        std::vector<RawCell> cells;
        do
            cells.push_back(Cell());
        while (Skip(','));
        if (!AtEnd() && !Skip('\n') && !(Skip('\r') && Skip('\n')))
            throw BadValue("a quoted value is not followed by a comma or the end of the line");
        return cells;
    }

    std::size_t Offset() const { return At; }

  private:
    bool Skip(char letter)
    {
        const bool there = !AtEnd() && Bytes[At] == letter;
        At += there ? 1 : 0;
        return there;
    }

    RawCell Cell()
    {
        const std::size_t begin = At;
        if (!Skip('"'))
        {
            std::size_t end = std::min(Bytes.find_first_of(",\n", At), Bytes.size());
            At = end;
            if (end > begin && end < Bytes.size() && Bytes[end] == '\n' && Bytes[end - 1] == '\r')
                --end;
            return {{}, Bytes.substr(begin, end - begin), begin};
        }
        std::string text;
        do
        {
            const std::size_t quote = Bytes.find('"', At);
            if (quote == std::string::npos)
                throw BadValue("a quoted value does not end");
            text += Bytes.substr(At, quote - At);
            At = quote + 1;
            if (!Skip('"'))
                return {{}, text, begin};
            text += '"';
        } while (true);
    }

    const std::string& Bytes;
    std::size_t At;
};

RawTable ReadCSV(const std::filesystem::path& path, Problems& problems)
{
    const std::shared_ptr<const Source> source = ReadFile(path);
    RawTable table = {path.stem().string(), source, {}};
    LineReader lines(source->Bytes);
    std::vector<RawCell> headings;
    try
    {
        if (lines.AtEnd())
            throw BadValue("the line of headings is missing");
        headings = lines.Next();
        while (!lines.AtEnd())
        {
            const std::size_t offset = lines.Offset();
            RawRow row = {offset, lines.Next()};
            if (row.Cells.size() != headings.size())
                problems.push_back(source->Place(offset) + ": " + std::to_string(row.Cells.size()) + " values where " +
                                   std::to_string(headings.size()) + " columns are");
            for (std::size_t i = 0; i < std::min(headings.size(), row.Cells.size()); ++i)
                row.Cells[i].Field = headings[i].Text;
            row.Cells.resize(std::min(headings.size(), row.Cells.size()));
            table.Rows.push_back(std::move(row));
        }
    }
    catch (const BadValue& bad)
    {
        problems.push_back(source->Place(lines.Offset()) + ": " + bad.what());
    }
    return table;
}

std::vector<RawTable> ReadDirectory(const std::filesystem::path& path, Problems& problems)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        if (entry.path().extension() == ".csv")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    if (files.empty())
        throw Refusal(path.string() + ": has no CSV file");
    std::vector<RawTable> tables;
    tables.reserve(files.size());
    for (const std::filesystem::path& file : files)
        tables.push_back(ReadCSV(file, problems));
    return tables;
}

} // namespace

std::string Source::Place(std::size_t offset) const
{
    const std::size_t at = std::min(offset, Bytes.size());
    const auto next = std::upper_bound(Lines.begin(), Lines.end(), at);
    return Name + ":" + std::to_string(std::distance(Lines.begin(), next)) + ":" +
           std::to_string(1 + at - *std::prev(next));
}

std::vector<RawTable> ReadTables(const std::string& path, Problems& problems)
{
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored) ? ReadDirectory(path, problems) : ReadJSON(path, problems);
}

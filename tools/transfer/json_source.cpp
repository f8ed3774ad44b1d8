#include "transfer/json_source.h"

#include "record/json.h"
#include "record/text.h"
#include "transfer/tables.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace
{

// NOLINTBEGIN(readability-identifier-naming): the standard library and the parser require these names

// Iterates over the bytes of a file and records the offset, since the parser reports offsets of errors only.
class OffsetIterator
{
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    OffsetIterator(const std::string& bytes, std::size_t begin, std::size_t& offset)
        : Bytes(&bytes), Position(begin), Offset(&offset)
    {
    }
    reference operator*() const { return (*Bytes)[Position]; }
    OffsetIterator& operator++()
    {
        *Offset = ++Position;
        return *this;
    }
    bool operator==(const OffsetIterator& other) const { return Position == other.Position; }

  private:
    const std::string* Bytes;
    std::size_t Position;
    std::size_t* Offset;
};

// Handles the parser's events. The text must be an object of tables; a table is an array of records; a record is an
// object of values; a value is a text, a number, or an object with the bytes of a text.
class ExportHandler
{
  public:
    ExportHandler(SourcePointer file, RawRowReceiver& receiver, Problems& problems)
        : File(std::move(file)), Receiver(receiver), Found(problems)
    {
    }

    std::size_t Offset = 0; // of the next byte that the parser reads

    bool null() { return RefuseValue("null is not allowed"); }
    bool boolean(bool) { return RefuseValue("true and false are not allowed"); }
    bool binary(nlohmann::json::binary_t&) { return Refuse("binary data is not allowed"); }
    bool number_integer(std::int64_t value) { return TakeValue(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) { return TakeValue(std::to_string(value)); }
    bool number_float(double, const std::string& text) { return TakeValue(text); }
    bool string(const std::string& text) { return TakeValue(text); }

    bool start_object(std::size_t)
    {
        ++Depth;
        Begin = Offset - 1;
        if (Depth == InRecord)
        {
            RecordIsOpen = true;
            Row.Offset = Begin;
        }
        return Depth == InRoot || Depth == InRecord || Depth == InBytes || Refuse("unexpected object");
    }
    bool end_object()
    {
        if (Depth == InRecord)
            EndRecord();
        --Depth;
        return true;
    }
    bool start_array(std::size_t)
    {
        ++Depth;
        if (Depth != InTable || Key == "Format")
            return Refuse("unexpected array");
        if (!TableNames.insert(Key).second)
            return Refuse("the table \"" + Key + "\" occurs twice");
        Receiver.BeginTable(Key, File);
        return true;
    }
    bool end_array()
    {
        --Depth;
        return true;
    }
    bool key(const std::string& name)
    {
        if (Depth == InBytes)
        {
            BytesKey = name;
            return true;
        }
        Key = name;
        const std::size_t colon = File->Bytes.find(':', Offset);
        Begin = std::min(File->Bytes.find_first_not_of(" \t\r\n", colon + 1), File->Bytes.size());
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error)
    {
        const std::string_view message = error.what();
        const std::size_t place = message.find("column "); // the parser's own, which differs for texts beyond ASCII
        const std::size_t begin = place == std::string_view::npos ? 0 : message.find(": ", place) + 2;
        Found.push_back(File->Place(Offset > 0 ? Offset - 1 : 0) + ": " + std::string(message.substr(begin)));
        return false;
    }

    // NOLINTEND(readability-identifier-naming)

    // Passes the record on. A record that the parser could not finish may have bad values, too.
    void EndRecord()
    {
        if (!std::exchange(RecordIsOpen, false))
            return;
        for (std::size_t i = 0; i < Row.Cells.size(); ++i)
        {
            Row.Cells[i].Field = Texts[2 * i];
            Row.Cells[i].Text = Texts[2 * i + 1];
        }
        Receiver.AddRow(Row);
        Row.Cells.clear();
        Texts.clear();
    }

  private:
    enum : int
    {
        InRoot = 1,
        InTable,
        InRecord,
        InBytes
    };

    bool TakeValue(const std::string& text)
    {
        if (Depth == InRoot && Key == "Format")
            return text == std::to_string(ExportFormat) ||
                   Refuse("unknown export format " + text + "; a newer version may be able to read it");
        if (Depth == InBytes && BytesKey == "Hex")
            return TakeBytes(text);
        if (Depth != InRecord)
            return Refuse("unexpected value");
        AddCell(text);
        return true;
    }

    bool TakeBytes(const std::string& hex)
    {
        try
        {
            AddCell(BytesFromHex(hex));
        }
        catch (const BadValue& bad)
        {
            Refuse(bad.what());
        }
        return true;
    }

    void AddCell(const std::string& text)
    {
        Texts.push_back(Key);
        Texts.push_back(text);
        Row.Cells.push_back({{}, {}, Begin});
    }

    bool Refuse(const std::string& reason)
    {
        Found.push_back(File->Place(Begin) + ": " + reason);
        return false;
    }

    // After a bad value of a record, reading can continue.
    bool RefuseValue(const std::string& reason) { return Refuse(reason) || Depth == InRecord; }

    SourcePointer File;
    RawRowReceiver& Receiver;
    Problems& Found;
    std::set<std::string> TableNames;
    RawRow Row;
    std::deque<std::string> Texts; // field and value of each cell of the row
    bool RecordIsOpen = false;
    std::string Key;
    std::string BytesKey;
    std::size_t Begin = 0; // of the value, or the object, that the parser has just read
    int Depth = 0;
};

} // namespace

void ReadJSONSource(const SourcePointer& file, RawRowReceiver& receiver, Problems& problems)
{
    ExportHandler handler(file, receiver, problems);
    nlohmann::json::sax_parse(OffsetIterator(file->Bytes, 0, handler.Offset),
                              OffsetIterator(file->Bytes, file->Bytes.size(), handler.Offset), &handler);
    handler.EndRecord();
}

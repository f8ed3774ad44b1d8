#include "journal/undo_record.h"

#include "refusal.h"

#include <charconv>
#include <cstdint>
#include <optional>

namespace
{

constexpr std::string_view Form = "plantjournal undo ";
constexpr std::string_view Version = "1\n";
constexpr std::size_t HashLength = 16;

// A text is stored as its length, a colon and its bytes.
void Append(std::string& bytes, const std::string& text)
{
    bytes += std::to_string(text.size()) + ':' + text;
}

// Reads what Append() wrote, in the same order.
class Reader
{
  public:
    explicit Reader(std::string_view bytes) : Rest(bytes) {}

    // Returns nothing where no text follows.
    std::optional<std::string> Next()
    {
        std::size_t length = 0;
        const char* const end = Rest.data() + Rest.size();
        const std::from_chars_result number = std::from_chars(Rest.data(), end, length);
        if (number.ec != std::errc() || number.ptr == end || *number.ptr != ':')
            return std::nullopt;
        Rest.remove_prefix(static_cast<std::size_t>(number.ptr - Rest.data()) + 1);
        if (length > Rest.size())
            return std::nullopt;
        const std::string text(Rest.substr(0, length));
        Rest.remove_prefix(length);
        return text;
    }

    bool IsAtEnd() const { return Rest.empty(); }

  private:
    std::string_view Rest;
};

// Reads the texts between the version and the checksum.
std::optional<UndoRecord> RecordIn(std::string_view texts)
{
    Reader reader(texts);
    const std::optional<std::string> journal = reader.Next();
    const std::optional<std::string> header = reader.Next();
    const std::optional<std::string> kind = reader.Next();
    const std::optional<std::string> content = reader.Next();
    if (!content || (*kind != "changes" && *kind != "copy"))
        return std::nullopt;
    UndoRecord record = {*journal, *header, {}, UndoRecord::Kind::ChangeSet, *content};
    if (*kind == "copy")
        record.Kept = UndoRecord::Kind::Copy;
    while (const std::optional<std::string> summary = reader.Next())
        record.Summaries.push_back(*summary);
    if (record.Summaries.empty() || !reader.IsAtEnd())
        return std::nullopt;
    return record;
}

} // namespace

std::string Encoded(const UndoRecord& record)
{
    std::string bytes = std::string(Form) + std::string(Version);
    Append(bytes, record.Journal);
    Append(bytes, record.Header);
    Append(bytes, record.Kept == UndoRecord::Kind::Copy ? "copy" : "changes");
    Append(bytes, record.Content);
    for (const std::string& summary : record.Summaries)
        Append(bytes, summary);
    return bytes + StableHash(bytes);
}

UndoRecord Decoded(std::string_view bytes, const std::string& path)
{
    const std::size_t begin = Form.size() + Version.size();
    if (bytes.starts_with(Form) && bytes.find('\n') < bytes.size() &&
        bytes.substr(Form.size(), Version.size()) != Version)
        throw Refusal(path + ": a newer version of plantjournal wrote this undo step; nothing was changed; undo with "
                             "that version");
    if (bytes.size() >= begin + HashLength && bytes.starts_with(Form))
    {
        const std::string_view hashed = bytes.substr(0, bytes.size() - HashLength);
        if (bytes.substr(hashed.size()) == StableHash(hashed))
            if (const std::optional<UndoRecord> record = RecordIn(hashed.substr(begin)))
                return *record;
    }
    throw Refusal(path +
                  ": the stored undo step is damaged, so nothing was changed; edit or delete the records instead");
}

std::string StableHash(std::string_view bytes)
{
    // FNV-1a, http://www.isthe.com/chongo/tech/comp/fnv/
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : bytes)
    {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001b3;
    }
    std::string digits(HashLength, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash /= 16)
        *digit = "0123456789abcdef"[hash % 16];
    return digits;
}

#include "record/json.h"

#include "record/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

#include <nlohmann/json.hpp>

namespace
{

using nlohmann::ordered_json;

bool IsUTF8(const std::string& text)
{
    try
    {
        static_cast<void>(ordered_json(text).dump());
        return true;
    }
    catch (const ordered_json::type_error&)
    {
        return false;
    }
}

ordered_json TreeOf(std::int64_t value)
{
    return value;
}

ordered_json TreeOf(int value)
{
    return value;
}

ordered_json TreeOf(double value)
{
    return std::isinf(value) ? ordered_json(TextOf(&value)) : ordered_json(value);
}

ordered_json TreeOf(const std::string& value)
{
    if (IsUTF8(value))
        return value;
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const char letter : value)
    {
        const auto byte = static_cast<unsigned char>(letter);
        hex += {digits[byte >> 4U], digits[byte & 0x0FU]};
    }
    return {{"Hex", hex}};
}

template <typename Enumeration>
requires std::is_enum_v<Enumeration> ordered_json TreeOf(Enumeration value)
{
    return TextOf(&value);
}

ordered_json TreeOf(const ConstValueRef& value)
{
    return std::visit([](const auto* of) { return TreeOf(*of); }, value);
}

} // namespace

struct JSON::Tree
{
    ordered_json Value;
};

JSON::JSON(std::unique_ptr<Tree> tree) : Root(std::move(tree)) {}
JSON::~JSON() = default;
JSON::JSON(JSON&&) noexcept = default;
JSON& JSON::operator=(JSON&&) noexcept = default;

JSON JSON::Array()
{
    return JSON(std::make_unique<Tree>(Tree{ordered_json::array()}));
}

JSON JSON::Object()
{
    return JSON(std::make_unique<Tree>(Tree{ordered_json::object()}));
}

JSON JSON::Null()
{
    return JSON(std::make_unique<Tree>(Tree{nullptr}));
}

void JSON::Add(JSON element)
{
    Root->Value.push_back(std::move(element.Root->Value));
}

void JSON::Add(const std::string& name, JSON value)
{
    Root->Value[name] = std::move(value.Root->Value);
}

void JSON::AddFieldsOf(const JSON& object)
{
    Root->Value.update(object.Root->Value);
}

std::string JSON::OnOneLine() const
{
    return Root->Value.dump();
}

std::string JSON::Indented() const
{
    return Root->Value.dump(2);
}

JSON JSONOf(const ConstValueRef& value)
{
    return JSON(std::make_unique<JSON::Tree>(JSON::Tree{TreeOf(value)}));
}

JSON JSONOf(const std::string& text)
{
    return JSONOf(ConstValueRef(&text));
}

JSON JSONOf(std::int64_t number)
{
    return JSONOf(ConstValueRef(&number));
}

JSON JSONOf(const std::vector<std::string>& texts)
{
    JSON array = JSON::Array();
    for (const std::string& text : texts)
        array.Add(JSONOf(text));
    return array;
}

template <typename Record> JSON RecordJSON(const Record& record)
{
    JSON object = JSON::Object();
    for (const Field<Record>& field : Describe<Record>().Fields)
        object.Add(field.Name, JSONOf(ValueIn(field, record)));
    return object;
}

template <typename Record> JSON RecordJSON(const Record& record, const Plant& plant)
{
    JSON object = JSON::Object();
    for (const Field<Record>& field : Describe<Record>().Fields)
    {
        object.Add(field.Name, JSONOf(ValueIn(field, record)));
        if (field.Used == Use::Owner)
            object.Add("Plant", JSONOf(plant.Name));
    }
    return object;
}

template JSON RecordJSON(const Strain& record);
template JSON RecordJSON(const StrainSummary& record);
template JSON RecordJSON(const Plant& record);
template JSON RecordJSON(const PlantEvent& record);
template JSON RecordJSON(const PlantEvent& record, const Plant& plant);
template JSON RecordJSON(const PlantCareEntry& record);
template JSON RecordJSON(const PlantCareEntry& record, const Plant& plant);
template JSON RecordJSON(const HarvestRecord& record);
template JSON RecordJSON(const HarvestRecord& record, const Plant& plant);
template JSON RecordJSON(const PlantPhoto& record);
template JSON RecordJSON(const PlantPhoto& record, const Plant& plant);
template JSON RecordJSON(const PlantHealthObservation& record);
template JSON RecordJSON(const PlantHealthObservation& record, const Plant& plant);
template JSON RecordJSON(const PlantJournalEntry& record);
template JSON RecordJSON(const PlantJournalEntry& record, const Plant& plant);

std::string BytesFromHex(const std::string& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
    {
        unsigned byte = 0;
        const char* const end = hex.data() + std::min(i + 2, hex.size());
        const std::from_chars_result result = std::from_chars(hex.data() + i, end, byte, 16);
        if (result.ec != std::errc() || result.ptr != end || hex.size() % 2 != 0)
            throw BadValue(InQuotes(hex) + " is not hexadecimal; write two digits for each byte");
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

#pragma once

#include "record/fields.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Keeps the fields of a record in their order.
using JSON = nlohmann::ordered_json;

// A number that JSON has not is its text. A text that is not UTF-8, which JSON has not, is an object with its bytes in
// hexadecimal digits: {"Hex": "ff"}.
JSON JSONOf(const View& value);
inline JSON JSONOf(const std::string& value)
{
    return JSONOf(View(&value));
}

// The bytes that hexadecimal digits stand for; throws BadValue.
std::string BytesFrom(const std::string& hex);

template <typename Record> JSON JSONOf(const Record& record)
{
    JSON object = JSON::object();
    for (const Field<Record>& field : Describe<Record>().Fields)
        object[field.Name] = JSONOf(field.Of.Get(record));
    return object;
}

template <typename Record> JSON JSONOf(const std::vector<Record>& records)
{
    JSON array = JSON::array();
    for (const Record& record : records)
        array.push_back(JSONOf(record));
    return array;
}

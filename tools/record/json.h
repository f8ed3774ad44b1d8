#pragma once

#include "record/fields.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// A JSON value to be written. The fields of an object keep the order in which they were added.
class JSON
{
  public:
    static JSON Array();
    static JSON Object();
    static JSON Null();
    ~JSON();
    JSON(const JSON&) = delete;
    JSON& operator=(const JSON&) = delete;
    JSON(JSON&&) noexcept;
    JSON& operator=(JSON&&) noexcept;

    // Adds an element to an array.
    void Add(JSON element);
    // Adds a field to an object.
    void Add(const std::string& name, JSON value);
    // Adds the fields of another object to an object.
    void AddFieldsOf(const JSON& object);

    std::string OnOneLine() const;
    std::string Indented() const;

  private:
    struct Tree; // the library's value: only json.cpp includes its header, which takes seconds to compile

    explicit JSON(std::unique_ptr<Tree> tree);
    friend JSON JSONOf(const ConstValueRef& value);

    std::unique_ptr<Tree> Root;
};

// An infinite number becomes its text, since JSON has no such number. A text that is not UTF-8 becomes an object with
// its bytes in hexadecimal digits: {"Hex": "ff"}.
JSON JSONOf(const ConstValueRef& value);
JSON JSONOf(const std::string& text);
JSON JSONOf(std::int64_t number);
JSON JSONOf(const std::vector<std::string>& texts);

// An object of the record's fields. Defined for every kind of record.
template <typename Record> JSON RecordJSON(const Record& record);
// Likewise for a record of a plant, with the plant's name in the field `Plant`, after its UUID.
template <typename Record> JSON RecordJSON(const Record& record, const Plant& plant);

// An array of strains or plants.
template <typename Record> JSON RecordsJSON(const std::vector<Record>& records)
{
    JSON array = JSON::Array();
    for (const Record& record : records)
        array.Add(RecordJSON(record));
    return array;
}

// Returns the bytes that hexadecimal digits stand for. Throws BadValue.
std::string BytesFromHex(const std::string& hex);

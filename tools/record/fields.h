#pragma once

#include "plant_database.h"

#include <set>
#include <string>
#include <variant>
#include <vector>

// The fields of every kind of record. Flags, tables, JSON, CSV and help are generated from them.

// How the command treats a field.
enum class Use
{
    RowID,  // shown, never set
    Link,   // the row ID of another record: never set
    UUID,   // set when the record is created, or not at all
    Owner,  // the plant's UUID, which every command takes as an argument
    Mother, // the mother plant; a user names it like any plant
    Title,  // identifies the record, never empty: `add` takes it without its flag, too
    Words,  // the text of the record: like Title, but may be empty
    Day,    // the date of the record; the default is today
    Date,
    Severity,
    Count,  // a number that people read even where it is 0; elsewhere 0 means that none was entered
    Remark, // free text that can be long
    Value
};

enum class Display
{
    Always,
    InFull, // where one record is shown, not in tables
    OnlyInJSON
};

// A member of a record, of any of the types that the records have.
template <typename Record>
using AnyMember =
    std::variant<std::int64_t Record::*, int Record::*, double Record::*, std::string Record::*, PlantStage Record::*,
                 PlantSex Record::*, PlantEventType Record::*, PlantCareAction Record::*, PlantJournalType Record::*>;

template <typename Record> struct Field
{
    const char* Name; // as in the record
    AnyMember<Record> Member;
    Use Used;
    Display Displayed;
    const char* Label; // what people read instead of the name
    const char* Help;
    const char* Unit = "";
    const char* Column = Name; // as in the file
};

template <typename Record> struct Description
{
    const char* Table;   // in the file, in JSON and as the name of the CSV file
    const char* Command; // its group of commands
    const char* Noun;
    const char* Plural; // of the noun
    std::vector<Field<Record>> Fields;
};

template <typename Record> const Description<Record>& Describe();
template <> const Description<Strain>& Describe();
template <> const Description<Plant>& Describe();
template <> const Description<PlantEvent>& Describe();
template <> const Description<PlantCareEntry>& Describe();
template <> const Description<HarvestRecord>& Describe();
template <> const Description<PlantPhoto>& Describe();
template <> const Description<PlantHealthObservation>& Describe();
template <> const Description<PlantJournalEntry>& Describe();
template <> const Description<StrainSummary>& Describe();

// What people read instead of the name of a table, such as "Care entries" for PlantCareEntries; empty for a
// table without records.
std::string TableLabel(const std::string& table);

// The names of some fields of a record.
using FieldNames = std::set<std::string>;

// A field's value in some record, to be set or to be read. Valid as long as the record.
using ValueRef = std::variant<std::int64_t*, int*, double*, std::string*, PlantStage*, PlantSex*, PlantEventType*,
                              PlantCareAction*, PlantJournalType*>;
using ConstValueRef =
    std::variant<const std::int64_t*, const int*, const double*, const std::string*, const PlantStage*, const PlantSex*,
                 const PlantEventType*, const PlantCareAction*, const PlantJournalType*>;

template <typename Record> ConstValueRef ValueIn(const Field<Record>& field, const Record& record)
{
    return std::visit([&](auto member) -> ConstValueRef { return &(record.*member); }, field.Member);
}

template <typename Record> ValueRef MutableValueIn(const Field<Record>& field, Record& record)
{
    return std::visit([&](auto member) -> ValueRef { return &(record.*member); }, field.Member);
}

#pragma once

#include "plant_database.h"

#include <string>
#include <variant>
#include <vector>

// What a record is made of, said once: the flags, the tables, JSON, CSV and the help are all made from this.

enum class Use
{
    Number, // the row's number: shown, never set
    Link,   // the number of another row: never set
    UUID,   // set when the record is made, or not at all
    Owner,  // the plant's UUID, which every command takes as an argument
    Mother, // a plant, named in any way
    Title,  // what a record is known by, never empty: `add` takes it without its flag, too
    Words,  // what a record says: likewise, but may be empty
    Day,    // the date of the record: today where it is not given
    Date,
    Severity,
    Value
};

enum class Shown
{
    Always,
    InFull // not in tables
};

// A member of some record, to be set or to be read.
using Cell = std::variant<std::int64_t*, int*, double*, std::string*, PlantStage*, PlantSex*, PlantEventType*,
                          PlantCareAction*, PlantJournalType*>;
using View = std::variant<const std::int64_t*, const int*, const double*, const std::string*, const PlantStage*,
                          const PlantSex*, const PlantEventType*, const PlantCareAction*, const PlantJournalType*>;

template <typename Record> struct Access
{
    Cell (*Set)(Record&);
    View (*Get)(const Record&);
};

template <typename Record, typename Value> Record RecordOf(Value Record::*);

template <auto Of>
inline constexpr Access<decltype(RecordOf(Of))> Member = {
    [](decltype(RecordOf(Of))& record) -> Cell { return &(record.*Of); },
    [](const decltype(RecordOf(Of))& record) -> View { return &(record.*Of); }};

template <typename Record> struct Field
{
    const char* Name; // as in the record
    Access<Record> Of;
    Use Used;
    Shown In;
    const char* Help;
    const char* Column = Name; // as in the file
};

template <typename Record> struct Description
{
    const char* Table;   // in the file, in JSON and as the name of the CSV file
    const char* Command; // its group of commands
    const char* Noun;
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

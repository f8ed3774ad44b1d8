#include "support/steps.h"

#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include <sqlite3.h>

namespace support
{

// ---------------------------------------------------------------------------------------------------------------------
// Library and model side by side

SideBySide::SideBySide(std::string path) : Path(std::move(path))
{
    std::string error;
    if (!Database.Open(Path, &error))
        Fail("opening", error, "");
}

void SideBySide::Begin(const std::string& name, const std::vector<std::string>& arguments)
{
    std::string call = name;
    for (const std::string& argument : arguments)
        call += ' ' + argument;
    Calls.push_back(call);
}

void SideBySide::End(const std::string& result)
{
    Calls.back() += " -> " + result;
}

void SideBySide::Fail(const std::string& what, const std::string& library, const std::string& model) const
{
    std::string message;
    for (const std::string& call : Calls)
        message += "  " + call + '\n';
    message += "The " + what + " of the library: " + library + "\nThe " + what + " of the model:   " + model;
    throw Mismatch(message);
}

void SideBySide::Reopen()
{
    Begin("Reopen", {});
    CheckFile();
    std::string error;
    if (!Database.Open(Path, &error))
        Fail("opening", error, "");
    CompareAll();
}

void SideBySide::CheckFile()
{
    Compare("damage to the file", Damage(Database.NativeHandle()), std::string("ok"));
}

template <typename Type>
void SideBySide::CompareLists(bool (PlantRepository::*list)(const std::string&, std::vector<Type>&),
                              bool (JournalModel::*modelList)(const std::string&, std::vector<Type>&) const,
                              const std::string& plantUUID)
{
    std::vector<Type> records;
    std::vector<Type> expected;
    Compare("result of a list", (Library.*list)(plantUUID, records), (Model.*modelList)(plantUUID, expected));
    Compare("list", records, expected);
}

void SideBySide::CompareAll()
{
    sqlite3* db = Database.NativeHandle();
    Compare("open transaction", sqlite3_get_autocommit(db) == 0, false);
    Compare("open statement", sqlite3_next_stmt(db, nullptr) != nullptr, false);

    std::vector<Plant> plants;
    std::vector<Plant> expectedPlants;
    std::vector<Strain> strains;
    std::vector<Strain> expectedStrains;
    Compare("result of a list", Library.ListPlants(plants) && Library.ListStrains(strains), true);
    Model.OrderAlikeAs(plants, strains);
    Model.ListPlants(expectedPlants);
    Model.ListStrains(expectedStrains);
    Compare("list of plants", plants, expectedPlants);
    Compare("list of strains", strains, expectedStrains);

    for (const Strain& strain : strains)
    {
        StrainSummary summary;
        StrainSummary expected;
        Compare("result of a summary", Library.GetStrainSummary(strain.ID, summary),
                Model.GetStrainSummary(strain.ID, expected));
        Compare("summary", summary, expected);
    }
    for (const std::string& uuid : Model.PlantUUIDs())
    {
        using R = PlantRepository;
        using M = JournalModel;
        CompareLists(&R::ListPlantEvents, &M::ListPlantEvents, uuid);
        CompareLists(&R::ListPlantCareEntries, &M::ListPlantCareEntries, uuid);
        CompareLists(&R::ListPlantPhotos, &M::ListPlantPhotos, uuid);
        CompareLists(&R::ListPlantHealthObservations, &M::ListPlantHealthObservations, uuid);
        CompareLists(&R::ListPlantJournalEntries, &M::ListPlantJournalEntries, uuid);
        HarvestRecord record;
        HarvestRecord expected;
        Compare("result of a harvest", Library.GetHarvestRecord(uuid, record), Model.GetHarvestRecord(uuid, expected));
        Compare("harvest", record, expected);
    }
}

// Averages may differ in the last digits: SQLite adds up in an order, and with a precision, of its own.
bool SideBySide::Same(const StrainSummary& library, const StrainSummary& model)
{
    const auto close = [](double l, double r)
    { return l == r || std::abs(l - r) <= 1e-9 * std::max(std::abs(l), std::abs(r)); };
    StrainSummary exact = library;
    exact.AverageDryWeightG = model.AverageDryWeightG;
    exact.AverageQuality = model.AverageQuality;
    return exact == model && close(library.AverageDryWeightG, model.AverageDryWeightG) &&
           close(library.AverageQuality, model.AverageQuality);
}

void SideBySide::TakeOver(const Plant& before, const Plant& after, const std::string&)
{
    TakeOverUUID(before.UUID, after.UUID);
}

void SideBySide::TakeOver(const PlantPhoto& before, const PlantPhoto& after, const std::string&)
{
    TakeOverUUID(before.UUID, after.UUID);
}

void SideBySide::TakeOver(const HarvestRecord& before, const HarvestRecord& after, const std::string& today)
{
    if (before.HarvestDate != after.HarvestDate) // it may have become midnight in between
        Model.Today = after.HarvestDate == PlantEventCurrentDate() ? after.HarvestDate : today;
}

void SideBySide::TakeOverUUID(const std::string& before, const std::string& after)
{
    if (before == after)
        return;
    const std::string form = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    const auto fits = [](char c, char place)
    {
        if (place != 'x' && place != 'y')
            return c == place;
        return c != '\0' && std::strchr(place == 'x' ? "0123456789abcdef" : "89ab", c) != nullptr;
    };
    const bool isUUID = std::equal(after.begin(), after.end(), form.begin(), form.end(), fits);
    const bool isNew = MadeUpUUIDs.insert(after).second;
    Model.NextUUID = isUUID && isNew ? after : "an identifier that is new and of the right form";
}

std::string SideBySide::Shown(bool value)
{
    return value ? "true" : "false";
}

std::string SideBySide::Shown(std::int64_t value)
{
    return std::to_string(value);
}

std::string SideBySide::Shown(const std::string& text)
{
    return '"' + Legible(Shortened(text)) + '"';
}

std::string SideBySide::Shortened(const std::string& text)
{
    constexpr std::size_t longest = 60;
    return text.size() <= longest ? text : text.substr(0, longest) + "... (" + std::to_string(text.size()) + " bytes)";
}

std::string SideBySide::Legible(const std::string& text)
{
    constexpr auto hex = "0123456789abcdef";
    std::string legible;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte <= '~')
            legible += c;
        else
            legible += {'\\', 'x', hex[byte / 16], hex[byte % 16]};
    }
    return legible;
}

// ---------------------------------------------------------------------------------------------------------------------
// Steps

namespace
{

using namespace std::string_literals;

// Reads a step's choices one after the other.
class Choices
{
  public:
    explicit Choices(const Step& step) : Bytes(step) {}

    std::uint8_t Next() { return At < Bytes.size() ? Bytes.at(At++) : std::uint8_t{0}; }

    // One of several values, the plainest first.
    template <typename Values> auto Of(const Values& values)
    {
        return *(std::begin(values) + static_cast<std::ptrdiff_t>(Next() % std::size(values)));
    }

  private:
    const Step& Bytes;
    std::size_t At = 0;
};

// A journal on which steps are taken, with what they choose from.
class Walk
{
  public:
    explicit Walk(const std::string& path) : Journal(path) {}

    StepResult Take(const Step& step);
    void CheckFile() { Journal.CheckFile(); }

    // An operation whose arguments come from a step's choices.
    struct Operation
    {
        const char* Name;
        int Weight; // how often it comes, compared with others
        bool (*Run)(Walk& walk, const char* name, Choices& choices);
    };
    static const std::vector<Operation>& Operations();

  private:
    // -- Values

    static std::string Date(Choices& choices)
    {
        return choices.Of(std::array{"2026-05-20"s, "2026-05-19"s, ""s, "2026-05-20\0later"s, "9"s});
    }

    std::string Text(Choices& choices) const
    {
        static const std::string megabyte(1 << 20, 'm');
        const std::uint8_t choice = choices.Next();
        if (choice == UCHAR_MAX && choices.Next() % 8 == 5 && !std::exchange(HadMegabyte, true))
            return megabyte;
        const std::vector<std::string> names = choice % 2 == 0 ? Journal.Expected().StrainNames() : PlantUUIDs();
        if (choice >= 192 && !names.empty())
            return names[choice / 2 % names.size()];
        static const std::array texts = {
            "plain"s,
            ""s,
            "Plain"s,
            "PLAIN"s,
            "other"s,
            "2026-05-20"s,
            "a"s,
            "A"s,
            "a\0b"s,
            "a\0c"s,
            "A\0bc"s,
            "\0"s,
            "\0a"s,
            "it's; DROP TABLE Plants;--"s,
            R"(" OR ""=")"s,
            "%s%n ? ?1 :a NULL"s,
            "\xff\xfe\xc3("s,
            "\xc0\x80 \xed\xa0\x80 \xf4\x90\x80\x80"s,
            "\xc3\x84pfel"s,
            "\xc3\xa4pfel"s,
            "\xef\xbb\xbfmark"s,
            "line\nline\r\n\tline\x1b[31m"s,
            "[_`@{~\x7f"s,
            std::string(3000, '\xf0'),
        };
        return texts.at(choice % texts.size());
    }

    static double Real(Choices& choices)
    {
        using Limits = std::numeric_limits<double>;
        return choices.Of(std::array{0.0, 1.5, -1.0, 112.25, 0.05, 1e16, 1e300, Limits::denorm_min(), -0.0,
                                     Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()});
    }

    static std::int64_t RowID(Choices& choices)
    {
        return choices.Of(std::array<std::int64_t, 12>{0, 1, 2, 3, 4, 5, 6, 7, -1, INT64_MIN, INT64_MAX, 0x100000001});
    }

    void Set(std::string& field, Choices& choices) const { field = Text(choices); }
    void Set(std::int64_t& field, Choices& choices) const { field = RowID(choices); }
    void Set(double& field, Choices& choices) const { field = Real(choices); }
    void Set(int& field, Choices& choices) const { field = choices.Of(std::array{0, 1, 5, 6, -1, INT_MIN, INT_MAX}); }
    template <typename Enum>
    requires std::is_enum_v<Enum>
    void Set(Enum& field, Choices& choices) const
    {
        field =
            static_cast<Enum>(choices.Of(std::array{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -1, INT_MIN, INT_MAX, 256}));
    }

    // -- Records

    std::vector<std::string> PlantUUIDs() const { return Journal.Expected().PlantUUIDs(); }

    std::string PlantUUID(Choices& choices) const
    {
        const std::vector<std::string> uuids = PlantUUIDs();
        const std::uint8_t choice = choices.Next();
        if (choice < 240 && !uuids.empty())
            return uuids[choice % uuids.size()];
        return std::array{"unknown"s, ""s, "a"s, "a\0b"s, "\0"s, "A"s}.at(choice % 6U);
    }

    std::string StrainName(Choices& choices) const
    {
        const std::vector<std::string> names = Journal.Expected().StrainNames();
        const std::uint8_t choice = choices.Next();
        return choice < 160 && !names.empty() ? names[choice % names.size()] : Text(choices);
    }

    // A record that lets its create succeed where it is all zero choices, and there is a plant.
    void Fill(Plant& p, Choices& choices) const
    {
        p.Name = Text(choices);
        p.Strain = StrainName(choices);
        if (const std::uint8_t mother = choices.Next(); mother % 2 != 0 && !PlantUUIDs().empty())
            p.MotherPlantUUID = PlantUUIDs()[mother / 2 % PlantUUIDs().size()];
        p.UUID = choices.Next() % 2 == 0 ? "" : choices.Of(std::array{"a"s, "a\0b"s, "a\0c"s, "A"s, "\0"s, "\0a"s});
    }
    void Fill(Strain& s, Choices& choices) const { s.Name = Text(choices); }
    void Fill(PlantEvent& e, Choices& choices) const
    {
        e.PlantUUID = PlantUUID(choices);
        e.EventDate = Date(choices);
    }
    void Fill(PlantCareEntry& e, Choices& choices) const
    {
        e.PlantUUID = PlantUUID(choices);
        e.CareDate = Date(choices);
        Set(e.Action, choices);
        Set(e.AmountMl, choices);
    }
    void Fill(HarvestRecord& r, Choices& choices) const
    {
        r.HarvestDate = Date(choices);
        Set(r.DryWeightG, choices);
        Set(r.QualityRating, choices);
    }
    void Fill(PlantPhoto& p, Choices& choices) const
    {
        p.PlantUUID = PlantUUID(choices);
        p.PhotoDate = Date(choices);
        p.FilePath = "photo.jpg";
    }
    void Fill(PlantHealthObservation& o, Choices& choices) const
    {
        o.PlantUUID = PlantUUID(choices);
        o.ObservationDate = Date(choices);
        o.Issue = "mites";
        Set(o.Severity, choices);
    }
    void Fill(PlantJournalEntry& e, Choices& choices) const
    {
        e.PlantUUID = PlantUUID(choices);
        e.EntryDate = Date(choices);
    }

    template <typename Type> Type Fresh(Choices& choices) const
    {
        Type record;
        Fill(record, choices);
        return record;
    }

    // All that is stored of a kind, as it reads.
    std::vector<Plant> AllStored(const Plant&) const
    {
        std::vector<Plant> plants;
        Journal.Expected().ListPlants(plants);
        return plants;
    }
    std::vector<Strain> AllStored(const Strain&) const
    {
        std::vector<Strain> strains;
        Journal.Expected().ListStrains(strains);
        return strains;
    }
    std::vector<HarvestRecord> AllStored(const HarvestRecord&) const
    {
        std::vector<HarvestRecord> all;
        for (const std::string& uuid : PlantUUIDs())
            if (HarvestRecord record; Journal.Expected().GetHarvestRecord(uuid, record))
                all.push_back(record);
        return all;
    }
    template <typename Type>
    std::vector<Type> Listed(bool (JournalModel::*list)(const std::string&, std::vector<Type>&) const) const
    {
        std::vector<Type> all;
        for (const std::string& uuid : PlantUUIDs())
        {
            std::vector<Type> records;
            (Journal.Expected().*list)(uuid, records);
            for (Type& record : records)
            {
                record.PlantUUID = uuid; // all of it, or a record of a plant with a zero byte there would never match
                all.push_back(record);
            }
        }
        return all;
    }
    std::vector<PlantEvent> AllStored(const PlantEvent&) const { return Listed(&JournalModel::ListPlantEvents); }
    std::vector<PlantCareEntry> AllStored(const PlantCareEntry&) const
    {
        return Listed(&JournalModel::ListPlantCareEntries);
    }
    std::vector<PlantPhoto> AllStored(const PlantPhoto&) const { return Listed(&JournalModel::ListPlantPhotos); }
    std::vector<PlantHealthObservation> AllStored(const PlantHealthObservation&) const
    {
        return Listed(&JournalModel::ListPlantHealthObservations);
    }
    std::vector<PlantJournalEntry> AllStored(const PlantJournalEntry&) const
    {
        return Listed(&JournalModel::ListPlantJournalEntries);
    }

    // The same in the order of the rows: that of a list may hang on the identifiers that the library made up, and these
    // are others every time.
    template <typename Type> std::vector<Type> Stored() const
    {
        std::vector<Type> records = AllStored(Type{});
        std::sort(records.begin(), records.end(), [](const Type& l, const Type& r) { return l.ID < r.ID; });
        return records;
    }

    // The last records of a kind as they came back from a call, whether or not it stored them.
    template <typename Type> std::vector<Type>& Returned() { return std::get<std::vector<Type>>(ReturnedRecords); }

    template <Record Type> void Remember(const Type& record)
    {
        std::vector<Type>& returned = Returned<Type>();
        if (returned.size() == 8)
            returned.erase(returned.begin());
        returned.push_back(record);
    }

    template <typename Other> void Remember(const Other&) {}
    void Remember(const StrainSummary&) {}

    enum class Source
    {
        New,
        File,
        EarlierCall
    };

    template <typename Type> Type From(Source source, Choices& choices)
    {
        const std::vector<Type> records = source == Source::File          ? Stored<Type>()
                                          : source == Source::EarlierCall ? Returned<Type>()
                                                                          : std::vector<Type>{};
        return records.empty() ? Fresh<Type>(choices) : records[choices.Next() % records.size()];
    }

    // A record, mostly of that source, with a few fields changed.
    template <typename Type> Type Some(Source mostly, Choices& choices)
    {
        const std::uint8_t choice = choices.Next() % 8;
        const Source others[] = {Source::New, Source::File, Source::EarlierCall};
        Type record = From<Type>(choice < 5 ? mostly : others[choice - 5], choices);
        constexpr std::size_t count = std::tuple_size_v<decltype(Fields(record))>;
        for (int change = 0; change < 3; ++change)
        {
            const std::uint8_t place = choices.Next();
            if (place < 160)
                continue;
            std::size_t index = 0;
            const auto setIfItsTurn = [&](auto& field)
            {
                if (index++ == place % count)
                    Set(field, choices);
            };
            std::apply([&](auto&... fields) { (setIfItsTurn(fields), ...); }, Fields(record));
        }
        return record;
    }

    // The row number of a stored record, or some other.
    template <typename Type> std::int64_t SomeID(Choices& choices)
    {
        const std::vector<Type> records = Stored<Type>();
        const std::uint8_t choice = choices.Next();
        return choice < 192 && !records.empty() ? records[choice % records.size()].ID : RowID(choices);
    }

    // -- Operations

    template <typename Call, typename... Arguments>
    bool Run(const char* name, const Call& call, Arguments&... arguments)
    {
        const auto result = Journal.Run(name, call, arguments...);
        (Remember(arguments), ...);
        if constexpr (std::is_same_v<decltype(result), const bool>)
            return result;
        else
            return true;
    }

    template <auto Call, typename Type, Source Mostly> static bool OnRecord(Walk& walk, const char* name, Choices& c)
    {
        auto record = walk.Some<Type>(Mostly, c);
        return walk.Run(name, Call, record);
    }

    template <auto Call, typename Type> static bool OnID(Walk& walk, const char* name, Choices& c)
    {
        const std::int64_t id = walk.SomeID<Type>(c);
        return walk.Run(name, Call, id);
    }

    template <auto Call> static bool OnPlantUUID(Walk& walk, const char* name, Choices& c)
    {
        const std::string uuid = walk.PlantUUID(c);
        return walk.Run(name, Call, uuid);
    }

    // Reads what belongs to a plant into something that is not empty before.
    template <auto Call, typename Type> static bool IntoList(Walk& walk, const char* name, Choices& c)
    {
        const std::string uuid = walk.PlantUUID(c);
        std::vector<Type> records = walk.Returned<Type>();
        return walk.Run(name, Call, uuid, records);
    }

    SideBySide Journal;
    mutable bool HadMegabyte = false; // it spreads, and slows down all that follows: one is enough
    std::tuple<std::vector<Plant>, std::vector<Strain>, std::vector<PlantEvent>, std::vector<PlantCareEntry>,
               std::vector<HarvestRecord>, std::vector<PlantPhoto>, std::vector<PlantHealthObservation>,
               std::vector<PlantJournalEntry>>
        ReturnedRecords;
};

const std::vector<Walk::Operation>& Walk::Operations()
{
    using enum Source;
    static const std::vector<Operation> operations = {
        {"CreatePlant", 16, OnRecord<[](auto& j, Plant& p) { return j.CreatePlant(p); }, Plant, New>},
        {"UpdatePlant", 10, OnRecord<[](auto& j, Plant& p) { return j.UpdatePlant(p); }, Plant, File>},
        {"UpdatePlant with another mother", 8,
         [](Walk& walk, const char* name, Choices& c)
         {
             auto plant = walk.Some<Plant>(File, c);
             plant.MotherPlantUUID = walk.PlantUUID(c);
             return walk.Run(
                 name, [](auto& j, Plant& p) { return j.UpdatePlant(p); }, plant);
         }},
        {"DeletePlant", 3, OnPlantUUID<[](auto& j, const std::string& uuid) { return j.DeletePlant(uuid); }>},
        {"DuplicatePlant", 3,
         [](Walk& walk, const char* name, Choices& c)
         {
             auto source = walk.Some<Plant>(File, c);
             auto copy = walk.Some<Plant>(EarlierCall, c);
             return walk.Run(
                 name, [](auto& j, Plant& from, Plant& to) { return j.DuplicatePlant(from, to); }, source, copy);
         }},
        {"DuplicatePlant into itself", 1,
         OnRecord<[](auto& j, Plant& p) { return j.DuplicatePlant(p, p); }, Plant, File>},
        {"GetPlant", 2,
         [](Walk& walk, const char* name, Choices& c)
         {
             const std::string uuid = walk.PlantUUID(c);
             auto plant = walk.Some<Plant>(EarlierCall, c);
             return walk.Run(
                 name, [](auto& j, const std::string& key, Plant& p) { return j.GetPlant(key, p); }, uuid, plant);
         }},
        {"ListPlants", 1,
         [](Walk& walk, const char* name, Choices&)
         {
             std::vector<Plant> plants = walk.Returned<Plant>();
             return walk.Run(
                 name, [](auto& j, std::vector<Plant>& out) { return j.ListPlants(out); }, plants);
         }},

        {"CreateStrain", 6, OnRecord<[](auto& j, Strain& s) { return j.CreateStrain(s); }, Strain, New>},
        {"UpdateStrain", 10, OnRecord<[](auto& j, Strain& s) { return j.UpdateStrain(s); }, Strain, File>},
        {"DeleteStrain", 4, OnID<[](auto& j, std::int64_t id) { return j.DeleteStrain(id); }, Strain>},
        {"GetStrain", 1,
         [](Walk& walk, const char* name, Choices& c)
         {
             const std::int64_t id = walk.SomeID<Strain>(c);
             auto strain = walk.Some<Strain>(EarlierCall, c);
             return walk.Run(
                 name, [](auto& j, std::int64_t key, Strain& s) { return j.GetStrain(key, s); }, id, strain);
         }},
        {"ListStrains", 1,
         [](Walk& walk, const char* name, Choices&)
         {
             std::vector<Strain> strains = walk.Returned<Strain>();
             return walk.Run(
                 name, [](auto& j, std::vector<Strain>& out) { return j.ListStrains(out); }, strains);
         }},
        {"GetStrainSummary", 1,
         [](Walk& walk, const char* name, Choices& c)
         {
             const std::int64_t id = walk.SomeID<Strain>(c);
             StrainSummary summary;
             summary.StrainName = "not empty before";
             summary.AverageQuality = 7;
             return walk.Run(
                 name, [](auto& j, std::int64_t key, StrainSummary& s) { return j.GetStrainSummary(key, s); }, id,
                 summary);
         }},

        {"CreatePlantEvent", 8,
         OnRecord<[](auto& j, PlantEvent& e) { return j.CreatePlantEvent(e); }, PlantEvent, New>},
        {"UpdatePlantEvent", 6,
         OnRecord<[](auto& j, PlantEvent& e) { return j.UpdatePlantEvent(e); }, PlantEvent, File>},
        {"DeletePlantEvent", 6, OnID<[](auto& j, std::int64_t id) { return j.DeletePlantEvent(id); }, PlantEvent>},
        {"ListPlantEvents", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantEvents(uuid, out); }, PlantEvent>},

        {"CreatePlantCareEntry", 12,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.CreatePlantCareEntry(e); }, PlantCareEntry, New>},
        {"UpdatePlantCareEntry", 12,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.UpdatePlantCareEntry(e); }, PlantCareEntry, File>},
        {"DeletePlantCareEntry", 5,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantCareEntry(id); }, PlantCareEntry>},
        {"CareTimelineDetails", 1,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.CareTimelineDetails(e); }, PlantCareEntry, New>},
        {"ListPlantCareEntries", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantCareEntries(uuid, out); }, PlantCareEntry>},

        {"SaveHarvestRecord", 14,
         [](Walk& walk, const char* name, Choices& c)
         {
             auto plant = walk.Some<Plant>(File, c);
             auto record = walk.Some<HarvestRecord>(New, c);
             return walk.Run(
                 name, [](auto& j, Plant& p, HarvestRecord& r) { return j.SaveHarvestRecord(p, r); }, plant, record);
         }},
        {"SaveHarvestRecord again", 8,
         [](Walk& walk, const char* name, Choices& c)
         {
             auto record = walk.Some<HarvestRecord>(File, c);
             Plant plant;
             plant.UUID = record.PlantUUID;
             return walk.Run(
                 name, [](auto& j, Plant& p, HarvestRecord& r) { return j.SaveHarvestRecord(p, r); }, plant, record);
         }},
        {"DeleteHarvestRecord", 3,
         OnPlantUUID<[](auto& j, const std::string& uuid) { return j.DeleteHarvestRecord(uuid); }>},
        {"GetHarvestRecord", 1,
         [](Walk& walk, const char* name, Choices& c)
         {
             const std::string uuid = walk.PlantUUID(c);
             auto record = walk.Some<HarvestRecord>(EarlierCall, c);
             return walk.Run(
                 name, [](auto& j, auto& key, HarvestRecord& r) { return j.GetHarvestRecord(key, r); }, uuid, record);
         }},

        {"CreatePlantPhoto", 5,
         OnRecord<[](auto& j, PlantPhoto& p) { return j.CreatePlantPhoto(p); }, PlantPhoto, New>},
        {"UpdatePlantPhoto", 5,
         OnRecord<[](auto& j, PlantPhoto& p) { return j.UpdatePlantPhoto(p); }, PlantPhoto, File>},
        {"DeletePlantPhoto", 3,
         [](Walk& walk, const char* name, Choices& c)
         {
             const std::string uuid = walk.Some<PlantPhoto>(File, c).UUID;
             return walk.Run(
                 name, [](auto& j, const std::string& key) { return j.DeletePlantPhoto(key); }, uuid);
         }},
        {"ListPlantPhotos", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantPhotos(uuid, out); }, PlantPhoto>},

        {"CreatePlantHealthObservation", 5,
         OnRecord<[](auto& j, PlantHealthObservation& o) { return j.CreatePlantHealthObservation(o); },
                  PlantHealthObservation, New>},
        {"UpdatePlantHealthObservation", 5,
         OnRecord<[](auto& j, PlantHealthObservation& o) { return j.UpdatePlantHealthObservation(o); },
                  PlantHealthObservation, File>},
        {"DeletePlantHealthObservation", 2,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantHealthObservation(id); }, PlantHealthObservation>},
        {"ListPlantHealthObservations", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantHealthObservations(uuid, out); },
                  PlantHealthObservation>},

        {"CreatePlantJournalEntry", 5,
         OnRecord<[](auto& j, PlantJournalEntry& e) { return j.CreatePlantJournalEntry(e); }, PlantJournalEntry, New>},
        {"UpdatePlantJournalEntry", 5,
         OnRecord<[](auto& j, PlantJournalEntry& e) { return j.UpdatePlantJournalEntry(e); }, PlantJournalEntry, File>},
        {"DeletePlantJournalEntry", 2,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantJournalEntry(id); }, PlantJournalEntry>},
        {"ListPlantJournalEntries", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantJournalEntries(uuid, out); },
                  PlantJournalEntry>},

        {"Reopen", 4,
         [](Walk& walk, const char*, Choices&)
         {
             walk.Journal.Reopen();
             return true;
         }},
    };
    return operations;
}

const Walk::Operation& OperationOf(const Step& step)
{
    const std::vector<Walk::Operation>& operations = Walk::Operations();
    static const int weights = [&]
    {
        int sum = 0;
        for (const Walk::Operation& operation : operations)
            sum += operation.Weight;
        return sum;
    }();
    int left = step[0] * weights / 256;
    const auto chosen = std::find_if(operations.begin(), operations.end(),
                                     [&](const Walk::Operation& operation)
                                     {
                                         left -= operation.Weight;
                                         return left < 0;
                                     });
    return *chosen;
}

StepResult Walk::Take(const Step& step)
{
    const Operation& operation = OperationOf(step);
    Choices choices(step);
    choices.Next();
    return {operation.Name, operation.Run(*this, operation.Name, choices)};
}

} // namespace

std::vector<Step> StepsFrom(const std::uint8_t* data, std::size_t size)
{
    std::vector<Step> steps((size + Step{}.size() - 1) / Step{}.size());
    for (std::size_t i = 0; i < size; ++i)
        steps[i / Step{}.size()].at(i % Step{}.size()) = data[i];
    return steps;
}

std::vector<StepResult> Take(const std::vector<Step>& steps)
{
    // Only a journal in a file can be closed and opened again; one in memory is faster.
    std::optional<ScratchDirectory> scratch;
    std::string path = ":memory:";
    if (std::any_of(steps.begin(), steps.end(),
                    [](const Step& step) { return std::strcmp(OperationOf(step).Name, "Reopen") == 0; }))
        path = scratch.emplace().File("journal.db");
    Walk walk(path);
    std::vector<StepResult> outcomes;
    for (const Step& step : steps)
        outcomes.push_back(walk.Take(step));
    walk.CheckFile();
    return outcomes;
}

std::set<std::string> OperationNames()
{
    std::set<std::string> names;
    for (const Walk::Operation& operation : Walk::Operations())
        names.insert(operation.Name);
    return names;
}

} // namespace support

#include "support/model/random_arguments.h"

#include <algorithm>
#include <climits>
#include <limits>
#include <string>

namespace support
{

using namespace std::string_literals;

namespace
{

// The records that a list returns, of every plant.
template <typename Type>
std::vector<Type> RecordsOfAllPlants(const JournalModel& model,
                                     bool (JournalModel::*list)(const std::string&, std::vector<Type>&) const)
{
    std::vector<Type> all;
    for (const std::string& uuid : model.PlantUUIDs())
    {
        std::vector<Type> records;
        (model.*list)(uuid, records);
        for (Type& record : records)
        {
            record.PlantUUID = uuid; // whole: a UUID with a zero byte would be cut
            all.push_back(record);
        }
    }
    return all;
}
} // namespace

std::string RandomArguments::Date(Choices& choices)
{
    return choices.OneOf(std::array{"2026-05-20"s, "2026-05-19"s, ""s, "2026-05-20\0later"s, "9"s});
}

std::string RandomArguments::Text(Choices& choices) const
{
    static const std::string megabyte(1 << 20, 'm');
    const std::uint8_t choice = choices.Next();
    if (choice == UCHAR_MAX && choices.Next() % 8 == 5 && !std::exchange(HadMegabyte, true))
        return megabyte;
    const std::vector<std::string> names = choice % 2 == 0 ? Model.StrainNames() : Model.PlantUUIDs();
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

double RandomArguments::Real(Choices& choices)
{
    using Limits = std::numeric_limits<double>;
    return choices.OneOf(std::array{0.0, 1.5, -1.0, 112.25, 0.05, 1e16, 1e300, Limits::denorm_min(), -0.0,
                                    Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()});
}

std::int64_t RandomArguments::RowID(Choices& choices)
{
    return choices.OneOf(std::array<std::int64_t, 12>{0, 1, 2, 3, 4, 5, 6, 7, -1, INT64_MIN, INT64_MAX, 0x100000001});
}

void RandomArguments::Set(std::string& field, Choices& choices) const
{
    field = Text(choices);
}

void RandomArguments::Set(std::int64_t& field, Choices& choices) const
{
    field = RowID(choices);
}

void RandomArguments::Set(double& field, Choices& choices) const
{
    field = Real(choices);
}

void RandomArguments::Set(int& field, Choices& choices) const
{
    field = choices.OneOf(std::array{0, 1, 5, 6, -1, INT_MIN, INT_MAX});
}

std::string RandomArguments::PlantUUID(Choices& choices) const
{
    const std::vector<std::string> uuids = Model.PlantUUIDs();
    const std::uint8_t choice = choices.Next();
    if (choice < 240 && !uuids.empty())
        return uuids[choice % uuids.size()];
    return std::array{"unknown"s, ""s, "a"s, "a\0b"s, "\0"s, "A"s}.at(choice % 6U);
}

std::string RandomArguments::StrainName(Choices& choices) const
{
    const std::vector<std::string> names = Model.StrainNames();
    const std::uint8_t choice = choices.Next();
    return choice < 160 && !names.empty() ? names[choice % names.size()] : Text(choices);
}

void RandomArguments::Fill(Plant& p, Choices& choices) const
{
    p.Name = Text(choices);
    p.Strain = StrainName(choices);
    if (const std::uint8_t mother = choices.Next(); mother % 2 != 0 && !Model.PlantUUIDs().empty())
        p.MotherPlantUUID = Model.PlantUUIDs()[mother / 2 % Model.PlantUUIDs().size()];
    p.UUID = choices.Next() % 2 == 0 ? "" : choices.OneOf(std::array{"a"s, "a\0b"s, "a\0c"s, "A"s, "\0"s, "\0a"s});
}

void RandomArguments::Fill(Strain& s, Choices& choices) const
{
    s.Name = Text(choices);
}

void RandomArguments::Fill(PlantEvent& e, Choices& choices) const
{
    e.PlantUUID = PlantUUID(choices);
    e.EventDate = Date(choices);
}

void RandomArguments::Fill(PlantCareEntry& e, Choices& choices) const
{
    e.PlantUUID = PlantUUID(choices);
    e.CareDate = Date(choices);
    Set(e.Action, choices);
    Set(e.AmountMl, choices);
}

void RandomArguments::Fill(HarvestRecord& r, Choices& choices) const
{
    r.HarvestDate = Date(choices);
    Set(r.DryWeightG, choices);
    Set(r.QualityRating, choices);
}

void RandomArguments::Fill(PlantPhoto& p, Choices& choices) const
{
    p.PlantUUID = PlantUUID(choices);
    p.PhotoDate = Date(choices);
    p.FilePath = "photo.jpg";
}

void RandomArguments::Fill(PlantHealthObservation& o, Choices& choices) const
{
    o.PlantUUID = PlantUUID(choices);
    o.ObservationDate = Date(choices);
    o.Issue = "mites";
    Set(o.Severity, choices);
}

void RandomArguments::Fill(PlantJournalEntry& e, Choices& choices) const
{
    e.PlantUUID = PlantUUID(choices);
    e.EntryDate = Date(choices);
}

std::vector<Plant> RandomArguments::ListAll(const Plant&) const
{
    std::vector<Plant> plants;
    Model.ListPlants(plants);
    return plants;
}

std::vector<Strain> RandomArguments::ListAll(const Strain&) const
{
    std::vector<Strain> strains;
    Model.ListStrains(strains);
    return strains;
}

std::vector<HarvestRecord> RandomArguments::ListAll(const HarvestRecord&) const
{
    std::vector<HarvestRecord> all;
    for (const std::string& uuid : Model.PlantUUIDs())
        if (HarvestRecord record; Model.GetHarvestRecord(uuid, record))
            all.push_back(record);
    return all;
}

std::vector<PlantEvent> RandomArguments::ListAll(const PlantEvent&) const
{
    return RecordsOfAllPlants(Model, &JournalModel::ListPlantEvents);
}

std::vector<PlantCareEntry> RandomArguments::ListAll(const PlantCareEntry&) const
{
    return RecordsOfAllPlants(Model, &JournalModel::ListPlantCareEntries);
}

std::vector<PlantPhoto> RandomArguments::ListAll(const PlantPhoto&) const
{
    return RecordsOfAllPlants(Model, &JournalModel::ListPlantPhotos);
}

std::vector<PlantHealthObservation> RandomArguments::ListAll(const PlantHealthObservation&) const
{
    return RecordsOfAllPlants(Model, &JournalModel::ListPlantHealthObservations);
}

std::vector<PlantJournalEntry> RandomArguments::ListAll(const PlantJournalEntry&) const
{
    return RecordsOfAllPlants(Model, &JournalModel::ListPlantJournalEntries);
}

} // namespace support

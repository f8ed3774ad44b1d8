#include "support/model/side_by_side.h"

#include "testing/plain_connection.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <sqlite3.h>

namespace support
{

SideBySide::SideBySide(std::string path) : Path(std::move(path))
{
    std::string error;
    if (!Database.Open(Path, &error))
        ThrowMismatch("opening", error, "");
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

void SideBySide::ThrowMismatch(const std::string& what, const std::string& library, const std::string& model) const
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
        ThrowMismatch("opening", error, "");
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
    Model.OrderTiesLike(plants, strains);
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

// Averages may differ in the last digits: SQLite adds in another order and with another precision.
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

void SideBySide::CopyGenerated(const Plant& before, const Plant& after, const std::string&)
{
    CopyGeneratedUUID(before.UUID, after.UUID);
}

void SideBySide::CopyGenerated(const PlantPhoto& before, const PlantPhoto& after, const std::string&)
{
    CopyGeneratedUUID(before.UUID, after.UUID);
}

void SideBySide::CopyGenerated(const HarvestRecord& before, const HarvestRecord& after, const std::string& today)
{
    if (before.HarvestDate != after.HarvestDate) // midnight may have passed since
        Model.Today = after.HarvestDate == PlantEventCurrentDate() ? after.HarvestDate : today;
}

void SideBySide::CopyGeneratedUUID(const std::string& before, const std::string& after)
{
    if (before == after)
        return;
    const std::string pattern = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    const auto fits = [](char c, char place)
    {
        if (place != 'x' && place != 'y')
            return c == place;
        return c != '\0' && std::strchr(place == 'x' ? "0123456789abcdef" : "89ab", c) != nullptr;
    };
    const bool isUUID = std::equal(after.begin(), after.end(), pattern.begin(), pattern.end(), fits);
    const bool isNew = GeneratedUUIDs.insert(after).second;
    Model.NextUUID = isUUID && isNew ? after : "a new version 4 UUID";
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
    return '"' + Printable(Shorten(text)) + '"';
}

std::string SideBySide::Shorten(const std::string& text)
{
    constexpr std::size_t longest = 60;
    return text.size() <= longest ? text : text.substr(0, longest) + "... (" + std::to_string(text.size()) + " bytes)";
}

std::string SideBySide::Printable(const std::string& text)
{
    constexpr auto hex = "0123456789abcdef";
    std::string printable;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte <= '~')
            printable += c;
        else
            printable += {'\\', 'x', hex[byte / 16], hex[byte % 16]};
    }
    return printable;
}

} // namespace support

#include "support/model/journal_model.h"
#include "support/model/rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace support
{

using namespace model;

namespace
{

int Folded(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

// Negative, 0 or positive, as `left` sorts before, with or after `right`. Letters are compared up to a zero byte; texts
// that are equal so far are compared by their length.
int CompareNames(const std::string& left, const std::string& right)
{
    if (left == right)
        return 0; // saves the loop for long texts
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
    {
        if (Folded(left[i]) != Folded(right[i]))
            return Folded(left[i]) - Folded(right[i]);
        if (left[i] == '\0')
            break;
    }
    return left.size() < right.size() ? -1 : static_cast<int>(left.size() > right.size());
}

// The mean of the values that are not 0.
double Average(const std::vector<double>& values)
{
    double sum = 0;
    int count = 0;
    for (const double value : values)
    {
        sum += value;
        count += static_cast<int>(value != 0);
    }
    return count == 0 || std::isnan(sum) ? 0 : sum / count;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Plants

bool JournalModel::ListPlants(std::vector<Plant>& out) const
{
    const auto byStrainAndName = [](const PlantRow& l, const PlantRow& r)
    {
        const int strains = CompareNames(l.Strain, r.Strain);
        return strains != 0 ? strains < 0 : CompareNames(l.Name, r.Name) < 0;
    };
    std::vector<PlantRow> sorted;
    for (const PlantRow& plant : Plants)
        InsertSorted(sorted, plant, byStrainAndName);
    out.clear();
    for (const PlantRow& plant : sorted)
    {
        const PlantRow* mother = RowWithID(Plants, plant.MotherID);
        Plant& listed = out.emplace_back(plant);
        listed.MotherPlantUUID = mother != nullptr ? mother->UUID : "";
        listed = AsRead(listed);
    }
    return true;
}

bool JournalModel::GetPlant(const std::string& uuid, Plant& out) const
{
    std::vector<Plant> plants;
    ListPlants(plants);
    const Plant* found = FirstRow(plants, [&](const Plant& plant) { return plant.UUID == uuid; });
    if (found == nullptr)
        return false;
    out = *found;
    return true;
}

std::int64_t JournalModel::IDOfPlant(const std::string& uuid) const
{
    const PlantRow* plant = FirstRow(Plants, [&](const PlantRow& p) { return p.UUID == uuid; });
    return plant != nullptr ? plant->ID : 0;
}

void JournalModel::RegisterStrain(const std::string& name)
{
    Strain strain;
    strain.Name = name;
    CreateStrain(strain);
}

// The library looks for a cycle in the list of plants, where a UUID ends at its first zero byte, so that two plants may
// have the same. The one that is listed last counts.
bool JournalModel::MayHaveItsMother(const Plant& plant) const
{
    if (plant.MotherPlantUUID.empty())
        return true;
    if (plant.UUID.empty())
        return false;
    std::vector<Plant> plants;
    ListPlants(plants);
    std::string ancestor = plant.MotherPlantUUID;
    for (std::size_t generations = 0; generations <= plants.size(); ++generations)
    {
        if (ancestor.empty())
            return true;
        if (ancestor == plant.UUID)
            return false;
        const auto found =
            std::find_if(plants.rbegin(), plants.rend(), [&](const Plant& p) { return p.UUID == ancestor; });
        if (found == plants.rend())
            return false;
        ancestor = found->MotherPlantUUID;
    }
    return false; // more generations than plants: a cycle
}

bool JournalModel::CreatePlant(Plant& p)
{
    RegisterStrain(p.Strain);
    if (p.UUID.empty())
        p.UUID = NextUUID;
    if (!MayHaveItsMother(p) || IDOfPlant(p.UUID) != 0 || IsRefused(p))
        return false;
    p.ID = NextID(Plants);
    Plants.push_back({AsStored(p), IDOfPlant(p.MotherPlantUUID)});
    return true;
}

bool JournalModel::UpdatePlant(const Plant& p)
{
    RegisterStrain(p.Strain);
    if (!MayHaveItsMother(p))
        return false;
    PlantRow* plant = RowWithID(Plants, IDOfPlant(p.UUID));
    if (plant == nullptr)
        return true;
    if (IsRefused(p))
        return false;
    const std::int64_t id = plant->ID;
    *plant = {AsStored(p), IDOfPlant(p.MotherPlantUUID)};
    plant->ID = id;
    return true;
}

bool JournalModel::DeletePlant(const std::string& uuid)
{
    const std::int64_t id = IDOfPlant(uuid);
    if (id == 0)
        return true;
    RemoveRowWithID(Plants, id);
    for (PlantRow& clone : Plants)
        if (clone.MotherID == id)
            clone.MotherID = 0;
    while (const PlantEvent* event = RowOfPlant(Events, uuid))
        RemoveEvent(event->ID);
    RemoveRowsOfPlant(CareEntries, uuid);
    RemoveRowsOfPlant(HarvestRecords, uuid);
    RemoveRowsOfPlant(Photos, uuid);
    RemoveRowsOfPlant(HealthObservations, uuid);
    RemoveRowsOfPlant(JournalEntries, uuid);
    return true;
}

bool JournalModel::DuplicatePlant(const Plant& source, Plant& out)
{
    Plant copy = source;
    copy.ID = 0;
    copy.UUID = NextUUID;
    copy.Name += " copy";
    copy.MotherPlantUUID = "";
    out = copy;
    return CreatePlant(out);
}

// ---------------------------------------------------------------------------------------------------------------------
// Strains

bool JournalModel::ListStrains(std::vector<Strain>& out) const
{
    const auto byName = [](const Strain& l, const Strain& r) { return CompareNames(l.Name, r.Name) < 0; };
    out.clear();
    for (const Strain& strain : Strains)
        InsertSorted(out, strain, byName);
    for (Strain& strain : out)
        strain = AsRead(strain);
    return true;
}

bool JournalModel::GetStrain(std::int64_t id, Strain& out) const
{
    const Strain* strain = RowWithID(Strains, id);
    if (strain == nullptr)
        return false;
    out = AsRead(*strain);
    return true;
}

bool JournalModel::CreateStrain(Strain& strain)
{
    if (strain.Name.empty() || FirstRow(Strains, [&](const Strain& s) { return s.Name == strain.Name; }) != nullptr)
        return false;
    AddRow(Strains, strain);
    return true;
}

// The library reads the old name first, up to its first zero byte. A plant is renamed if its strain equals that part of
// the name.
bool JournalModel::UpdateStrain(const Strain& strain)
{
    Strain* stored = RowWithID(Strains, strain.ID);
    if (stored == nullptr || strain.Name.empty() ||
        FirstRow(Strains, [&](const Strain& s) { return s.Name == strain.Name && s.ID != strain.ID; }) != nullptr)
        return false;
    const std::string oldName = AsRead(stored->Name);
    *stored = strain;
    for (PlantRow& plant : Plants)
        if (plant.Strain == oldName)
            plant.Strain = strain.Name;
    return true;
}

bool JournalModel::DeleteStrain(std::int64_t id)
{
    const Strain* strain = RowWithID(Strains, id);
    if (strain == nullptr)
        return true;
    if (FirstRow(Plants, [&](const PlantRow& plant) { return plant.Strain == strain->Name; }) != nullptr)
        return false;
    RemoveRowWithID(Strains, id);
    return true;
}

bool JournalModel::GetStrainSummary(std::int64_t strainID, StrainSummary& out) const
{
    out = {};
    const Strain* strain = RowWithID(Strains, strainID);
    if (strain == nullptr)
        return false;
    out.StrainID = strainID;
    out.StrainName = AsRead(strain->Name);
    const std::array<int*, 8> stages = {&out.Seed, &out.Clone, &out.Veg,       &out.Flower,
                                        &out.Dry,  &out.Cure,  &out.Harvested, &out.Archived};
    std::vector<double> weights;
    std::vector<double> ratings;
    for (const PlantRow& plant : Plants)
    {
        if (plant.Strain != strain->Name)
            continue;
        ++out.TotalPlants;
        ++*stages.at(static_cast<std::size_t>(plant.Stage));
        if (const HarvestRecord* harvest = RowOfPlant(HarvestRecords, plant.UUID))
        {
            ++out.HarvestCount;
            weights.push_back(harvest->DryWeightG);
            ratings.push_back(harvest->QualityRating);
        }
    }
    out.AverageDryWeightG = Average(weights);
    out.AverageQuality = Average(ratings);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Keys and order

void JournalModel::OrderTiesLike(const std::vector<Plant>& plants, const std::vector<Strain>& strains)
{
    OrderLike(plants, Plants);
    OrderLike(strains, Strains);
}

std::vector<std::string> JournalModel::PlantUUIDs() const
{
    std::vector<std::string> uuids;
    for (const PlantRow& plant : SortedByID(Plants))
        uuids.push_back(plant.UUID);
    return uuids;
}

std::vector<std::string> JournalModel::StrainNames() const
{
    std::vector<std::string> names;
    for (const Strain& strain : SortedByID(Strains))
        names.push_back(strain.Name);
    return names;
}

} // namespace support

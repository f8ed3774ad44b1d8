#include "bare_answers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace
{

class BareStatement
{
  public:
    BareStatement(sqlite3* journal, const char* sql) : Journal(journal)
    {
        if (sqlite3_prepare_v2(journal, sql, -1, &Handle, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(journal));
    }
    ~BareStatement() { sqlite3_finalize(Handle); }
    BareStatement(const BareStatement&) = delete;
    BareStatement& operator=(const BareStatement&) = delete;

    void Bind(const char* text) { sqlite3_bind_text(Handle, 1, text, -1, SQLITE_STATIC); }

    bool Row()
    {
        const int result = sqlite3_step(Handle);
        if (result != SQLITE_ROW && result != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(Journal));
        return result == SQLITE_ROW;
    }

    std::string Text(int column)
    {
        const unsigned char* text = sqlite3_column_text(Handle, column);
        return text != nullptr ? reinterpret_cast<const char*>(text) : std::string();
    }
    std::int64_t Integer(int column) { return sqlite3_column_int64(Handle, column); }
    double Number(int column) { return sqlite3_column_double(Handle, column); }

  private:
    sqlite3* Journal;
    sqlite3_stmt* Handle = nullptr;
};

// Keeps a read transaction open.
class BareTransaction
{
  public:
    explicit BareTransaction(sqlite3* journal) : Opened(journal, "SELECT 1 FROM sqlite_master;") { Opened.Row(); }

  private:
    BareStatement Opened;
};

struct BarePlant
{
    std::int64_t ID = 0;
    std::string UUID;
    std::string Name;
    std::string Strain;
    std::string MotherUUID;
    PlantStage Stage = PlantStage::Veg;
    std::string Tent;
    std::array<std::string, 5> Dates;
};

using BarePlants = std::unordered_map<std::string, BarePlant>; // by UUID

BarePlants ReadPlants(sqlite3* journal)
{
    BareStatement rows(journal,
                       "SELECT ID,UUID,Name,Strain,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),''),"
                       "Stage,Tent,SeedDate,CloneDate,TransplantDate,FlipDate,HarvestDate FROM Plants p "
                       "ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE,ID;");
    BarePlants plants;
    while (rows.Row())
    {
        BarePlant plant;
        plant.ID = rows.Integer(0);
        plant.UUID = rows.Text(1);
        plant.Name = rows.Text(2);
        plant.Strain = rows.Text(3);
        plant.MotherUUID = rows.Text(4);
        plant.Stage = PlantStageFromName(rows.Text(5));
        plant.Tent = rows.Text(6);
        for (std::size_t date = 0; date < plant.Dates.size(); ++date)
            plant.Dates[date] = rows.Text(7 + static_cast<int>(date));
        plants.emplace(plant.UUID, plant);
    }
    return plants;
}

// Whether a date is a day of the calendar.
bool IsDay(const std::string& date)
{
    static constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (date.size() != 10 || date[4] != '-' || date[7] != '-')
        return false;
    for (const std::size_t digit : {0U, 1U, 2U, 3U, 5U, 6U, 8U, 9U})
        if (std::isdigit(static_cast<unsigned char>(date[digit])) == 0)
            return false;
    const int year = std::stoi(date.substr(0, 4));
    const int month = std::stoi(date.substr(5, 2));
    const int day = std::stoi(date.substr(8));
    const bool isLeapYear = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month >= 1 && month <= 12 && day >= 1 &&
           day <= days.at(static_cast<std::size_t>(month) - 1) + (month == 2 && isLeapYear ? 1 : 0);
}

void Add(PlantFigures& figures, double value)
{
    if (value <= 0)
        return;
    figures.Least = figures.Number == 0 ? value : std::min(figures.Least, value);
    figures.Most = std::max(figures.Most, value);
    figures.Mean += value; // the sum, until it is divided
    ++figures.Number;
}

// Adds up the care entries of each period and key that `keys` returns for a row.
template <typename Keys> std::vector<PlantTotal> BareTotals(sqlite3* journal, const Keys& keys)
{
    const BareTransaction transaction(journal);
    const BarePlants plants = ReadPlants(journal);
    std::map<std::pair<std::string, std::string>, PlantTotal> totals;
    BareStatement rows(journal, "SELECT PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl FROM PlantCareEntries"
                                " WHERE CareDate>=?1");
    rows.Bind("");
    while (rows.Row())
    {
        if (plants.find(rows.Text(0)) == plants.end())
            continue;
        PlantTotal& total = totals[keys(rows)];
        ++(rows.Text(2) == "Feed" ? total.Feedings : total.Waterings);
        total.AmountMl += rows.Number(4);
        total.RunoffMl += rows.Number(7);
        Add(total.EC, rows.Number(5));
        Add(total.PH, rows.Number(6));
    }
    std::vector<PlantTotal> sorted;
    for (auto& [key, total] : totals)
    {
        total.Period = key.first;
        total.Key = total.Name = key.second;
        for (PlantFigures* const figures : {&total.EC, &total.PH})
            figures->Mean /= static_cast<double>(std::max<std::int64_t>(figures->Number, 1));
        sorted.push_back(std::move(total));
    }
    return sorted;
}

} // namespace

std::vector<PlantTotal> BareTotalsByMonth(sqlite3* journal)
{
    return BareTotals(journal,
                      [](BareStatement& row) -> std::pair<std::string, std::string>
                      {
                          const std::string date = row.Text(1);
                          return {IsDay(date) ? date.substr(0, 7) : "", ""};
                      });
}

std::vector<PlantTotal> BareTotalsByProduct(sqlite3* journal)
{
    return BareTotals(journal, [](BareStatement& row) { return std::make_pair(std::string(), row.Text(3)); });
}

std::vector<PlantActivity> BarePhotos(sqlite3* journal)
{
    const BareTransaction transaction(journal);
    const BarePlants plants = ReadPlants(journal);
    std::vector<PlantActivity> photos;
    BareStatement rows(journal, "SELECT ID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos WHERE PhotoDate>=?1");
    rows.Bind("");
    while (rows.Row())
    {
        const auto plant = plants.find(rows.Text(1));
        if (plant == plants.end())
            continue;
        PlantActivity photo;
        photo.Date = rows.Text(2);
        photo.Kind = "Photo";
        photo.Text = rows.Text(3);
        const std::string caption = rows.Text(4);
        if (!photo.Text.empty() && !caption.empty())
            photo.Text += " | ";
        photo.Text += caption;
        photo.PlantUUID = plant->second.UUID;
        photo.PlantName = plant->second.Name;
        photo.Record = PlantActivityRecord::Photo;
        photo.RowID = rows.Integer(0);
        photos.push_back(std::move(photo));
    }
    std::sort(photos.begin(), photos.end(),
              [](const PlantActivity& left, const PlantActivity& right)
              { return std::tie(left.Date, left.RowID) > std::tie(right.Date, right.RowID); });
    return photos;
}

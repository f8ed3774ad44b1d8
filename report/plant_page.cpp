#include "plant_page.h"

#include "days.h"
#include "text.h"
#include "words.h"

#include <algorithm>
#include <map>

namespace plant_report
{

namespace
{

constexpr std::size_t MostActivities = 1000;
constexpr std::size_t MostPhotosOfMonth = 60;
constexpr std::size_t MostLettersOfText = 1000;

// A month of the history.
struct Month
{
    std::string Items; // HTML
    std::int64_t Feedings = 0;
    std::int64_t Waterings = 0;
    std::vector<PlantPhoto> Photos;
};

// The key of the month of a date; dates that are not days come last.
std::string MonthOf(const std::string& date)
{
    if (!plant_query::DaysSinceEpoch(date))
        return "other";
    return date.substr(0, 7);
}

std::string MonthHeading(const std::string& month)
{
    const auto day = FirstDayOf(month);
    if (!day)
        return "Without a complete date";
    return DayLabel(*day).substr(2); // without the 1 of "1 Mar 2025"
}

std::string Item(const PlantActivity& activity)
{
    const auto day = plant_query::DaysSinceEpoch(activity.Date);
    std::string html = "<li>";
    if (day)
        html += "<time datetime=\"" + activity.Date + "\">" + DayLabel(*day) + "</time>";
    else
        html += TextElement("span", Shortened(activity.Date, MostLettersOfText));
    html += "<div>" + TextElement("b", Shortened(activity.Kind, MostLettersOfText));
    if (!activity.Text.empty())
        html += TextElement("p", Shortened(activity.Text, MostLettersOfText));
    return html + "</div></li>\n";
}

std::string CareOf(const Month& month)
{
    std::string care;
    if (month.Feedings > 0)
        care = Counted(month.Feedings, "feeding", "feedings");
    if (month.Waterings > 0)
        care += (care.empty() ? "" : " and ") + Counted(month.Waterings, "watering", "waterings");
    return care;
}

void AddFact(std::string& html, const char* name, const std::string& value)
{
    if (!value.empty())
        html += TextElement("dt", name) + TextElement("dd", Shortened(value, MostLettersOfText)) + "\n";
}

void AddDate(std::string& html, const char* name, const std::string& date)
{
    const auto day = plant_query::DaysSinceEpoch(date);
    AddFact(html, name, day ? DayLabel(*day) : date);
}

void AddHeight(std::string& html, const char* name, double centimetres)
{
    if (IsEntered(centimetres))
        AddFact(html, name, NumberLabel(centimetres, 1) + " cm");
}

// The activities by month. Care is counted, photos are collected, and what is older than the newest MostActivities is
// only counted in `left`.
std::map<std::string, Month> ByMonth(const PageData& data, const std::vector<PlantActivity>& timeline,
                                     const PlantReportOptions& options, std::size_t& left)
{
    std::map<std::string, Month> months;
    std::size_t shown = 0;
    for (const PlantActivity& activity : timeline) // newest first
    {
        if (!IsBetweenDates(options, activity.Date) || activity.Record == PlantActivityRecord::Photo)
            continue;
        const bool isCare = activity.Record == PlantActivityRecord::CareEntry;
        if (!isCare && ++shown > MostActivities)
        {
            ++left;
            continue;
        }
        Month& month = months[MonthOf(activity.Date)];
        if (!isCare)
            month.Items.insert(0, Item(activity));
        else if (activity.Kind == PlantCareActionName(PlantCareAction::Feed))
            ++month.Feedings;
        else
            ++month.Waterings;
    }
    for (auto photo = data.Photos.rbegin(); photo != data.Photos.rend(); ++photo)
        months[MonthOf(photo->PhotoDate)].Photos.push_back(*photo);
    return months;
}

} // namespace

std::string PlantFacts(const PageData& data)
{
    const Plant& plant = data.Plants.front();
    std::string html;
    AddFact(html, "Strain", plant.Strain);
    AddFact(html, "Stage", PlantStageName(plant.Stage));
    AddFact(html, "Sex", plant.Sex == PlantSex::Unknown ? "" : PlantSexName(plant.Sex));
    AddFact(html, "Tent", plant.Tent);
    AddFact(html, "Pot", plant.PotSize);
    AddFact(html, "Medium", plant.Medium);
    AddDate(html, "Sown", plant.SeedDate);
    AddDate(html, "Cut", plant.CloneDate);
    AddDate(html, "Transplanted", plant.TransplantDate);
    AddDate(html, "Flipped", plant.FlipDate);
    AddDate(html, "Harvested", plant.HarvestDate);
    AddHeight(html, "Height at flip", plant.FlipHeightCm);
    AddHeight(html, "Final height", plant.FinalHeightCm);
    AddFact(html, "Notes", plant.Notes);
    return "<dl>\n" + html + "</dl>\n";
}

std::string PlantHistory(const PageData& data, const std::vector<PlantActivity>& timeline,
                         const PlantReportOptions& options)
{
    std::size_t left = 0;
    std::string html;
    for (const auto& [key, month] : ByMonth(data, timeline, options, left))
    {
        std::string content;
        if (const std::string care = CareOf(month); !care.empty())
            content += TextElement("p", care) + "\n";
        if (!month.Items.empty())
            content += "<ul class=\"history\">\n" + month.Items + "</ul>\n";
        content += PhotoStrip(data, month.Photos, MostPhotosOfMonth, options);
        if (!content.empty())
            html += TextElement("h3", MonthHeading(key)) + "\n" + content;
    }
    if (left > 0)
        html = TextElement("p", Counted(left, "older entry is", "older entries are") +
                                    " left out, so that the page stays small.") +
               "\n" + html;
    return html;
}

} // namespace plant_report

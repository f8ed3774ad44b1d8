#include "days.h"
#include "page_data.h"
#include "page_parts.h"
#include "page_style.h"
#include "plant_page.h"
#include "read.h"
#include "text.h"
#include "words.h"

namespace plant_report
{

namespace
{

constexpr std::size_t MostPhotos = 60;
constexpr std::size_t MostNamesOfSet = 20;

// Nothing is loaded but the photos. Style sheets are only those of the page, since it names no source for others.
constexpr const char* ContentSecurityPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; img-src 'self' data: file:; base-uri 'none'; form-action 'none'";

// The care, the measurements and the health, which every page shows.
void AddCareCharts(const PageData& data, PageParts& parts)
{
    parts.AddChart("care", [&](double width) { return DrawPlantCareCalendar(data.Care, width); });
    parts.AddChart("amounts", [&](double width)
                   { return DrawPlantCareAmounts(data.Waterings, data.Feedings, data.AmountPeriod, width); });
    parts.AddChart("measurements", [&](double width)
                   { return DrawPlantMeasurements(data.Measurements, data.MeasurementPeriod, width); });
    parts.AddChart("health", [&](double width) { return DrawPlantHealth(data.Health, width); });
}

void AddHarvestCharts(const PageData& data, PageParts& parts)
{
    parts.AddChart("harvests", [&](double width) { return DrawPlantHarvests(data.Harvests, width); });
    parts.AddChart("lineage", [&](double width) { return DrawPlantLineage(data.Lineage, width); });
    parts.AddChart("years", [&](double width) { return DrawPlantYears(data.Care, width); });
}

// "12 photos from 3 Jan 2025 to 20 Aug 2025, the newest first."
std::string PhotosSentence(const std::vector<PlantPhoto>& photos)
{
    std::vector<std::int64_t> days;
    for (const PlantPhoto& photo : photos)
        if (const auto day = plant_query::DaysSinceEpoch(photo.PhotoDate))
            days.push_back(*day);
    std::string sentence = Counted(photos.size(), "photo", "photos");
    if (!days.empty())
        sentence += " " + DaysLabel(days.back(), days.front());
    if (photos.size() > 1)
        sentence += ", the newest first";
    return sentence + ".";
}

PageParts SeasonParts(const PageData& data, const PlantReportOptions& options)
{
    PageParts parts;
    parts.AddChart("stages", [&](double width) { return DrawPlantStages(data.Stages, width); });
    AddCareCharts(data, parts);
    AddHarvestCharts(data, parts);
    if (const std::string photos = PhotoStrip(data, data.Photos, MostPhotos, options); !photos.empty())
        parts.AddSection("photos", "Photos", TextElement("p", PhotosSentence(data.Photos)) + "\n" + photos);
    return parts;
}

// The page without plants.
PageParts EmptyParts(const PlantReportOptions& options)
{
    const PlantSet& set = options.Plants;
    const bool isOfAll = set.UUIDs.empty() && set.Strains.empty() && set.Tents.empty() && set.Stages.empty();
    PageParts parts;
    parts.AddSection(
        "missing", "Nothing to draw yet",
        TextElement("p", isOfAll ? "The journal has no plant." : "The journal has no plant of this selection."));
    return parts;
}

PageParts PlantParts(PlantDatabase& database, const PageData& data, const PlantReportOptions& options)
{
    std::vector<PlantActivity> timeline;
    RequireAnswer(QueryPlantTimeline(database, data.Plants.front().UUID, timeline));
    PageParts parts;
    parts.AddChart("stages", [&](double width) { return DrawPlantStages(data.Stages, width); });
    if (const std::string history = PlantHistory(data, timeline, options); !history.empty())
        parts.AddSection("history", "History", history);
    AddCareCharts(data, parts);
    AddHarvestCharts(data, parts);
    return parts;
}

PageParts PartsOf(PlantDatabase& database, const PageData& data, const PlantReportOptions& options)
{
    if (data.Plants.empty())
        return EmptyParts(options);
    return data.Plants.size() == 1 ? PlantParts(database, data, options) : SeasonParts(data, options);
}

// "Strain: A, B"; empty without values.
std::string NamedValues(const char* name, const std::vector<std::string>& values)
{
    std::string text;
    for (std::size_t i = 0; i < values.size() && i < MostNamesOfSet; ++i)
        text += (i == 0 ? "" : ", ") + NameInSentence(values[i]);
    if (values.size() > MostNamesOfSet)
        text += " and " + NumberLabel(static_cast<double>(values.size() - MostNamesOfSet)) + " more";
    if (!text.empty())
        text = TextElement("p", std::string(name) + ": " + text) + "\n";
    return text;
}

// The limits of the report, where there are some.
std::string Limits(const PageData& data, const PlantReportOptions& options)
{
    std::vector<std::string> plants;
    for (const Plant& plant : data.Plants)
        if (!options.Plants.UUIDs.empty() && data.Plants.size() > 1)
            plants.push_back(plant.Name);
    std::vector<std::string> stages;
    for (const PlantStage stage : options.Plants.Stages)
        stages.emplace_back(PlantStageName(stage));
    std::string html = NamedValues("Plants", plants) + NamedValues("Strain", options.Plants.Strains) +
                       NamedValues("Tent", options.Plants.Tents) + NamedValues("Stage", stages);
    std::string dates;
    if (!options.From.empty())
        dates = "From " + NameInSentence(options.From);
    if (!options.To.empty())
        dates += (dates.empty() ? "To " : " to ") + NameInSentence(options.To);
    if (!dates.empty())
        html += TextElement("p", dates) + "\n";
    return html;
}

// "12 plants, 340 entries from 3 Jan 2025 to 20 Aug 2025"
std::string Summary(const PageData& data)
{
    std::string text =
        Counted(data.Plants.size(), "plant", "plants") + ", " + Counted(data.Entries, "entry", "entries");
    if (data.Days)
        text += " " + DaysLabel(data.Days->first, data.Days->second);
    return text;
}

std::string Head(const std::string& title)
{
    return std::string("<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
                       "<meta charset=\"utf-8\"/>\n<meta http-equiv=\"Content-Security-Policy\" content=\"") +
           ContentSecurityPolicy +
           "\"/>\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
           "<meta name=\"color-scheme\" content=\"light dark\"/>\n<meta name=\"referrer\" content=\"no-referrer\"/>\n"
           "<link rel=\"icon\" href=\"data:,\"/>\n" + // or a browser asks for one
           TextElement("title", title) +
           "\n<style>\n" + PageStyle() + PlantReportStyle() + "</style>\n</head>\n";
}

std::string Page(PlantDatabase& database, const PlantReportOptions& options, std::int64_t today)
{
    const PageData data = ReadPageData(database, options);
    const bool isOfOnePlant = data.Plants.size() == 1;
    const PageParts parts = PartsOf(database, data, options);
    const std::string title = Shortened(options.Title, MostLettersOfTitle);
    std::string html = Head(title) + "<body>\n<header>\n" + TextElement("h1", title) + "\n" +
                       TextElement("p", Summary(data)) + "\n" + Limits(data, options) +
                       (isOfOnePlant ? PlantFacts(data) : std::string()) + parts.Contents() + "</header>\n<main>\n";
    html += parts.Sections();
    return html + "</main>\n<footer>\n" +
           TextElement("p", "Made on " + DayLabel(today) +
                                " from a plant journal. The page holds no script and loads "
                                "nothing from the network.") +
           "\n</footer>\n</body>\n</html>\n";
}

} // namespace

} // namespace plant_report

PlantQueryResult WritePlantReport(PlantDatabase& database, const PlantReportOptions& options, std::string& out)
{
    using namespace plant_report;
    PlantQueryResult result;
    try
    {
        if (!database.IsOpen())
            throw ReadFailure{"reading the journal: the database is closed"};
        const std::optional<std::int64_t> today = plant_query::DaysSinceEpoch(options.Today);
        if (!today)
            throw ReadFailure{"computing the status: '" + options.Today + "' is not a day of the form YYYY-MM-DD"};
        std::string page;
        {
            const ReadTransaction transaction(database.NativeHandle());
            page = Page(database, options, *today);
        }
        out = std::move(page);
    }
    catch (const ReadFailure& failure)
    {
        out.clear();
        result.Error = failure.Error;
    }
    catch (...)
    {
        out.clear();
        throw;
    }
    return result;
}

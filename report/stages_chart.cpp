#include "axes.h"
#include "usual_days.h"
#include "words.h"

#include "days.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

namespace plant_report
{

namespace
{

constexpr std::size_t MostPlantBars = 40;

struct StageBar
{
    PlantStage Stage;
    std::int64_t From;
    std::int64_t To;
};

struct PlantBars
{
    std::string Name;
    std::vector<StageBar> Bars;
};

struct StageLook
{
    Role Colour;
    const char* Letters; // for a bar that has no room for the name
};

const StageLook& LookOf(PlantStage stage)
{
    static constexpr std::array<StageLook, 8> looks = {{{Role::Seed, "S"},
                                                        {Role::Clone, "Cl"},
                                                        {Role::Veg, "V"},
                                                        {Role::Flower, "F"},
                                                        {Role::Dry, "D"},
                                                        {Role::Cure, "Cu"},
                                                        {Role::Harvested, "H"},
                                                        {Role::Archived, "A"}}};
    return looks.at(static_cast<std::size_t>(stage));
}

// The plants with their bars. Spans of one name are those of one plant as long as each begins where
// or after the one before it ended.
std::vector<PlantBars> BarsOf(const std::vector<PlantStageSpan>& spans)
{
    std::vector<PlantBars> plants;
    for (const PlantStageSpan& span : spans)
    {
        const auto from = plant_query::DaysSinceEpoch(span.From);
        const auto to = plant_query::DaysSinceEpoch(span.To);
        if (!from || !to || *to < *from)
            continue;
        if (plants.empty() || plants.back().Name != span.PlantName || *from < plants.back().Bars.back().To)
            plants.push_back({span.PlantName, {}});
        plants.back().Bars.push_back({PlantStageFromName(PlantStageName(span.Stage)), *from, *to}); // a known one
    }
    return plants;
}

// The days on which bars begin and end. The days of one bar count as neighbours, unless the bar is so long that one of
// them is mistyped.
DayRange UsualDaysOf(const std::vector<PlantBars>& plants)
{
    constexpr std::int64_t longestBar = 7300; // twenty years
    constexpr std::int64_t step = 365;
    std::map<std::int64_t, std::int64_t> records;
    for (const PlantBars& plant : plants)
        for (const StageBar& bar : plant.Bars)
        {
            ++records[bar.From];
            ++records[bar.To];
            for (std::int64_t day = bar.From; bar.To - bar.From <= longestBar && day < bar.To; day += step)
                records[day] += 0;
        }
    return UsualDays(records);
}

// Moves the bars that begin or end years away from the others to `far`, with the names of their plants. Does nothing
// where no bar would be left.
void MoveFar(std::vector<PlantBars>& plants, std::vector<PlantBars>& far)
{
    const DayRange usual = UsualDaysOf(plants);
    std::vector<PlantBars> left;
    for (const PlantBars& plant : plants)
    {
        PlantBars near{plant.Name, {}};
        PlantBars away{plant.Name, {}};
        for (const StageBar& bar : plant.Bars)
            (usual.Holds(bar.From) && usual.Holds(bar.To) ? near : away).Bars.push_back(bar);
        if (!near.Bars.empty())
            left.push_back(std::move(near));
        if (!away.Bars.empty())
            far.push_back(std::move(away));
    }
    if (left.empty())
        far.clear();
    else
        plants = std::move(left);
}

void AddRows(PlantChart& chart, const std::vector<PlantBars>& plants)
{
    for (const PlantBars& plant : plants)
        for (const StageBar& bar : plant.Bars)
            AddRow(chart, {ShownName(plant.Name, ""), PlantStageName(bar.Stage), plant_query::DayText(bar.From),
                           plant_query::DayText(bar.To), CountLabel(bar.To - bar.From)});
}

// The places of names, bars and days in the picture.
struct StagesLayout
{
    StagesLayout(const std::vector<PlantBars>& plants, double width);

    double NamesEnd, Right, Top = 0, RowHeight, BarHeight;
    std::set<PlantStage> Stages;
    std::int64_t First, Last;
    double Bottom(std::size_t plants) const { return Top + static_cast<double>(plants) * RowHeight; }
};

// How wide the item of a stage in the key is: a small bar with the letters, and the name.
constexpr double KeyBarWidth = 22;

double KeyWidth(PlantStage stage)
{
    return KeyBarWidth + 6 + TextWidth(PlantStageName(stage), 12);
}

StagesLayout::StagesLayout(const std::vector<PlantBars>& plants, double width)
    : Right(width - 8), RowHeight(plants.size() > 20 ? 20 : 26), BarHeight(RowHeight - 6),
      First(plants.front().Bars.front().From), Last(First)
{
    double names = 0;
    for (const PlantBars& plant : plants)
    {
        names = std::max(names, TextWidth(ShownName(plant.Name, "(no name)"), 12));
        for (const StageBar& bar : plant.Bars)
        {
            Stages.insert(bar.Stage);
            Last = std::max(Last, bar.To);
        }
    }
    NamesEnd = std::min(names + 1, width * 0.3);
    KeyLines key(0, width, 0);
    for (const PlantStage stage : Stages)
        key.Place(KeyWidth(stage));
    Top = key.Bottom() + 12;
}

void DrawKey(Drawing& drawing, const StagesLayout& layout)
{
    KeyLines key(0, drawing.Width(), 0);
    for (const PlantStage stage : layout.Stages)
    {
        const double x = key.Place(KeyWidth(stage));
        drawing.Rect(x, key.Middle() - 8, KeyBarWidth, 16, LookOf(stage).Colour);
        drawing.Text(x + KeyBarWidth / 2, key.Baseline(), LookOf(stage).Letters, Anchor::Middle, Role::Ink, 11);
        drawing.Text(x + KeyBarWidth + 6, key.Baseline(), PlantStageName(stage));
    }
}

void DrawBar(Drawing& drawing, const PlantBars& plant, const StageBar& bar, double x, double width, double y,
             double height)
{
    constexpr double margin = 3;
    const char* stage = PlantStageName(bar.Stage);
    const StageLook& look = LookOf(bar.Stage);
    drawing.Rect(x, y, width, height, look.Colour,
                 ShownName(plant.Name, "(no name)") + ": " + stage + " " + DaysLabel(bar.From, bar.To) + ", " +
                     Counted(bar.To - bar.From, "day", "days"));
    const char* label = TextWidth(stage, 11) + 2 * margin <= width ? stage : look.Letters;
    if (TextWidth(label, 11) + 2 * margin <= width)
        drawing.Text(x + width / 2, y + height / 2 + 4, label, Anchor::Middle, Role::Ink, 11);
}

void DrawPlants(Drawing& drawing, const std::vector<PlantBars>& plants, const StagesLayout& layout,
                const DayScale& scale)
{
    double y = layout.Top;
    for (const PlantBars& plant : plants)
    {
        drawing.Text(layout.NamesEnd, y + layout.RowHeight / 2 + 4, ShownName(plant.Name, "(no name)"), Anchor::End,
                     Role::Ink, 12, layout.NamesEnd - 0.5);
        for (const StageBar& bar : plant.Bars)
        {
            const double x = scale(static_cast<double>(bar.From));
            const double gap = 1; // between bars
            const double width = std::max(2.0, scale(static_cast<double>(bar.To)) - x - gap);
            DrawBar(drawing, plant, bar, x, width, y + 3, layout.BarHeight);
        }
        y += layout.RowHeight;
    }
}

std::string StagesSentence(const std::vector<PlantBars>& plants, const StagesLayout& layout, std::size_t more)
{
    std::string sentence = "The stages of " + Counted(plants.size(), "plant", "plants") + ", " +
                           DaysLabel(layout.First, layout.Last) + ".";
    if (more > 0)
        sentence += " These are the newest; " + Counted(more, "more plant", "more plants") + " began before them.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantStages(const std::vector<PlantStageSpan>& spans, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Stages", "No plant has a complete date on which a stage began.",
                                  {"Plant", "Stage", "From", "To", "Days"});
    std::vector<PlantBars> plants = BarsOf(spans);
    if (plants.empty())
        return chart;
    std::vector<PlantBars> far;
    MoveFar(plants, far);
    std::stable_sort(plants.begin(), plants.end(),
                     [](const PlantBars& a, const PlantBars& b) { return a.Bars.front().From < b.Bars.front().From; });
    const std::size_t more = plants.size() - std::min(plants.size(), MostPlantBars);
    plants.erase(plants.begin(), plants.begin() + static_cast<std::ptrdiff_t>(more));

    const StagesLayout layout(plants, DrawnWidth(width));
    const DayScale scale(layout.First, layout.Last, layout.NamesEnd + 10, layout.Right);

    Drawing drawing(DrawnWidth(width), layout.Bottom(plants.size()) + AxisHeight);
    DrawAxisBelow(drawing, scale.Ticks(), scale, layout.Top, layout.Bottom(plants.size()), layout.NamesEnd,
                  drawing.Width());
    DrawPlants(drawing, plants, layout, scale);
    DrawKey(drawing, layout);

    std::int64_t farBars = 0;
    for (const PlantBars& plant : far)
        farBars += static_cast<std::int64_t>(plant.Bars.size());
    chart.Sentence = StagesSentence(plants, layout, more) + FarSentence(farBars, "stage", "stages");
    AddRows(chart, far);
    AddRows(chart, plants);
    chart.SVG = drawing.SVG("plant-stages", chart.Heading, chart.Sentence);
    return chart;
}

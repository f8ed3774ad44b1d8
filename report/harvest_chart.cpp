#include "axes.h"
#include "text.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace plant_report
{

namespace
{

constexpr std::size_t MostStrains = 12;
constexpr double DotRadius = 4;
constexpr int MostLevels = 9; // of dots above each other

// ---------------------------------------------------------------------------------------------------------------------
// Data

// The weights of a strain, least first.
struct StrainWeights
{
    std::string Strain;
    std::vector<std::pair<double, const PlantHarvest*>> Weights;
    double Mean() const
    {
        double sum = 0;
        for (const auto& [weight, harvest] : Weights)
            sum += weight;
        return sum / static_cast<double>(Weights.size());
    }
};

// Dry or wet weight: a section of the picture with its own scale.
struct Weighed
{
    const char* Title;
    const char* Weights;
    double HarvestRecord::*Weight;
    std::vector<StrainWeights> Strains; // those with most plants, the greatest mean first
    std::size_t More = 0;               // strains that are not drawn
};

bool IsWeighedBy(const HarvestRecord& record, double HarvestRecord::*weight)
{
    const bool isDry = IsEntered(record.DryWeightG);
    return weight == &HarvestRecord::DryWeightG ? isDry : !isDry && IsEntered(record.WetWeightG);
}

void AddStrains(Weighed& weighed, const std::vector<PlantHarvest>& harvests)
{
    std::map<std::string, StrainWeights> byStrain;
    for (const PlantHarvest& harvest : harvests)
        if (IsWeighedBy(harvest.Record, weighed.Weight))
        {
            StrainWeights& strain = byStrain[harvest.Strain];
            strain.Strain = harvest.Strain;
            strain.Weights.emplace_back(harvest.Record.*weighed.Weight, &harvest);
        }
    for (auto& [name, strain] : byStrain)
    {
        std::stable_sort(strain.Weights.begin(), strain.Weights.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        weighed.Strains.push_back(std::move(strain));
    }
    std::stable_sort(weighed.Strains.begin(), weighed.Strains.end(),
                     [](const StrainWeights& a, const StrainWeights& b)
                     { return a.Weights.size() > b.Weights.size(); });
    weighed.More = weighed.Strains.size() - std::min(weighed.Strains.size(), MostStrains);
    weighed.Strains.resize(weighed.Strains.size() - weighed.More);
    std::stable_sort(weighed.Strains.begin(), weighed.Strains.end(),
                     [](const StrainWeights& a, const StrainWeights& b) { return a.Mean() > b.Mean(); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Scales

NumberScale ScaleOf(const Weighed& weighed, double begin, double end)
{
    double least = HUGE_VAL;
    double most = -HUGE_VAL;
    for (const StrainWeights& strain : weighed.Strains)
    {
        least = std::min(least, strain.Weights.front().first);
        most = std::max(most, strain.Weights.back().first);
    }
    return {least, most, begin, end, 4};
}

// The level of each dot: the lowest on which it touches no other, 0 in the middle, then above and below in turns.
std::vector<int> LevelsOf(const StrainWeights& strain, const NumberScale& scale)
{
    std::vector<double> ends(MostLevels, -HUGE_VAL); // of the last dot of each level
    std::vector<int> levels;
    for (const auto& [weight, harvest] : strain.Weights)
    {
        const double x = scale(weight);
        const auto free = std::find_if(ends.begin(), ends.end(), [&](double end) { return end <= x - 2 * DotRadius; });
        const auto level = free == ends.end() ? MostLevels - 1 : free - ends.begin();
        ends[static_cast<std::size_t>(level)] = x;
        levels.push_back(static_cast<int>(level));
    }
    return levels;
}

double OffsetOf(int level)
{
    const int steps = (level + 1) / 2; // 0, 1, 1, 2, 2 ...
    return (level % 2 == 0 ? 1 : -1) * steps * (2 * DotRadius + 0.5);
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks

constexpr double HeadingHeight = 24;
constexpr double NameHeight = 20;

double DotsHeight(const StrainWeights& strain, const NumberScale& scale)
{
    const std::vector<int> levels = LevelsOf(strain, scale);
    const int most = *std::max_element(levels.begin(), levels.end());
    return 2 * (DotRadius + 5 + std::abs(OffsetOf(most)));
}

double HeightOf(const Weighed& weighed, const NumberScale& scale)
{
    double height = HeadingHeight + AxisHeight + 10;
    for (const StrainWeights& strain : weighed.Strains)
        height += NameHeight + DotsHeight(strain, scale);
    return height;
}

std::string WeightLabel(double grams)
{
    return NumberLabel(grams, 1) + " g";
}

void DrawStrain(Drawing& drawing, const StrainWeights& strain, const NumberScale& scale, double top)
{
    const std::string summary =
        Counted(strain.Weights.size(), "plant", "plants") + ", mean " + WeightLabel(strain.Mean());
    const double right = drawing.Width();
    drawing.Text(0, top + 14, ShownName(strain.Strain, "(no strain)"), Anchor::Start, Role::Ink, 12,
                 right - TextWidth(summary, 12) - 12);
    drawing.Text(right, top + 14, summary, Anchor::End, Role::Faint);

    const double dotsTop = top + NameHeight;
    const double height = DotsHeight(strain, scale);
    const double middle = dotsTop + height / 2;
    const double mean = scale(strain.Mean());
    for (const Tick& tick : scale.Ticks())
        drawing.Line(scale(tick.Value), dotsTop, scale(tick.Value), dotsTop + height, Role::Line);
    drawing.Line(0, middle, right, middle, Role::Line);
    const std::vector<int> levels = LevelsOf(strain, scale);
    for (std::size_t i = 0; i < levels.size(); ++i)
    {
        const auto& [weight, harvest] = strain.Weights[i];
        drawing.Circle(scale(weight), middle + OffsetOf(levels[i]), DotRadius, Role::Mark,
                       ShownName(harvest->PlantName, "(no name)") + ": " + WeightLabel(weight));
    }
    drawing.Line(mean, dotsTop + 1, mean, dotsTop + height - 1, Role::Mean, 2.5);
}

void DrawWeighed(Drawing& drawing, const Weighed& weighed, const NumberScale& scale, double top)
{
    const double bottom = top + HeightOf(weighed, scale) - AxisHeight - 10;
    DrawAxisBelow(drawing, scale.Ticks(), scale, bottom, bottom + 3, 0, drawing.Width());
    drawing.Text(0, top + 13, weighed.Title, Anchor::Start, Role::Ink, 13);
    KeyLines key(TextWidth(weighed.Title, 13) + 20, drawing.Width(), top);
    const double dot = key.Place(16 + TextWidth("a plant", 12));
    drawing.Circle(dot + 5, key.Middle() + 1, DotRadius, Role::Mark);
    drawing.Text(dot + 14, key.Baseline() + 1, "a plant", Anchor::Start, Role::Faint);
    const double mean = key.Place(12 + TextWidth("mean", 12));
    drawing.Line(mean + 3, key.Middle() - 6, mean + 3, key.Middle() + 8, Role::Mean, 2.5);
    drawing.Text(mean + 11, key.Baseline() + 1, "mean", Anchor::Start, Role::Faint);

    double y = top + HeadingHeight;
    for (const StrainWeights& strain : weighed.Strains)
    {
        DrawStrain(drawing, strain, scale, y);
        y += NameHeight + DotsHeight(strain, scale);
    }
}

std::string HarvestSentence(const Weighed& weighed)
{
    std::size_t plants = 0;
    double sum = 0;
    double least = HUGE_VAL;
    double most = 0;
    for (const StrainWeights& strain : weighed.Strains)
        for (const auto& [weight, harvest] : strain.Weights)
        {
            ++plants;
            sum += weight;
            least = std::min(least, weight);
            most = std::max(most, weight);
        }
    std::string sentence = std::string(weighed.Weights) + " of " + Counted(plants, "plant", "plants") + " of " +
                           Counted(weighed.Strains.size(), "strain", "strains") + ": " +
                           (plants > 1 && least == most ? "each " : "") + WeightLabel(least);
    if (least < most)
        sentence += " to " + WeightLabel(most) + ", mean " + WeightLabel(sum / static_cast<double>(plants));
    sentence += ".";
    if (weighed.More > 0)
        sentence += " These are the strains with the most plants; " +
                    Counted(weighed.More, "more strain is", "more strains are") + " not drawn.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantHarvests(const std::vector<PlantHarvest>& harvests, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Harvests by strain", "No harvest has a weight.",
                                  {"Strain", "Plant", "Harvested", "Dry weight, g", "Wet weight, g"});
    std::vector<Weighed> sections;
    for (Weighed weighed : {Weighed{"Dry weight, grams", "Dry weights", &HarvestRecord::DryWeightG, {}},
                            Weighed{"Only wet weight, grams", "Wet weights", &HarvestRecord::WetWeightG, {}}})
    {
        AddStrains(weighed, harvests);
        if (!weighed.Strains.empty())
            sections.push_back(std::move(weighed));
    }
    if (sections.empty())
        return chart;

    std::vector<NumberScale> scales;
    double height = 0;
    for (const Weighed& weighed : sections)
    {
        scales.push_back(ScaleOf(weighed, DotRadius + 2, DrawnWidth(width) - DotRadius - 2));
        height += HeightOf(weighed, scales.back());
    }

    Drawing drawing(DrawnWidth(width), height - 10);
    double top = 0;
    for (std::size_t i = 0; i < sections.size(); ++i)
    {
        DrawWeighed(drawing, sections[i], scales[i], top);
        top += HeightOf(sections[i], scales[i]);
    }

    chart.Sentence.clear();
    for (const Weighed& weighed : sections)
    {
        chart.Sentence += (chart.Sentence.empty() ? "" : " ") + HarvestSentence(weighed);
        for (const StrainWeights& strain : weighed.Strains)
            for (const auto& [weight, harvest] : strain.Weights)
            {
                const HarvestRecord& record = harvest->Record;
                AddRow(chart, {ShownName(strain.Strain, ""), ShownName(harvest->PlantName, ""),
                               ShownName(record.HarvestDate, ""), EnteredLabel(record.DryWeightG),
                               EnteredLabel(record.WetWeightG)});
            }
    }
    chart.SVG = drawing.SVG("plant-harvests", chart.Heading, chart.Sentence);
    return chart;
}

#include "axes.h"
#include "text.h"
#include "words.h"

#include <algorithm>
#include <map>

namespace plant_report
{

namespace
{

constexpr std::size_t MostPlantsOfTrees = 40;
constexpr double PlantRowHeight = 24;
constexpr std::int64_t DeepestIndent = 8; // deeper generations are drawn as deep as this one

// ---------------------------------------------------------------------------------------------------------------------
// Data

using Tree = std::vector<const PlantRelative*>;

// The trees with clones. A plant without any is not lineage.
std::vector<Tree> TreesOf(const std::vector<PlantRelative>& plants)
{
    std::vector<Tree> trees;
    for (const PlantRelative& plant : plants)
    {
        if (trees.empty() || plant.Generation <= 0)
            trees.emplace_back();
        trees.back().push_back(&plant);
    }
    trees.erase(std::remove_if(trees.begin(), trees.end(), [](const Tree& tree) { return tree.size() < 2; }),
                trees.end());
    return trees;
}

// The rows that a person can read: whole trees as long as they fit, and the beginning of the next one.
Tree RowsOf(const std::vector<Tree>& trees)
{
    Tree rows;
    for (const Tree& tree : trees)
        rows.insert(rows.end(), tree.begin(), tree.end());
    rows.resize(std::min(rows.size(), MostPlantsOfTrees));
    return rows;
}

double DryWeightOf(const PlantRelative& plant)
{
    return plant.Harvest && IsEntered(plant.Harvest->DryWeightG) ? plant.Harvest->DryWeightG : 0;
}

// The words at the end of a row.
std::string YieldLabel(const PlantRelative& plant)
{
    if (DryWeightOf(plant) > 0)
        return NumberLabel(DryWeightOf(plant), 1) + " g";
    if (plant.Harvest && IsEntered(plant.Harvest->WetWeightG))
        return NumberLabel(plant.Harvest->WetWeightG, 1) + " g wet";
    return plant.Harvest ? "not weighed" : PlantStageName(plant.Stage);
}

// ---------------------------------------------------------------------------------------------------------------------
// Scales

struct LineageLayout
{
    double Indent = 0;  // of a generation
    double BarLeft = 0; // of the yields
    double Right = 0;
    double Top = 22;
};

LineageLayout LayoutOf(const Tree& rows, double width)
{
    double labels = 0;
    for (const PlantRelative* plant : rows)
        labels = std::max(labels, TextWidth(YieldLabel(*plant), 12));
    return {width >= 560 ? 22.0 : 13.0, width * 0.56, std::max(width * 0.56 + 1, width - labels - 8)};
}

std::int64_t DepthOf(const PlantRelative& plant)
{
    return std::clamp<std::int64_t>(plant.Generation, 0, DeepestIndent);
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks

// A line from each plant to its mother: the nearest row above of a smaller depth.
void DrawBranches(Drawing& drawing, const Tree& rows, const LineageLayout& layout)
{
    std::map<std::int64_t, double> lowest; // the last row of each depth
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const std::int64_t depth = DepthOf(*rows[i]);
        const double y = layout.Top + (static_cast<double>(i) + 0.5) * PlantRowHeight;
        const double x = static_cast<double>(depth) * layout.Indent + 5;
        const auto mother = lowest.lower_bound(depth);
        if (mother != lowest.begin())
        {
            const auto& [motherDepth, motherY] = *std::prev(mother);
            const double motherX = static_cast<double>(motherDepth) * layout.Indent + 5;
            drawing.Polyline({{motherX, motherY + 5}, {motherX, y}, {x - 5, y}}, Role::Faint, 1);
        }
        lowest.erase(mother, lowest.end());
        lowest[depth] = y;
    }
}

void DrawRows(Drawing& drawing, const Tree& rows, const LineageLayout& layout, const NumberScale& scale)
{
    double middle = layout.Top + PlantRowHeight / 2;
    for (const PlantRelative* plant : rows)
    {
        const double x = static_cast<double>(DepthOf(*plant)) * layout.Indent + 5;
        const std::string name = ShownName(plant->Name, "(no name)");
        const std::string yield = YieldLabel(*plant);
        const double dry = DryWeightOf(*plant);
        std::string title = name;
        title.append(", ")
            .append(ShownName(plant->Strain, "no strain"))
            .append(", ")
            .append(PlantStageName(plant->Stage));
        drawing.Circle(x, middle, 4, Role::Mark, title);
        drawing.Text(x + 10, middle + 4, name, Anchor::Start, Role::Ink, 12, layout.BarLeft - x - 20);
        double labelLeft = layout.BarLeft;
        if (dry > 0)
        {
            labelLeft = scale(dry) + 6;
            drawing.Rect(layout.BarLeft, middle - 7, std::max(1.0, scale(dry) - layout.BarLeft), 14, Role::Harvested,
                         std::string(name).append(": ").append(yield));
        }
        drawing.Text(labelLeft, middle + 4, yield, Anchor::Start, dry > 0 ? Role::Ink : Role::Faint);
        middle += PlantRowHeight;
    }
}

void AddPlant(PlantChart& chart, const PlantRelative& plant)
{
    AddRow(chart, {ShownName(plant.Name, ""), ShownName(plant.Strain, ""),
                   CountLabel(std::max<std::int64_t>(plant.Generation, 0)), PlantStageName(plant.Stage),
                   EnteredLabel(DryWeightOf(plant)), EnteredLabel(plant.Harvest.value_or(HarvestRecord()).WetWeightG)});
}

std::string LineageSentence(const std::vector<Tree>& trees, std::size_t drawn)
{
    std::size_t plants = 0;
    for (const Tree& tree : trees)
        plants += tree.size();
    std::string sentence = Counted(trees.size(), "mother", "mothers") + " with " +
                           Counted(plants - trees.size(), "descendant", "descendants") + ".";
    if (drawn < plants)
        sentence += " The first " + std::to_string(drawn) + " plants are drawn; " +
                    Counted(plants - drawn, "more plant is", "more plants are") + " not.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantLineage(const std::vector<PlantRelative>& plants, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Mothers and clones", "No plant has a mother in the journal.",
                                  {"Plant", "Strain", "Generation", "Stage", "Dry weight, g", "Wet weight, g"});
    const std::vector<Tree> trees = TreesOf(plants);
    if (trees.empty())
        return chart;
    const Tree rows = RowsOf(trees);
    double most = 0;
    for (const PlantRelative* plant : rows)
        most = std::max(most, DryWeightOf(*plant));

    const LineageLayout layout = LayoutOf(rows, DrawnWidth(width));
    const NumberScale scale(0, most, layout.BarLeft, layout.Right, 3);

    Drawing drawing(DrawnWidth(width), layout.Top + static_cast<double>(rows.size()) * PlantRowHeight);
    DrawBranches(drawing, rows, layout);
    DrawRows(drawing, rows, layout, scale);

    drawing.Text(0, 12, "Plant", Anchor::Start, Role::Faint);
    drawing.Text(layout.BarLeft, 12, most > 0 ? "Dry weight, grams" : "Stage", Anchor::Start, Role::Faint);
    chart.Sentence = LineageSentence(trees, rows.size());
    for (const PlantRelative* plant : rows)
        AddPlant(chart, *plant);
    chart.SVG = drawing.SVG("plant-lineage", chart.Heading, chart.Sentence);
    return chart;
}

#include "page_parts.h"

#include "days.h"
#include "text.h"
#include "words.h"

#include <algorithm>

namespace plant_report
{

namespace
{

constexpr double TelephoneWidth = 360;
constexpr std::size_t MostRows = 500;
constexpr std::size_t MostColumnsOfNarrowTable = 3;
constexpr std::size_t MostRowsOfShortTable = 12;
constexpr std::size_t MostLettersOfCell = 200;
constexpr std::size_t MostLettersOfCaption = 500;

// Whether a cell is a number, as NumberLabel() writes one that was entered.
bool IsNumber(const std::string& cell)
{
    return cell.find_first_not_of("0123456789.,") == std::string::npos;
}

bool IsDate(const std::string& cell)
{
    return FirstDayOf(cell).has_value();
}

// Whether the cells of the column that are not empty are all of one kind.
bool IsColumnOf(bool (*isOfKind)(const std::string&), const PlantChart& chart, std::size_t column)
{
    return std::all_of(chart.Rows.begin(), chart.Rows.end(),
                       [&](const std::vector<std::string>& row)
                       { return row.at(column).empty() || isOfKind(row.at(column)); });
}

// The attribute of the cells of a column. Numbers and dates are not broken into lines.
const char* ClassOfColumn(const PlantChart& chart, std::size_t column)
{
    if (IsColumnOf(IsNumber, chart, column))
        return " class=\"number\"";
    return IsColumnOf(IsDate, chart, column) ? " class=\"date\"" : "";
}

// How a table is set on paper: a long one in columns, so that it needs few sheets.
const char* ClassOnPaper(const PlantChart& chart)
{
    if (chart.Rows.size() <= MostRowsOfShortTable)
        return "";
    return chart.Columns.size() <= MostColumnsOfNarrowTable ? "three-columns " : "two-columns ";
}

std::string Row(const char* element, const std::vector<std::string>& cells, const std::vector<const char*>& classes)
{
    std::string html = "<tr>";
    for (std::size_t i = 0; i < cells.size(); ++i)
    {
        html += std::string("<") + element + classes.at(i) + ">";
        html += Escaped(Shortened(cells[i], MostLettersOfCell)) + "</" + element + ">";
    }
    return html + "</tr>\n";
}

std::string DateLabel(const std::string& date)
{
    const auto day = plant_query::DaysSinceEpoch(date);
    return day ? DayLabel(*day) : Shortened(date, MostLettersOfCell);
}

// `isNamed`: whether the caption begins with the name of the plant.
std::string Photo(const std::string& name, bool isNamed, const PlantPhoto& photo, const std::string& source)
{
    std::string caption = DateLabel(photo.PhotoDate);
    if (!photo.Caption.empty())
        caption += (caption.empty() ? "" : ": ") + Shortened(photo.Caption, MostLettersOfCaption);
    std::string html = R"(<li><figure><img src=")" + Escaped(source) + R"(" alt=")" +
                       Escaped("Photo of " + NameInSentence(name)) + R"(" loading="lazy"/><figcaption>)";
    if (isNamed)
        html += TextElement("b", Shortened(name, MostLettersOfCell)) + " ";
    return html + TextElement("span", caption) + "</figcaption></figure></li>\n";
}

} // namespace

std::string TextElement(const char* name, const std::string& text)
{
    return std::string("<") + name + ">" + Escaped(text) + "</" + name + ">";
}

std::string FoldedTable(const PlantChart& chart)
{
    std::vector<const char*> classes;
    for (std::size_t i = 0; i < chart.Columns.size(); ++i)
        classes.push_back(ClassOfColumn(chart, i));
    const std::size_t shown = std::min(chart.Rows.size(), MostRows);
    std::string html = "<details><summary>Figures: " + Counted(chart.Rows.size(), "row", "rows") + "</summary>\n" +
                       R"(<div class=")" + ClassOnPaper(chart) + R"(table" role="region" tabindex="0" aria-label=")" +
                       Escaped("Figures: " + chart.Heading) + "\"><table>\n<thead>" +
                       Row("th", chart.Columns, classes) + "</thead>\n<tbody>\n";
    for (std::size_t i = 0; i < shown; ++i)
        html += Row("td", chart.Rows[i], classes);
    html += "</tbody></table></div>\n";
    if (shown < chart.Rows.size())
        html += TextElement("p", "These are the first " + Counted(shown, "row", "rows") + ". " +
                                     Counted(chart.Rows.size() - shown, "more is", "more are") +
                                     " left out, so that the page stays small.");
    return html + "</details>\n";
}

void PageParts::AddChart(const std::string& id, const DrawChart& draw)
{
    const PlantChart chart = draw(PlantChartWidth);
    if (chart.SVG.empty())
    {
        Missing += "<li>" + TextElement("b", chart.Heading) + ": " + Escaped(chart.Sentence) + "</li>\n";
        return;
    }
    Add(id, chart.Heading,
        "<div class=\"picture\">\n" + TextElement("h2", chart.Heading) + "\n" + TextElement("p", chart.Sentence) +
            "\n<figure class=\"wide\">" + chart.SVG + "</figure>\n<figure class=\"narrow\">" +
            draw(TelephoneWidth).SVG + "</figure>\n</div>\n" + FoldedTable(chart));
}

void PageParts::AddSection(const std::string& id, const std::string& heading, const std::string& content)
{
    Add(id, heading, TextElement("h2", heading) + "\n" + content);
}

void PageParts::Add(const std::string& id, const std::string& heading, const std::string& html)
{
    Headings.emplace_back(id, heading);
    HTML += "<section id=\"" + id + "\">\n" + html + "</section>\n";
}

std::string PageParts::Contents() const
{
    constexpr std::size_t fewest = 3;
    if (Headings.size() < fewest)
        return {};
    std::string html = "<nav aria-label=\"Contents\"><ul>\n";
    for (const auto& [id, heading] : Headings)
        html += "<li><a href=\"#" + id + "\">" + Escaped(heading) + "</a></li>\n";
    return html + "</ul></nav>\n";
}

std::string PageParts::Sections() const
{
    if (Missing.empty())
        return HTML;
    return HTML + "<section id=\"missing\">\n" + TextElement("h2", HTML.empty() ? "Nothing to draw yet" : "Not drawn") +
           "\n<ul>\n" + Missing + "</ul>\n</section>\n";
}

std::string PhotoStrip(const PageData& data, const std::vector<PlantPhoto>& photos, std::size_t most,
                       const PlantReportOptions& options)
{
    std::string html;
    std::size_t shown = 0;
    for (auto photo = photos.begin(); options.PhotoSource && photo != photos.end() && shown < most; ++photo)
        if (const std::string source = options.PhotoSource(*photo); !source.empty())
        {
            html += Photo(data.NameOf.at(photo->PlantUUID), data.Plants.size() > 1, *photo, source);
            ++shown;
        }
    if (html.empty())
        return html;
    html = "<ul class=\"photos\">\n" + html + "</ul>\n";
    if (shown < photos.size())
        html += TextElement("p", "Shown: " + NumberLabel(static_cast<double>(shown)) + " of " +
                                     Counted(photos.size(), "photo", "photos") + ".");
    return html;
}

} // namespace plant_report

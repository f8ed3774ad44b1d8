#include "svg.h"

#include "palette.h"

namespace plant_report
{

namespace
{

std::string Place(double value)
{
    return NumberText(value, 1); // a tenth of a pixel
}

bool IsLine(std::string_view element)
{
    return element == "line" || element == "polyline";
}

Attributes Ends(double x1, double y1, double x2, double y2, double width)
{
    return {{"x1", Place(x1)},
            {"y1", Place(y1)},
            {"x2", Place(x2)},
            {"y2", Place(y2)},
            {"stroke-width", NumberText(width, 1)}};
}

} // namespace

Drawing::Drawing(double width, double height) : PictureWidth(width), PictureHeight(height) {}

void Drawing::Rect(double x, double y, double width, double height, Role fill, const std::string& title)
{
    const Attributes attributes = {
        {"x", Place(x)}, {"y", Place(y)}, {"width", Place(width)}, {"height", Place(height)}};
    Element("rect", fill, attributes, title);
}

void Drawing::Circle(double x, double y, double radius, Role fill, const std::string& title)
{
    Element("circle", fill, {{"cx", Place(x)}, {"cy", Place(y)}, {"r", Place(radius)}}, title);
}

void Drawing::Diamond(double x, double y, double radius, Role fill, const std::string& title)
{
    const std::string path = "M" + Place(x) + " " + Place(y - radius) + "L" + Place(x + radius) + " " + Place(y) + "L" +
                             Place(x) + " " + Place(y + radius) + "L" + Place(x - radius) + " " + Place(y) + "Z";
    const Attributes attributes = {{"d", path}};
    Element("path", fill, attributes, title);
}

void Drawing::Line(double x1, double y1, double x2, double y2, Role stroke, double width)
{
    Element("line", stroke, Ends(x1, y1, x2, y2, width), {});
}

void Drawing::Dashes(double x1, double y1, double x2, double y2, Role stroke, double width)
{
    Attributes attributes = Ends(x1, y1, x2, y2, width);
    attributes.emplace_back("stroke-dasharray", "4 3");
    Element("line", stroke, attributes, {});
}

void Drawing::Polyline(const std::vector<std::pair<double, double>>& points, Role stroke, double width)
{
    std::string places;
    for (const auto& [x, y] : points)
        places += (places.empty() ? "" : " ") + Place(x) + "," + Place(y);
    const Attributes attributes = {{"fill", "none"},
                                   {"points", places},
                                   {"stroke-width", NumberText(width, 1)},
                                   {"stroke-linejoin", "round"},
                                   {"stroke-linecap", "round"}};
    Element("polyline", stroke, attributes, {});
}

void Drawing::Text(double x, double y, const std::string& text, Anchor anchor, Role fill, double size, double widest)
{
    const std::string shown = widest > 0 ? Fitting(text, size, widest) : text;
    Attributes attributes = {{"x", Place(x)}, {"y", Place(y)}, {"font-size", NumberText(size, 1)}};
    if (anchor != Anchor::Start)
        attributes.emplace_back("text-anchor", anchor == Anchor::Middle ? "middle" : "end");
    Element("text", fill, attributes, shown == text ? std::string() : text, shown);
}

void Drawing::Element(std::string_view name, Role role, const Attributes& attributes, const std::string& title,
                      const std::string& text)
{
    const RoleColour& colour = ColourOf(role);
    Marks.append("<").append(name).append(" class=\"").append(colour.Class);
    Marks.append(IsLine(name) ? "\" stroke=\"" : "\" fill=\"").append(colour.Light).append("\"");
    for (const auto& [attribute, value] : attributes)
        Marks.append(" ").append(attribute).append("=\"").append(value).append("\"");
    std::string content = Escaped(text);
    if (!title.empty())
        content += "<title>" + Escaped(Shortened(title, MostLettersOfTitle)) + "</title>";
    if (content.empty())
        Marks.append("/>");
    else
        Marks.append(">").append(content).append("</").append(name).append(">");
}

std::string Drawing::SVG(const std::string& id, const std::string& title, const std::string& description) const
{
    const std::string width = Place(PictureWidth);
    const std::string height = Place(PictureHeight);
    const std::string unique = id + "-" + width;
    std::string svg =
        R"(<svg xmlns="http://www.w3.org/2000/svg" class="plant-chart" width=")" + width + R"(" height=")" + height +
        R"(" viewBox="0 0 )" + width + " " + height + R"(" font-family="sans-serif" role="img" aria-labelledby=")" +
        unique + R"(-title" aria-describedby=")" + unique + R"(-description"><title id=")" + unique + R"(-title">)" +
        Escaped(title) + R"(</title><desc id=")" + unique + R"(-description">)" + Escaped(description) + "</desc>";
    return svg + Marks + "</svg>";
}

} // namespace plant_report

#include "svg.h"

#include "palette.h"

#include <initializer_list>

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

Attributes Places(std::initializer_list<std::pair<std::string_view, double>> places)
{
    Attributes attributes;
    for (const auto& [name, value] : places)
        attributes.emplace_back(name, Place(value));
    return attributes;
}

Attributes Ends(double x1, double y1, double x2, double y2, double width)
{
    return Places({{"x1", x1}, {"y1", y1}, {"x2", x2}, {"y2", y2}, {"stroke-width", width}});
}

} // namespace

Drawing::Drawing(double width, double height) : PictureWidth(width), PictureHeight(height) {}

void Drawing::Rect(double x, double y, double width, double height, Role fill, const std::string& title)
{
    Element("rect", fill, Places({{"x", x}, {"y", y}, {"width", width}, {"height", height}}), title);
}

void Drawing::Circle(double x, double y, double radius, Role fill, const std::string& title)
{
    Element("circle", fill, Places({{"cx", x}, {"cy", y}, {"r", radius}}), title);
}

void Drawing::Diamond(double x, double y, double radius, Role fill, const std::string& title)
{
    const std::string path = "M" + Place(x) + " " + Place(y - radius) + "L" + Place(x + radius) + " " + Place(y) + "L" +
                             Place(x) + " " + Place(y + radius) + "L" + Place(x - radius) + " " + Place(y) + "Z";
    Attributes attributes;
    attributes.emplace_back("d", path);
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
    Attributes attributes;
    attributes.emplace_back("fill", "none");
    attributes.emplace_back("points", places);
    attributes.emplace_back("stroke-width", Place(width));
    attributes.emplace_back("stroke-linejoin", "round");
    attributes.emplace_back("stroke-linecap", "round");
    Element("polyline", stroke, attributes, {});
}

void Drawing::Text(double x, double y, const std::string& text, Anchor anchor, Role fill, double size, double widest)
{
    const std::string shown = widest > 0 ? Fitting(text, size, widest) : text;
    Attributes attributes = Places({{"x", x}, {"y", y}, {"font-size", size}});
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

#include "svg_picture.h"

#include "record/decimal.h"
#include "report/palette.h"
#include "report/text.h"

#include <algorithm>
#include <charconv>

#include <expat.h>
#include <gtest/gtest.h>

namespace support
{

namespace
{

struct Reading
{
    std::vector<Element> Elements;
    std::vector<std::size_t> Open;
};

void Begin(void* data, const char* name, const char** attributes)
{
    Reading& reading = *static_cast<Reading*>(data);
    Element element;
    element.Name = name;
    for (; *attributes != nullptr; attributes += 2)
        element.Attributes[attributes[0]] = attributes[1];
    element.Path = reading.Open;
    reading.Open.push_back(reading.Elements.size());
    reading.Elements.push_back(std::move(element));
}

void End(void* data, const char*)
{
    static_cast<Reading*>(data)->Open.pop_back();
}

void Characters(void* data, const char* text, int length)
{
    Reading& reading = *static_cast<Reading*>(data);
    reading.Elements[reading.Open.back()].Text.append(text, static_cast<std::size_t>(length));
}

// A part of the picture.
struct Box
{
    double Left, Top, Right, Bottom;
};

// Where the words of a text element are, by the estimated width of its letters.
Box BoxOf(const Element& text)
{
    const double size = text.Number("font-size");
    const double width = plant_report::TextWidth(text.Text, size);
    const auto anchor = text.Attributes.find("text-anchor");
    double left = text.Number("x");
    if (anchor != text.Attributes.end())
        left -= anchor->second == "middle" ? width / 2 : width;
    return {left, text.Number("y") - size * 0.75, left + width, text.Number("y") + size * 0.2};
}

} // namespace

std::string Element::operator[](const std::string& attribute) const
{
    const auto found = Attributes.find(attribute);
    EXPECT_NE(found, Attributes.end()) << "<" << Name << "> without " << attribute;
    return found == Attributes.end() ? std::string() : found->second;
}

double Element::Number(const std::string& attribute) const
{
    const std::string text = (*this)[attribute];
    double number = 0;
    const std::from_chars_result result = DecimalFromChars(text.data(), text.data() + text.size(), number);
    EXPECT_TRUE(result.ec == std::errc() && result.ptr == text.data() + text.size())
        << Name << " " << attribute << "=\"" << text << "\"";
    return number;
}

std::vector<Element> ElementsOf(const std::string& xml)
{
    Reading reading;
    XML_Parser parser = XML_ParserCreate("UTF-8");
    XML_SetUserData(parser, &reading);
    XML_SetElementHandler(parser, Begin, End);
    XML_SetCharacterDataHandler(parser, Characters);
    if (XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), XML_TRUE) != XML_STATUS_OK)
    {
        const auto place = static_cast<std::size_t>(std::max(XML_GetCurrentByteIndex(parser), XML_Index{40}) - 40);
        ADD_FAILURE() << XML_ErrorString(XML_GetErrorCode(parser)) << " near "
                      << xml.substr(std::min(place, xml.size()), 80);
        reading.Elements.clear();
    }
    XML_ParserFree(parser);
    return reading.Elements;
}

SVGPicture::SVGPicture(const std::string& svg) : Elements(ElementsOf(svg))
{
    if (Elements.empty())
        Elements.emplace_back();
}

std::vector<Element> SVGPicture::Marks(const std::string& name, const std::string& role) const
{
    std::vector<Element> marks;
    std::copy_if(Elements.begin(), Elements.end(), std::back_inserter(marks),
                 [&](const Element& element)
                 { return element.Name == name && (role.empty() || element["class"] == role); });
    return marks;
}

std::string SVGPicture::TitleOf(const Element& mark) const
{
    for (std::size_t i = 1; i < Elements.size(); ++i)
    {
        const Element& parent = Elements[Elements[i].Path.back()];
        if (Elements[i].Name == "title" && parent.Attributes == mark.Attributes && parent.Text == mark.Text)
            return Elements[i].Text;
    }
    return {};
}

std::vector<std::string> SVGPicture::Words() const
{
    std::vector<std::string> words;
    for (const Element& text : Marks("text"))
        words.push_back(text.Text);
    return words;
}

std::size_t SVGPicture::CountOf(const std::string& text) const
{
    const std::vector<std::string> words = Words();
    return static_cast<std::size_t>(std::count(words.begin(), words.end(), text));
}

std::string SVGPicture::TextOfID(const std::string& id) const
{
    for (const Element& element : Elements)
        if (const auto found = element.Attributes.find("id"); found != element.Attributes.end() && found->second == id)
            return element.Text;
    ADD_FAILURE() << "nothing has the id " << id;
    return {};
}

std::string SVGPicture::AccessibleName() const
{
    return TextOfID(Elements.front()["aria-labelledby"]);
}

std::string SVGPicture::Description() const
{
    return TextOfID(Elements.front()["aria-describedby"]);
}

double SVGPicture::Width() const
{
    return Elements.front().Number("width");
}

double SVGPicture::Height() const
{
    return Elements.front().Number("height");
}

void SVGPicture::ExpectColoured(const Element& mark) const
{
    const bool isLine = mark.Name == "line" || mark.Name == "polyline";
    const std::string role = mark["class"];
    bool known = false;
    for (int i = 0; i <= static_cast<int>(plant_report::Role::Count4); ++i)
        if (const auto& colour = plant_report::ColourOf(static_cast<plant_report::Role>(i)); role == colour.Class)
        {
            EXPECT_EQ(mark[isLine ? "stroke" : "fill"], colour.Light) << mark.Name << " of " << role;
            known = true;
        }
    EXPECT_TRUE(known) << mark.Name << " has the class " << role;
}

void SVGPicture::ExpectSound() const
{
    EXPECT_EQ(Elements.front().Name, "svg");
    EXPECT_EQ(Elements.front()["xmlns"], "http://www.w3.org/2000/svg");
    EXPECT_EQ(Elements.front()["role"], "img");
    EXPECT_FALSE(AccessibleName().empty());
    EXPECT_FALSE(Description().empty());
    std::vector<std::pair<Box, std::string>> words;
    for (const Element& element : Elements)
    {
        if (element.Name == "svg" || element.Name == "title" || element.Name == "desc")
            continue;
        ExpectColoured(element);
        Box box{0, 0, 0, 0};
        if (element.Name == "text")
        {
            box = BoxOf(element);
            EXPECT_GE(element.Number("font-size"), 11) << element.Text;
            for (const auto& [other, text] : words)
                EXPECT_FALSE(box.Left < other.Right && other.Left < box.Right && box.Top < other.Bottom &&
                             other.Top < box.Bottom)
                    << "\"" << element.Text << "\" is drawn over \"" << text << "\"";
            words.emplace_back(box, element.Text);
        }
        else if (element.Name == "rect")
            box = {element.Number("x"), element.Number("y"), element.Number("x") + element.Number("width"),
                   element.Number("y") + element.Number("height")};
        else if (element.Name == "circle")
            box = {element.Number("cx") - element.Number("r"), element.Number("cy") - element.Number("r"),
                   element.Number("cx") + element.Number("r"), element.Number("cy") + element.Number("r")};
        else if (element.Name == "line")
            box = {std::min(element.Number("x1"), element.Number("x2")),
                   std::min(element.Number("y1"), element.Number("y2")),
                   std::max(element.Number("x1"), element.Number("x2")),
                   std::max(element.Number("y1"), element.Number("y2"))};
        EXPECT_TRUE(box.Left >= 0 && box.Top >= 0 && box.Right <= Width() && box.Bottom <= Height())
            << element.Name << " \"" << element.Text << "\" from " << box.Left << "," << box.Top << " to " << box.Right
            << "," << box.Bottom << " is cut by the edge";
    }
}

} // namespace support

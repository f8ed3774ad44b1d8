// Reads the text of a chart or page as XML, for the tests of report/. Expat refuses every text that is not well-formed.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace support
{

// An element of an XML text.
struct Element
{
    std::string Name;
    std::map<std::string, std::string> Attributes;
    std::string Text;              // of the element itself, without that of its children
    std::vector<std::size_t> Path; // the places of its ancestors in the list, the root first

    // The attribute; a test failure where there is none.
    std::string operator[](const std::string& attribute) const;
    // The attribute as a number; a test failure where it is none.
    double Number(const std::string& attribute) const;
};

// The elements of an XML text in their order; none, and a test failure, where the text is not well-formed.
std::vector<Element> ElementsOf(const std::string& xml);

// A chart.
class SVGPicture
{
  public:
    explicit SVGPicture(const std::string& svg);

    // The elements with this name and class, in their order; of any class where `role` is empty.
    std::vector<Element> Marks(const std::string& name, const std::string& role = {}) const;
    // The title of a mark: what a browser shows as a tooltip. Empty where it has none.
    std::string TitleOf(const Element& mark) const;
    // The words in the picture.
    std::vector<std::string> Words() const;
    // How many of them are this text.
    std::size_t CountOf(const std::string& text) const;
    // Its title and description, by which a screen reader names it.
    std::string AccessibleName() const;
    std::string Description() const;
    double Width() const;
    double Height() const;

    // What every chart must be: named, in the SVG namespace, its marks coloured by attributes and classes of the
    // palette, all of them and the estimated widths of its words within the view box, and no words over others.
    void ExpectSound() const;

  private:
    std::string TextOfID(const std::string& id) const;
    void ExpectColoured(const Element& mark) const;

    std::vector<Element> Elements;
};

} // namespace support

// Composes the SVG text of a picture, for the other files of this library.
#pragma once

#include "text.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace plant_report
{

// What a mark or a text means. Each role has a light and a dark colour; see palette.h.
enum class Role
{
    Ink,    // words
    Faint,  // words that matter less
    Line,   // axes and grids
    Ground, // what is behind the marks
    Water,
    Feed,
    EC,
    PH,
    Mark, // a mark without a more special role
    Mean,
    Seed,
    Clone,
    Veg,
    Flower,
    Dry,
    Cure,
    Harvested,
    Archived,
    Severity1,
    Severity2,
    Severity3,
    Severity4,
    Severity5,
    Count1, // cells of a calendar, from few to many
    Count2,
    Count3,
    Count4,
};

using Attributes = std::vector<std::pair<std::string_view, std::string>>;

enum class Anchor
{
    Start,
    Middle,
    End
};

// Composes the marks of one picture, in the units of its view box: pixels, where the picture has its natural width.
class Drawing
{
  public:
    Drawing(double width, double height);

    // Each mark has the class and the light colour of its role, and a title of up to 200 letters (shown by browsers as
    // a tooltip) where `title` is not empty. A `Role` of a line colours its stroke, any other its fill.
    void Rect(double x, double y, double width, double height, Role fill, const std::string& title = {});
    void Circle(double x, double y, double radius, Role fill, const std::string& title = {});
    void Diamond(double x, double y, double radius, Role fill, const std::string& title = {});
    void Line(double x1, double y1, double x2, double y2, Role stroke, double width = 1);
    void Dashes(double x1, double y1, double x2, double y2, Role stroke, double width = 1);
    void Polyline(const std::vector<std::pair<double, double>>& points, Role stroke, double width = 1.5);
    // `size` is the height of the letters; below 11 a telephone's reader would not see them. A text wider than `widest`
    // (0 for any) is cut with an ellipsis; its title then holds the text, up to 200 letters.
    void Text(double x, double y, const std::string& text, Anchor anchor = Anchor::Start, Role fill = Role::Ink,
              double size = 12, double widest = 0);

    // The whole picture. `id` must be unique among the charts; with the width of the picture it links the picture to
    // its title and description.
    std::string SVG(const std::string& id, const std::string& title, const std::string& description) const;

    double Width() const { return PictureWidth; }
    double Height() const { return PictureHeight; }

  private:
    void Element(std::string_view name, Role role, const Attributes& attributes, const std::string& title,
                 const std::string& text = {});

    double PictureWidth;
    double PictureHeight;
    std::string Marks;
};

} // namespace plant_report

// Axes and keys, which the charts have in common.
#pragma once

#include "scale.h"
#include "svg.h"

#include <functional>
#include <string>
#include <vector>

namespace plant_report
{

// The room of the labels below an axis.
constexpr double AxisHeight = 22;

// The width that a chart is drawn with: from 320 to 1600 pixels.
double DrawnWidth(double width);

// Draws a line at each tick from `top` to `bottom`, and the labels below. Labels stay between `left` and `right`; one
// that would touch another is left out.
void DrawAxisBelow(Drawing& drawing, const std::vector<Tick>& ticks, const std::function<double(double)>& place,
                   double top, double bottom, double left, double right);

// Draws a line at each tick from `left` to `right`, and with `labels` the label before it.
void DrawAxisBefore(Drawing& drawing, const NumberScale& scale, double left, double right, bool labels);

// The width of the widest label of the scale.
double LabelsWidth(const NumberScale& scale);

// Places the items of a key from left to right, in lines.
class KeyLines
{
  public:
    KeyLines(double left, double right, double top);

    // The left end of an item that is `width` wide. Begins another line where it does not fit.
    double Place(double width);
    double Middle() const { return Top + 8; }    // of the present line
    double Baseline() const { return Top + 12; } // of its words
    double Bottom() const { return Top + 18; }

  private:
    double Left, Right, Top, Next;
};

} // namespace plant_report

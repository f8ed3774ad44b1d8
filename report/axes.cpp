#include "axes.h"

#include <algorithm>

namespace plant_report
{

namespace
{

constexpr double LabelSize = 12;

} // namespace

double DrawnWidth(double width)
{
    return width > 320 ? std::min(width, 1600.0) : 320; // not a number, too
}

void DrawAxisBelow(Drawing& drawing, const std::vector<Tick>& ticks, const std::function<double(double)>& place,
                   double top, double bottom, double left, double right)
{
    constexpr double gap = 6;
    constexpr double edge = 0.5; // places are rounded
    double taken = left - gap;
    for (const Tick& tick : ticks)
    {
        const double x = place(tick.Value);
        drawing.Line(x, top, x, bottom, Role::Line);
        const double width = TextWidth(tick.Label, LabelSize);
        const double begin = std::min(std::max(x - width / 2, left + edge), right - width - edge);
        if (begin < taken + gap)
            continue;
        drawing.Text(begin + width / 2, bottom + 15, tick.Label, Anchor::Middle, Role::Faint, LabelSize);
        taken = begin + width;
    }
}

void DrawAxisBefore(Drawing& drawing, const NumberScale& scale, double left, double right, bool labels)
{
    for (const Tick& tick : scale.Ticks())
    {
        const double place = scale(tick.Value);
        drawing.Line(left, place, right, place, Role::Line);
        if (labels)
            drawing.Text(left - 6, place + 4, tick.Label, Anchor::End, Role::Faint, LabelSize);
    }
}

double LabelsWidth(const NumberScale& scale)
{
    double widest = 0;
    for (const Tick& tick : scale.Ticks())
        widest = std::max(widest, TextWidth(tick.Label, LabelSize));
    return widest;
}

KeyLines::KeyLines(double left, double right, double top) : Left(left), Right(right), Top(top), Next(left) {}

double KeyLines::Place(double width)
{
    if (Next > Left && Next + width > Right)
    {
        Next = Left;
        Top += 20;
    }
    const double place = Next;
    Next += width + 12;
    return place;
}

} // namespace plant_report

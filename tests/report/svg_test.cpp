// Tests of the composition of pictures.

#include "report/svg.h"

#include "report/palette.h"
#include "report/svg_picture.h"

#include <string>

#include <gtest/gtest.h>

using namespace plant_report;
using namespace support;

namespace
{

TEST(SVGTest, EachMarkHasItsPlaceItsClassAndItsLightColour)
{
    Drawing drawing(300, 200);
    drawing.Rect(10.04, 20, 30, 40.26, Role::Water);
    drawing.Circle(50, 60, 4, Role::Feed);
    drawing.Line(1, 2, 3, 4, Role::Line, 1.5);
    drawing.Polyline({{1, 2}, {30.55, 4}}, Role::EC);
    const SVGPicture picture(drawing.SVG("marks", "Marks", "Some marks."));
    picture.ExpectSound();

    const Element rect = picture.Marks("rect", "water").at(0);
    EXPECT_EQ(rect.Number("x"), 10);
    EXPECT_EQ(rect.Number("y"), 20);
    EXPECT_EQ(rect.Number("width"), 30);
    EXPECT_EQ(rect.Number("height"), 40.3);
    const Element circle = picture.Marks("circle", "feed").at(0);
    EXPECT_EQ(circle["cx"] + " " + circle["cy"] + " " + circle["r"], "50 60 4");
    const Element line = picture.Marks("line", "line").at(0);
    EXPECT_EQ(line["x1"] + " " + line["y1"] + " " + line["x2"] + " " + line["y2"], "1 2 3 4");
    EXPECT_EQ(line["stroke-width"], "1.5");
    EXPECT_FALSE(line.Attributes.contains("stroke-dasharray"));
    const Element polyline = picture.Marks("polyline", "ec").at(0);
    EXPECT_EQ(polyline["points"], "1,2 30.6,4");
    EXPECT_EQ(polyline["fill"], "none");
}

TEST(SVGTest, ADashedLineHasDashes)
{
    Drawing drawing(300, 200);
    drawing.Dashes(1, 2, 3, 4, Role::Mean, 2);
    const Element line = SVGPicture(drawing.SVG("d", "D", "D.")).Marks("line", "mean").at(0);
    EXPECT_EQ(line["stroke-dasharray"], "4 3");
    EXPECT_EQ(line["stroke-width"], "2");
    EXPECT_EQ(line["y2"], "4");
}

TEST(SVGTest, ADiamondStandsOnItsCorner)
{
    Drawing drawing(300, 200);
    drawing.Diamond(50, 60, 5, Role::Mark, "peak");
    const SVGPicture picture(drawing.SVG("d", "D", "D."));
    EXPECT_EQ(picture.Marks("path", "mark").at(0)["d"], "M50 55L55 60L50 65L45 60Z");
    EXPECT_EQ(picture.TitleOf(picture.Marks("path").at(0)), "peak");
}

TEST(SVGTest, AMarkHasItsTitle)
{
    Drawing drawing(300, 200);
    drawing.Rect(1, 1, 1, 1, Role::Seed, "<Basil> & Mint");
    drawing.Rect(2, 1, 1, 1, Role::Seed);
    drawing.Circle(3, 3, 1, Role::Seed, std::string(300, 'a'));
    const SVGPicture picture(drawing.SVG("t", "T", "T."));
    EXPECT_EQ(picture.TitleOf(picture.Marks("rect").at(0)), "<Basil> & Mint");
    EXPECT_EQ(picture.TitleOf(picture.Marks("rect").at(1)), "");
    EXPECT_EQ(picture.TitleOf(picture.Marks("circle").at(0)), std::string(199, 'a') + "\xE2\x80\xA6");
}

TEST(SVGTest, WordsHaveTheirSizeAndAnchor)
{
    Drawing drawing(300, 200);
    drawing.Text(10, 20, "Basil");
    drawing.Text(150, 40, "M<i>nt", Anchor::Middle, Role::Faint, 11);
    drawing.Text(290, 60, "Sage", Anchor::End);
    const SVGPicture picture(drawing.SVG("w", "W", "W."));
    picture.ExpectSound();
    EXPECT_EQ(picture.Words(), (std::vector<std::string>{"Basil", "M<i>nt", "Sage"}));
    const std::vector<Element> words = picture.Marks("text");
    EXPECT_FALSE(words[0].Attributes.contains("text-anchor"));
    EXPECT_EQ(words[0]["font-size"], "12");
    EXPECT_EQ(words[1]["text-anchor"] + words[1]["font-size"] + words[1]["class"], "middle11faint");
    EXPECT_EQ(words[2]["text-anchor"], "end");
}

TEST(SVGTest, ACutTextHasTheWholeTextAsItsTitle)
{
    Drawing drawing(300, 200);
    drawing.Text(10, 20, "A basil with a long name", Anchor::Start, Role::Ink, 12, 80);
    drawing.Text(10, 40, "Mint", Anchor::Start, Role::Ink, 12, 80);
    const SVGPicture picture(drawing.SVG("w", "W", "W."));
    picture.ExpectSound();
    const std::vector<Element> words = picture.Marks("text");
    EXPECT_EQ(words[0].Text.substr(words[0].Text.size() - 3), "\xE2\x80\xA6");
    EXPECT_EQ(picture.TitleOf(words[0]), "A basil with a long name");
    EXPECT_EQ(words[1].Text, "Mint");
    EXPECT_EQ(picture.TitleOf(words[1]), "");
}

TEST(SVGTest, APictureHasItsSizeNameAndDescription)
{
    const std::string svg = Drawing(360, 200).SVG("care", "Care & <more>", "Two days.");
    const SVGPicture picture(svg);
    EXPECT_EQ(picture.AccessibleName(), "Care & <more>");
    EXPECT_EQ(picture.Description(), "Two days.");
    EXPECT_EQ(picture.Width(), 360);
    EXPECT_EQ(picture.Height(), 200);
    EXPECT_EQ(ElementsOf(svg).front()["viewBox"], "0 0 360 200");
    EXPECT_EQ(ElementsOf(svg).front()["class"], "plant-chart");
}

TEST(SVGTest, PicturesOfTwoWidthsHaveDifferentIDs)
{
    EXPECT_NE(ElementsOf(Drawing(360, 200).SVG("care", "C", "C.")).front()["aria-labelledby"],
              ElementsOf(Drawing(720, 200).SVG("care", "C", "C.")).front()["aria-labelledby"]);
}

} // namespace

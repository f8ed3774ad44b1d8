#include "report/report_page.h"

#include <algorithm>
#include <utility>

namespace support
{

ReportPage::ReportPage(std::string html) : Text(std::move(html)), Elements(ElementsOf(Text)) {}

std::vector<Element> ReportPage::Named(const std::string& name) const
{
    std::vector<Element> named;
    std::copy_if(Elements.begin(), Elements.end(), std::back_inserter(named),
                 [&](const Element& element) { return element.Name == name; });
    return named;
}

std::string ReportPage::WholeText(const Element& element) const
{
    std::string text;
    for (std::size_t i = 0; i < Elements.size(); ++i)
    {
        const std::vector<std::size_t>& path = Elements[i].Path;
        const bool isIt = path == element.Path && Elements[i].Attributes == element.Attributes &&
                          Elements[i].Name == element.Name && Elements[i].Text == element.Text;
        if (!isIt || !text.empty())
            continue;
        text = element.Text;
        for (const Element& inner : Elements)
            if (std::find(inner.Path.begin(), inner.Path.end(), i) != inner.Path.end())
                text += inner.Text;
    }
    return text;
}

std::vector<std::string> ReportPage::Texts(const std::string& name) const
{
    std::vector<std::string> texts;
    for (const Element& element : Named(name))
        texts.push_back(element.Text);
    return texts;
}

std::vector<std::string> ReportPage::Sections() const
{
    std::vector<std::string> ids;
    for (const Element& section : Named("section"))
        ids.push_back(section["id"]);
    return ids;
}

std::string ReportPage::Section(const std::string& id) const
{
    const std::size_t begin = Text.find("<section id=\"" + id + "\">");
    return begin == std::string::npos ? std::string() : Text.substr(begin, Text.find("</section>", begin) - begin);
}

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

ReportTest::ReportTest()
{
    Options.Title = "A season";
    Options.Today = "2025-12-31";
    Options.PhotoSource = [](const PlantPhoto& photo) { return photo.FilePath; };
}

ReportPage ReportTest::Page()
{
    std::string html;
    const PlantQueryResult result = WritePlantReport(Database, Options, html);
    EXPECT_TRUE(result) << result.Error;
    return ReportPage(html);
}

std::string ReportTest::Error()
{
    std::string html = "old";
    const PlantQueryResult result = WritePlantReport(Database, Options, html);
    EXPECT_FALSE(result);
    EXPECT_EQ(html, "");
    return result.Error;
}

Plant ReportTest::Sown(const std::string& name, const std::string& strain)
{
    Plant plant;
    plant.Name = name;
    plant.Strain = strain;
    plant.SeedDate = "2025-03-01";
    EXPECT_TRUE(Repository.CreatePlant(plant));
    return plant;
}

void ReportTest::Care(const Plant& plant, const std::string& date, PlantCareAction action, double ml, double ec,
                      double ph)
{
    PlantCareEntry entry;
    entry.PlantUUID = plant.UUID;
    entry.CareDate = date;
    entry.Action = action;
    entry.AmountMl = ml;
    entry.EC = ec;
    entry.PH = ph;
    EXPECT_TRUE(Repository.CreatePlantCareEntry(entry));
}

void ReportTest::Photo(const Plant& plant, const std::string& date, const std::string& path, const std::string& caption)
{
    PlantPhoto photo;
    photo.PlantUUID = plant.UUID;
    photo.PhotoDate = date;
    photo.FilePath = path;
    photo.Caption = caption;
    EXPECT_TRUE(Repository.CreatePlantPhoto(photo));
}

} // namespace support

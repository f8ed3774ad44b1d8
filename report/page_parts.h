// The parts of a page as HTML texts in XML syntax.
#pragma once

#include "page_data.h"
#include "plant_report.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace plant_report
{

// Draws a chart with a width.
using DrawChart = std::function<PlantChart(double width)>;

// The sections of a page, and what is missing from it.
class PageParts
{
  public:
    // A picture, drawn for a desktop and for a telephone, and its table; a missing part where nothing is drawn.
    void AddChart(const std::string& id, const DrawChart& draw);
    // A section with other content, HTML.
    void AddSection(const std::string& id, const std::string& heading, const std::string& content);

    // Links to the sections; empty where there are fewer than three.
    std::string Contents() const;
    // The sections, and a list of what is missing.
    std::string Sections() const;

  private:
    void Add(const std::string& id, const std::string& heading, const std::string& html);

    std::vector<std::pair<std::string, std::string>> Headings; // with their IDs
    std::string HTML;
    std::string Missing;
};

// An element with an escaped text.
std::string TextElement(const char* name, const std::string& text);

// The figures of a chart, folded.
std::string FoldedTable(const PlantChart& chart);

// A strip of photos, and how many there are where not all of them are shown. Empty where no photo has a source.
std::string PhotoStrip(const PageData& data, const std::vector<PlantPhoto>& photos, std::size_t most,
                       const PlantReportOptions& options);

} // namespace plant_report

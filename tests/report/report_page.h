// What the tests of the page share.
#pragma once

#include "plant_report.h"
#include "report/svg_picture.h"
#include "support/journal_test.h"

#include <string>
#include <vector>

namespace support
{

// A page of a report, parsed as XML.
class ReportPage
{
  public:
    explicit ReportPage(std::string html);

    const std::string& HTML() const { return Text; }
    const std::vector<Element>& All() const { return Elements; }
    // The elements with this name.
    std::vector<Element> Named(const std::string& name) const;
    // The text of an element and of all elements in it.
    std::string WholeText(const Element& element) const;
    // The whole texts of the elements with this name.
    std::vector<std::string> Texts(const std::string& name) const;
    // The IDs of the sections, in their order.
    std::vector<std::string> Sections() const;
    // The HTML of a section; empty without one.
    std::string Section(const std::string& id) const;

  private:
    std::string Text;
    std::vector<Element> Elements;
};

bool Contains(const std::string& text, const std::string& part);

// An open journal and its reports, made on 2025-12-31.
class ReportTest : public JournalTest
{
  protected:
    ReportTest();

    // The page; the report must succeed.
    ReportPage Page();
    // The error; the page must be empty.
    std::string Error();

    // Stores a plant that was sown on 2025-03-01.
    Plant Sown(const std::string& name, const std::string& strain = {});
    void Care(const Plant& plant, const std::string& date, PlantCareAction action = PlantCareAction::Water,
              double ml = 500, double ec = 0, double ph = 0);
    void Photo(const Plant& plant, const std::string& date, const std::string& path, const std::string& caption = {});

    PlantReportOptions Options;
};

} // namespace support

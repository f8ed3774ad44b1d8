// Tests of pages of random journals, which hold what no person enters: any bytes as texts, any text as a date, and any
// number. Each page must be XML, have only the elements and attributes of a page, and draw sound pictures.

#include "query/random_journal.h"
#include "report/charts.h"
#include "report/report_page.h"
#include "support/test_form.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace support;

namespace
{

class RandomPageTest : public ReportTest
{
  protected:
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Random() % count); }

    // A text of parts that break careless pages.
    std::string Text()
    {
        static const std::vector<std::string> parts = {"<script>alert(1)</script>",
                                                       "</style>",
                                                       "</svg></title></desc>",
                                                       "<!-- -- --> <![CDATA[",
                                                       "]]>",
                                                       "<?xml ?>",
                                                       "&amp; &#0; & &lt",
                                                       "\" onload=\"x\"",
                                                       "' x='",
                                                       std::string(1, '\0'),
                                                       "\r",
                                                       "\r\n",
                                                       "\n",
                                                       "\t",
                                                       " ",
                                                       "\x1b[31m",
                                                       "\x7f",
                                                       "\xff\xfe",
                                                       "\xc0\xbc", // a `<` that is too long
                                                       "\xed\xa0\x80",
                                                       "\xf4\x90\x80\x80",
                                                       "\xe2\x82",
                                                       "\uFFFE\uFDD0\U0001FFFF",
                                                       "\u0085\u009f",
                                                       "\u2028\u2029",
                                                       "\u202e\u2066\u05e9\u05dc",
                                                       "\u200b\u00ad\ufeff",
                                                       "\U0001f469\u200d\U0001f33e\U0001f3fd",
                                                       "\u0300\u0301",
                                                       "javascript:",
                                                       "Basil",
                                                       "%s%n",
                                                       "-0",
                                                       "1e999"};
        if (Below(40) == 0)
        {
            std::string text;
            const std::string part = parts[Below(parts.size())];
            for (int i = 0; i < 10'000; ++i)
                text += part;
            return text;
        }
        std::string text;
        for (std::size_t i = Below(5); i > 0; --i)
            text += Below(8) == 0 ? std::string(1, static_cast<char>(Below(256))) : parts[Below(parts.size())];
        return text;
    }

    std::string Date()
    {
        static const std::vector<std::string> dates = {"0000-01-01", "0000-02-29", "0001-01-01",  "1999-12-31",
                                                       "2024-02-29", "2025-12-31", "2026-01-01",  "9999-12-31",
                                                       "2025-02-29", "2025-13-01", "2025-03",     "2025",
                                                       "+025-01-01", "2025-01-1",  "10000-01-01", "-001-01-01"};
        if (Below(3) > 0)
            return Day(static_cast<int>(Below(Below(4) == 0 ? 9'000 : 800)));
        return Below(3) == 0 ? Text() : dates[Below(dates.size())];
    }

    std::string Number()
    {
        static const std::vector<std::string> numbers = {"0",     "-1",    "-0.0",   "0.004", "1e-300",
                                                         "1e300", "9e999", "-9e999", "1e15",  "12345.678"};
        return Below(2) == 0 ? std::to_string(Below(2'000)) : numbers[Below(numbers.size())];
    }

    // Adds care over some years, so that charts sum it by week and month.
    void AddCare()
    {
        std::string rows;
        for (std::size_t i = Below(300); i > 0; --i)
            rows += (rows.empty() ? "('" : ",('") + RandomUUIDs().at(Below(RandomUUIDs().size())) + "'," +
                    Literal(Date()) + (Below(2) == 0 ? ",'Feed'," : ",'Water',") + Number() + "," + Number() + "," +
                    Number() + ")";
        RunSQL("PRAGMA foreign_keys=OFF;");
        if (!rows.empty())
            RunSQL("INSERT INTO PlantCareEntries(PlantUUID,CareDate,Action,AmountMl,EC,PH) VALUES" + rows + ";");
    }

    // Replaces some texts and numbers of the rows, so that each kind of record has odd ones.
    void ReplaceValues()
    {
        RunSQL("PRAGMA foreign_keys=OFF; PRAGMA ignore_check_constraints=ON; BEGIN;");
        ReplaceColumns("Plants", {"Name", "Tent", "PotSize", "Medium", "Notes", "Strain", "Stage", "Sex"},
                       {"SeedDate", "CloneDate", "TransplantDate", "FlipDate", "HarvestDate"},
                       {"FlipHeightCm", "FinalHeightCm"});
        ReplaceColumns("PlantEvents", {"EventType", "Details"}, {"EventDate"}, {});
        ReplaceColumns("PlantCareEntries", {"Product", "Notes"}, {"CareDate"}, {"AmountMl", "EC", "PH", "RunoffMl"});
        ReplaceColumns("HarvestRecords", {"CureOutcome", "Notes"}, {"HarvestDate"}, {"WetWeightG", "DryWeightG"});
        ReplaceColumns("PlantPhotos", {"FilePath", "Caption"}, {"PhotoDate"}, {});
        ReplaceColumns("PlantHealthObservations", {"Issue", "Treatment", "Notes"}, {"ObservationDate"}, {"Severity"});
        ReplaceColumns("PlantJournalEntries", {"Type", "Details"}, {"EntryDate"}, {});
        RunSQL("COMMIT; PRAGMA foreign_keys=ON; PRAGMA ignore_check_constraints=OFF;");
    }

    void ReplaceColumns(const std::string& table, const std::vector<std::string>& texts,
                        const std::vector<std::string>& dates, const std::vector<std::string>& numbers)
    {
        for (int row = 0; row < 3; ++row)
        {
            std::string values;
            const auto set = [&](const std::string& column, const std::string& value)
            {
                if (Below(2) == 0)
                    values += (values.empty() ? "" : ",") + column + "=" + value;
            };
            for (const std::string& column : texts)
                set(column, Literal(Text()));
            for (const std::string& column : dates)
                set(column, Literal(Date()));
            for (const std::string& column : numbers)
                set(column, Number());
            if (!values.empty())
                RunSQL("UPDATE OR IGNORE " + table + " SET " + values + " WHERE rowid%3=" + std::to_string(row) + ";");
        }
    }

    // A text as SQL, whatever its bytes.
    static std::string Literal(const std::string& text)
    {
        constexpr const char* digits = "0123456789abcdef";
        std::string hexadecimal;
        for (const char letter : text)
            hexadecimal.append(
                {digits[static_cast<unsigned char>(letter) >> 4U], digits[static_cast<unsigned char>(letter) & 15U]});
        return "CAST(x'" + hexadecimal + "' AS TEXT)";
    }

    void ChooseOptions()
    {
        Options = PlantReportOptions();
        Options.Title = Text();
        Options.Today = Day(static_cast<int>(Below(3'000)));
        if (Below(4) == 0)
            Options.From = Date();
        if (Below(4) == 0)
            Options.To = Date();
        if (Below(3) == 0)
            Options.Plants.UUIDs = {RandomUUIDs().at(Below(RandomUUIDs().size()))};
        else if (Below(6) == 0)
            Options.Plants.Strains = {RandomNames().at(Below(RandomNames().size())), Text()};
        if (Below(8) == 0)
            Options.Plants.Tents = {Text(), ""};
        if (Below(3) > 0)
            Options.PhotoSource = [](const PlantPhoto& photo) { return photo.FilePath; };
    }

    std::mt19937_64 Random{Seed()};
};

// The elements of a page and the attributes that each may have.
const std::map<std::string, std::set<std::string>>& ElementsOfAPage()
{
    static const std::map<std::string, std::set<std::string>> elements = {
        {"html", {"xmlns", "lang"}},
        {"head", {}},
        {"meta", {"charset", "content", "http-equiv", "name"}},
        {"link", {"href", "rel"}},
        {"title", {"id"}},
        {"style", {}},
        {"body", {}},
        {"header", {}},
        {"main", {}},
        {"footer", {}},
        {"nav", {"aria-label"}},
        {"section", {"id"}},
        {"div", {"aria-label", "class", "role", "tabindex"}},
        {"h1", {}},
        {"h2", {}},
        {"h3", {}},
        {"p", {}},
        {"b", {}},
        {"span", {}},
        {"time", {"datetime"}},
        {"a", {"href"}},
        {"ul", {"class"}},
        {"li", {}},
        {"dl", {}},
        {"dt", {}},
        {"dd", {}},
        {"details", {}},
        {"summary", {}},
        {"table", {}},
        {"thead", {}},
        {"tbody", {}},
        {"tr", {}},
        {"th", {"class"}},
        {"td", {"class"}},
        {"figure", {"class"}},
        {"figcaption", {}},
        {"img", {"alt", "loading", "src"}},
        {"svg",
         {"aria-describedby", "aria-labelledby", "class", "font-family", "height", "role", "viewBox", "width",
          "xmlns"}},
        {"desc", {"id"}},
        {"rect", {"class", "fill", "height", "width", "x", "y"}},
        {"circle", {"class", "cx", "cy", "fill", "r"}},
        {"path", {"class", "d", "fill"}},
        {"line", {"class", "stroke", "stroke-dasharray", "stroke-width", "x1", "x2", "y1", "y2"}},
        {"polyline", {"class", "fill", "points", "stroke", "stroke-linecap", "stroke-linejoin", "stroke-width"}},
        {"text", {"class", "fill", "font-size", "text-anchor", "x", "y"}},
    };
    return elements;
}

void ExpectOnlyElementsOfAPage(const ReportPage& page)
{
    for (const Element& element : page.All())
    {
        const auto known = ElementsOfAPage().find(element.Name);
        ASSERT_NE(known, ElementsOfAPage().end()) << "<" << element.Name << ">";
        for (const auto& [attribute, value] : element.Attributes)
            EXPECT_TRUE(known->second.contains(attribute)) << "<" << element.Name << "> with " << attribute;
    }
}

void ExpectSoundPictures(const ReportPage& page)
{
    const std::string& html = page.HTML();
    for (std::size_t begin = html.find("<svg"); begin != std::string::npos; begin = html.find("<svg", begin + 1))
        SVGPicture(html.substr(begin, html.find("</svg>", begin) + 6 - begin)).ExpectSound();
}

TEST_F(RandomPageTest, ThePageOfARandomJournalIsSound)
{
    const TimeLimit limit;
    for (int journal = 0; !limit.IsOver() && !HasFailure(); ++journal)
    {
        if (!IsLongForm() && journal == 20)
            break;
        SCOPED_TRACE("journal " + std::to_string(journal) + ", seed " + std::to_string(Seed()));
        FillAtRandom(Database.NativeHandle(), Random);
        AddCare();
        ReplaceValues();
        ChooseOptions();
        const ReportPage page = Page();
        ExpectOnlyElementsOfAPage(page);
        ExpectSoundPictures(page);
        EXPECT_LT(page.HTML().size(), 1'000'000U);
        EXPECT_TRUE(Page().HTML() == page.HTML()) << "the same records give the same page";
    }
}

} // namespace

#include "terminal/description.h"

#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <sstream>

namespace
{

// Cuts a text into its lines, and these into lines of this width where a blank allows that.
std::vector<std::string> WrappedLines(const std::string& text, std::size_t width)
{
    std::vector<std::string> lines;
    std::istringstream whole(text);
    for (std::string given; std::getline(whole, given);)
    {
        lines.emplace_back();
        const std::string line = Printable(given);
        std::size_t begin = 0;
        while (begin < line.size())
        {
            const std::size_t end = std::min(line.find(' ', begin + 1), line.size());
            const std::string word = line.substr(begin, end - begin); // with the blank before it
            if (!lines.back().empty() && Width(lines.back()) + Width(word) > width)
                lines.push_back(word.substr(1));
            else
                lines.back() += word;
            begin = end;
        }
    }
    return lines;
}

} // namespace

void PrintDescription(std::ostream& out, const std::vector<Property>& properties)
{
    constexpr std::size_t gap = 2;
    constexpr std::size_t narrowest = 16;
    std::size_t indent = 0;
    for (const Property& property : properties)
        if (!property.Value.empty())
            indent = std::max(indent, Width(Printable(property.Label)) + gap);
    const std::size_t width =
        OutputIsTerminal() ? std::max(TerminalWidth(), indent + narrowest) - indent : std::size_t{SIZE_MAX};

    for (const Property& property : properties)
    {
        std::string lead = Printable(property.Label);
        for (const std::string& line : WrappedLines(property.Value, width))
        {
            lead.append(indent - Width(lead), ' ');
            lead += line;
            out << lead.erase(lead.find_last_not_of(' ') + 1) << '\n';
            lead.clear();
        }
    }
}

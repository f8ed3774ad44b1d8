#include "support/page.h"

#include "testing/scratch_directory.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace support
{

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

namespace
{

std::vector<std::string> Cells(const std::string& line)
{
    std::vector<std::string> cells;
    std::istringstream stream(line.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');)
    {
        const std::size_t begin = cell.find_first_not_of(' ');
        cells.push_back(begin == std::string::npos ? "" : cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin));
    }
    return cells;
}

} // namespace

std::string PageText(const std::string& page)
{
    return FileBytes(PLANTJOURNAL_SOURCE_DIR "/" + page);
}

std::vector<std::string> CodeBlocks(const std::string& page, const std::string& language)
{
    std::vector<std::string> blocks;
    bool inside = false;
    bool wanted = false;
    for (const std::string& line : Lines(PageText(page)))
    {
        if (line.starts_with("```"))
        {
            inside = !inside;
            wanted = inside && line == "```" + language;
            if (wanted)
                blocks.emplace_back();
        }
        else if (wanted)
            blocks.back() += line + '\n';
    }
    return blocks;
}

std::vector<std::vector<std::string>> TableRows(const std::string& page, const std::string& heading)
{
    std::vector<std::vector<std::string>> rows;
    bool wanted = heading.empty();
    bool found = wanted;
    int number = 0; // of the line in its table
    for (const std::string& line : Lines(PageText(page)))
    {
        if (!heading.empty() && line.starts_with("#"))
            wanted = line == heading;
        found = found || wanted;
        number = line.starts_with("|") ? number + 1 : 0;
        if (wanted && number > 2)
            rows.push_back(Cells(line));
    }
    if (!found)
        throw std::runtime_error(page + " has no heading " + heading);
    return rows;
}

std::string Plain(std::string text)
{
    std::erase(text, '`');
    std::erase(text, '*');
    return text;
}

std::string Region(const std::string& source, const std::string& name)
{
    std::string region;
    std::size_t indentation = std::string::npos;
    for (const std::string& line : Lines(FileBytes(source)))
    {
        const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
        if (indentation == std::string::npos)
            indentation = line.substr(begin) == "// [" + name + "]" ? begin : indentation;
        else if (line.substr(begin) == "// [end]")
            return region;
        else
            region += line.substr(std::min(indentation, line.size())) + '\n';
    }
    throw std::runtime_error(source + " has no region " + name);
}

} // namespace support

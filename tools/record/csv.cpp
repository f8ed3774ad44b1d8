#include "record/csv.h"

#include "record/text.h"

#include <algorithm>

CSVReader::CSVReader(std::string_view bytes) : Bytes(bytes), Next(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0) {}

void CSVReader::ReadLine(std::vector<CSVCell>& cells)
{
    std::size_t count = 0;
    do
    {
        if (count == cells.size()) // otherwise the memory of an earlier line's cell is used again
            cells.emplace_back();
        ReadCell(cells[count++]);
    } while (Skip(','));
    cells.resize(count);
    if (!AtEnd() && !Skip('\n') && !(Skip('\r') && Skip('\n')))
        throw BadValue("a comma or the end of the line must follow a quoted value");
}

bool CSVReader::Skip(char letter)
{
    const bool found = !AtEnd() && Bytes[Next] == letter;
    Next += found ? 1 : 0;
    return found;
}

void CSVReader::ReadCell(CSVCell& cell)
{
    cell.Offset = Next;
    if (Skip('"'))
        return ReadQuotedText(cell.Text);
    Next = std::min(Bytes.find_first_of(",\n", Next), Bytes.size());
    std::string_view text = Bytes.substr(cell.Offset, Next - cell.Offset);
    if (!AtEnd() && Bytes[Next] == '\n' && text.ends_with('\r'))
        text.remove_suffix(1);
    cell.Text = text;
}

// Reads what follows the opening quotation mark.
void CSVReader::ReadQuotedText(std::string& text)
{
    text.clear();
    for (;;)
    {
        const std::size_t mark = Bytes.find('"', Next);
        if (mark == std::string_view::npos)
            throw BadValue("a quoted value has no closing quotation mark");
        text += Bytes.substr(Next, mark - Next);
        Next = mark + 1;
        if (!Skip('"'))
            return;
        text += '"';
    }
}

void AppendCSVLine(std::string& text, const std::vector<std::string>& cells)
{
    const char* separator = "";
    for (const std::string& cell : cells)
    {
        text += separator;
        separator = ",";
        const bool quoted = cell.find_first_of(",\"\r\n") != std::string::npos;
        if (!quoted)
        {
            text += cell;
            continue;
        }
        text += '"';
        for (const char letter : cell)
            text.append(letter == '"' ? 2 : 1, letter);
        text += '"';
    }
    text += '\n';
}

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// CSV as in RFC 4180. The reader accepts lines with and without a carriage return; the writer writes none.

struct CSVCell
{
    std::string Text;
    std::size_t Offset = 0; // of its first byte in the file
};

class CSVReader
{
  public:
    // Reads `bytes`, which must outlive the reader. A byte order mark at the beginning is skipped.
    explicit CSVReader(std::string_view bytes);

    bool AtEnd() const { return Next >= Bytes.size(); }
    std::size_t Offset() const { return Next; }

    // Reads the next line into `cells`. Throws BadValue, after which no further line can be read.
    void ReadLine(std::vector<CSVCell>& cells);

  private:
    bool Skip(char letter);
    void ReadCell(CSVCell& cell);
    void ReadQuotedText(std::string& text);

    std::string_view Bytes;
    std::size_t Next;
};

// Appends a line with these cells.
void AppendCSVLine(std::string& text, const std::vector<std::string>& cells);

#pragma once

#include <string>
#include <vector>

namespace support
{

// The lines of a text.
std::vector<std::string> Lines(const std::string& text);

// A page of the project, such as "docs/errors.md".
std::string PageText(const std::string& page);

// The code blocks of a page in a language, such as "cpp" or "text", in their order.
std::vector<std::string> CodeBlocks(const std::string& page, const std::string& language);

// The rows of all tables under a heading of a page, or of the whole page if the heading is empty. Each row is a vector
// of cells. The header rows are left out.
std::vector<std::vector<std::string>> TableRows(const std::string& page, const std::string& heading = {});

// The text without the markup of Markdown.
std::string Plain(std::string text);

// The part of a source file between the lines `// [name]` and `// [end]`, without its indentation.
std::string Region(const std::string& source, const std::string& name);

} // namespace support

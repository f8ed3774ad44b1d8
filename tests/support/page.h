#pragma once

#include <string>
#include <vector>

namespace support
{

// The lines of a text.
std::vector<std::string> Lines(const std::string& text);

// A page of the project, such as "docs/errors.md".
std::string PageText(const std::string& page);

// The blocks of code on a page that are marked with a language, such as "cpp" or "text", in their order.
std::vector<std::string> CodeBlocks(const std::string& page, const std::string& language);

// The rows of all tables on a page under the given heading line, the heads of the tables left out, each as its cells.
// Without a heading, those of the whole page.
std::vector<std::vector<std::string>> TableRows(const std::string& page, const std::string& heading = {});

// The text as it reads without the marks of Markdown.
std::string Plain(std::string text);

// A piece of a source file between the lines `// [name]` and `// [end]`, as it would stand by itself.
std::string Region(const std::string& source, const std::string& name);

} // namespace support

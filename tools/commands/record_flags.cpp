#include "commands/record_flags.h"

#include <cctype>

std::string FlagOf(const std::string& field)
{
    const auto isUpper = [&](std::size_t i) { return i < field.size() && std::isupper(field[i]) != 0; };
    std::string flag = "--";
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        // A word begins; the letters of an abbreviation are one.
        if (i > 0 && isUpper(i) && (!isUpper(i - 1) || (i + 1 < field.size() && !isUpper(i + 1))))
            flag += '-';
        flag += static_cast<char>(std::tolower(field[i]));
    }
    return flag;
}

std::string TypeOf(Use use, const View& value)
{
    if (use == Use::Date || use == Use::Day)
        return "DATE";
    if (use == Use::Mother)
        return "PLANT";
    const std::vector<std::string> names = NamesOf(value);
    return !names.empty() ? Joined(names, "|") : IsNumber(value) ? "NUMBER" : "TEXT";
}

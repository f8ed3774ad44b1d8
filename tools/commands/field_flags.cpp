#include "commands/field_flags.h"

#include <cctype>

std::string FlagName(const std::string& field)
{
    const auto isUpper = [&](std::size_t i) { return i < field.size() && std::isupper(field[i]) != 0; };
    std::string flag = "--";
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        // A new word begins here; an abbreviation such as EC or UUID is one word.
        if (i > 0 && isUpper(i) && (!isUpper(i - 1) || (i + 1 < field.size() && !isUpper(i + 1))))
            flag += '-';
        flag += static_cast<char>(std::tolower(field[i]));
    }
    return flag;
}

std::string FlagType(const std::string& field, Use use, const ConstValueRef& value)
{
    if (field == "Strain" || field == "Tent")
        return field == "Strain" ? "STRAIN" : "TENT";
    if (field == "FilePath")
        return "FILE";
    if (use == Use::Date || use == Use::Day)
        return "DATE";
    if (use == Use::Mother)
        return "PLANT";
    const std::vector<std::string> names = EnumerationNames(value);
    return !names.empty() ? Joined(names, "|") : IsNumber(value) ? "NUMBER" : "TEXT";
}

#include "letters.h"

namespace plant_query
{

std::string WithoutCase(std::string text)
{
    for (char& letter : text)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return text;
}

} // namespace plant_query

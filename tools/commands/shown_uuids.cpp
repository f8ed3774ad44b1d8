#include "commands/shown_uuids.h"

#include "record/letters.h"
#include "terminal/console.h"

#include <set>

namespace
{

constexpr std::size_t ShortestPrefix = 4; // as FindPlant() requires

// Whether another UUID than this one, among these, begins with the prefix.
bool IsShared(const std::string& prefix, const std::string& uuid, const std::set<std::string>& uuids)
{
    auto other = uuids.lower_bound(prefix);
    if (other != uuids.end() && *other == uuid)
        ++other;
    return other != uuids.end() && other->starts_with(prefix);
}

} // namespace

UUIDTexts ShownUUIDs(const std::vector<Plant>& plants)
{
    std::set<std::string> uuids;
    std::set<std::string> names;
    for (const Plant& plant : plants)
    {
        uuids.insert(plant.UUID);
        names.insert(WithoutCase(plant.Name));
    }
    UUIDTexts texts;
    for (const std::string& uuid : uuids)
    {
        std::string& text = texts[uuid];
        std::size_t count = 0;
        for (const Letter& letter : LettersOf(uuid))
        {
            text += letter.Bytes;
            // A command finds a plant with such a name first.
            if (OutputIsTerminal() && ++count >= ShortestPrefix && !IsShared(text, uuid, uuids) &&
                !names.contains(WithoutCase(text)))
                break;
        }
    }
    return texts;
}

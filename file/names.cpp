#include "plant_file.h"

#include <cstddef>

namespace
{

constexpr const char* FileKindNames[] = {"Missing", "Empty",        "Current", "Older", "Interrupted",
                                         "Foreign", "NotADatabase", "Damaged", "Locked"};
constexpr const char* FindingKindNames[] = {"Damage",       "ForeignKey",      "UnknownName",   "Severity",
                                            "LineageCycle", "MissingMother",   "MissingStrain", "MissingEvent",
                                            "EventDiffers", "MissingPhotoFile"};

template <typename Enum, std::size_t Size> const char* EnumeratorName(const char* const (&names)[Size], Enum value)
{
    const auto number = static_cast<std::size_t>(value); // a negative value becomes a large one
    return names[number < Size ? number : 0];
}

} // namespace

const char* PlantFileKindName(PlantFileKind kind)
{
    return EnumeratorName(FileKindNames, kind);
}

const char* PlantFindingKindName(PlantFindingKind kind)
{
    return EnumeratorName(FindingKindNames, kind);
}

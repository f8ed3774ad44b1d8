#include "commands/name_notices.h"

#include "commands/check_values.h"
#include "journal/find_record.h"
#include "record/similar_name.h"
#include "record/text.h"
#include "terminal/printable.h"

#include <algorithm>

namespace
{

std::string Quoted(const std::string& name)
{
    return InQuotes(Printable(name));
}

std::string HowItDiffers(const SimilarName& similar, const std::string& noun)
{
    switch (similar.Difference)
    {
    case NameDifference::None:
        return "another " + noun + " has the same name";
    case NameDifference::CaseOrAccents:
        return "differs from the " + noun + ' ' + Quoted(similar.Name) + " only in case or accents";
    case NameDifference::OneLetter:
        break;
    }
    return "differs from the " + noun + ' ' + Quoted(similar.Name) + " in one letter";
}

} // namespace

NameNotices::NameNotices(Session& session) : Plants(AllPlants(session)), Strains(AllStrains(session)) {}

void NameNotices::Print(const Plant& plant) const
{
    Notices notices;
    bool isNewName = true;
    std::vector<std::string> others;
    for (const Plant& other : Plants)
        if (other.UUID != plant.UUID)
            others.push_back(other.Name);
        else
            isNewName = other.Name != plant.Name;
    if (const auto similar = FindSimilarName(plant.Name, others); similar && isNewName)
        notices.push_back({"plant " + Quoted(plant.Name), HowItDiffers(*similar, "plant") +
                                                              "; `plantjournal plant edit " + plant.UUID +
                                                              " --name NAME` renames it"});

    std::vector<std::string> strains;
    std::transform(Strains.begin(), Strains.end(), std::back_inserter(strains),
                   [](const Strain& strain) { return strain.Name; });
    if (const auto similar = FindSimilarName(plant.Strain, strains);
        similar && similar->Difference != NameDifference::None)
        notices.push_back(
            {"new strain " + Quoted(plant.Strain), HowItDiffers(*similar, "strain") + "; `plantjournal plant edit " +
                                                       plant.UUID + " --strain " + Quoted(similar->Name) +
                                                       "` corrects the plant, `plantjournal strain edit " +
                                                       Quoted(plant.Strain) + " --name NAME` renames the strain"});
    PrintNotices(notices);
}

void NameNotices::Print(const Strain& strain) const
{
    bool isNewName = true;
    std::vector<std::string> others;
    for (const Strain& other : Strains)
        if (other.ID != strain.ID)
            others.push_back(other.Name);
        else
            isNewName = other.Name != strain.Name;
    if (const auto similar = FindSimilarName(strain.Name, others); similar && isNewName)
        PrintNotices(
            {{"strain " + Quoted(strain.Name), HowItDiffers(*similar, "strain") + "; `plantjournal strain edit " +
                                                   Quoted(strain.Name) + " --name NAME` renames it"}});
}

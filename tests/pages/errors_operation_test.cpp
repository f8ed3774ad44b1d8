// Provokes every failure that docs/errors.md lists of an operation without a record, and compares the page.

#include "pages/errors_page.h"
#include "support/page.h"

#include <functional>
#include <memory>
#include <set>
#include <sstream>

#include <sqlite3.h>

using namespace pages;
using namespace support;

namespace
{

// A row of the page: why an operation returns false.
struct Refusal
{
    std::string Operation;
    std::string Meaning;
    std::function<bool()> Call;
};

class RefusalPageTest : public ErrorsPageTest
{
  protected:
    RefusalPageTest() { NewPlant("Basil", "Genovese"); }

    std::int64_t StrainID() const { return std::stoll(QueryRows("SELECT ID FROM Strains;").at(0).at(0)); }

    // All of them, in the order of the page.
    std::vector<Refusal> Refusals()
    {
        return {
            {"GetPlant", "no plant has this UUID",
             [this] { return Repository.GetPlant("unknown", *std::make_unique<Plant>()); }},
            {"GetStrain", "no strain has this row ID",
             [this] { return Repository.GetStrain(99, *std::make_unique<Strain>()); }},
            {"DeleteStrain", "a plant has the strain", [this] { return Repository.DeleteStrain(StrainID()); }},
            {"GetStrainSummary", "no strain has this row ID",
             [this] { return Repository.GetStrainSummary(99, *std::make_unique<StrainSummary>()); }},
            {"DeletePlantEvent", "the row ID is 0", [this] { return Repository.DeletePlantEvent(0); }},
            {"DeletePlantCareEntry", "the row ID is 0", [this] { return Repository.DeletePlantCareEntry(0); }},
            {"DeletePlantCareEntry", "no care entry has this row ID",
             [this] { return Repository.DeletePlantCareEntry(99); }},
            {"GetHarvestRecord", "the plant has no harvest record",
             [this] { return Repository.GetHarvestRecord("unknown", *std::make_unique<HarvestRecord>()); }},
            {"DeleteHarvestRecord", "the plant has no harvest record",
             [this] { return Repository.DeleteHarvestRecord("unknown"); }},
            {"DeletePlantPhoto", "the UUID is empty", [this] { return Repository.DeletePlantPhoto(""); }},
            {"DeletePlantHealthObservation", "the row ID is 0",
             [this] { return Repository.DeletePlantHealthObservation(0); }},
            {"DeletePlantJournalEntry", "the row ID is 0", [this] { return Repository.DeletePlantJournalEntry(0); }},
        };
    }
};

TEST_F(RefusalPageTest, EveryFailureIsThatOfThePage)
{
    std::vector<std::vector<std::string>> rows;
    const std::string content = Content();
    for (const Refusal& refusal : Refusals())
    {
        SCOPED_TRACE(refusal.Operation + ": " + refusal.Meaning);
        rows.push_back({refusal.Operation, refusal.Meaning});
        EXPECT_FALSE(refusal.Call());
        EXPECT_EQ(Code(), SQLITE_OK);
        EXPECT_EQ(Content(), content);
    }
    std::vector<std::vector<std::string>> shown = TableRows(ErrorsPage, "## Operations without a record");
    for (auto& row : shown)
        row.at(0) = Plain(row.at(0));
    EXPECT_EQ(shown, rows);
}

TEST_F(RefusalPageTest, ThePageListsEveryOperationWithoutARecord)
{
    std::set<std::string> others;
    for (const auto& row : TableRows("README.md", "## The operations"))
        for (const std::string& cell : {row.at(1), row.at(2)})
        {
            std::istringstream names(Plain(cell));
            for (std::string name; names >> name;)
                others.insert(name);
        }
    EXPECT_EQ(others.size(), 36);
    for (const Refusal& refusal : Refusals())
        EXPECT_TRUE(others.contains(refusal.Operation)) << refusal.Operation;
    for (const Refusal& refusal : Refusals())
        others.erase(refusal.Operation);
    std::erase_if(others,
                  [](const std::string& name) // these store a record
                  {
                      return name.starts_with("Create") || name.starts_with("Update") || name == "SaveHarvestRecord" ||
                             name == "DuplicatePlant";
                  });
    EXPECT_EQ(others,
              (std::set<std::string>{"CareTimelineDetails", "DeletePlant", "ListPlantCareEntries", "ListPlantEvents",
                                     "ListPlantHealthObservations", "ListPlantJournalEntries", "ListPlantPhotos",
                                     "ListPlants", "ListStrains"}));
}

} // namespace

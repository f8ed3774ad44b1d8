// Plants and strains.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

#include <tuple>
#include <utility>

using namespace support;

namespace
{

TEST_F(BasilTest, APlantIsAddedWithEveryField)
{
    const std::string uuid = Stored({"plant",
                                     "add",
                                     "Cutting",
                                     "--strain",
                                     "Roma",
                                     "--mother-plant-uuid",
                                     "Basil",
                                     "--stage",
                                     "flower",
                                     "--sex",
                                     "FEMALE",
                                     "--tent",
                                     "South",
                                     "--pot-size",
                                     "11 l",
                                     "--medium",
                                     "peat",
                                     "--seed-date",
                                     "2025",
                                     "--flip-height-cm",
                                     "40.5",
                                     "--final-height-cm",
                                     "1e2",
                                     "--clone-date",
                                     "2025-02",
                                     "--transplant-date",
                                     "2025-03-04",
                                     "--flip-date",
                                     "2025-05-06",
                                     "--harvest-date",
                                     "2025-12-31",
                                     "--notes",
                                     "two\nlines, \"quoted\""});
    EXPECT_EQ(uuid.size(), 36U);
    EXPECT_EQ(Parsed({"plant", "show", uuid}), JSON({{"ID", 2},
                                                     {"UUID", uuid},
                                                     {"Name", "Cutting"},
                                                     {"Strain", "Roma"},
                                                     {"MotherPlantUUID", "b1"},
                                                     {"Stage", "Flower"},
                                                     {"Sex", "Female"},
                                                     {"Tent", "South"},
                                                     {"PotSize", "11 l"},
                                                     {"Medium", "peat"},
                                                     {"SeedDate", "2025"},
                                                     {"FlipHeightCm", 40.5},
                                                     {"FinalHeightCm", 100.0},
                                                     {"CloneDate", "2025-02"},
                                                     {"TransplantDate", "2025-03-04"},
                                                     {"FlipDate", "2025-05-06"},
                                                     {"HarvestDate", "2025-12-31"},
                                                     {"Notes", "two\nlines, \"quoted\""}}));
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 2U); // the new strain is registered
}

TEST_F(BasilTest, APlantNeedsOnlyAName)
{
    ExpectFields(Parsed({"plant", "add", "--name", "Mint"}), {{"Name", "Mint"},
                                                              {"Strain", ""},
                                                              {"MotherPlantUUID", ""},
                                                              {"Stage", "Veg"},
                                                              {"Sex", "Unknown"},
                                                              {"SeedDate", ""},
                                                              {"FlipHeightCm", 0.0}});
    Mistaken({"plant", "add", ""});
    Mistaken({"plant", "edit", "Basil", "--name", ""});
}

TEST_F(BasilTest, ACountAddsPlantsWithNumberedNames)
{
    const std::string before = Done({"export", "-"});
    const std::string lines =
        Done({"plant", "add", "Dill", "--count", "3", "--strain", "Tetra", "--seed-date", "2026-03-01"});
    std::string expected;
    for (const char* name : {"Dill 1", "Dill 2", "Dill 3"})
    {
        const JSON plant = Parsed({"plant", "show", name});
        ExpectFields(plant, {{"Strain", "Tetra"}, {"SeedDate", "2026-03-01"}, {"Stage", "Veg"}});
        expected += "Added " + std::string(name) + ": Tetra, stage Veg (" + plant.at("UUID").get<std::string>() + ")\n";
    }
    EXPECT_EQ(lines, expected);
    Done({"undo", "--yes"});
    EXPECT_EQ(Done({"export", "-"}), before);
}

TEST_F(BasilTest, ACountContinuesTheExistingNumbers)
{
    Done({"plant", "add", "basil 4"});
    const JSON plants = Parsed({"plant", "add", "Basil", "--count", "2"});
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("Name"), "Basil 5");
    EXPECT_EQ(plants.at(1).at("Name"), "Basil 6");
    EXPECT_EQ(Parsed({"plant", "add", "Rue", "--count", "1"}).at(0).at("Name"), "Rue 1");
    EXPECT_EQ(Done({"plant", "add", "Rue", "--count", "2", "-q"}).size(), 2U * 37U);
}

TEST_F(BasilTest, ACountWithAWrongValueAddsNoPlant)
{
    for (const char* count : {"0", "1001", "many"})
        EXPECT_NE(Mistaken({"plant", "add", "Dill", "--count", count})
                      .find("--count: \"" + std::string(count) + "\" is not a number of plants"),
                  std::string::npos);
    EXPECT_NE(Mistaken({"plant", "add", "Dill", "--count", "2", "--uuid", "d1"}).find("--uuid contradicts --count"),
              std::string::npos);
    EXPECT_NE(Refused({"plant", "add", "Dill", "--count", "2", "--mother", "Rosemary"}).find("no plant has this name"),
              std::string::npos);
    const std::string notice = NoticesOf({"plant", "add", "Dill", "--count", "3", "--seed-date", "2999"});
    EXPECT_EQ(notice.find("notice: "), notice.rfind("notice: ")) << notice; // one line for all plants
    EXPECT_NE(notice.find("plant Dill 1 and 2 more: "), std::string::npos) << notice;
}

TEST_F(CommandTest, ACountCreatesTheJournal)
{
    Done({"plant", "add", "Basil", "--count", "2"});
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
}

TEST_F(BasilTest, AnEditChangesOnlyTheGivenFields)
{
    const JSON before = Basil();
    for (const auto& [flag, field, text, value] : std::vector<std::tuple<const char*, const char*, const char*, JSON>>{
             {"--name", "Name", "Sweet basil", "Sweet basil"},
             {"--strain", "Strain", "Gigante", "Gigante"},
             {"--stage", "Stage", "dRY", "Dry"},
             {"--sex", "Sex", "hermaphrodite", "Hermaphrodite"},
             {"--tent", "Tent", "North", "North"},
             {"--pot-size", "PotSize", "5 l", "5 l"},
             {"--medium", "Medium", "coco", "coco"},
             {"--seed-date", "SeedDate", "2026-01-31", "2026-01-31"},
             {"--flip-height-cm", "FlipHeightCm", "0.1", 0.1},
             {"--final-height-cm", "FinalHeightCm", "31", 31.0},
             {"--clone-date", "CloneDate", "2026", "2026"},
             {"--transplant-date", "TransplantDate", "2026-02", "2026-02"},
             {"--flip-date", "FlipDate", "2026-02-28", "2026-02-28"},
             {"--harvest-date", "HarvestDate", "2026-07-01", "2026-07-01"},
             {"--notes", "Notes", "Süßkirsche", "Süßkirsche"}})
    {
        JSON expected = Basil();
        expected[field] = value;
        EXPECT_EQ(Stored({"plant", "edit", "b1", flag, text}), "b1");
        EXPECT_EQ(Basil(), expected) << flag;
        EXPECT_NE(before.at(field), value); // otherwise the edit changes nothing
    }
    Done({"plant", "edit", "b1", "--seed-date=", "--tent="});
    ExpectFields(Basil(), {{"SeedDate", ""}, {"Tent", ""}, {"FlipDate", "2026-02-28"}});
}

TEST_F(BasilTest, AMotherIsNamedLikeAnyPlantAndRemovedByAnEmptyText)
{
    Done({"plant", "add", "Cutting", "--uuid", "c1"});
    EXPECT_EQ(Parsed({"plant", "edit", "c1", "--mother", "Basil"}).at("MotherPlantUUID"), "b1");
    EXPECT_NE(Refused({"plant", "edit", "Basil", "--mother", "Cutting"}).find("one of its descendants"),
              std::string::npos);
    EXPECT_EQ(Parsed({"plant", "edit", "c1", "--mother", ""}).at("MotherPlantUUID"), "");
}

TEST_F(BasilTest, DeletingAPlantDeletesItsRecordsAndKeepsItsClones)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil"});
    Done({"feed", "Basil"});
    Done({"note", "add", "Basil", "leaves"});
    EXPECT_EQ(Done({"plant", "delete", "Basil", "--yes"}), "Deleted Basil and all its records\n");
    const JSON tables = Parsed({"info"}).at("Tables");
    ExpectFields(tables, {{"Plants", 1}, {"PlantCareEntries", 0}, {"PlantEvents", 0}, {"PlantJournalEntries", 0}});
    EXPECT_EQ(Parsed({"plant", "show", "Cutting"}).at("MotherPlantUUID"), "");
}

TEST_F(BasilTest, ADuplicateCopiesAllButIdentityAndMother)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil", "--tent", "South"});
    JSON expected = Parsed({"plant", "show", "Cutting"});
    const std::string uuid = Stored({"plant", "duplicate", "Cutting"});
    expected.update({{"ID", 3}, {"UUID", uuid}, {"Name", "Cutting copy"}, {"MotherPlantUUID", ""}});
    EXPECT_EQ(Parsed({"plant", "show", "Cutting copy"}), expected);
}

TEST_F(BasilTest, TheLineageIsDrawnAsATree)
{
    Done(
        {"plant", "add", "Cutting 1", "--mother", "Basil", "--uuid", "c1", "--strain", "Genovese", "--stage", "clone"});
    Done({"plant", "add", "Cutting 2", "--mother", "Basil", "--uuid", "c2", "--strain", "Genovese"});
    Done({"plant", "add", "Süß", "--mother", "Cutting 1", "--uuid", "c3"});
    Done({"plant", "add", "Mint"});
    EXPECT_EQ(Done({"plant", "tree"}), "Mint Veg\n"
                                       "Basil (Genovese) Veg\n"
                                       "├── Cutting 1 (Genovese) Clone\n"
                                       "│   └── Süß Veg\n"
                                       "└── Cutting 2 (Genovese) Veg\n");
}

TEST_F(BasilTest, TheTreeOfAPlantHasItsAncestorsAndDescendants)
{
    Done({"plant", "add", "Cutting 1", "--mother", "Basil", "--strain", "Genovese", "--stage", "clone"});
    Done({"plant", "add", "Cutting 2", "--mother", "Basil", "--strain", "Genovese"});
    Done({"plant", "add", "Süß", "--mother", "Cutting 1", "--uuid", "c3"});
    Done({"plant", "add", "Last", "--mother", "Süß"});
    EXPECT_EQ(Done({"plant", "tree", "Cutting 1"}), "Basil (Genovese) Veg\n"
                                                    "└── Cutting 1 (Genovese) Clone\n"
                                                    "    └── Süß Veg\n"
                                                    "        └── Last Veg\n");
    EXPECT_EQ(Done({"plant", "tree", "c3"}), "Basil (Genovese) Veg\n"
                                             "└── Cutting 1 (Genovese) Clone\n"
                                             "    └── Süß Veg\n"
                                             "        └── Last Veg\n");
    const JSON trees = Parsed({"plant", "tree", "c3"});
    ASSERT_EQ(trees.size(), 1U);
    EXPECT_EQ(trees.at(0).at("Name"), "Süß") << "the plant that was named";
    EXPECT_EQ(trees.at(0).at("Clones").at(0).at("Name"), "Last");
    ASSERT_EQ(trees.at(0).at("Ancestors").size(), 2U);
    EXPECT_EQ(trees.at(0).at("Ancestors").at(0).at("Name"), "Cutting 1") << "the mother first";
    EXPECT_EQ(trees.at(0).at("Ancestors").at(1).at("Name"), "Basil");
    EXPECT_TRUE(trees.at(0).at("Ancestors").at(1).at("Harvest").is_null());
    EXPECT_FALSE(Parsed({"plant", "tree"}).at(0).contains("Ancestors"));
}

TEST_F(BasilTest, OptionsSelectThePlantsOfATree)
{
    Done({"plant", "add", "Cutting 1", "--mother", "Basil", "--strain", "Genovese", "--stage", "clone", "--tent", "B"});
    Done({"plant", "add", "Süß", "--mother", "Cutting 1"});
    Done({"plant", "add", "Last", "--mother", "Süß", "--tent", "B"});
    EXPECT_EQ(Done({"plant", "tree", "--strain", "genovese"}), "Basil (Genovese) Veg\n"
                                                               "└── Cutting 1 (Genovese) Clone\n");
    EXPECT_EQ(Done({"plant", "tree", "--tent", "b"}), "Last Veg\nCutting 1 (Genovese) Clone\n");
    EXPECT_EQ(Done({"plant", "tree", "Süß", "--tent", "b"}), "Cutting 1 (Genovese) Clone\n"
                                                             "└── Süß Veg\n"
                                                             "    └── Last Veg\n");
    EXPECT_EQ(Done({"plant", "tree", "--stage", "dry"}),
              "No plants match the options; `plantjournal plant tree` shows all plants.\n");
    EXPECT_NE(Refused({"plant", "tree", "--strain", "Genovse"}).find("did you mean \"Genovese\"?"), std::string::npos);
}

TEST_F(BasilTest, TheTreeIsPrintedAsCSV)
{
    const std::string basil = Parsed({"plant", "show", "Basil"}).at("UUID");
    Done({"plant", "add", "Cutting", "--mother", "Basil", "--uuid", "c1", "--stage", "clone"});
    Done({"plant", "add", "Sprout", "--mother", "Cutting", "--uuid", "s1"});
    Done({"harvest", "add", "Basil", "--wet", "300", "--dry", "60", "--date", "2025-07-05"});
    const std::string names =
        "PlantUUID,Plant,Strain,Stage,MotherPlantUUID,Generation,HarvestDate,WetWeightG,DryWeightG,QualityRating\n";
    const std::string first = basil + ",Basil,Genovese,Harvested,,";
    EXPECT_EQ(Done({"plant", "tree", "--csv"}), names + first + "0,2025-07-05,300,60,0\nc1,Cutting,,Clone," + basil +
                                                    ",1,,,,\ns1,Sprout,,Veg,c1,2,,,,\n");
    EXPECT_EQ(Done({"plant", "tree", "Sprout", "--csv"}), names + first + "-2,2025-07-05,300,60,0\nc1,Cutting,,Clone," +
                                                              basil + ",-1,,,,\ns1,Sprout,,Veg,c1,0,,,,\n");
    EXPECT_NE(Mistaken({"plant", "tree", "--json", "--csv"}).find("exclude each other"), std::string::npos);
}

TEST_F(BasilTest, TheClonesOfTheLastCloneAreDrawnWithoutALine)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil"});
    Done({"plant", "add", "Sprout", "--mother", "Cutting"});
    EXPECT_EQ(Done({"plant", "tree"}), "Basil (Genovese) Veg\n"
                                       "└── Cutting Veg\n"
                                       "    └── Sprout Veg\n");
}

TEST_F(BasilTest, ATreeAndAListShowTheUUIDOfAPlantWithoutAName)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.UUID = "n1";
            EXPECT_TRUE(repository.CreatePlant(plant));
        });
    Done({"note", "add", "n1", "leaves"});
    EXPECT_EQ(Done({"plant", "tree"}), "n1 Veg\nBasil (Genovese) Veg\n");
    EXPECT_NE(Done({"note", "list"}).find("\nn1     "), std::string::npos);
}

TEST_F(BasilTest, PlantsInACycleAreShownOnceWithTheirClones)
{
    Done({"plant", "add", "Cutting", "--mother", "Basil"});
    PlainConnection(Journal).RunSQL("UPDATE Plants SET MotherPlantID=2 WHERE ID=1;");
    EXPECT_EQ(Done({"plant", "tree"}), "Cutting Veg\n"
                                       "└── Basil (Genovese) Veg\n"
                                       "    └── Cutting Veg\n");
    const JSON trees = Parsed({"plant", "tree"});
    ASSERT_EQ(trees.size(), 1U);
    EXPECT_EQ(trees.at(0).at("Clones").at(0).at("Clones").at(0).at("Clones"), JSON::array());
    Sound = false; // a cycle is a finding
}

// ---- Strains

TEST_F(BasilTest, AStrainIsAddedListedChangedAndDeleted)
{
    ExpectFields(Parsed({"strain", "add", "Roma", "--breeder", "who", "--flowering-weeks", "9", "--notes", "red"}),
                 {{"Name", "Roma"}, {"Breeder", "who"}, {"FloweringWeeks", 9}, {"Notes", "red"}});
    EXPECT_EQ(Done({"strain", "list"}), "Name      Breeder  Flowering time  Notes\n"
                                        "Genovese\n"
                                        "Roma      who             9 weeks  red\n");
    EXPECT_EQ(Done({"strain", "edit", "Genovese", "--name", "Gigante", "--breeder", "x", "--flowering-weeks", "8",
                    "--notes", "y"}),
              "Changed strain Genovese: name Gigante, breeder x, flowering time 8 weeks, notes y\n");
    EXPECT_EQ(Basil().at("Strain"), "Gigante"); // its plants get the new name
    EXPECT_EQ(Parsed({"strain", "list"}).at(0),
              JSON({{"ID", 1}, {"Name", "Gigante"}, {"Breeder", "x"}, {"FloweringWeeks", 8}, {"Notes", "y"}}));
    EXPECT_NE(Refused({"strain", "edit", "Gigante", "--name", "Roma"}).find("that name or UUID is already in use"),
              std::string::npos);
    EXPECT_NE(Refused({"strain", "delete", "Gigante", "--yes"}).find("it still has plants"), std::string::npos);
    EXPECT_EQ(Done({"strain", "delete", "Roma", "--yes"}), "Deleted strain Roma\n");
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 1U);
}

TEST_F(BasilTest, AStrainIsSummarised)
{
    Done({"plant", "add", "Other", "--strain", "Genovese", "--stage", "dry"});
    Done({"harvest", "add", "Basil", "--dry-weight-g", "50", "--quality-rating", "7"});
    Done({"harvest", "add", "Other", "--dry-weight-g", "100"});
    EXPECT_EQ(Done({"strain", "show", "Genovese"}), "Strain               Genovese\n"
                                                    "Plants               2\n"
                                                    "Plants in Harvested  2\n"
                                                    "Harvests             2\n"
                                                    "Mean dry weight      75 g\n"
                                                    "Mean quality         7 of 10\n");
}

} // namespace

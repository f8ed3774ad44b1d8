// How a command line names plants and strains.

#include "support/command.h"

#include <filesystem>

using namespace support;

namespace
{

class NamingTest : public CommandTest
{
  protected:
    NamingTest()
    {
        for (const auto& [uuid, name] : std::vector<std::pair<const char*, const char*>>{
                 {"aaaa0001-0000-4000-8000-000000000000", "Basil"},
                 {"aaaa0002-0000-4000-8000-000000000000", "Mint"},
                 {"bbbb0003-0000-4000-8000-000000000000", "Mint"},
                 {"cccc0004-0000-4000-8000-000000000000", "aaaa0001"},
                 {"dddd0005-0000-4000-8000-000000000000", "eeee0006-0000-4000-8000-000000000000"},
                 {"eeee0006-0000-4000-8000-000000000000", "Süßkirsche by the wall"}})
            NoticesOf({"plant", "add", name, "--uuid", uuid, "--strain", "S"}); // two have the same name
    }

    // The first digits of the UUID of the plant that a text names.
    std::string Found(const std::string& named) const
    {
        return Parsed({"plant", "show", named}).at("UUID").get<std::string>().substr(0, 8);
    }
};

TEST_F(NamingTest, AWholeUUIDPrevailsOverAPlantOfThatName)
{
    EXPECT_EQ(Found("aaaa0002-0000-4000-8000-000000000000"), "aaaa0002");
    EXPECT_EQ(Found("eeee0006-0000-4000-8000-000000000000"), "eeee0006");
}

TEST_F(NamingTest, AUUIDPrefixOfFourCharactersFindsItsPlant)
{
    EXPECT_EQ(Found("bbbb"), "bbbb0003");
    EXPECT_EQ(Found("aaaa0002"), "aaaa0002");
    EXPECT_EQ(Found("aaaa0001-"), "aaaa0001");
}

TEST_F(NamingTest, AShorterPrefixNamesNoPlant)
{
    for (const char* prefix : {"b", "bb", "bbb", "a", "c", "d", "e"})
        EXPECT_NE(Refused({"plant", "delete", prefix, "--yes"}).find("no plant has this name or UUID"),
                  std::string::npos)
            << prefix;
}

TEST_F(NamingTest, AUniqueExactNameFindsItsPlant)
{
    EXPECT_EQ(Found("Basil"), "aaaa0001");
    EXPECT_EQ(Found("Süßkirsche by the wall"), "eeee0006");
}

TEST_F(NamingTest, ANameIsFoundRegardlessOfCaseInAnyAlphabet)
{
    EXPECT_EQ(Found("basil"), "aaaa0001");
    EXPECT_EQ(Found("SÜSSKIRSCHE BY THE WALL"), "eeee0006");
    EXPECT_EQ(Found("su\u0308\u00dfkirsche by the wall"), "eeee0006"); // the accent as a letter of its own
    Done({"plant", "add", "Βασιλικός", "--uuid", "ffff0007"});
    EXPECT_EQ(Found("ΒΑΣΙΛΙΚΌΣ"), "ffff0007");
}

TEST_F(NamingTest, TheFirstStepThatAnyPlantMatchesDecides)
{
    EXPECT_EQ(Found("aaaa0001"), "cccc0004"); // a name, and a prefix of another plant's UUID
    NoticesOf({"plant", "add", "BASIL", "--uuid", "gggg0008"});
    EXPECT_EQ(Found("BASIL"), "gggg0008");
    EXPECT_EQ(Found("Basil"), "aaaa0001");
    EXPECT_NE(Refused({"plant", "show", "basil"}).find("several plants match"), std::string::npos);
    Done({"plant", "add", "BBBB", "--uuid", "hhhh0009"});
    EXPECT_EQ(Found("bbbb"), "hhhh0009"); // a name regardless of case, and a prefix of another plant's UUID
}

TEST_F(NamingTest, AnAmbiguousOrUnknownNameListsTheCandidates)
{
    const std::string basil = "\n  aaaa0001-0000-4000-8000-000000000000  Basil  S\n";
    EXPECT_EQ(Refused({"plant", "show", "Mint"}),
              "plantjournal: \"Mint\": several plants match; name one of these by its UUID:\n"
              "  aaaa0002-0000-4000-8000-000000000000  Mint  S\n"
              "  bbbb0003-0000-4000-8000-000000000000  Mint  S\n");
    const std::string prefix = Refused({"plant", "show", "aaaa"});
    EXPECT_NE(prefix.find(basil), std::string::npos) << prefix;
    EXPECT_NE(prefix.find("\n  aaaa0002-"), std::string::npos) << prefix;
    EXPECT_EQ(Refused({"plant", "show", "Bas"}),
              "plantjournal: \"Bas\": no plant has this name or UUID; did you mean \"Basil\"?\n");
}

TEST_F(NamingTest, AnEmptyTextNamesNoPlantAlsoNotOneWithoutAName)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            EXPECT_TRUE(repository.CreatePlant(plant));
        });
    EXPECT_EQ(Refused({"plant", "show", ""}),
              "plantjournal: \"\": no plant has this name or UUID; `plantjournal plant list` shows all plants\n");
}

TEST_F(NamingTest, EveryCommandFindsPlantsTheSameWay)
{
    const std::vector<Words> commands = {{"plant", "show"},
                                         {"plant", "tree"},
                                         {"plant", "duplicate"},
                                         {"timeline"},
                                         {"feed"},
                                         {"water"},
                                         {"care", "list"},
                                         {"care", "add"},
                                         {"event", "list"},
                                         {"event", "add"},
                                         {"harvest", "add", "--unweighed"},
                                         {"harvest", "list"},
                                         {"photo", "list"},
                                         {"health", "list"},
                                         {"note", "list"},
                                         {"note", "add"},
                                         {"clone"},
                                         {"transplant"},
                                         {"top"},
                                         {"train"},
                                         {"defoliate"},
                                         {"archive"}};
    for (Words words : commands)
    {
        words.emplace_back("Mint");
        EXPECT_NE(Refused(words).find("several plants match"), std::string::npos) << words.front();
        words.back() = "bbbb";
        EXPECT_EQ(Run(words).Status, 0) << words.front();
    }
    EXPECT_NE(Refused({"stage", "Mint", "flower"}).find("several"), std::string::npos);
    EXPECT_NE(Refused({"note", "Mint", "text"}).find("several"), std::string::npos);
    EXPECT_NE(Refused({"plant", "edit", "Mint", "--tent", "x"}).find("several"), std::string::npos);
    EXPECT_NE(Refused({"plant", "delete", "Mint", "--yes"}).find("several"), std::string::npos);
    EXPECT_NE(Refused({"plant", "add", "Clone", "--mother", "Mint"}).find("several"), std::string::npos);
    Done({"plant", "add", "Clone", "--mother", "aaaa0002"});
    EXPECT_EQ(Parsed({"plant", "show", "Clone"}).at("MotherPlantUUID"), "aaaa0002-0000-4000-8000-000000000000");
}

TEST_F(NamingTest, AStrainIsFoundByItsExactNameElseRegardlessOfCase)
{
    EXPECT_EQ(Parsed({"strain", "show", "S"}).at("TotalPlants"), 6);
    EXPECT_EQ(Parsed({"strain", "show", "s"}).at("StrainName"), "S");
    Done({"strain", "add", "é"});
    EXPECT_EQ(Parsed({"strain", "show", "É"}).at("StrainName"), "é");
    NoticesOf({"strain", "add", "É"});
    EXPECT_EQ(Parsed({"strain", "show", "É"}).at("StrainName"), "É");
    EXPECT_EQ(Refused({"strain", "show", "E\u0301E"}),
              "plantjournal: \"E\u0301E\": no strain has this name; `plantjournal strain list` shows all strains\n");
    std::filesystem::remove(Journal);
    Done({"plant", "add", "Basil"});
    EXPECT_EQ(Refused({"strain", "show", "S"}),
              "plantjournal: \"S\": the journal has no strains; `plantjournal strain add NAME` adds one\n");
}

} // namespace

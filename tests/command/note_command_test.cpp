// `note PLANT... TEXT`, next to the commands of the group `note`.

#include "command/basil_test.h"

using namespace support;

namespace
{

class NoteCommandTest : public BasilTest
{
  protected:
    NoteCommandTest() { Done({"plant", "add", "Chili", "--uuid", "c1", "--strain", "Rocoto", "--tent", "Big"}); }
};

TEST_F(NoteCommandTest, ATextIsAddedToOneOrSeveralPlants)
{
    Done({"note", "Basil", "four new leaves"});
    ExpectFields(Parsed({"note", "list", "Basil"}).at(0),
                 {{"Details", "four new leaves"}, {"Type", "Observation"}, {"EntryDate", PlantEventCurrentDate()}});
    EXPECT_EQ(Done({"note", "Basil", "chili", "new lamp", "--type", "milestone", "--date", "2026-05-01", "-q"}),
              "2\n3\n");
    ExpectFields(Parsed({"note", "list", "Chili"}).at(0),
                 {{"Details", "new lamp"}, {"Type", "Milestone"}, {"EntryDate", "2026-05-01"}});
    EXPECT_EQ(Parsed({"note", "--tent", "Big", "dry"}).at(0).at("PlantUUID"), "c1");
    EXPECT_EQ(Parsed({"note", "--all", "Bas"}).size(), 2U);
    EXPECT_EQ(Parsed({"note", "Basil", "dry"}).at("PlantUUID"), "b1");
    EXPECT_EQ(Parsed({"event", "list"}).size(), 0U);
}

TEST_F(NoteCommandTest, ACommandOfTheGroupPrevailsOverAPlant)
{
    Done({"plant", "add", "list"});
    Done({"note", "list", "list"}); // lists the entries of that plant
    EXPECT_EQ(Parsed({"note", "list"}).size(), 0U);
    Done({"note", "add", "list", "text"});
    EXPECT_EQ(Parsed({"note", "list", "list"}).size(), 1U);
    Done({"note", "--", "list", "delete"});
    EXPECT_EQ(Parsed({"note", "list", "list"}).at(0).at("Details"), "delete");
}

TEST_F(NoteCommandTest, ATextIsRequired)
{
    for (const Words& words : {Words{"note"}, {"note", "Basil"}, {"note", "--type", "milestone"}})
        EXPECT_NE(Mistaken(words).find("the text is missing; write it after the plants"), std::string::npos);
    EXPECT_NE(Mistaken({"note", "Basil", "Chili"}).find("\"Chili\" is a plant; write the text after the plants"),
              std::string::npos);
    const std::string unquoted = Refused({"note", "Basil", "new", "leaves"});
    EXPECT_NE(unquoted.find("\"new\": no plant has this name"), std::string::npos) << unquoted;
    EXPECT_TRUE(unquoted.ends_with("\nA text of several words needs quotes.\n")) << unquoted;
    EXPECT_EQ(Refused({"note", "Bas", "text"}).find("quotes"), std::string::npos);
}

TEST_F(NoteCommandTest, AnArgumentOfNoteIsNotOneOfItsCommands)
{
    for (const auto& [words, unknown] : std::vector<std::pair<Words, std::string>>{
             {{"note", "add", "Basil", "text", "more"}, "note add: unexpected argument \"more\""},
             {{"note", "add", "Basil", "text", "--all"}, "note add: unexpected option \"--all\""},
             {{"note", "list", "--tent", "Big"}, "note list: unexpected option \"--tent\""},
             {{"note", "Basil", "add", "text"}, "note add: unexpected argument \"Basil\""},
             {{"note", "--type", "milestone", "add", "Basil", "text"}, "note add: unexpected option \"--type\""}})
        EXPECT_NE(Mistaken(words).find(unknown + "; "), std::string::npos) << unknown;
}

} // namespace

// Exit statuses and messages of every command.

#include "support/command.h"

using namespace support;

namespace
{

using CommandConventionTest = CommandTest;

TEST_F(CommandConventionTest, AUsageErrorHasStatus2AndChangesNothing)
{
    KeepEverything();
    const std::vector<std::pair<Words, std::string>> mistakes = {
        {{"--json"}, "a command is missing; `plantjournal help`"},
        {{"plant"}, "plant: a command is missing; `plantjournal help plant`"},
        {{"water", "Basil", "--amount-ml"}, "water: --amount-ml has no value; write --amount-ml NUMBER"},
        {{"dig"}, "unknown command \"dig\"; `plantjournal help` lists the commands"},
        {{"plant", "add"}, "plant add: NAME is missing; `plantjournal help plant add`"},
        {{"plant", "edit", "Basil"}, "no field to change; give at least one option"},
        {{"plant", "edit", "Basil", "--uuid", "other"}, "unknown option \"--uuid\"; "},
        {{"strain", "edit", "Genovese"}, "no field to change; give at least one option"},
        {{"care", "edit", "Basil", "1"}, "no field to change; give at least one option"},
        {{"feed", "Basil", "--action", "water"}, "unknown option \"--action\"; "},
        {{"photo", "add", "Basil"}, "FILE-PATH is missing; "},
        {{"health", "add", "Basil"}, "ISSUE is missing; "},
        {{"import"}, "SOURCE is missing; "},
        {{"backup", "--overwrite"}, "--overwrite needs a DESTINATION; "},
        {{"export"}, "DESTINATION is missing; "},
        {{"export", "--csv", "-"}, "cannot be written to standard output; "},
    };
    for (const auto& [words, reason] : mistakes)
    {
        const std::string message = Mistaken(words);
        EXPECT_TRUE(message.starts_with("plantjournal: ")) << message;
        EXPECT_NE(message.find(reason), std::string::npos) << message;
    }
}

TEST_F(CommandConventionTest, ARefusalHasStatus1AndNamesTheNextStep)
{
    EXPECT_NE(Refused({"plant", "list"}).find("no such journal; `plantjournal plant add NAME` creates one"),
              std::string::npos);
    KeepEverything();
    const std::vector<std::pair<Words, std::string>> refusals = {
        {{"plant", "show", "Mint"}, "\"Mint\": no plant has this name or UUID; `plantjournal plant list`"},
        {{"strain", "show", "Mint"}, "\"Mint\": no strain has this name; `plantjournal strain list`"},
        {{"care", "edit", "Basil", "99", "--ec", "1"},
         "Basil: the plant has no care entry with the row ID 99; `plantjournal care list`"},
        {{"harvest", "delete", "Cutting", "--yes"},
         "Cutting: the plant has no harvest record; `plantjournal harvest list`"},
        {{"harvest", "add", "Basil"},
         "Basil: the plant already has a harvest record; `plantjournal harvest edit` changes it"},
        {{"plant", "delete", "Basil"}, "Standard input is not a terminal; pass --yes to confirm"},
        {{"plant", "add", "Mint", "--uuid", "0b0b0b0b-0000-4000-8000-000000000001"},
         "that name or UUID is already in use"},
        {{"plant", "edit", "Basil", "--mother", "Cutting"},
         "the mother must not be the plant itself or one of its descendants"},
        {{"plant", "edit", "Basil", "--mother", "Basil"}, "the mother must not be the plant itself"},
        {{"strain", "add", "Genovese"}, "that name or UUID is already in use"},
        {{"strain", "delete", "Genovese", "--yes"}, "it still has plants"},
        {{"import", "nowhere.json"}, "nowhere.json: cannot be read: No such file or directory"},
        {{"export", "basil.jpg"}, "already exists; nothing was written"},
        {{"backup", "basil.jpg"}, "basil.jpg"},
    };
    for (const auto& [words, reason] : refusals)
    {
        const std::string message = Refused(words);
        EXPECT_TRUE(message.starts_with("plantjournal: ")) << message;
        EXPECT_NE(message.find(reason), std::string::npos) << message;
    }
}

TEST_F(CommandConventionTest, OutputThatCannotBeWrittenIsAnError)
{
    KeepEverything();
    for (const Words& words :
         {Words{"plant", "list"}, {"plant", "list", "--json"}, {"export", "-"}, {"--version"}, {"--help"}})
    {
        Words shell = {"sh", "-c", "exec \"$@\" >/dev/full", "sh"};
        for (const std::string& word : Line(words))
            shell.push_back(word);
        const ProgramResult outcome = RunningProgram(shell, Around).End();
        EXPECT_EQ(outcome.Status, 1) << words.front();
        EXPECT_EQ(outcome.Error, "plantjournal: the output cannot be written; write it to another place\n");
    }
}

} // namespace

// Completion: what the command offers, and what bash, zsh and fish make of it.

#include "support/command.h"
#include "support/page.h"

#include <filesystem>
#include <utility>

using namespace support;

namespace
{

class CompletionTest : public CommandTest
{
  protected:
    // What the command offers for the last word, without descriptions; "FILES" stands for the names of files.
    Words Offered(Words words) const
    {
        words.insert(words.begin(), "complete");
        Words offered;
        for (const std::string& line : Lines(Done(words)))
            offered.push_back(line == "\tfiles" ? "FILES" : line.substr(0, line.find('\t')));
        return offered;
    }

    // A journal whose names need quotes in a shell.
    void StoreNames() const
    {
        for (const char* name : {"Thai Basil", "It's \"odd\"", "Price $5", "Süßkirsche", "Tomate: rot", "back\\slash",
                                 "紅 韓", "a=b", "`x`;&|", "Bo'"})
            Done({"plant", "add", name, "--strain", "Genovese gigante", "--tent", "South $ide", "-q"});
    }
};

TEST_F(CompletionTest, CompletionOffersCommandsWithTheirPurpose)
{
    const Words commands = Offered({""});
    for (const char* command : {"backup", "care", "feed", "help", "plant", "timeline"})
        EXPECT_NE(std::find(commands.begin(), commands.end(), command), commands.end()) << command;
    EXPECT_EQ(Offered({"pl"}), Words{"plant"});
    EXPECT_EQ(Offered({"plant", ""}), (Words{"add", "delete", "duplicate", "edit", "list", "show", "tree"}));
    EXPECT_EQ(Offered({"--json", "plant", "du"}), Words{"duplicate"});
    EXPECT_EQ(Offered({"--file", "plant", "plant", "du"}), Words{"duplicate"}); // the first `plant` is a file name
    EXPECT_EQ(Offered({"--file=x", "ti"}), Words{"timeline"});
    EXPECT_EQ(Offered({"plant", "--file", "list", "du"}), Words{"duplicate"}); // `list` is a file name
    EXPECT_EQ(Offered({"help", "ti"}), Words{"timeline"});
    EXPECT_EQ(Offered({"help", "plant", "du"}), Words{"duplicate"});
    EXPECT_EQ(Done({"complete", "ti"}).substr(0, 9), "timeline\t");
    EXPECT_EQ(Offered({"help", "zzz", ""}), Words{});
    EXPECT_EQ(Offered({"plant", "zzz", ""}), Words{});
}

TEST_F(CompletionTest, CompletionOffersFlags)
{
    EXPECT_EQ(Offered({"plant", "add", "--s"}), (Words{"--seed-date", "--sex", "--stage", "--strain"}));
    EXPECT_EQ(Done({"complete", "plant", "add", "--uu"}), "--uuid\tpermanent identifier\n"); // the first part
    EXPECT_EQ(Offered({"care", "add", "Basil", "--amount-ml", "5", "--e"}), Words{"--ec"});
    EXPECT_EQ(Offered({"info", "-"}), (Words{"--file", "--help", "--json", "--quiet", "--version"}));
    EXPECT_EQ(Offered({"-"}), (Words{"--file", "--help", "--json", "--quiet", "--version"}));
    EXPECT_EQ(Offered({"plant", "edit", "PLANT", "--te"}), Words{"--tent"}); // a plant named like the argument
    EXPECT_EQ(Offered({"plant", "edit", "Basil", "--mo"}), (Words{"--mother", "--mother-plant-uuid"}));
    EXPECT_EQ(Offered({"plant", "add", "--name", "--stage", "--te"}), Words{"--tent"}); // `--stage` is the plant's name
    EXPECT_EQ(Offered({"plant", "add", "--", "--te"}), Words{});                        // no option follows --
}

TEST_F(CompletionTest, CompletionOffersValuesInAnyLetterCase)
{
    const Words stages = {"Archived", "Clone", "Cure", "Dry", "Flower", "Harvested", "Seed", "Veg"};
    EXPECT_EQ(Offered({"plant", "add", "--stage", ""}), stages);
    EXPECT_EQ(Offered({"plant", "add", "--stage", "c"}), (Words{"Clone", "Cure"}));
    EXPECT_EQ(Offered({"plant", "add", "--stage", "FL"}), Words{"Flower"});
    EXPECT_EQ(Offered({"note", "add", "Basil", "--type", "m"}), Words{"Milestone"});
    EXPECT_EQ(Offered({"care", "add", "Basil", "--action", ""}), (Words{"Feed", "Water"}));
    EXPECT_EQ(Offered({"plant", "edit", "Basil", "--stage=fl"}), Words{"--stage=Flower"});
    EXPECT_EQ(Offered({"event", "add", "Basil", "--type", "ls"}), Words{"LST Trained"});
}

TEST_F(CompletionTest, CompletionOffersTheWordsForDates)
{
    for (const char* flag : {"--care-date", "--date"})
        EXPECT_EQ(Offered({"care", "add", "Basil", flag, ""}),
                  (Words{"friday", "monday", "saturday", "sunday", "thursday", "today", "tomorrow", "tuesday",
                         "wednesday", "yesterday"}));
    EXPECT_EQ(Offered({"care", "add", "Basil", "--care-date=y"}), Words{"--care-date=yesterday"});
}

TEST_F(CompletionTest, CompletionOffersFileNamesWhereAFileIsExpected)
{
    for (const Words& words : {Words{"import", ""},
                               {"--file", "x"},
                               {"backup", "b"},
                               {"export", ""},
                               {"photo", "add", "Basil", "b"},
                               {"--file=x"},
                               {"photo", "add", "Basil", "--file-path", ""}})
        EXPECT_EQ(Offered(words), Words{"FILES"}) << words.front();
    for (const Words& words : {Words{"care", "add", "Basil", "--ec", ""},
                               {"info", ""},
                               {"plant", "add", ""},
                               {"plant", "add", "--stage", "--te"},
                               {"export", "-", ""},
                               {"photo", "add", "Basil", "--file-path", "x", ""}})
        EXPECT_EQ(Offered(words), Words{}) << words.front();
}

TEST_F(CompletionTest, CompletionOffersStoredNames)
{
    StoreNames();
    Done({"plant", "add", "--uuid", "u1", "--name", "two\nlines", "-q"}); // cannot be one line of the offers
    EXPECT_EQ(Offered({"plant", "show", "t"}), (Words{"Thai Basil", "Tomate: rot"}));
    EXPECT_EQ(Offered({"plant", "show", "SÜ"}), Words{"Süßkirsche"});
    EXPECT_EQ(Offered({"plant", "edit", "Thai Basil", "--mother", "pri"}), Words{"Price $5"});
    EXPECT_EQ(Offered({"feed", "Thai Basil", "pri"}), Words{"Price $5"}); // takes several plants
    EXPECT_EQ(Offered({"stage", "t"}), (Words{"Thai Basil", "Tomate: rot"}));
    EXPECT_EQ(Offered({"stage", "Thai Basil", "fl"}), Words{"Flower"}); // and then a stage
    EXPECT_EQ(Offered({"stage", "p"}), Words{"Price $5"});              // not the name of the argument
    EXPECT_EQ(Offered({"feed", "help", "pri"}), Words{"Price $5"});     // after a plant of this name
    EXPECT_EQ(Offered({"water", "--strain", "g"}), Words{"Genovese gigante"});
    EXPECT_EQ(Offered({"water", "--tent", "s"}), Words{"South $ide"});
    EXPECT_EQ(Offered({"water", "--stage", "v"}), Words{"Veg"});
    EXPECT_EQ(Offered({"strain", "show", ""}), Words{"Genovese gigante"});
    EXPECT_EQ(Offered({"plant", "add", "x", "--strain=g"}), Words{"--strain=Genovese gigante"});
    EXPECT_EQ(Offered({"plant", "add", "x", "--tent", "so"}), Words{"South $ide"});
    EXPECT_EQ(Offered({"--file", "other.db", "plant", "show", ""}), Words{});
    std::filesystem::create_directories(Scratch.File("home"));
    std::filesystem::copy(Journal, Scratch.File("home/copy.db"));
    for (const Words& file : {Words{"--file", "~/copy.db"}, {"--file=~/copy.db"}})
    {
        Words words = file;
        words.insert(words.end(), {"plant", "show", "tha"});
        EXPECT_EQ(Offered(words), Words{"Thai Basil"});
    }
    const Words withoutHome = {"env",   "-u",   "HOME", PLANTJOURNAL_COMMAND, "complete", "--file", "~/copy.db",
                               "plant", "show", ""};
    EXPECT_EQ(RunningProgram(withoutHome, Around).End().Status, 0);
    Around.Environment.push_back("PLANTJOURNAL_FILE=" + Scratch.File("other.db"));
    EXPECT_EQ(Offered({"plant", "show", ""}), Words{});
}

TEST_F(CompletionTest, CompletionLeavesTheJournalAlone)
{
    EXPECT_EQ(Offered({"plant", "show", ""}), Words{});
    EXPECT_FALSE(std::filesystem::exists(Journal));
    StoreNames();
    const std::string before = FileBytes(Journal);
    {
        OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
        EXPECT_EQ(Offered({"plant", "show", "tha"}), Words{"Thai Basil"}); // reads without a lock
        other.Finish();
    }
    EXPECT_TRUE(FileBytes(Journal) == before);
    Write("data/plantjournal/journal.db-journal", "an interrupted write");
    EXPECT_EQ(Offered({"plant", "show", ""}), Words{});
    std::filesystem::remove(Journal + "-journal");
    for (const char* content : {"", "no database", "SQLite format 3"})
    {
        Write("other.db", content);
        EXPECT_EQ(Offered({"--file", Scratch.File("other.db"), "plant", "show", ""}), Words{});
        EXPECT_EQ(FileBytes(Scratch.File("other.db")), content);
    }
    EXPECT_EQ(Offered({"--file", Scratch.File(""), "plant", "show", ""}), Words{}); // a directory
}

TEST_F(CompletionTest, CompletionReadsAJournalWithAnyNameInItsPath)
{
    for (const char* name : {"odd?mode=rw", "odd#1", "odd%20", "odd name", "öd"})
    {
        Done({"--file", Scratch.File(name), "plant", "add", "Basil", "-q"});
        EXPECT_EQ(Offered({"--file", Scratch.File(name), "plant", "show", ""}), Words{"Basil"}) << name;
    }
}

// ---- In shells

// What is typed after `plantjournal `, with the Tab key, and the words that the command then gets.
struct TypedLine
{
    std::string Typed;
    Words Given;
};

std::vector<TypedLine> LinesForEveryShell()
{
    return {
        {"eve\tadd Thai --ty\tls\tdetails", {"event", "add", "Thai", "--type", "LST Trained", "details"}},
        {"plant ed\tx --stage=fl\t", {"plant", "edit", "x", "--stage=Flower"}},
        {"plant show Th\t", {"plant", "show", "Thai Basil"}},
        {"plant show Thai\\ B\t", {"plant", "show", "Thai Basil"}},
        {"plant show \"Thai B\t", {"plant", "show", "Thai Basil"}},
        {"plant show 'Thai B\t", {"plant", "show", "Thai Basil"}},
        {"plant show It\t", {"plant", "show", "It's \"odd\""}},
        {"plant show It\\'s\t", {"plant", "show", "It's \"odd\""}},
        {"plant show \"It's\t", {"plant", "show", "It's \"odd\""}},
        {"plant show 'It\t", {"plant", "show", "It's \"odd\""}},
        {"plant show 'Bo\t", {"plant", "show", "Bo'"}},
        {"plant show Pri\t", {"plant", "show", "Price $5"}},
        {"plant show \"Pri\t", {"plant", "show", "Price $5"}},
        {"plant show sü\t", {"plant", "show", "Süßkirsche"}},
        {"plant show 紅\t", {"plant", "show", "紅 韓"}},
        {"plant show Tomate:\t", {"plant", "show", "Tomate: rot"}},
        {"plant show Tom\t", {"plant", "show", "Tomate: rot"}},
        {"plant show \"Tomate: \t", {"plant", "show", "Tomate: rot"}},
        {"plant show bac\t", {"plant", "show", "back\\slash"}},
        {"plant show \"bac\t", {"plant", "show", "back\\slash"}},
        {"plant show a=\t", {"plant", "show", "a=b"}},
        {"plant show \\`\t", {"plant", "show", "`x`;&|"}},
        {"strain show gen\t", {"strain", "show", "Genovese gigante"}},
        {"plant add x --strain=Gen\t", {"plant", "add", "x", "--strain=Genovese gigante"}},
        {"plant add x --tent Sou\t", {"plant", "add", "x", "--tent", "South $ide"}},
        {"plant  show Th\t", {"plant", "show", "Thai Basil"}},
        {"'plant' show Th\t", {"plant", "show", "Thai Basil"}},
        {"plant show \"back\\sl\t", {"plant", "show", "back\\slash"}},
        {"plant show Thai\\ 'B\t", {"plant", "show", "Thai Basil"}},
        {"plant sho x\x02\x02\t\x05", {"plant", "show", "x"}}, // with the cursor after `sho`
        {"import a-season\t", {"import", "a-season.json"}},
        {"info --file=a-season\t", {"info", "--file=a-season.json"}},
        {"--file a-season\tinfo", {"--file", "a-season.json", "info"}},
    };
}

class ShellCompletionTest : public CompletionTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }

    // Skips where the system does not have the shell.
    void SkipWithout(const std::string& shell)
    {
        if (RunningProgram({shell, "-c", "exit 0"}, Around).End().Status != 0)
            GTEST_SKIP() << shell << " is not installed";
    }

    // Types the lines into a shell in which `setup` has loaded the completion, and compares what the command gets.
    void ExpectCompleted(const Words& shell, const std::string& setup)
    {
        StoreNames();
        Write("a-season.json", "{}");
        Surroundings terminal = Around;
        terminal.Columns = 200;
        for (const char* variable : {"TERM=dumb", "PS1=ready:", "INPUTRC=/dev/null", "LC_ALL=C.UTF-8"})
            terminal.Environment.emplace_back(variable);
        RunningProgram program(shell, terminal);
        // A function replaces the command and prints its arguments.
        program.Type(setup +
                     "; n=0; plantjournal() { if [[ $1 == complete ]]; then '" PLANTJOURNAL_COMMAND
                     "' \"$@\"; else printf '<%s>' \"$@\"; n=$((n + 1)); echo \"end$n\"; fi; }; echo on''ward\n");
        ASSERT_TRUE(program.Await("onward"));
        int number = 0;
        std::vector<std::string> expected;
        for (const TypedLine& line : LinesForEveryShell())
        {
            const std::string end = "end" + std::to_string(++number);
            program.Type("plantjournal " + line.Typed + "\n");
            ASSERT_TRUE(program.Await(end)) << line.Typed;
            std::string& words = expected.emplace_back();
            for (const std::string& word : line.Given)
                words += '<' + word + '>';
            words += end;
        }
        const std::string home = Scratch.File("home/bin/plantjournal");
        std::filesystem::create_directories(Scratch.File("home/bin"));
        Write("home/bin/plantjournal", "#!/bin/sh\n[ $1 != complete ] || exec '" PLANTJOURNAL_COMMAND
                                       "' \"$@\"\nprintf '<%s>' home \"$@\"\necho endhome\n");
        std::filesystem::permissions(home, std::filesystem::perms::owner_all);
        program.Type("~/bin/plantjournal plant show Th\t\n");
        ASSERT_TRUE(program.Await("endhome"));
        expected.emplace_back("<home><plant><show><Thai Basil>endhome");
        program.Type("exit\n");
        const std::string shown = program.End().Out;
        for (const std::string& words : expected)
            EXPECT_NE(shown.find(words), std::string::npos) << words << '\n' << shown;
    }
};

TEST_F(ShellCompletionTest, BashCompletesEveryKindOfWord)
{
    SkipWithout("bash");
    ExpectCompleted({"bash", "--norc", "--noprofile", "-i"},
                    "bind 'set bell-style none'; source '" PLANTJOURNAL_SOURCE_DIR
                    "/tools/command_line/plantjournal.bash'");
}

TEST_F(ShellCompletionTest, ZshCompletesEveryKindOfWord)
{
    SkipWithout("zsh");
    std::filesystem::create_directories(Scratch.File("functions"));
    std::filesystem::copy(PLANTJOURNAL_SOURCE_DIR "/tools/command_line/plantjournal.zsh",
                          Scratch.File("functions/_plantjournal"));
    ExpectCompleted({"zsh", "-f", "-i"}, "fpath=('" + Scratch.File("functions") +
                                             "' $fpath); autoload -U compinit; compinit -u -D; unsetopt beep");
}

TEST_F(ShellCompletionTest, FishCompletesEveryKindOfWord)
{
    SkipWithout("fish");
    StoreNames();
    Write("a-season.json", "{}");
    Around.Environment.emplace_back("LC_ALL=C.UTF-8");
    int compared = 0;
    for (const TypedLine& line : LinesForEveryShell())
    {
        if (line.Typed.find('\t') != line.Typed.size() - 1)
            continue; // fish is asked for the completions of one word
        ++compared;
        const std::string text = "plantjournal " + line.Typed.substr(0, line.Typed.size() - 1);
        const ProgramResult outcome =
            RunningProgram({"fish", "--no-config", "-c",
                            "source '" PLANTJOURNAL_SOURCE_DIR "/tools/command_line/plantjournal.fish'; "
                            "function plantjournal; '" PLANTJOURNAL_COMMAND "' $argv; end; complete -C $argv[1]",
                            text},
                           Around)
                .End();
        EXPECT_EQ(outcome.Error, "");
        const std::string first = outcome.Out.substr(0, outcome.Out.find_first_of("\t\n"));
        EXPECT_EQ(first, line.Given.back()) << text << '\n' << outcome.Out;
    }
    EXPECT_GT(compared, 20);
}

} // namespace

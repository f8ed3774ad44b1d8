// What was done across plants: `log`, `search`, and the order of `timeline`.

#include "command/basil_test.h"
#include "support/page.h"

#include <algorithm>

using namespace support;

namespace
{

class LogCommandTest : public TerminalTest
{
  protected:
    LogCommandTest()
    {
        Around.Environment.emplace_back("NO_COLOR=1");
        Done({"plant", "add", "Basil", "--strain", "Genovese", "--tent", "South", "--notes", "from Ana"});
        Done({"plant", "add", "Chili", "--strain", "Cayenne", "--tent", "North"});
        Done({"plant", "add", "Old", "--strain", "Cayenne", "--stage", "archived"});
        Done({"water", "Basil", "500ml", "--date", "2025-03-01"});
        Done({"feed", "Chili", "200ml", "--product", "Bloom A", "--date", "2025-03-31"});
        Done({"note", "Basil", "Blattläuse gesehen", "--date", "2025-04-02"});
        Done({"health", "add", "Chili", "Попелиця", "--severity", "2", "--date", "2025-04-03"});
        Done({"water", "Old", "50ml", "--date", "2025-04-04"});
    }

    // The dates that a log with these options shows.
    Words Dates(Words words) const
    {
        words.insert(words.begin(), "log");
        Words dates;
        for (const JSON& record : Parsed(words))
            dates.push_back(record.at("Date"));
        return dates;
    }
};

TEST_F(LogCommandTest, TheLogListsRecordsOfAllPlantsTheNewestFirst)
{
    EXPECT_EQ(Done({"log", "--from", "2025"}), "Date        Plant  Kind         Details\n"
                                               "2025-04-03  Chili  Health       Попелиця (2 of 5)\n"
                                               "2025-04-02  Basil  Observation  Blattläuse gesehen\n"
                                               "2025-03-31  Chili  Feed         Bloom A | 200 ml\n"
                                               "2025-03-01  Basil  Water        500 ml\n");
}

TEST_F(LogCommandTest, TheLogListsTheLastFourteenDaysByDefault)
{
    Done({"water", "Basil", "1ml", "--date", "14d"});
    const std::string none = Done({"log"});
    EXPECT_TRUE(none.starts_with("No records since 20") && none.ends_with("; --from sets an earlier date.\n")) << none;
    Done({"water", "Basil", "2ml", "--date", "13d"});
    Done({"water", "Basil", "3ml", "--date", "today"});
    const JSON log = Parsed({"log"});
    ASSERT_EQ(log.size(), 2U);
    EXPECT_EQ(log.at(0).at("Details"), "3 ml");
    EXPECT_EQ(log.at(1).at("Details"), "2 ml");
    EXPECT_EQ(Parsed({"log", "--newest", "100"}).size(), 7U); // as many as there are, of any date
    EXPECT_EQ(Parsed({"log", "--to", "13d"}).size(), 6U);
}

TEST_F(LogCommandTest, TheLogTakesTheSameOptionsAsTheLists)
{
    const Words all = {"2025-04-03", "2025-04-02", "2025-03-31", "2025-03-01"};
    EXPECT_EQ(Dates({"--from", "2025"}), all);
    EXPECT_EQ(Dates({"--from", "2025-04"}), (Words{"2025-04-03", "2025-04-02"}));
    EXPECT_EQ(Dates({"--to", "2025-03"}), (Words{"2025-03-31", "2025-03-01"})); // the whole month
    EXPECT_EQ(Dates({"--newest", "2"}), (Words{"2025-04-03", "2025-04-02"}));
    EXPECT_EQ(Dates({"--newest", "2", "--oldest-first"}), (Words{"2025-04-02", "2025-04-03"}));
    EXPECT_EQ(Dates({"basil", "--from", "2025"}), (Words{"2025-04-02", "2025-03-01"}));
    EXPECT_EQ(Dates({"Basil", "Chili", "--from", "2025"}), all);
    EXPECT_EQ(Dates({"--strain", "CAYENNE", "--from", "2025"}), (Words{"2025-04-03", "2025-03-31"}));
    EXPECT_EQ(Dates({"--tent", "south", "--from", "2025"}), (Words{"2025-04-02", "2025-03-01"}));
    EXPECT_EQ(Dates({"--stage", "archived", "--from", "2025"}), Words{"2025-04-04"});
    EXPECT_EQ(Dates({"--all", "--from", "2025"}).size(), 5U);
    EXPECT_EQ(Dates({"Old", "--from", "2025"}), Words{"2025-04-04"});
    EXPECT_EQ(Dates({"--kind", "feed,HEALTH", "--from", "2025"}), (Words{"2025-04-03", "2025-03-31"}));
    EXPECT_EQ(Dates({"--text", "bloom", "--from", "2025"}), Words{"2025-03-31"});
    EXPECT_EQ(Done({"log", "--text", "nothing", "--from", "2025"}), "No records match the options.\n");
}

TEST_F(LogCommandTest, MistakesInTheOptionsAreExplained)
{
    EXPECT_NE(Mistaken({"log", "--kind", "fed"}).find("\"fed\" is not one of Sown, Health, "), std::string::npos);
    EXPECT_NE(Mistaken({"log", "--kind", "Feed,fee"}).find("did you mean Feed?"), std::string::npos);
    EXPECT_NE(Mistaken({"log", "--kind", ""}).find("is not one of"), std::string::npos);
    EXPECT_NE(Mistaken({"log", "--from", "soon"}).find("\"soon\" is not a date"), std::string::npos);
    EXPECT_NE(Mistaken({"log", "--newest", "0"}).find("write a whole number above 0"), std::string::npos);
    EXPECT_NE(Mistaken({"log", "--from", "2025-04", "--to", "2025-03"})
                  .find("--from \"2025-04\" is later than --to \"2025-03\"; swap them"),
              std::string::npos);
    EXPECT_EQ(Dates({"--from", "2025-03-31", "--to", "2025-03"}), Words{"2025-03-31"});
    EXPECT_NE(Refused({"log", "--strain", "Cayene"}).find("did you mean \"Cayenne\"?"), std::string::npos);
}

TEST_F(LogCommandTest, ARecordOfTheLogNamesItsTableAndRow)
{
    const JSON record = Parsed({"log", "--newest", "1", "--kind", "feed"}).at(0);
    const JSON care = Parsed({"care", "list", "Chili"}).at(0);
    EXPECT_EQ(record, (JSON{{"Date", "2025-03-31"},
                            {"PlantUUID", care.at("PlantUUID")},
                            {"Plant", "Chili"},
                            {"Kind", "Feed"},
                            {"Details", "Bloom A | 200 ml"},
                            {"Table", "PlantCareEntries"},
                            {"ID", care.at("ID")}}));
    const auto tableOf = [&](const std::string& kind) {
        return Parsed({"log", "--all", "--newest", "1", "--kind", kind}).at(0).at("Table");
    };
    Done({"plant", "edit", "Chili", "--seed-date", "2025-02-01"});
    Done({"top", "Basil", "--date", "2025-04-01"});
    Done({"harvest", "add", "Chili", "--unweighed", "--harvest-date", "2025-05-01"});
    Write("data/a.jpg", "a picture");
    Done({"photo", "add", "Basil", "data/a.jpg", "--photo-date", "2025-04-01"});
    EXPECT_EQ(tableOf("sown"), "Plants");
    EXPECT_EQ(tableOf("topped"), "PlantEvents");
    EXPECT_EQ(tableOf("observation"), "PlantJournalEntries");
    EXPECT_EQ(tableOf("health"), "PlantHealthObservations");
    EXPECT_EQ(tableOf("harvest"), "HarvestRecords");
    EXPECT_EQ(tableOf("photo"), "PlantPhotos");
}

TEST_F(LogCommandTest, TheLogPrintsCSV)
{
    Done({"note", "Chili", "a \"b\", c", "--date", "2025-05-01"});
    const std::vector<std::string> lines = Lines(Done({"log", "Chili", "--newest", "1", "--csv"}));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "Date,PlantUUID,Plant,Kind,Details,Table,ID");
    EXPECT_NE(lines[1].find(R"(,Chili,Observation,"a ""b"", c",PlantJournalEntries,)"), std::string::npos) << lines[1];
}

TEST_F(LogCommandTest, TheLogFitsATerminalAndCountsArchivedPlants)
{
    Done({"note", "Basil", "A long note of many words that a narrow terminal cannot show on one line", "--date",
          "2025-04-05"});
    for (const int columns : {60, 80})
    {
        const std::vector<std::string> lines = Lines(RunOnTerminal({"log", "--from", "2025"}, {}, columns).Out);
        EXPECT_EQ(lines.size(), 7U);
        EXPECT_TRUE(lines.at(1).ends_with("…")) << lines.at(1);
        EXPECT_EQ(lines.at(1).size(), static_cast<std::size_t>(columns) + 2); // an ellipsis has three bytes
        EXPECT_EQ(lines.back(), "1 archived plant is left out; --all includes it.");
    }
    Done({"plant", "edit", "Basil", "--stage", "archived"});
    const auto last = [&](const Words& words) { return Lines(RunOnTerminal(words, {}, 200).Out).back(); };
    EXPECT_EQ(last({"log"}), "2 archived plants are left out; --all includes them.");
    EXPECT_EQ(last({"log", "--tent", "South"}), "1 archived plant is left out; --all includes it.");
    EXPECT_EQ(last({"log", "--all"}).find("left out"), std::string::npos);
    EXPECT_TRUE(last({"totals", "Old"}).starts_with("       0"));
}

TEST_F(LogCommandTest, SearchFindsRecordsInEveryAlphabet)
{
    EXPECT_EQ(Done({"search", "ПОПЕЛ"}), "Date        Plant  Kind    Details\n"
                                         "2025-04-03  Chili  Health  Попелиця (2 of 5)\n");
    EXPECT_EQ(Done({"search", "LÄUSE", "gesehen"}), "Date        Plant  Kind         Details\n"
                                                    "2025-04-02  Basil  Observation  Blattläuse gesehen\n");
    EXPECT_EQ(Parsed({"search", "ml"}).size(), 2U);
    EXPECT_EQ(Parsed({"search", "ml", "--all"}).size(), 3U);
    EXPECT_EQ(Parsed({"search", "ml", "--plant", "old"}).size(), 1U);
    EXPECT_EQ(Parsed({"search", "ml", "--kind", "feed"}).size(), 1U);
    EXPECT_EQ(Parsed({"search", "ml", "--to", "2025-03-01"}).size(), 1U);
    EXPECT_EQ(Parsed({"search", "ml", "--oldest-first"}).at(0).at("Date"), "2025-03-01");
    EXPECT_EQ(Done({"search", "no\x1Bt"}), "Nothing contains \"no\xEF\xBF\xBDt\".\n");
    EXPECT_EQ(Parsed({"search", "not"}), JSON::array());
    EXPECT_NE(Mistaken({"search", ""}).find("the text is empty"), std::string::npos);
    EXPECT_NE(Mistaken({"search"}).find("TEXT"), std::string::npos);
}

TEST_F(LogCommandTest, SearchFindsTheNamesAndNotesOfPlants)
{
    EXPECT_EQ(Done({"search", "chil"}), "Plant  Kind   Details\nChili  Plant  Cayenne\n");
    EXPECT_EQ(Done({"search", "FROM ANA"}), "Plant  Kind   Details\nBasil  Plant  Genovese | from Ana\n");
    ExpectFields(Parsed({"search", "chil"}).at(0),
                 {{"Date", ""}, {"Plant", "Chili"}, {"Kind", "Plant"}, {"Table", "Plants"}, {"ID", 2}});
    EXPECT_EQ(Parsed({"search", "ol"}).size(), 0U); // an archived plant
    EXPECT_EQ(Parsed({"search", "ol", "--all"}).size(), 1U);
    EXPECT_EQ(Parsed({"search", "chil", "--tent", "South"}).size(), 0U);
    EXPECT_EQ(Parsed({"search", "chil", "--from", "2025"}).size(), 0U); // a plant has no date
    EXPECT_EQ(Parsed({"search", "chil", "--to", "9999"}).size(), 0U);
    EXPECT_EQ(Parsed({"search", "chil", "--kind", "feed"}).size(), 0U);
}

TEST_F(LogCommandTest, ATimelineCanBeginWithTheOldestRecord)
{
    EXPECT_EQ(Done({"timeline", "Basil", "--oldest-first"}), "Date        Kind         Details\n"
                                                             "2025-03-01  Water        500 ml\n"
                                                             "2025-04-02  Observation  Blattläuse gesehen\n");
    const JSON newest = Parsed({"timeline", "Basil"});
    const JSON oldest = Parsed({"timeline", "Basil", "--oldest-first"});
    ASSERT_EQ(newest.size(), 2U);
    EXPECT_EQ(oldest.at(0), newest.at(1));
    EXPECT_EQ(oldest.at(1), newest.at(0));
}

TEST_F(LogCommandTest, CompletionOffersNamesKindsAndFigures)
{
    const auto offered = [&](Words words, const std::string& word)
    {
        words.insert(words.begin(), "complete");
        const std::vector<std::string> lines = Lines(Done(words));
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.substr(0, line.find('\t')) == word; });
    };
    for (const char* command : {"log", "status", "due", "totals"})
        EXPECT_TRUE(offered({command, "Ba"}, "Basil")) << command;
    EXPECT_TRUE(offered({"compare", "Ca"}, "Cayenne"));
    EXPECT_TRUE(offered({"compare", "Ba"}, "Basil"));
    EXPECT_TRUE(offered({"search", "x", "--plant", "Ba"}, "Basil"));
    EXPECT_TRUE(offered({"log", "--kind", "he"}, "Health"));
    EXPECT_TRUE(offered({"totals", "--by", "t"}, "tent"));
    EXPECT_TRUE(offered({"log", "--from", "yes"}, "yesterday"));
}

} // namespace

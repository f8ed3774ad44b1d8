// The timeline of a plant.

#include "command/basil_test.h"
#include "testing/plain_connection.h"

using namespace support;

namespace
{

// The command refuses to delete events that belong to other records.
constexpr const char* DeleteEvents = "PRAGMA foreign_keys=ON; DELETE FROM PlantEvents;";

TEST_F(BasilTest, TheTimelineListsEachRecordOfAPlantOnce)
{
    Write("data/plantjournal/basil.jpg", "a picture");
    Left = {"basil.jpg", "journal.db"};
    Done({"plant", "add", "Mint"});
    Done({"note", "add", "Mint", "another's"});
    Done({"note", "add", "Basil", "six leaves", "--entry-date", "2026-05-06"});
    Done({"health", "add", "Basil", "thrips", "--severity", "3", "--treatment", "soap", "--observation-date",
          "2026-05-05"});
    Done({"photo", "add", "Basil", "data/plantjournal/basil.jpg", "--caption", "low", "--photo-date", "2026-05-04"});
    Done({"event", "add", "Basil", "tied down", "--type", "lst trained", "--event-date", "2026-05-02"});
    Done({"harvest", "add", "Basil", "--dry-weight-g", "96.5", "--harvest-date", "2026-07-01"});
    Done({"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"});
    Done({"water", "Basil", "--amount-ml", "750", "--care-date", "2026"});
    const std::string harvest = Parsed({"event", "list", "Basil", "--newest", "1"}).at(0).at("Details");
    EXPECT_NE(harvest, "");
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind         Details\n"
                                           "2026-07-01  Harvest      " +
                                               harvest +
                                               "\n"
                                               "2026-05-06  Observation  six leaves\n"
                                               "2026-05-05  Health       thrips (3 of 5) | soap\n"
                                               "2026-05-04  Photo        basil.jpg | low\n"
                                               "2026-05-03  Feed         500 ml\n"
                                               "2026-05-02  LST Trained  tied down\n"
                                               "2026        Water        750 ml\n");
}

TEST_F(BasilTest, TheTimelineListsRecordsWhoseEventWasDeleted)
{
    Done({"feed", "Basil", "--amount-ml", "500", "--care-date", "2026-05-03"});
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--cure-outcome", "good", "--unweighed"});
    PlainConnection(Journal).RunSQL(DeleteEvents);
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind     Details\n"
                                           "2026-07-01  Harvest  good\n"
                                           "2026-05-03  Feed     500 ml\n");
    Sound = false; // an entry without its event is a finding
}

TEST_F(BasilTest, TheTimelineShowsNotesOfHealthAndHarvest)
{
    Done({"health", "add", "Basil", "thrips", "--severity", "3", "--treatment", "soap", "--notes", "few",
          "--observation-date", "2026-05-05"});
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--cure-outcome", "good", "--notes", "dry",
          "--unweighed"});
    PlainConnection(Journal).RunSQL(DeleteEvents);
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind     Details\n"
                                           "2026-07-01  Harvest  good | dry\n"
                                           "2026-05-05  Health   thrips (3 of 5) | soap | few\n");
    Sound = false; // a harvest record without its event is a finding
}

TEST_F(BasilTest, AHarvestIsListedAtItsDateNotAtTheDateOfItsEvent)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--unweighed"});
    PlainConnection(Journal).RunSQL("UPDATE PlantEvents SET EventDate='2026-01-01';");
    EXPECT_EQ(Done({"timeline", "Basil"}).find("2026-01-01"), std::string::npos);
    EXPECT_NE(Done({"timeline", "Basil"}).find("2026-07-01  Harvest"), std::string::npos);
    Sound = false; // an event with another date is a finding
}

TEST_F(BasilTest, TheTimelineHoldsThePlantsOwnDates)
{
    Done({"plant", "edit", "Basil", "--seed-date", "2026-02", "--clone-date", "2026-02-10", "--transplant-date",
          "2026-03-12", "--flip-date", "2026-04-20", "--harvest-date", "2026-07-01"});
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind\n"
                                           "2026-07-01  Harvest\n"
                                           "2026-04-20  Flip\n"
                                           "2026-03-12  Transplant\n"
                                           "2026-02-10  Clone\n"
                                           "2026-02     Sown\n");
    Done({"note", "add", "Basil", "six leaves", "--entry-date", "2026-03-12"});
    EXPECT_NE(Done({"timeline", "Basil"})
                  .find("2026-03-12  Observation  six leaves\n"
                        "2026-03-12  Transplant\n"),
              std::string::npos);
}

TEST_F(BasilTest, ADateOfThePlantThatAnEventHasIsListedOnce)
{
    Done({"plant", "edit", "Basil", "--clone-date", "2026-02-10", "--transplant-date", "2026-03-12", "--flip-date",
          "2026-04-20"});
    for (const auto& [type, date] :
         {std::pair("clone", "2026-02-10"), {"transplant", "2026-03-12"}, {"flip", "2026-04-21"}})
        Done({"event", "add", "Basil", "seen", "--type", type, "--event-date", date});
    Done({"harvest", "add", "Basil", "--dry-weight-g", "9", "--harvest-date", "2026-07-01"});
    EXPECT_EQ(Done({"timeline", "Basil"}), "Date        Kind        Details\n"
                                           "2026-07-01  Harvest     Wet 0.0 g | Dry 9.0 g\n"
                                           "2026-04-21  Flip        seen\n"
                                           "2026-04-20  Flip\n" // another day
                                           "2026-03-12  Transplant  seen\n"
                                           "2026-02-10  Clone       seen\n");
}

class TimelineOnTerminalTest : public BasilTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

TEST_F(TimelineOnTerminalTest, ANarrowTerminalCutsTheDetails)
{
    Around.Environment.emplace_back("NO_COLOR=1");
    Done({"note", "add", "Basil", "Four new pairs of leaves", "--entry-date", "2026-05-06"});
    Done({"note", "add", "Basil", "Four", "--entry-date", "2026-05-05", "--type", "milestone"});
    EXPECT_EQ(RunOnTerminal({"timeline", "Basil"}, {}, 33).Out, "Date        Kind         Details\n"
                                                                "2026-05-06  Observation  Four ne…\n"
                                                                "2026-05-05  Milestone    Four\n");
}

TEST_F(BasilTest, AnEmptyTimelineIsSafeForATerminal)
{
    Done({"plant", "edit", "Basil", "--name", "\x1B[2J"});
    EXPECT_EQ(Done({"timeline", "b1"}).find('\x1B'), std::string::npos);
}

TEST_F(BasilTest, AnEmptyTimelinePrintsOneSentence)
{
    EXPECT_EQ(Done({"timeline", "basil"}), "Basil: no records yet; `plantjournal note add PLANT TEXT` adds one, and so "
                                           "do `feed` and `water`.\n");
    EXPECT_EQ(Parsed({"timeline", "Basil"}), JSON::array());
}

} // namespace

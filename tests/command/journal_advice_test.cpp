// What the command advises where the journal is damaged, lost or interrupted: the commands that it names work as
// printed.

#include "support/damage_file.h"
#include "support/dated_command.h"
#include "testing/plain_connection.h"

#include <filesystem>
#include <string>

using namespace support;

namespace
{

class JournalAdviceTest : public DatedCommandTest
{
  protected:
    JournalAdviceTest() { KeepEverything(); }

    static void ExpectAdvice(const std::string& refusal, const std::string& advice)
    {
        EXPECT_TRUE(refusal.ends_with("; " + advice + '\n')) << refusal;
    }

    static constexpr auto Day = "2026-05-05";
};

TEST_F(JournalAdviceTest, AJournalOfTheOptionIsNamedWithIt)
{
    std::filesystem::copy_file(Journal, Scratch.File("other.db"));
    std::filesystem::resize_file(Scratch.File("other.db"), std::filesystem::file_size(Journal) / 2);
    const std::string end = ", or read what is left with `plantjournal salvage`";
    ExpectAdvice(Refused({"check", "--file", "other.db"}),
                 "restore a backup with `plantjournal restore --file other.db`" + end);
    SetVariable("PLANTJOURNAL_FILE", "other.db"); // now a command uses it without the option
    ExpectAdvice(Refused({"check"}), "restore a backup with `plantjournal restore`" + end);
    ExpectAdvice(Refused({"check", "--file", Scratch.File("other.db")}),
                 "restore a backup with `plantjournal restore`" + end);
}

TEST_F(JournalAdviceTest, TheNoticeOfAMissingBackupNamesItsJournal)
{
    DoneOn("2026-05-01", {"plant", "add", "Mint", "--file", "other.db"});
    const std::string notice = NoticeOn("2026-05-20", {"plant", "add", "Dill", "--file", "other.db"});
    EXPECT_TRUE(notice.ends_with(" days; `plantjournal backup --file other.db` makes one\n")) << notice;
}

TEST_F(JournalAdviceTest, APathThatTheShellWouldChangeIsInQuotes)
{
    const auto printed = [&](const std::string& name) { return Done({"salvage", Journal, name}); };
    const auto next = [](const std::string& path) { return "\nNext: `plantjournal check --file " + path + "`\n"; };
    for (const char* name : {"a-b_1.db", "Gärtchen.db"})
        EXPECT_TRUE(printed(name).ends_with(next(name))) << name;
    for (const std::string name : {"my garden.db", "a&b.db", "a;b (1).db"})
        EXPECT_TRUE(printed(name).ends_with(next(OnWindows ? '"' + name + '"' : '\'' + name + '\''))) << name;
    EXPECT_TRUE(printed("Ana's.db").ends_with(next(OnWindows ? "\"Ana's.db\"" : R"('Ana'\''s.db')")));
}

TEST_F(JournalAdviceTest, ALostJournalWithBackupsIsRestored)
{
    const std::string create = "`plantjournal plant add NAME` creates one, --file names another";
    DoneOn(Day, {"backup"});
    for (const bool isEmpty : {true, false})
    {
        if (isEmpty)
            std::filesystem::resize_file(Journal, 0);
        else
            std::filesystem::remove(Journal);
        for (const Words& words : {Words{"check"}, {"plant", "list"}, {"backup"}})
            ExpectAdvice(Refused(words), "`plantjournal restore` restores its newest backup, " + create);
    }
    EXPECT_NE(DoneOn(Day, {"restore", "--yes"}).find("Restored "), std::string::npos);
}

TEST_F(JournalAdviceTest, ADamagedEventTypeNamesTheWayOut)
{
    DoneOn(Day, {"backup"});
    const std::string way = "if this is the damaged journal, move it away and run `plantjournal restore`, or read what "
                            "is left with `plantjournal salvage`; --file names another file";
    PlainConnection(Journal).RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE PlantEvents SET EventType='Feee' WHERE "
                                    "ID=(SELECT min(ID) FROM PlantEvents);");
    const ProgramResult check = On(Day, {"check"});
    EXPECT_EQ(check.Status, 1);
    ExpectAdvice(check.Error, way);
    for (const Words& words : {Words{"backup"}, {"restore", "--yes"}})
        ExpectAdvice(On(Day, words).Error, way);
    std::filesystem::rename(Journal, Scratch.File("away.db"));
    EXPECT_EQ(On(Day, {"restore", "--yes"}).Status, 0);
}

TEST_F(JournalAdviceTest, ADamagedJournalIsRestoredAndNotRepaired)
{
    DoneOn(Day, {"backup"});
    PlainConnection(Journal).RunSQL(
        "DELETE FROM PlantEvents WHERE ID IN (SELECT TimelineEventID FROM PlantCareEntries);");
    ExpectAdvice(On(Day, {"check"}).Error, "nothing was changed; --repair restores the missing events");
    for (const UsedPage& page : UsedPages(Journal))
        if (page.Name == "PlantsByStrain")
            Zero(Journal, page.Offset + 3, 2); // the index has no entries
    const ProgramResult check = On(Day, {"check"});
    EXPECT_NE(check.Out.find("MissingEvent"), std::string::npos) << check.Out << check.Error;
    ExpectAdvice(check.Error, "restore a backup with `plantjournal restore`, or read what is left with "
                              "`plantjournal salvage`");
    EXPECT_EQ(On(Day, {"restore", "--yes"}).Status, 0);
    Left.push_back("journal.db.before-restore-2026-05-05");
}

} // namespace

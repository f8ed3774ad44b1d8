// A season with a backup a day, and a damaged journal, as a grower lives through it.

#include "support/dated_command.h"

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <sstream>

using namespace support;

namespace
{

using RestoreDrillTest = DatedCommandTest;

std::string DayText(int day)
{
    const std::chrono::year_month_day date =
        std::chrono::sys_days(std::chrono::year(2026) / 4 / 1) + std::chrono::days(day);
    std::ostringstream text;
    text << static_cast<int>(date.year()) << '-' << std::setfill('0') << std::setw(2)
         << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day());
    return text.str();
}

TEST_F(RestoreDrillTest, AfterADamageTheSeasonGoesOn)
{
    constexpr int days = 60;
    for (const char* name : {"Basil", "Mint", "Thyme"})
        DoneOn(DayText(0), {"plant", "add", name, "--stage", "veg"});
    for (int day = 0; day < days; ++day)
    {
        DoneOn(DayText(day), {"water", "--all", "0.5l"});
        DoneOn(DayText(day), {"note", "Basil", "Day " + std::to_string(day) + std::string(200, '.')});
        DoneOn(DayText(day), {"backup"});
    }
    const JSON kept = JSON::parse(DoneOn(DayText(days - 1), {"backup", "--list", "--json"}));
    EXPECT_EQ(kept.size(), 7U + 2U + 1U); // days, two more weeks, and the end of April
    const std::string before = DoneOn(DayText(days - 1), {"export", "-"});

    DamageJournal();
    const std::string damaged = FileBytes(Journal);
    const std::string today = DayText(days);
    const ProgramResult check = On(today, {"check"});
    EXPECT_EQ(check.Status, 1);
    EXPECT_NE(check.Error.find("database disk image is malformed; restore a backup with `plantjournal restore`"),
              std::string::npos)
        << check.Error;
    EXPECT_EQ(FileBytes(Journal) == damaged, true);

    const ProgramResult restored = On(today, {"restore", "--yes"});
    EXPECT_EQ(restored.Status, 0) << restored.Error;
    EXPECT_EQ(restored.Error, "notice: " + Journal + ": programs that have it open must open it again\n");
    Left.push_back("journal.db.before-restore-" + today);
    EXPECT_EQ(FileBytes(Scratch.File("data/plantjournal/" + Left.back())) == damaged, true);
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
    EXPECT_EQ(DoneOn(today, {"export", "-"}), before);

    DoneOn(today, {"water", "--all", "0.5l"});
    EXPECT_NE(DoneOn(today, {"export", "-"}), before);
    DoneOn(today, {"undo", "--yes"});
    EXPECT_EQ(DoneOn(today, {"export", "-"}), before);
    DoneOn(today, {"water", "Basil", "0.5l"});
    DoneOn(today, {"backup"});
    EXPECT_EQ(DoneOn(today, {"check"}), "No problems found.\n");
}

} // namespace

#include "support/journal_test.h"

#include <sqlite3.h>

namespace support
{

namespace
{

std::string SQLLiteral(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? "''" : std::string(1, c);
    return quoted + '\'';
}

} // namespace

JournalTest::JournalTest()
{
    OpenJournal();
}

JournalTest::~JournalTest()
{
    if (Database.IsOpen())
        ExpectNothingOpen();
}

void JournalTest::OpenJournal()
{
    std::string error;
    EXPECT_TRUE(Database.Open(Path, &error)) << error;
}

Plant JournalTest::NewPlant(const std::string& name, const std::string& strain, const std::string& mother)
{
    Plant plant;
    plant.Name = name;
    plant.Strain = strain;
    plant.MotherPlantUUID = mother;
    EXPECT_TRUE(Repository.CreatePlant(plant)) << sqlite3_errmsg(Database.NativeHandle());
    return plant;
}

Plant JournalTest::StoredPlant(const std::string& uuid)
{
    Plant plant;
    EXPECT_TRUE(Repository.GetPlant(uuid, plant));
    return plant;
}

int JournalTest::RowCount(const std::string& table, const std::string& condition) const
{
    return std::stoi(QueryRows("SELECT COUNT(*) FROM " + table + " WHERE " + condition + ";").at(0).at(0));
}

void JournalTest::ReplaceInDefinitions(const std::string& text, const std::string& replacement) const
{
    RunSQL("PRAGMA writable_schema=ON;");
    RunSQL("UPDATE sqlite_master SET sql=replace(sql," + SQLLiteral(text) + ',' + SQLLiteral(replacement) +
           ") WHERE type='table';");
    RunSQL("PRAGMA writable_schema=RESET;");
}

void JournalTest::ExpectNothingOpen() const
{
    EXPECT_EQ(sqlite3_next_stmt(Database.NativeHandle(), nullptr), nullptr);
    EXPECT_NE(sqlite3_get_autocommit(Database.NativeHandle()), 0);
}

} // namespace support

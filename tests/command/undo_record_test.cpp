// The file in which `undo` finds the last change: whatever its bytes are, `undo` restores or refuses.

#include "command/basil_test.h"
#include "support/test_form.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <random>

using namespace support;

namespace
{

// The bytes of a record with the right checksum in place of its last 16 bytes.
std::string Signed(std::string bytes)
{
    bytes.resize(bytes.size() - 16);
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    std::array<char, 17> text = {};
    EXPECT_EQ(std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash)), 16);
    return bytes + text.data();
}

class UndoRecordTest : public BasilTest
{
  protected:
    UndoRecordTest()
    {
        Done({"feed", "Basil", "--amount-ml", "500"});
        Record = std::filesystem::directory_iterator(StateDirectory + "/undo")->path() / "last-change";
        Bytes = FileBytes(Record.string());
    }

    void WriteRecord(const std::string& bytes) const
    {
        Write(Record.lexically_relative(Scratch.File("")).string(), bytes);
    }

    std::string RefusedWith(const std::string& bytes) const
    {
        WriteRecord(bytes);
        return Refused({"undo", "--yes"});
    }

    std::filesystem::path Record;
    std::string Bytes;
};

TEST_F(UndoRecordTest, ARecordOfTheExpectedFormIsAccepted)
{
    EXPECT_EQ(Signed(Bytes), Bytes);
    Done({"undo", "--yes"});
}

TEST_F(UndoRecordTest, ADamagedRecordIsRefused)
{
    std::mt19937_64 random(Seed());
    for (int i = 0; i < ShortOrLong(60, 2000); ++i)
    {
        std::string damaged = Bytes;
        const auto at = static_cast<std::size_t>(random() % Bytes.size());
        if (i % 2 == 0)
            damaged.resize(at);
        else
        {
            char& byte = damaged[at];
            byte = static_cast<char>(byte ^ static_cast<char>(1U << random() % 8));
        }
        EXPECT_NE(RefusedWith(damaged).find("nothing was changed"), std::string::npos);
    }
    EXPECT_NE(RefusedWith(Bytes + "x").find("damaged"), std::string::npos);
    EXPECT_NE(RefusedWith("").find("damaged"), std::string::npos);
}

TEST_F(UndoRecordTest, ARecordWithAnInvalidChangeNeverEndsTheProgram)
{
    std::mt19937_64 random(Seed());
    const auto below = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    const std::string journal = FileBytes(Journal);
    for (int i = 0; i < ShortOrLong(60, 2000); ++i)
    {
        std::string damaged = Bytes;
        damaged[20 + below(Bytes.size() - 20)] = static_cast<char>(below(256));
        if (i % 3 == 0)
            damaged.erase(20 + below(Bytes.size() - 36), 1 + below(16));
        WriteRecord(Signed(damaged));
        EXPECT_LE(Run({"undo", "--yes"}).Status, 1) << i;
        Write("data/plantjournal/journal.db", journal);
    }
}

TEST_F(UndoRecordTest, TheRecordOfANewerVersionIsRefused)
{
    const std::string newer = "plantjournal undo 2\n";
    const std::string message = RefusedWith(Signed(newer + Bytes.substr(newer.size())));
    EXPECT_NE(message.find("a newer version of plantjournal"), std::string::npos) << message;
}

TEST_F(UndoRecordTest, TheRecordOfAnotherJournalIsRefused)
{
    Keep([](PlantRepository&) {});
    std::string other = Bytes;
    other.replace(other.find("journal.db"), 10, "another.db");
    const std::string message = RefusedWith(Signed(other));
    EXPECT_NE(message.find("belongs to the journal"), std::string::npos) << message;
}

TEST_F(UndoRecordTest, ARecordThatCannotBeReadIsRefused)
{
    std::filesystem::remove(Record);
    std::filesystem::create_directory(Record);
    EXPECT_NE(Refused({"undo", "--yes"}).find("Is a directory"), std::string::npos);
    std::filesystem::remove(Record);
    std::filesystem::create_symlink(Journal, Record);
    EXPECT_NE(Refused({"undo", "--yes"}).find("symbolic links"), std::string::npos);
}

TEST_F(UndoRecordTest, AChangeOfAnUnknownTableIsRefused)
{
    std::string other = Bytes;
    other.replace(other.rfind("PlantCareEntries"), 16, "PlantCareEntriez");
    const std::string message = RefusedWith(Signed(other));
    EXPECT_NE(message.find("the tables are not those of the change"), std::string::npos) << message;
}

// The record of an earlier change, with the journal's present header.
TEST_F(UndoRecordTest, AChangeOfOtherRowsIsRefusedAsAWhole)
{
    constexpr std::size_t headerLength = 100;
    const std::size_t header = Bytes.find("SQLite format 3");
    const auto asIfLast = [&](const std::string& earlier)
    { return Signed(std::string(earlier).replace(header, headerLength, FileBytes(Journal).substr(0, headerLength))); };
    Done({"care", "edit", "Basil", "1", "--amount-ml", "400"});
    std::string message = RefusedWith(asIfLast(Bytes));
    EXPECT_NE(message.find("changing the rows back"), std::string::npos) << message;

    Done({"plant", "add", "Mint", "--uuid", "m1"});
    const std::string added = FileBytes(Record.string());
    Done({"feed", "Mint"});
    message = RefusedWith(asIfLast(added));
    EXPECT_NE(message.find("without their plant"), std::string::npos) << message;
}

} // namespace

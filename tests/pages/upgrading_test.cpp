// Tests the statements of docs/upgrading.md: files from older versions, and files in older programs.

#include "plant_file.h"
#include "support/journal_test.h"
#include "support/page.h"
#include "testing/old_files.h"

#include <filesystem>
#include <sstream>

using namespace support;

namespace
{

const std::string UpgradingPage = "docs/upgrading.md";

// [backup]
// Opens the journal. Makes a backup first if opening would migrate it.
bool OpenWithBackup(PlantDatabase& journal, const std::string& path, std::string& error)
{
    PlantFileInspection file;
    PlantFileResult result = InspectPlantSchema(path, file);
    if (result && file.Kind == PlantFileKind::Older)
        result = BackUpPlantDatabase(path, path + ".before");
    error = result.Error;
    return result && journal.Open(path, &error);
}
// [end]

class UpgradingPageTest : public JournalTest
{
  protected:
    PlantFileKind Kind(const std::string& path)
    {
        PlantFileInspection found;
        EXPECT_TRUE(InspectPlantDatabase(path, found));
        Reasons = found.Reasons;
        return found.Kind;
    }

    std::vector<std::string> Reasons;
    PlantDatabase Journal;
    std::string Old = Scratch.File("old.db");
    std::string Error;
};

TEST_F(UpgradingPageTest, ThePageShowsTheCodeOfTheseTests)
{
    EXPECT_EQ(CodeBlocks(UpgradingPage, "cpp"), std::vector{Region(__FILE__, "backup")});
}

TEST_F(UpgradingPageTest, AnOlderFileIsBackedUpBeforeItIsMigrated)
{
    for (const OldFile& file : OldFiles())
    {
        SCOPED_TRACE(file.Name);
        WriteOldFile(Old, file);
        EXPECT_TRUE(OpenWithBackup(Journal, Old, Error)) << Error;
        Journal.Close();
        EXPECT_EQ(Kind(Old), PlantFileKind::Current);
        EXPECT_EQ(Kind(Old + ".before"), HasCurrentSchema(file) ? PlantFileKind::Missing : PlantFileKind::Older);
        std::filesystem::remove(Old + ".before");
    }
}

TEST_F(UpgradingPageTest, ABackupNeverReplacesAnotherFile)
{
    WriteOldFile(Old, OldFiles().front());
    std::filesystem::copy_file(Old, Old + ".before");
    EXPECT_FALSE(OpenWithBackup(Journal, Old, Error));
    EXPECT_EQ(Error, Old + ".before: already exists");
    EXPECT_EQ(Kind(Old), PlantFileKind::Older);
}

TEST_F(UpgradingPageTest, ANewFileAcceptsTheRowsOfEveryEarlierSchema)
{
    for (const OldFile& file : OldFiles())
    {
        if (file.Name == "10_unchecked") // has event types that no version with a list of types has written
            continue;
        SCOPED_TRACE(file.Name);
        const std::string path = Scratch.File(file.Name);
        EXPECT_TRUE(Journal.Open(path));
        Journal.Close();
        EXPECT_NO_THROW(
            PlainConnection(path).RunSQL("PRAGMA foreign_keys=ON;" + file.SQL.substr(file.SQL.find("\nINSERT INTO"))));
        EXPECT_GT(std::stoi(PlainConnection(path).Value("SELECT COUNT(*) FROM PlantEvents;")), 0);
        EXPECT_EQ(Kind(path), PlantFileKind::Current);
    }
}

TEST_F(UpgradingPageTest, AnUpdateOfOlderColumnsLeavesTheOthersUnchanged)
{
    Plant plant = NewPlant("Basil");
    plant.Sex = PlantSex::Female;
    plant.FinalHeightCm = 40;
    EXPECT_TRUE(plant.Save(Repository));
    PlainConnection(Path).RunSQL("UPDATE Plants SET Name='Thyme',Stage='Flower',Notes='cut';");
    plant = StoredPlant(plant.UUID);
    EXPECT_EQ(plant.Name, "Thyme");
    EXPECT_EQ(plant.Sex, PlantSex::Female);
    EXPECT_EQ(plant.FinalHeightCm, 40);
}

TEST_F(UpgradingPageTest, AnEventOfANewerTypeIsReadAsANoteAndStaysStored)
{
    const Plant plant = NewPlant("Basil");
    ReplaceInDefinitions("'Note'))", "'Note','Repotted'))");
    RunSQL("INSERT INTO PlantEvents(PlantUUID,EventType) SELECT UUID,'Repotted' FROM Plants;");
    EXPECT_EQ(Kind(Path), PlantFileKind::Foreign);
    ASSERT_EQ(Reasons.size(), 1);
    EXPECT_NE(Reasons[0].find("Repotted"), std::string::npos);

    OpenJournal();
    std::vector<PlantEvent> events = Listed(&PlantRepository::ListPlantEvents, plant.UUID);
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].Type, PlantEventType::Note);
    EXPECT_EQ(QueryRows("SELECT EventType FROM PlantEvents;"), Rows{{"Repotted"}});
    EXPECT_TRUE(events[0].Save(Repository));
    EXPECT_EQ(QueryRows("SELECT EventType FROM PlantEvents;"), Rows{{"Note"}});
}

} // namespace

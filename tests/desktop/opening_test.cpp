// Opening files of each kind, and the menu.

#include "window_test.h"

#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QTest>

#include <fstream>

using namespace support;

namespace
{

class OpeningTest : public WindowTest
{
  protected:
    // The backup that was stored before the migration.
    QString Backup() const
    {
        const QStringList backups = Files().filter(".before-update-" + QString::fromStdString(PlantEventCurrentDate()));
        EXPECT_EQ(backups.size(), 1);
        return Directory + backups.join(' ');
    }

    static std::string ContentOf(const QString& path)
    {
        return Content(PlainConnection(path.toStdString()).NativeHandle());
    }

    QStringList Files() const { return QDir(Directory).entryList(QDir::Files, QDir::Name); }

    // The message about a file that is not opened.
    QString Refusal()
    {
        StartWindow();
        QString text = Message()->text();
        Press(Message(), "OK");
        EXPECT_EQ(Window->windowTitle(), "plantjournal");
        return text;
    }

    // Clicks an entry of the menu.
    void Trigger(const QString& entry) const
    {
        for (QAction* action : Window->findChildren<QAction*>())
            if (action->text().remove('&') == entry)
                return action->trigger();
        ADD_FAILURE() << entry.toStdString();
    }

    void WriteJournal(const std::string& bytes) const { std::ofstream(Journal.toStdString()) << bytes; }
};

TEST_F(OpeningTest, AnOlderFileIsBackedUpBeforeItIsMigrated)
{
    WriteOldFile(Journal.toStdString(), OldFiles().front());
    const std::string before = ContentOf(Journal);
    StartWindow();
    const QString question = Message()->text();
    EXPECT_EQ(ContentOf(Journal), before);
    EXPECT_EQ(Files(), QStringList{"journal.db"});
    Press(Message(), "Back up and open");
    EXPECT_TRUE(Await([this] { return !Plants().isEmpty(); }));
    EXPECT_EQ(ContentOf(Backup()), before);
    EXPECT_TRUE(question.endsWith("The backup will be " + Backup())) << question.toStdString();
    EXPECT_NE(ContentOf(Journal), before);
}

TEST_F(OpeningTest, ASecondBackupDoesNotReplaceTheFirst)
{
    for (const int backups : {1, 2})
    {
        WriteOldFile(Journal.toStdString(), OldFiles().front());
        StartWindow();
        Press(Message(), "Back up and open");
        EXPECT_TRUE(Await([this] { return !Plants().isEmpty(); }));
        EXPECT_EQ(Files().filter(".before-update-").size(), backups);
        QTest::qWait(1000); // the name holds the second
    }
}

TEST_F(OpeningTest, CancelLeavesAnOlderFileAsItIs)
{
    WriteOldFile(Journal.toStdString(), OldFiles().front());
    const std::string before = FileBytes(Journal.toStdString());
    StartWindow();
    Press(Message(), "Cancel");
    Window.reset();
    EXPECT_EQ(FileBytes(Journal.toStdString()), before);
    EXPECT_EQ(Files(), QStringList{"journal.db"});
}

TEST_F(OpeningTest, AMissingFileIsCreatedOnlyOnRequest)
{
    StartWindow();
    Press(Message(), "Cancel");
    EXPECT_TRUE(Files().isEmpty());
    Window->Open(Journal);
    Press(Message(), "Create it");
    EXPECT_TRUE(Await([this] { return Window->windowTitle() == "journal.db - plantjournal"; }));
    EXPECT_EQ(Files(), QStringList{"journal.db"});
    Command({"plant", "add", "Basil"});
    EXPECT_TRUE(Await([this] { return ShownName() == "Basil"; }));
}

TEST_F(OpeningTest, AForeignDatabaseIsNotOpened)
{
    PlainConnection(Journal.toStdString()).RunSQL("CREATE TABLE Books(Title TEXT)");
    const std::string before = FileBytes(Journal.toStdString());
    const QString refusal = Refusal();
    EXPECT_TRUE(refusal.contains("not a plantjournal file")) << refusal.toStdString();
    EXPECT_TRUE(refusal.contains("Books")) << refusal.toStdString();
    EXPECT_EQ(FileBytes(Journal.toStdString()), before);
}

TEST_F(OpeningTest, AFileThatIsNotADatabaseIsNotOpened)
{
    WriteJournal("a letter to a friend, of more than a hundred bytes, as a header of a database has: " +
                 std::string(100, '.'));
    EXPECT_TRUE(Refusal().contains("not a database"));
}

TEST_F(OpeningTest, ADamagedFileIsNotOpened)
{
    Command({"plant", "add", "Basil"});
    std::string bytes = FileBytes(Journal.toStdString());
    bytes.replace(100, 300, 300, '\x7f'); // the schema
    WriteJournal(bytes);
    EXPECT_TRUE(Refusal().contains("damaged"));
}

TEST_F(OpeningTest, ADirectoryIsNotOpened)
{
    QDir().mkpath(Journal);
    EXPECT_TRUE(Refusal().contains("not a regular file"));
}

TEST_F(OpeningTest, ARefusedFileLeavesTheOpenJournalOpen)
{
    Command({"plant", "add", "Basil"});
    OpenWindow();
    const QString letter = Directory + "letter.txt";
    std::ofstream(letter.toStdString()) << std::string(200, '.');
    Window->Open(letter);
    Press(Message(), "OK");
    Type("Note", "Details", "Still open");
    Store("Note");
    EXPECT_TRUE(Command({"timeline", "Basil"}).contains("Still open"));
}

TEST_F(OpeningTest, AnotherJournalReplacesTheFirst)
{
    Command({"plant", "add", "Basil"});
    OpenWindow();
    const QString other = Directory + "other.db";
    CommandOn(other, {"plant", "add", "Chili"});
    Window->Open(other);
    EXPECT_TRUE(Await([this] { return ShownName() == "Chili" && Plants() == QStringList{"Chili"}; }));
    Type("Note", "Details", "In the other one");
    Store("Note");
    EXPECT_TRUE(CommandOn(other, {"timeline", "Chili"}).contains("In the other one"));
}

TEST_F(OpeningTest, CheckShowsWhatIsWrong)
{
    Command({"plant", "add", "Basil"});
    OpenWindow();
    Trigger("Check");
    EXPECT_EQ(Message()->text(), "No problems found.");
    Press(Message(), "OK");
    PlainConnection(Journal.toStdString()).RunSQL("UPDATE Plants SET MotherPlantID=ID");
    Trigger("Check");
    EXPECT_EQ(Message()->text(), "Plants 1: It descends from itself.");
    Press(Message(), "OK");
}

TEST_F(OpeningTest, TheMenuStoresABackup)
{
    Command({"plant", "add", "Basil"});
    OpenWindow();
    const QString destination = Directory + "backup.db";
    const auto backUp = [&]
    {
        Trigger("Back up...");
        auto* dialog = Window->findChild<QFileDialog*>();
        dialog->selectFile(destination);
        static_cast<QDialog*>(dialog)->accept();
        QString text = Message()->text();
        Press(Message(), "OK");
        return text;
    };
    EXPECT_EQ(backUp(), "The backup is complete.");
    EXPECT_EQ(ContentOf(destination), ContentOf(Journal));
    EXPECT_TRUE(backUp().contains("backup.db")); // it replaces no file
}

} // namespace

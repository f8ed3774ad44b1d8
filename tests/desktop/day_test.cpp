// A day in the window, compared with the same day in the command.

#include "window_test.h"

#include <QDir>
#include <QRegularExpression>

using namespace support;

namespace
{

class DayTest : public WindowTest
{
  protected:
    DayTest()
    {
        for (const QString& journal : {Journal, Other})
            for (const char* plant : {"Basil", "Chili", "Mint"})
                CommandOn(journal, {"plant", "add", plant, "--strain", "Herbs", "--stage", "veg"});
    }

    void Feed(const QString& plant, const QString& amount) const
    {
        Select(plant);
        Type("Feed", "AmountMl", amount);
        Type("Feed", "EC", "1.8");
        Type("Feed", "PH", "6.2");
        Type("Feed", "Product", "Bloom feed");
        Store("Feed");
    }

    // All of a journal, as the command exports it. The UUIDs differ from journal to journal.
    QString Exported(const QString& journal) const
    {
        const QString directory = journal + ".export";
        CommandOn(journal, {"export", directory});
        QStringList names = QDir(directory).entryList(QDir::Files, QDir::Name);
        QString all;
        for (const QString& name : names)
        {
            QFile file(directory + '/' + name);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            all += name + '\n' + QString::fromUtf8(file.readAll());
        }
        static const QRegularExpression uuid("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}");
        return all.replace(uuid, "UUID");
    }

    QString Other = Directory + "other.db";
};

TEST_F(DayTest, ADayInTheWindowIsStoredAsByTheCommand)
{
    OpenWindow();
    Feed("Basil", "500");
    Feed("Chili", "750");
    Feed("Mint", "250.5");
    Select("Chili");
    Type("Note", "Details", "First flowers");
    Type("Note", "Type", "Milestone");
    Store("Note");
    Type("Water", "AmountMl", "200");
    Type("Water", "PH", "15"); // a wrong value
    EXPECT_FALSE(CanStore("Water"));
    Type("Water", "PH", "6,5");
    Store("Water");
    Type("Observe", "Issue", "Aphids");
    Type("Observe", "Severity", "3");
    Store("Observe");
    Select("Basil");
    Type("Harvest", "WetWeightG", "310");
    Type("Harvest", "DryWeightG", "52");
    Store("Harvest");
    EXPECT_TRUE(Await([this] { return Timeline().first().contains("Dry 52.0 g"); }));
    const QStringList before = Timeline();
    Window->close();
    Window.reset();

    OpenWindow(); // the first plant is Basil
    EXPECT_EQ(ShownName(), "Basil");
    EXPECT_EQ(Timeline(), before);

    for (const QStringList& words :
         std::vector<QStringList>{{"feed", "Basil", "500ml"}, {"feed", "Chili", "750ml"}, {"feed", "Mint", "250.5ml"}})
        CommandOn(Other, words + QStringList{"--ec", "1.8", "--ph", "6.2", "--product", "Bloom feed"});
    CommandOn(Other, {"note", "Chili", "First flowers", "--type", "milestone"});
    CommandOn(Other, {"water", "Chili", "200ml", "--ph", "6.5"});
    CommandOn(Other, {"health", "add", "Chili", "Aphids", "--severity", "3"});
    CommandOn(Other, {"harvest", "add", "Basil", "--wet-weight-g", "310", "--dry-weight-g", "52"});
    EXPECT_EQ(Exported(Journal), Exported(Other));
    EXPECT_EQ(Command({"check"}), "No problems found.\n");
}

} // namespace

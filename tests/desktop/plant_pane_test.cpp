// What the window shows of a plant, and its forms.

#include "window_test.h"

#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTest>

using namespace support;

namespace
{

class PlantPaneTest : public WindowTest
{
  protected:
    PlantPaneTest()
    {
        Command({"plant", "add", "Basil", "--strain", "Genovese", "--stage", "veg", "--tent", "Window", "--seed-date",
                 "2025-04-01"});
        Command({"plant", "add", "Chili", "--strain", "Cayenne", "--stage", "flower", "--tent", "Greenhouse"});
    }

    int Thumbnails() const
    {
        const auto* photos = Child<QListWidget>("photos");
        int shown = 0;
        for (int row = 0; row < photos->count(); ++row)
            shown += photos->item(row)->icon().isNull() ? 0 : 1;
        return shown;
    }
};

TEST_F(PlantPaneTest, TheFilterFindsNameStrainStageAndTent)
{
    OpenWindow();
    auto* filter = Child<QLineEdit>("filter");
    for (const char* text : {"chil", "CAYENNE", "Flower", "greenh"})
    {
        filter->clear();
        QTest::keyClicks(filter, text);
        EXPECT_EQ(Plants(), QStringList{"Chili"}) << text;
    }
    filter->clear();
    EXPECT_EQ(Plants(), (QStringList{"Chili", "Basil"}));
    QTest::keyClicks(filter, "tomato");
    EXPECT_TRUE(Plants().isEmpty());
}

TEST_F(PlantPaneTest, TheTimelineIsThatOfTheCommand)
{
    Command({"feed", "Basil", "500ml", "--ec", "1.8", "--date", "2025-05-01"});
    Command({"note", "Basil", "New leaves", "--date", "2025-05-02"});
    Command({"health", "add", "Basil", "Aphids", "--severity", "2", "--date", "2025-05-03"});
    OpenWindow();
    Select("Basil");
    EXPECT_EQ(Timeline(), (QStringList{"2025-05-03 Health Aphids (2 of 5)", "2025-05-02 Observation New leaves",
                                       "2025-05-01 Feed 500 ml | EC 1.80", "2025-04-01 Sown "}));
}

TEST_F(PlantPaneTest, TheChartsOfAPlantAreShown)
{
    Command({"feed", "Basil", "500ml", "--ec", "1.8", "--ph", "6.2"});
    Command({"health", "add", "Basil", "Aphids"});
    OpenWindow();
    Select("Basil");
    EXPECT_EQ(Window->findChildren<QWidget*>("chart").size(), 4);
    for (const QWidget* chart : Window->findChildren<QWidget*>("chart"))
    {
        EXPECT_FALSE(chart->accessibleDescription().isEmpty());
        EXPECT_EQ(chart->width(), 480);
        EXPECT_GT(chart->height(), 50) << chart->accessibleDescription().toStdString();
    }
    Select("Chili");
    EXPECT_EQ(Window->findChildren<QWidget*>("chart").size(), 0);
}

TEST_F(PlantPaneTest, PhotosAreShownAsThumbnails)
{
    QImage picture(4000, 3000, QImage::Format_RGB32);
    picture.fill(Qt::green);
    ASSERT_TRUE(picture.save(Directory + "basil.jpg"));
    Command({"photo", "add", "Basil", Directory + "basil.jpg", "--caption", "Before the cut"});
    ASSERT_TRUE(QFile::copy(Directory + "basil.jpg", Directory + "lost.jpg"));
    Command({"photo", "add", "Basil", Directory + "lost.jpg"});
    ASSERT_TRUE(QFile::remove(Directory + "lost.jpg"));
    OpenWindow();
    Select("Basil");
    EXPECT_EQ(Child<QListWidget>("photos")->count(), 2);
    EXPECT_TRUE(Await([this] { return Thumbnails() == 1; }));
    EXPECT_TRUE(Child<QListWidget>("photos")->isVisible());
    Select("Chili");
    EXPECT_FALSE(Child<QListWidget>("photos")->isVisible());
}

TEST_F(PlantPaneTest, AWrongValueShowsItsReasonNextToTheField)
{
    OpenWindow();
    Type("Feed", "PH", "15");
    EXPECT_EQ(TextOf("Feed", "PHWords"), "the pH must be from 0 to 14");
    EXPECT_FALSE(CanStore("Feed"));
    Type("Feed", "PH", "sour");
    EXPECT_EQ(TextOf("Feed", "PHWords"), "the text is not a number");
    EXPECT_FALSE(CanStore("Feed"));
    Type("Feed", "PH", "6.2");
    EXPECT_EQ(TextOf("Feed", "PHWords"), "");
    EXPECT_TRUE(CanStore("Feed"));
    EXPECT_EQ(Command({"care", "list", "Chili", "--json"}).count("CareDate"), 0);
}

TEST_F(PlantPaneTest, AnUnlikelyValueIsANoticeThatCanBeStored)
{
    OpenWindow();
    Select("Basil");
    Type("Water", "AmountMl", "500");
    Type("Water", "CareDate", "2025-03-01");
    EXPECT_EQ(TextOf("Water", "CareDateWords"), "Notice: the date is before the plant was sown (2025-04-01)");
    Store("Water");
    EXPECT_EQ(TextOf("Water", "CareDate").toStdString(), PlantEventCurrentDate());
}

TEST_F(PlantPaneTest, AnEmptyFormCannotBeStored)
{
    OpenWindow();
    for (const char* form : {"Feed", "Water", "Note", "Observe", "Harvest"})
        EXPECT_FALSE(CanStore(form)) << form;
    Type("Observe", "Notes", "Without an issue");
    EXPECT_FALSE(CanStore("Observe"));
    EXPECT_FALSE(TextOf("Observe", "IssueWords").isEmpty());
}

TEST_F(PlantPaneTest, ClearEmptiesTheFormForTheSelectedPlant)
{
    OpenWindow();
    EXPECT_EQ(ShownName(), "Chili");
    Type("Harvest", "WetWeightG", "540");
    Select("Basil");
    EXPECT_EQ(TextOf("Harvest", "store"), "Store for Chili");
    EXPECT_EQ(TextOf("Harvest", "WetWeightG"), "540");
    QTest::mouseClick(Form("Harvest")->findChild<QWidget*>("clear"), Qt::LeftButton);
    EXPECT_EQ(TextOf("Harvest", "store"), "Store for Basil");
    EXPECT_EQ(TextOf("Harvest", "WetWeightG"), "");
}

TEST_F(PlantPaneTest, ANoteOfSeveralLinesIsStoredWhole)
{
    OpenWindow();
    auto* note = Form("Note")->findChild<QPlainTextEdit*>("Details");
    QTest::keyClicks(note, "One");
    QTest::keyClick(note, Qt::Key_Return);
    QTest::keyClicks(note, "Two");
    Store("Note");
    EXPECT_TRUE(Await([this] { return Timeline().filter("One Two").size() == 1; }));
    EXPECT_TRUE(Command({"timeline", "Chili", "--json"}).contains("One\\nTwo"));
}

} // namespace

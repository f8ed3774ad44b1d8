// Changes by the command, seen in the window without a key.

#include "window_test.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTest>

#include <algorithm>

using namespace support;

namespace
{

class ChangeTest : public WindowTest
{
  protected:
    ChangeTest()
    {
        Command({"plant", "add", "Basil"});
        Command({"plant", "add", "Chili"});
    }

    bool AwaitRow(const QString& text) const
    {
        return Await([&] { return Timeline().filter(text).size() == 1; });
    }
};

TEST_F(ChangeTest, AChangeByTheCommandShowsWithinASecond)
{
    OpenWindow();
    std::vector<qint64> times;
    for (int change = 0; change < 5; ++change)
    {
        const QString text = QString("Change %1").arg(change);
        Command({"note", "Basil", text});
        QElapsedTimer time;
        time.start();
        EXPECT_TRUE(AwaitRow(text));
        times.push_back(time.elapsed());
    }
    // A busy machine may delay one of them.
    std::sort(times.begin(), times.end());
    EXPECT_LT(times[2], 1000);
}

TEST_F(ChangeTest, EachKindOfChangeShows)
{
    OpenWindow();
    Command({"feed", "Basil", "500ml"});
    EXPECT_TRUE(AwaitRow("500 ml"));
    Command({"care", "edit", "Basil", "1", "--amount-ml", "600"});
    EXPECT_TRUE(AwaitRow("600 ml"));
    Command({"care", "delete", "Basil", "1", "--yes"});
    EXPECT_TRUE(Await([this] { return Timeline().filter(" ml").isEmpty(); }));
    Command({"plant", "add", "Aloe"});
    EXPECT_TRUE(Await([this] { return Plants() == QStringList{"Aloe", "Basil", "Chili"}; }));
    EXPECT_EQ(ShownName(), "Basil"); // stays selected
    Command({"plant", "edit", "Basil", "--name", "Mint"});
    EXPECT_TRUE(Await([this] { return Plants() == QStringList{"Aloe", "Chili", "Mint"}; }));
    EXPECT_TRUE(Await([this] { return ShownName() == "Mint"; }));
    Command({"harvest", "add", "Mint", "--wet-weight-g", "310"});
    EXPECT_TRUE(AwaitRow("Wet 310"));
    Command({"undo", "--yes"});
    EXPECT_TRUE(Await([this] { return Timeline().filter("Wet 310").isEmpty(); }));
}

TEST_F(ChangeTest, ADeletedPlantLeavesTheWindow)
{
    OpenWindow();
    Type("Note", "Details", "Too late");
    Command({"plant", "delete", "Basil", "--yes"});
    EXPECT_TRUE(Await([this] { return ShownName() == "Chili"; }));
    EXPECT_EQ(TextOf("Note", "store"), "Store for Basil");
    PressStore("Note");
    EXPECT_EQ(StoreResultText(), "Not stored");
    EXPECT_FALSE(TextOf("Note", "reason").isEmpty());
    EXPECT_EQ(TextOf("Note", "Details"), "Too late");
    Command({"plant", "delete", "Chili", "--yes"});
    EXPECT_TRUE(Await([this] { return Plants().isEmpty() && ShownName().isEmpty(); }));
    EXPECT_TRUE(Timeline().isEmpty());
    EXPECT_FALSE(CanStore("Feed"));
}

TEST_F(ChangeTest, AChangeKeepsWhatTheUserIsTyping)
{
    OpenWindow();
    Type("Harvest", "WetWeightG", "310");
    Command({"plant", "edit", "Basil", "--name", "Mint"});
    EXPECT_TRUE(Await([this] { return ShownName() == "Mint"; }));
    EXPECT_EQ(TextOf("Harvest", "WetWeightG"), "310");
}

TEST_F(ChangeTest, TheFilterStaysAfterAChange)
{
    OpenWindow();
    QTest::keyClicks(Child<QLineEdit>("filter"), "CHI");
    EXPECT_EQ(Plants(), QStringList{"Chili"});
    Command({"plant", "add", "Mint"});
    Command({"plant", "add", "Chives"});
    EXPECT_TRUE(Await([this] { return Plants() == QStringList{"Chili", "Chives"}; }));
}

} // namespace

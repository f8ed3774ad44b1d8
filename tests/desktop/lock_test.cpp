// The window while another process holds a lock on the journal.

#include "window_test.h"

#include <QMessageBox>
#include <QTest>

#include <thread>

using namespace support;

namespace
{

class LockTest : public WindowTest
{
  protected:
    LockTest()
    {
        Command({"plant", "add", "Basil"});
        Command({"plant", "add", "Chili"});
        Command({"note", "Chili", "In the journal before"});
    }

    int StoredNotes(const QString& text) const { return static_cast<int>(Command({"timeline", "Basil"}).count(text)); }
};

TEST_F(LockTest, ALockOfTenSecondsNeverStopsTheWindow)
{
    OpenWindow();
    LockHolder lock(Journal);
    const LoopGap gap;
    Type("Note", "Details", "During the lock");
    PressStore("Note");
    bool keptAlways = true;
    QElapsedTimer held;
    for (held.start(); held.elapsed() < 10'000;)
    {
        Click(held.elapsed() / 1000 % 2 == 0 ? "Chili" : "Basil");
        keptAlways = keptAlways && TextOf("Note", "Details") == "During the lock";
        QTest::qWait(100);
    }
    EXPECT_TRUE(keptAlways);
    EXPECT_EQ(StoreResultText(), "Not stored");
    EXPECT_TRUE(TextOf("Note", "reason").contains("locked")) << TextOf("Note", "reason").toStdString();
    EXPECT_TRUE(Banner().contains("locked")) << Banner().toStdString();
    EXPECT_EQ(ShownName(), "Basil"); // Chili could not be read
    Click("Chili");
    lock.Release();
    EXPECT_TRUE(Await([this] { return ShownName() == "Chili" && Banner().isEmpty(); }));
    EXPECT_LT(gap.Longest(), 1000);

    EXPECT_EQ(TextOf("Note", "store"), "Store for Basil"); // the form keeps its plant, too
    Store("Note");
    EXPECT_EQ(TextOf("Note", "Details"), "");
    EXPECT_EQ(TextOf("Note", "reason"), "");
    EXPECT_EQ(StoredNotes("During the lock"), 1);
}

TEST_F(LockTest, ARefusedWriteKeepsItsFormFilledIn)
{
    OpenWindow();
    LockHolder lock(Journal, "BEGIN IMMEDIATE;"); // the window can read
    Type("Feed", "AmountMl", "500");
    Type("Feed", "EC", "1.8");
    Type("Feed", "CareDate", "2025-05-01");
    Type("Feed", "Product", "Bloom feed");
    PressStore("Feed");
    EXPECT_FALSE(CanStore("Feed")); // a second click stores nothing
    PressStore("Feed");
    EXPECT_EQ(StoreResultText(), "Not stored");
    EXPECT_EQ(TextOf("Feed", "AmountMl"), "500");
    EXPECT_EQ(TextOf("Feed", "EC"), "1.8");
    EXPECT_EQ(TextOf("Feed", "CareDate"), "2025-05-01");
    EXPECT_EQ(TextOf("Feed", "Product"), "Bloom feed");
    EXPECT_TRUE(TextOf("Feed", "reason").contains("locked")) << TextOf("Feed", "reason").toStdString();
    EXPECT_EQ(Banner(), "");
    lock.Release();
    EXPECT_EQ(Command({"care", "list", "Basil", "--json"}).count("AmountMl"), 0);
    Store("Feed");
    EXPECT_EQ(Command({"care", "list", "Basil", "--json"}).count("AmountMl"), 1);
}

TEST_F(LockTest, AWriteThatWaitsForAShortLockIsStored)
{
    OpenWindow();
    LockHolder lock(Journal);
    Type("Note", "Details", "After a second");
    PressStore("Note");
    QTest::qWait(1000);
    lock.Release();
    EXPECT_EQ(StoreResultText(), "Stored");
    EXPECT_EQ(StoredNotes("After a second"), 1);
}

TEST_F(LockTest, TheWindowClosesOnceTheWriteIsStored)
{
    OpenWindow();
    LockHolder lock(Journal);
    Type("Note", "Details", "The last one");
    PressStore("Note");
    Window->close();
    EXPECT_TRUE(Window->isVisible());
    QTest::qWait(300);
    lock.Release();
    EXPECT_TRUE(Await([this] { return !Window->isVisible(); }));
    EXPECT_EQ(StoredNotes("The last one"), 1);
}

TEST_F(LockTest, TheWindowStaysOpenIfTheLastWriteIsRefused)
{
    OpenWindow();
    LockHolder lock(Journal);
    Type("Note", "Details", "The last one");
    PressStore("Note");
    Window->close();
    EXPECT_EQ(StoreResultText(), "Not stored");
    EXPECT_TRUE(Window->isVisible());
    EXPECT_EQ(TextOf("Note", "Details"), "The last one");
    lock.Release();
    EXPECT_TRUE(Window->close()); // the user has read the reason
}

TEST_F(LockTest, AViewOfAnotherPlantThatArrivesLateIsDropped)
{
    OpenWindow();
    EXPECT_EQ(ShownName(), "Basil");
    Click("Chili");
    std::this_thread::sleep_for(std::chrono::seconds(1)); // the worker reads Chili, but its view waits
    LockHolder lock(Journal);
    Click("Basil");
    QTest::qWait(300);
    EXPECT_EQ(ShownName(), "Basil");
    EXPECT_EQ(TextOf("Note", "store"), "Store for Basil");
    Click("Chili");
    lock.Release();
    EXPECT_TRUE(Await([this] { return ShownName() == "Chili"; }));
}

TEST_F(LockTest, ALockedJournalOpensAfterTheLock)
{
    {
        LockHolder lock(Journal);
        const LoopGap gap;
        StartWindow();
        EXPECT_TRUE(Message()->text().contains("locked"));
        EXPECT_LT(gap.Longest(), 1000);
        Press(Message(), "OK");
        lock.Release();
    }
    Window->Open(Journal);
    EXPECT_TRUE(Await([this] { return ShownName() == "Basil"; }));
}

} // namespace

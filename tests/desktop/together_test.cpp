// Two other programs and the window write to one journal at the same time, at random. PLANTJOURNAL_SOAK=1 in the
// environment makes it a minute, and PLANTJOURNAL_SEED sets the seed.

#include "window_test.h"

#include <QRegularExpression>
#include <QTest>

#include <map>
#include <random>

using namespace support;

namespace
{

class TogetherTest : public WindowTest
{
  protected:
    TogetherTest()
    {
        for (const char* plant : {"Basil", "Chili", "Mint"})
            Command({"plant", "add", plant});
        for (int number = 0; number < 2; ++number)
            Writers[number].start(PLANTJOURNAL_RANDOM_WRITER,
                                  {Journal, QString::number(Milliseconds), QString::number(Seed + unsigned(number))});
    }

    bool OthersWrite()
    {
        return Writers[0].state() != QProcess::NotRunning || Writers[1].state() != QProcess::NotRunning;
    }

    // Stores a note, and tries again after each refusal, as a person does.
    void StoreNote()
    {
        const QString text = QString("window-%1.").arg(++Count);
        Type("Note", "Details", text);
        do
        {
            ASSERT_TRUE(CanStore("Note"));
            EXPECT_EQ(TextOf("Note", "Details"), text);
            PressStore("Note");
        } while (StoreResultText() != "Stored");
        Expected[text] = 1;
    }

    // What the writers report: how often the journal holds each text.
    void ReadReports()
    {
        for (QProcess& writer : Writers)
        {
            EXPECT_EQ(writer.exitStatus(), QProcess::NormalExit);
            EXPECT_EQ(writer.exitCode(), 0);
            for (const QByteArray& line : writer.readAllStandardOutput().split('\n'))
                if (const QStringList words = QString(line).split(' '); words.size() == 2)
                    Expected[words[1]] = words[0] == "stored" ? 1 : 0;
        }
        for (auto each = Expected.begin(); each != Expected.end();)
            each = each->second == 0 ? Expected.erase(each) : std::next(each);
    }

    std::map<QString, int> Found(const QString& text) const
    {
        static const QRegularExpression token(R"((w\d+|window)-\d+\.)");
        std::map<QString, int> found;
        for (auto match = token.globalMatch(text); match.hasNext();)
            ++found[match.next().captured()];
        return found;
    }

    bool ShowsAllOf(const QString& plant) const
    {
        return Found(Timeline().join('\n')) == Found(Command({"timeline", plant, "--json"}));
    }

    static unsigned long Number(const char* name, unsigned long otherwise)
    {
        return qEnvironmentVariableIsSet(name) ? qgetenv(name).toULong() : otherwise;
    }

    const bool IsLong = Number("PLANTJOURNAL_SOAK", 0) != 0;
    const unsigned long Seed = Number("PLANTJOURNAL_SEED", IsLong ? std::random_device()() % 1'000'000 : 1);
    const int Milliseconds = IsLong ? 60'000 : 5'000;
    QProcess Writers[2];
    std::map<QString, int> Expected;
    int Count = 0;
};

TEST_F(TogetherTest, NoChangeIsMissedAndNoneIsStoredTwice)
{
    std::mt19937 random(static_cast<std::mt19937::result_type>(Seed));
    const LoopGap gap;
    OpenWindow();
    while (OthersWrite())
    {
        Click(Plants().at(static_cast<qsizetype>(random() % 3)));
        if (random() % 2 == 0)
            StoreNote();
        QTest::qWait(static_cast<int>(random() % 100));
    }
    EXPECT_LT(gap.Longest(), 1000); // the test itself waits below
    ReadReports();
    EXPECT_GT(Count, 5);
    EXPECT_GT(Expected.size(), 50);

    // The selected plant is shown as it is without a key.
    EXPECT_TRUE(Await([this] { return ShowsAllOf(ShownName()); })) << "seed " << Seed;
    for (const char* plant : {"Basil", "Chili", "Mint"})
    {
        Select(plant);
        EXPECT_TRUE(Await([&] { return ShowsAllOf(plant); })) << plant << ", seed " << Seed;
    }
    std::map<QString, int> stored;
    for (const char* plant : {"Basil", "Chili", "Mint"})
        stored.merge(Found(Command({"timeline", plant, "--json"})));
    EXPECT_EQ(stored, Expected) << "seed " << Seed;
    EXPECT_EQ(Command({"check"}), "No problems found.\n");
}

} // namespace

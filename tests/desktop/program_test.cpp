// The program itself, and a picture of it.

#include "window_test.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTest>

using namespace support;

namespace
{

using ProgramTest = WindowTest;

TEST_F(ProgramTest, TheProgramOpensTheJournalOfItsCommandLine)
{
    ASSERT_TRUE(QFile(Journal).open(QIODevice::WriteOnly)); // an empty file, which opening makes a journal
    QProcess program;
    program.start(PLANTJOURNAL_DESKTOP, {Journal});
    EXPECT_TRUE(Await([this] { return QFileInfo(Journal).size() > 0; }));
    program.kill();
    EXPECT_TRUE(program.waitForFinished());
    Command({"plant", "add", "Basil"});
}

// PLANTJOURNAL_SCREENSHOT in the environment is a file that receives the picture.
TEST_F(ProgramTest, AScreenshotOfTheSeasonShowsTheWindow)
{
    ASSERT_EQ(QProcess::execute(PLANTJOURNAL_SEASON, {Journal}), 0);
    OpenWindow();
    QTest::qWait(100); // the layout of the charts
    const QImage picture = Window->grab().toImage().convertToFormat(QImage::Format_RGB888);
    ASSERT_EQ(picture.size(), QSize(1200, 760));
    int words = 0; // dark pixels
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            words += qGray(picture.pixel(x, y)) < 64 ? 1 : 0;
    EXPECT_GT(words, 5000);
    const QString file = qEnvironmentVariable("PLANTJOURNAL_SCREENSHOT", Directory + "window.png");
    EXPECT_TRUE(picture.save(file, nullptr, 0)); // as small as possible
    EXPECT_LT(QFileInfo(file).size(), 200'000);
}

} // namespace

// The program itself.

#include "window_test.h"

#include <QFileInfo>
#include <QImage>

using namespace support;

namespace
{

class ProgramTest : public WindowTest
{
  protected:
    // Returns the exit status.
    int Screenshot(const QString& file) const
    {
        QProcess program;
        program.start(PLANTJOURNAL_DESKTOP, {"--screenshot", file, Journal});
        EXPECT_TRUE(program.waitForFinished());
        return program.exitCode();
    }
};

TEST_F(ProgramTest, AScreenshotShowsTheWindow)
{
    Command({"plant", "add", "Basil"});
    const QString file = Directory + "window.png";
    EXPECT_EQ(Screenshot(file), 0);
    const QImage picture(file);
    ASSERT_EQ(picture.size(), QSize(1200, 760));
    int words = 0; // dark pixels
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            words += qGray(picture.pixel(x, y)) < 64 ? 1 : 0;
    EXPECT_GT(words, 500);
    EXPECT_LT(QFileInfo(file).size(), 150'000);
    EXPECT_EQ(Screenshot(Directory + "no/directory/window.png"), 1);
}

} // namespace

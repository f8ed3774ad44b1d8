// A window for a journal.
// usage: plantjournal_desktop [--screenshot FILE] [JOURNAL]

#include "main_window.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QTimer>

#include <iostream>

namespace
{

// Saves a picture of the window once it shows a plant, and ends the program.
void TakeScreenshot(MainWindow& window, const QString& file)
{
    const auto save = [&window, file]
    {
        const QImage picture = window.grab().toImage().convertToFormat(QImage::Format_RGB888);
        const bool saved = picture.save(file, nullptr, 0); // as small as possible
        if (!saved)
            std::cerr << "plantjournal_desktop: " << file.toStdString() << " could not be written\n";
        QCoreApplication::exit(saved ? 0 : 1);
    };
    // The photos are read after the plant.
    QObject::connect(&window, &MainWindow::PlantShown, &window,
                     [&window, save] { QTimer::singleShot(std::chrono::milliseconds(500), &window, save); });
}

} // namespace

int main(int count, char** arguments)
{
    QApplication::setStyle("Fusion"); // the same on every desktop
    const QApplication application(count, arguments);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({"screenshot", "Save a picture of the window to <file> and exit.", "file"});
    parser.addPositionalArgument("journal", "The journal to open.", "[journal]");
    parser.process(application);

    MainWindow window;
    window.show();
    if (const QStringList journals = parser.positionalArguments(); !journals.isEmpty())
        window.Open(journals.first());
    if (parser.isSet("screenshot"))
        TakeScreenshot(window, parser.value("screenshot"));
    return QApplication::exec();
}

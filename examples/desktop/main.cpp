// A window for a journal.
// usage: plantjournal_desktop [JOURNAL]

#include "main_window.h"

#include <QApplication>

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    MainWindow window;
    window.show();
    if (const QStringList words = QApplication::arguments(); words.size() > 1)
        window.Open(words[1]);
    return QApplication::exec();
}

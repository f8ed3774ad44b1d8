#pragma once

#include "main_window.h"
#include "testing/scratch_directory.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

#include <functional>
#include <memory>
#include <ostream>

#include <gtest/gtest.h>

class QMessageBox;

// For the messages of GoogleTest, which finds it next to QString.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace support
{

// Uses the window as a person does, with the keyboard and the mouse. The journal does not exist at first.
class WindowTest : public testing::Test
{
  protected:
    WindowTest();

    // Runs the command on the journal; it must succeed. Returns its output.
    QString Command(const QStringList& words) const;
    // Likewise, on any journal.
    QString CommandOn(const QString& journal, const QStringList& words) const;

    // Opens the window and waits until it shows a plant.
    void OpenWindow();
    // Opens the window without waiting for anything.
    void StartWindow();
    // Waits until a message is shown, and returns it.
    QMessageBox* Message() const;
    // Presses the button of the message that has this text.
    void Press(QMessageBox* message, const QString& button) const;

    // Clicks the plant and waits until it is shown.
    void Select(const QString& plant) const;
    void Click(const QString& plant) const;
    // Clicks the tab of the form.
    QWidget* Form(const QString& title) const;
    // Replaces the text of a field.
    void Type(const QString& form, const QString& field, const QString& text) const;
    // The text of a field, or of a label, for example "PHWords" or "reason".
    QString TextOf(const QString& form, const QString& name) const;
    bool CanStore(const QString& form) const;
    // Clicks the button.
    void PressStore(const QString& form) const;
    // Waits for the result of the write. Returns "Stored" or "Not stored".
    QString StoreResultText() const;
    // Presses the button, and waits until the record was stored.
    void Store(const QString& form) const;

    // The rows of the timeline, its cells joined by a space.
    QStringList Timeline() const;
    // The plants that the list shows.
    QStringList Plants() const;
    QString ShownName() const;
    QString Banner() const;

    // Waits, with the window alive, until the condition holds.
    static bool Await(const std::function<bool()>& condition,
                      std::chrono::milliseconds time = std::chrono::seconds(20));

    template <typename Type> Type* Child(const QString& name) const
    {
        Type* child = Window->findChild<Type*>(name);
        EXPECT_NE(child, nullptr) << name.toStdString();
        return child;
    }

    ScratchDirectory Scratch;
    QString Directory = QString::fromStdString(Scratch.File(""));
    QString Journal = QString::fromStdString(Scratch.File("journal.db"));
    std::unique_ptr<MainWindow> Window;
};

// Another process that holds a lock on a journal: it runs `begin`, and Release() commits.
class LockHolder
{
  public:
    LockHolder(const QString& journal, const char* begin = "BEGIN EXCLUSIVE;");
    void Release();

  private:
    QProcess Process;
};

// Measures how long the event loop was not reached.
class LoopGap
{
  public:
    LoopGap();
    qint64 Longest() const { return Most; } // milliseconds

  private:
    QTimer Timer;
    QElapsedTimer SinceLast;
    qint64 Most = 0;
};

} // namespace support

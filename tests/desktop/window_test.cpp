#include "window_test.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

#include <algorithm>

namespace support
{

WindowTest::WindowTest()
{
    qputenv("XDG_DATA_HOME", (Directory + "data").toUtf8()); // where the command keeps what `undo` needs
}

QString WindowTest::Command(const QStringList& words) const
{
    return CommandOn(Journal, words);
}

QString WindowTest::CommandOn(const QString& journal, const QStringList& words) const
{
    QProcess command;
    command.start(PLANTJOURNAL_COMMAND, QStringList{"--file", journal} + words);
    EXPECT_TRUE(command.waitForFinished()) << words.join(' ').toStdString();
    EXPECT_EQ(command.exitCode(), 0) << command.readAllStandardError().toStdString();
    return QString::fromUtf8(command.readAllStandardOutput());
}

void WindowTest::StartWindow()
{
    Window = std::make_unique<MainWindow>();
    Window->show();
    Window->Open(Journal);
}

void WindowTest::OpenWindow()
{
    StartWindow();
    EXPECT_TRUE(Await([this] { return !ShownName().isEmpty(); }));
}

QMessageBox* WindowTest::Message() const
{
    QMessageBox* message = nullptr;
    EXPECT_TRUE(Await(
        [&]
        {
            message = Window->findChild<QMessageBox*>();
            return message != nullptr && message->isVisible();
        }));
    return message;
}

void WindowTest::Press(QMessageBox* message, const QString& button) const
{
    const auto buttons = message->buttons();
    const auto wanted = std::find_if(buttons.begin(), buttons.end(),
                                     [&](const QAbstractButton* each) { return each->text().remove('&') == button; });
    ASSERT_NE(wanted, buttons.end()) << button.toStdString();
    QTest::mouseClick(*wanted, Qt::LeftButton);
    EXPECT_TRUE(Await([this] { return Window->findChild<QMessageBox*>() == nullptr; }));
}

void WindowTest::Click(const QString& plant) const
{
    const auto* list = Child<QListWidget>("plants");
    const auto items = list->findItems(plant + '\n', Qt::MatchStartsWith);
    ASSERT_EQ(items.size(), 1) << plant.toStdString();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(items.first()).center());
}

void WindowTest::Select(const QString& plant) const
{
    Click(plant);
    EXPECT_TRUE(Await([&] { return ShownName() == plant; })) << plant.toStdString();
}

QWidget* WindowTest::Form(const QString& title) const
{
    auto* tabs = Window->findChild<QTabWidget*>();
    auto* form = Child<QWidget>(title);
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(tabs->indexOf(form)).center());
    EXPECT_EQ(tabs->currentWidget(), form);
    return form;
}

void WindowTest::Type(const QString& form, const QString& field, const QString& text) const
{
    auto* editor = Form(form)->findChild<QWidget*>(field);
    ASSERT_NE(editor, nullptr) << field.toStdString();
    if (auto* choice = qobject_cast<QComboBox*>(editor))
        return choice->setCurrentText(text);
    QTest::mouseClick(editor, Qt::LeftButton);
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, text);
}

QString WindowTest::TextOf(const QString& form, const QString& name) const
{
    auto* widget = Child<QWidget>(form)->findChild<QWidget*>(name);
    if (const auto* label = qobject_cast<QLabel*>(widget))
        return label->text();
    if (const auto* line = qobject_cast<QLineEdit*>(widget))
        return line->text();
    if (const auto* lines = qobject_cast<QPlainTextEdit*>(widget))
        return lines->toPlainText();
    if (const auto* choice = qobject_cast<QComboBox*>(widget))
        return choice->currentText();
    return qobject_cast<QPushButton*>(widget)->text();
}

bool WindowTest::CanStore(const QString& form) const
{
    return Child<QWidget>(form)->findChild<QPushButton*>("store")->isEnabled();
}

void WindowTest::PressStore(const QString& form) const
{
    QTest::mouseClick(Form(form)->findChild<QPushButton*>("store"), Qt::LeftButton);
}

QString WindowTest::StoreResultText() const
{
    EXPECT_TRUE(Await([this] { return Window->statusBar()->currentMessage().endsWith("tored"); }));
    return Window->statusBar()->currentMessage();
}

void WindowTest::Store(const QString& form) const
{
    EXPECT_TRUE(CanStore(form));
    PressStore(form);
    EXPECT_EQ(StoreResultText(), "Stored") << TextOf(form, "reason").toStdString();
}

QStringList WindowTest::Timeline() const
{
    const QAbstractItemModel* model = Window->findChild<QTreeWidget*>()->model();
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row)
    {
        QStringList cells;
        for (int column = 0; column < model->columnCount(); ++column)
            cells << model->index(row, column).data().toString();
        rows << cells.join(' ');
    }
    return rows;
}

QStringList WindowTest::Plants() const
{
    const auto* list = Child<QListWidget>("plants");
    QStringList names;
    for (int row = 0; row < list->count(); ++row)
        if (!list->item(row)->isHidden())
            names << list->item(row)->text().section('\n', 0, 0);
    return names;
}

QString WindowTest::ShownName() const
{
    return Child<QLabel>("name")->text();
}

QString WindowTest::Banner() const
{
    return Child<QLabel>("banner")->text();
}

bool WindowTest::Await(const std::function<bool()>& condition, std::chrono::milliseconds time)
{
    return QTest::qWaitFor(condition, static_cast<int>(time.count()));
}

LockHolder::LockHolder(const QString& journal, const char* begin)
{
    Process.start("sqlite3", {journal});
    Process.write(".timeout 10000\n");
    Process.write(begin);
    Process.write("\nSELECT 'begun';\n");
    while (Process.waitForReadyRead() && !Process.peek(1000).contains("begun"))
        ;
    EXPECT_EQ(Process.readAllStandardOutput().trimmed(), "begun") << Process.readAllStandardError().toStdString();
}

void LockHolder::Release()
{
    Process.write("COMMIT;\n.quit\n");
    EXPECT_TRUE(Process.waitForFinished());
    EXPECT_EQ(Process.readAllStandardError(), "");
}

LoopGap::LoopGap()
{
    QObject::connect(&Timer, &QTimer::timeout, &Timer, [this] { Most = std::max(Most, SinceLast.restart()); });
    SinceLast.start();
    Timer.start(10);
}

} // namespace support

int main(int count, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, arguments);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}

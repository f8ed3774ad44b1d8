#include "open_journal.h"

#include "message.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace
{

QString Translated(const char* text)
{
    return QCoreApplication::translate("OpenJournal", text);
}

// A name next to the journal that no file has.
QString BackupName(const QString& path)
{
    const QString name = path + ".before-update-" + QString::fromStdString(PlantEventCurrentDate());
    QString free = name;
    for (int number = 2; QFile::exists(free); ++number)
        free = name + '-' + QString::number(number);
    return free;
}

QString Lines(const std::vector<std::string>& texts)
{
    QString lines;
    for (const std::string& text : texts)
        lines += '\n' + QString::fromStdString(text);
    return lines;
}

// Why a file of this kind is not opened.
QString RefusalOf(const PlantFileInspection& inspection)
{
    switch (inspection.Kind)
    {
    case PlantFileKind::Foreign:
        return Translated("not a plantjournal file, or one of a newer version") + Lines(inspection.Reasons);
    case PlantFileKind::NotADatabase:
        return Translated("not a database");
    case PlantFileKind::Damaged:
        return Translated("damaged; restore a backup") + Lines(inspection.Reasons);
    case PlantFileKind::Locked:
        return Translated("another program has locked it; try again later");
    default:
        return {};
    }
}

class Opening
{
  public:
    Opening(QWidget* window, JournalAdapter& journal, QString path, std::function<void(const QString&)> then)
        : Window(window), Journal(journal), Path(std::move(path)), Then(std::move(then))
    {
    }

    void Continue(const PlantFileResult& result, const PlantFileInspection& inspection) const
    {
        if (!result)
            return ShowMessage(Window, QString::fromStdString(result.Error));
        if (const QString refusal = RefusalOf(inspection); !refusal.isEmpty())
            return ShowMessage(Window, Path + ": " + refusal);
        const QString backup = BackupName(Path);
        switch (inspection.Kind)
        {
        case PlantFileKind::Older:
            return Ask(Window,
                       Translated("%1 has an earlier schema. Opening migrates it:%2\n\nThe backup will be %3.")
                           .arg(Path, Lines(inspection.Steps), backup),
                       Translated("Back up and open"), [*this, backup] { Open(backup); });
        case PlantFileKind::Interrupted:
            return Ask(Window,
                       Translated("A write to %1 was interrupted. Opening rolls it back and may migrate the file.\n\n"
                                  "The backup will be %2.")
                           .arg(Path, backup),
                       Translated("Back up and open"), [*this, backup] { Open(backup); });
        case PlantFileKind::Missing:
            return Ask(Window, Translated("%1 does not exist.").arg(Path), Translated("Create it"),
                       [*this] { Open({}); });
        default:
            Open({});
        }
    }

  private:
    void Open(const QString& backup) const
    {
        const auto finish = [*this](const std::string& error)
        {
            if (error.empty())
                Then(Path);
            else
                ShowMessage(Window, Translated("%1 was not opened: %2").arg(Path, QString::fromStdString(error)));
        };
        Journal.Worker().Open(Path.toStdString(), backup.toStdString(), Journal.OnWindowThread(finish));
    }

    QWidget* Window;
    JournalAdapter& Journal;
    QString Path;
    std::function<void(const QString&)> Then;
};

} // namespace

void OpenJournal(QWidget* window, JournalAdapter& journal, const QString& path,
                 const std::function<void(const QString&)>& then)
{
    // An absolute path is never a URI.
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const Opening opening(window, journal, absolute, then);
    const auto inspected = [opening](const PlantFileResult& result, const PlantFileInspection& inspection)
    { opening.Continue(result, inspection); };
    journal.Worker().Inspect(absolute.toStdString(), journal.OnWindowThread(inspected));
}

// Delivers what the worker reports to the thread of the window.
#pragma once

#include "journal_worker.h"

#include <QObject>

class JournalAdapter : public QObject
{
    Q_OBJECT

  public:
    JournalAdapter();

    // Returns a function for any thread that calls `function` with the same arguments on the window's thread, unless
    // the adapter was destroyed before.
    template <typename Function> auto OnWindowThread(Function function)
    {
        return [this, function](const auto&... results)
        {
            QMetaObject::invokeMethod(
                this, [=] { function(results...); }, Qt::QueuedConnection);
        };
    }

    JournalWorker& Worker() { return TheWorker; }

  signals:
    void PlantsRead(const std::vector<PlantStatus>& plants);
    void PlantRead(const PlantView& plant);
    void ReadFailed(const std::string& reason);

  private:
    JournalWorker TheWorker;
};

// Opens a journal safely: inspects the file, asks where opening would change it, and stores a backup before.
#pragma once

#include "journal_adapter.h"

#include <functional>

class QWidget;

// Calls `then` once the journal is open, with its path. Shows an error or a question in `window`; where the file is not
// opened, `then` is not called.
void OpenJournal(QWidget* window, JournalAdapter& journal, const QString& path,
                 const std::function<void(const QString& path)>& then);

// Messages that do not stop the window.
#pragma once

#include <QString>

#include <functional>

class QWidget;

// Shows a message. `details` may be empty.
void ShowMessage(QWidget* window, const QString& text, const QString& details = {});

// Asks a question. Calls `then` if the user presses the button `yes`.
void Ask(QWidget* window, const QString& question, const QString& yes, const std::function<void()>& then);

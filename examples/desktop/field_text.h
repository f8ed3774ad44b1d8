// The values of a record as the texts of a form.
#pragma once

#include "plant.h"

#include <QString>

// 0 stands for a missing number, so its text is empty.
QString FieldText(const std::string& value);
QString FieldText(double value);
QString FieldText(int value);
QString FieldText(PlantJournalType value);

// Reads a text into `value`. After `false`, the text is not a value. A decimal comma is read, too.
bool ReadFieldText(const QString& text, std::string& value);
bool ReadFieldText(const QString& text, double& value);
bool ReadFieldText(const QString& text, int& value);
bool ReadFieldText(const QString& text, PlantJournalType& value);

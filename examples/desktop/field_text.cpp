#include "field_text.h"

#include <QLocale>

QString FieldText(const std::string& value)
{
    return QString::fromStdString(value);
}

QString FieldText(double value)
{
    return value == 0 ? QString() : QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString FieldText(int value)
{
    return value == 0 ? QString() : QString::number(value);
}

QString FieldText(PlantJournalType value)
{
    return QString::fromLatin1(PlantJournalTypeName(value));
}

bool ReadFieldText(const QString& text, std::string& value)
{
    value = text.toStdString();
    return true;
}

bool ReadFieldText(const QString& text, double& value)
{
    bool isNumber = true;
    QString number = text.trimmed();
    value = number.isEmpty() ? 0 : number.replace(',', '.').toDouble(&isNumber);
    return isNumber;
}

bool ReadFieldText(const QString& text, int& value)
{
    bool isNumber = true;
    const QString number = text.trimmed();
    value = number.isEmpty() ? 0 : number.toInt(&isNumber);
    return isNumber;
}

bool ReadFieldText(const QString& text, PlantJournalType& value)
{
    value = PlantJournalTypeFromName(text.toStdString());
    return true;
}

#include "textformat.h"

QString formatSigned(qint64 number)
{
    return number < 0 ? QString::number(number) : QLatin1Char(' ') + QString::number(number);
}

QString formatDate(const QDate &date)
{
    return date.toString(QStringLiteral("MM-dd-yyyy"));
}

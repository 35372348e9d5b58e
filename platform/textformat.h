#pragma once

#include <QDate>
#include <QString>

// A number as labels and messages show it: a sign position first, so a blank before a positive
// number or zero (" 5", " 0") and a minus before a negative one ("-5").
QString formatSigned(qint64 number);

// A date as the printouts show it: month, day and year joined by hyphens ("03-21-2001").
QString formatDate(const QDate &date);

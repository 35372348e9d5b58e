#include "extensionentry.h"

namespace ExtensionEntry {

QString extension(const QString &entry)
{
    return entry.left(3);
}

int classCode(const QString &entry)
{
    const QStringView rest = QStringView(entry).mid(13);
    qsizetype i = 0;
    while (i < rest.size() && (rest[i] == QLatin1Char(' ') || rest[i] == QLatin1Char('\t')))
        ++i;
    int code = 0;
    for (; i < rest.size() && rest[i] >= QLatin1Char('0') && rest[i] <= QLatin1Char('9'); ++i) {
        if (code > 100000)
            break; // far beyond any class; the exact value no longer matters
        code = code * 10 + (rest[i].unicode() - '0');
    }
    return code;
}

QString program(const QString &entry)
{
    return entry.size() >= 14 ? entry.mid(14) : QString();
}

QStringList ofClass(const QStringList &entries, int code)
{
    QStringList kept;
    for (const QString &entry : entries) {
        if (classCode(entry) == code)
            kept.append(entry);
    }
    return kept;
}

} // namespace ExtensionEntry

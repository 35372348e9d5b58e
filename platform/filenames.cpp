#include "filenames.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

QString resolveInDirectory(const QString &directory, const QString &bareName)
{
    const QDir dir(directory);
    const QString exact = dir.filePath(bareName);
    if (QFileInfo::exists(exact))
        return exact;
    QString match;
    const QStringList names = dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (name.compare(bareName, Qt::CaseInsensitive) == 0) {
            if (!match.isEmpty())
                return exact; // two candidates: no single answer
            match = name;
        }
    }
    return match.isEmpty() ? exact : dir.filePath(match);
}

void sortAsListed(QStringList &names)
{
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) {
        const int byCase = a.compare(b, Qt::CaseInsensitive);
        return byCase != 0 ? byCase < 0 : a < b;
    });
}

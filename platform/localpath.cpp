#include "localpath.h"

#include "drives.h"

#include <QDir>

#include <algorithm>

QString localPathOf(const QString &storedPath, Drives &drives)
{
    const qsizetype colon = storedPath.indexOf(u':');
    if (colon != 1)
        return {};
    const std::optional<Drive> drive = drives.find(storedPath.left(2));
    return drive ? localPathOn(drive->mountPoint, storedPath) : QString();
}

QString localPathOn(const QString &mountPoint, const QString &storedPath)
{
    if (mountPoint.isEmpty() || storedPath.indexOf(u':') != 1)
        return {};
    QString path = mountPoint;
    const QStringList components = storedPath.mid(2).split(u'\\', Qt::SkipEmptyParts);
    for (const QString &component : components) {
        if (component == u"." || component == u"..")
            return {};
        const QStringList entries = QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                                         | QDir::NoDotAndDotDot);
        const auto match = std::find_if(entries.cbegin(), entries.cend(), [&](const QString &entry) {
            return entry.compare(component, Qt::CaseInsensitive) == 0;
        });
        if (match == entries.cend())
            return {};
        path = QDir(path).filePath(*match);
    }
    return components.isEmpty() ? QString() : path;
}

#include "themesearch.h"

namespace ThemeSearch {

QList<ArchiveToScan> archivesToScan(const QString &folderPath, const QStringList &fileNames, const QList<bool> &selected)
{
    QList<ArchiveToScan> archives;
    for (qsizetype i = 0; i < fileNames.size(); ++i) {
        if (!selected.isEmpty() && !selected.value(i))
            continue;
        archives.append({folderPath + QLatin1Char('/') + fileNames[i], fileNames[i]});
    }
    return archives;
}

} // namespace ThemeSearch

#include "archivefolders.h"

#include "archivefile.h"

#include "datadirectory.h"
#include "textformat.h"

#include <QDir>

namespace ArchiveFolders {

QString countLabel(qsizetype count, const QString &text)
{
    return formatSigned(count) + text;
}

QString removalQuestion(const QString &folder)
{
    return QStringLiteral("Souhaitez-vous SUPPRIMER le dossier ") + folder + QString(45, QLatin1Char(' '))
        + QStringLiteral("(Attention! Vous ne pourrez supprimer un dossier contenant des fichiers.)");
}

bool add(const DataDirectory &data, const QString &name)
{
    if (name.isEmpty() || !ArchiveFile::isPlainName(name))
        return false;
    const QDir dir(data.path());
    const QStringList entries = dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    for (const QString &entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return false;
    }
    return dir.mkdir(name);
}

bool remove(const DataDirectory &data, const QString &name)
{
    if (name.isEmpty() || name == QLatin1String(".") || !ArchiveFile::isPlainName(name))
        return false;
    // rmdir removes only an empty directory: a folder holding archives stays as it is.
    return QDir(data.path()).rmdir(name);
}

} // namespace ArchiveFolders

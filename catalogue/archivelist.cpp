#include "archivelist.h"

#include "archivefile.h"

#include "textformat.h"
#include "windows1252.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ArchiveList {

QString countLabel(const QString &text, qsizetype count)
{
    return text + formatSigned(count);
}

QString deleteQuestion(const QString &selectedFile)
{
    return QStringLiteral("Souhaitez-vous SUPPRIMER LE FICHIER ") + selectedFile;
}

QString renameQuestion(const QString &selectedFile)
{
    return QStringLiteral("Souhaitez-vous RENOMMER  LE FICHIER ") + selectedFile;
}

QString renamedPath(const QString &currentFolder, const QString &answer)
{
    return currentFolder + QLatin1Char('/') + Windows1252::toUpper(answer) + QStringLiteral(".lst");
}

bool rename(const QString &selectedFile, const QString &currentFolder, const QString &answer)
{
    const QFileInfo source(selectedFile);
    if (selectedFile.isEmpty() || !source.isFile() || !ArchiveFile::isPlainName(answer))
        return false;
    const QFileInfo target(renamedPath(currentFolder, answer));
    const QDir targetDir = target.absoluteDir();
    const bool sameFolder = targetDir == source.absoluteDir();
    const QStringList entries =
        targetDir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        if (entry.compare(target.fileName(), Qt::CaseInsensitive) == 0
            && !(sameFolder && entry == source.fileName()))
            return false;
    }
    return QFile::rename(source.filePath(), target.filePath());
}

bool remove(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo file(path);
    if (!file.isFile() && !file.isSymLink())
        return false;
    return QFile::remove(path);
}

} // namespace ArchiveList

#include "extensiontable.h"

#include "datadirectory.h"
#include "windows1252.h"

#include <QDir>
#include <QFileInfo>

namespace ExtensionTable {

QStringList classNames()
{
    return {
        QStringLiteral("Images"),
        QStringLiteral("Icônes"),
        QStringLiteral("Sons et Musiques"),
        QStringLiteral("Textes"),
        QStringLiteral("Vidéos"),
        QStringLiteral("Fichiers DIZ"),
        QStringLiteral("Fichiers exécutables (BAT,COM,EXE)"),
        QStringLiteral("Fichiers compressés (ZIP,LHZ,ARC,...)"),
        QStringLiteral("Divers"),
    };
}

QString entryLine(const QString &extension, int classCode, const QString &program)
{
    return Windows1252::toUpper(extension) + QString(9, QLatin1Char(' ')) + QLatin1Char('&') + QString::number(classCode) + program;
}

QString refusal(const QString &extension, int classCode, const QString &program)
{
    if (program.isEmpty())
        return QStringLiteral("Vous devez associer un logiciel à chaque nouvelle extension !");
    if (classCode == 0)
        return QStringLiteral("Vous devez choisir une classification du fichier !");
    if (extension.isEmpty())
        return QStringLiteral("Vous n'avez pas donné de nom à l'extension !");
    if (extension.size() > 3)
        return QStringLiteral("Nom trop long (3 caractères maxi)");
    return {};
}

QString programPath(const QString &directory, const QString &fileName)
{
    const bool windowsStyle = directory.size() >= 2 && directory[1] == QLatin1Char(':');
    const QChar separator = windowsStyle ? QLatin1Char('\\') : QLatin1Char('/');
    QString path = directory;
    if (!path.endsWith(QLatin1Char('/')) && !path.endsWith(QLatin1Char('\\')))
        path += separator;
    path += fileName;
    static const QStringList programExtensions = {QStringLiteral(".exe"), QStringLiteral(".bat"),
                                                  QStringLiteral(".com")};
    for (const QString &extension : programExtensions) {
        if (fileName.endsWith(extension, Qt::CaseInsensitive))
            return path.chopped(4);
    }
    return path;
}

bool isProgramFile(const QString &fileName, bool executable)
{
    if (executable)
        return true;
    return QDir::match(programPattern(), fileName); // patterns split at ";" and blanks, case ignored
}

QStringList programFiles(const QString &directory)
{
    QStringList names;
    const QFileInfoList entries = QDir(directory).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo &entry : entries) {
        if (isProgramFile(entry.fileName(), entry.isExecutable()))
            names.append(entry.fileName());
    }
    sortAsListed(names);
    return names;
}

} // namespace ExtensionTable

#include "datadirectory.h"

#include "filenames.h"

#include <QDir>
#include <algorithm>

DataDirectory::DataDirectory(QString path)
    : m_path(QDir::cleanPath(std::move(path)))
{
}

void DataDirectory::makeCurrent() const
{
    QDir::setCurrent(m_path);
}

QString DataDirectory::file(const QString &bareName) const
{
    return resolveInDirectory(m_path, bareName);
}

QStringList DataDirectory::archiveFolders() const
{
    QStringList names = QDir(m_path).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    sortAsListed(names);
    return names;
}

QStringList DataDirectory::defaultFolders()
{
    return {QStringLiteral("Divers"), QStringLiteral("Images"), QStringLiteral("Musique"),
            QStringLiteral("Internet"), QStringLiteral("Photos")};
}

void DataDirectory::startUp() const
{
    makeCurrent();
    QDir dir(m_path);
    for (const QString &folder : defaultFolders())
        dir.mkdir(folder); // an existing folder, or a read-only directory, is left as it is
}

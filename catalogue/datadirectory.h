#pragma once

#include "filenames.h" // sortAsListed, which the users of the data directory's lists share

#include <QString>
#include <QStringList>

// The program's own directory, which holds all of its data: the archive folders (its
// sub-directories), extens.txt, themes.txt, the pictures and the help pages.
class DataDirectory
{
public:
    explicit DataDirectory(QString path);

    // The directory without a trailing separator.
    QString path() const { return m_path; }
    // The stored data directory path: the directory followed by "/". Windows cut it off the
    // paths of sub-directories to name archive folders, and join it to a folder's name.
    QString storedPath() const { return m_path + QLatin1Char('/'); }

    // Makes the directory the current one; a failure is ignored.
    void makeCurrent() const;

    // A file named without a directory, resolved here ignoring case ("THEMES.txt" reaches
    // themes.txt); a file that does not exist yet keeps the name given.
    QString file(const QString &bareName) const;

    // The archive folders by bare name, in listing order (names compared ignoring case).
    QStringList archiveFolders() const;
    // The full path of an archive folder: the stored path and the bare name.
    QString folderPath(const QString &bareName) const { return storedPath() + bareName; }

    // The folders created at every start when missing, in their order of creation.
    static QStringList defaultFolders();

    // Start-up: make the directory current, then create each default folder that is missing.
    // Nothing is created recursively, nothing is deleted, and every failure is skipped silently.
    void startUp() const;

private:
    QString m_path;
};


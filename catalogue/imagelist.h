#pragma once

#include <QList>
#include <QString>

#include <utility>

class DataDirectory;

// Which archive was made from which disc image: "images.txt" in the data directory, one line per
// archive (its path relative to the data directory, a TAB, the image's absolute path), UTF-8 with
// LF, as it is the program's own file. An archive remembers nothing of its image, so this list is
// what lets the files of an image be read without its disc; losing it loses only that. The file
// is read at each question (it is small, and several windows change it) and written whole.
class ImageList
{
public:
    explicit ImageList(const DataDirectory &data);

    // The image `archiveFile` (a full path) was made from; empty when none is known.
    QString imageOf(const QString &archiveFile) const;
    // `archiveFile` was just made from `imagePath`; a path holding a TAB or a line end is not kept.
    bool record(const QString &archiveFile, const QString &imagePath);
    // `archiveFile` was made again from a drive, or deleted.
    bool forget(const QString &archiveFile);
    // `from` was renamed or moved to `to`.
    bool rename(const QString &from, const QString &to);

    static QString fileName() { return QStringLiteral("images.txt"); }

private:
    using Entries = QList<std::pair<QString, QString>>; // archive (relative), image
    QString keyOf(const QString &archiveFile) const;
    Entries read() const;
    bool write(const Entries &entries) const;

    QString m_directory; // the data directory, ending with "/"
    QString m_file;
};

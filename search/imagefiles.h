#pragma once

#include "imagelist.h"

#include <QHash>
#include <QMutex>
#include <QString>

#include <memory>

class QTemporaryDir;

// Found files of archives made from disc images, for when no mounted medium holds the archive:
// while the image is still a regular file at the path it was catalogued from, the file is read
// straight out of it into a private temporary folder of the run, and actions open that copy. The
// folder goes when this service does, at the end of the program. A file is taken out once per
// image state (size and time), so a slide show going back and forth reads it once.
class ImageFiles
{
public:
    explicit ImageFiles(const DataDirectory &data);
    ~ImageFiles();
    ImageFiles(const ImageFiles &) = delete;
    ImageFiles &operator=(const ImageFiles &) = delete;

    // The local copy of `storedPath`, a row of the archive file `archiveFile`, out of the archive's
    // image; empty when no image is known for it, the image is gone or is no regular file, or the
    // file is not in it.
    QString copyOf(const QString &storedPath, const QString &archiveFile);
    // Whether `localPath` is one of the copies (programs are not run from an image).
    bool isCopy(const QString &localPath) const;

private:
    ImageList m_list;
    mutable QMutex m_mutex; // viewers ask from a worker
    std::unique_ptr<QTemporaryDir> m_folder; // made at the first copy
    QHash<QString, QString> m_copies;        // by image, its size and time, and stored path
    int m_made = 0;
};

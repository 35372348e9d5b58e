#include "imagefiles.h"

#include "filecopy.h"
#include "imagedirectorylister.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

ImageFiles::ImageFiles(const DataDirectory &data)
    : m_list(data)
{
}

ImageFiles::~ImageFiles() = default;

QString ImageFiles::copyOf(const QString &storedPath, const QString &archiveFile)
{
    const QString image = m_list.imageOf(archiveFile);
    const QString name = copiedFileName(storedPath);
    if (image.isEmpty() || name.isEmpty())
        return {};
    const QFileInfo info(image);
    if (!info.isFile()) // a FIFO or a device at the image's place is never read
        return {};
    const QString key = image + u'\n' + QString::number(info.size()) + u'\n'
                        + QString::number(info.lastModified().toMSecsSinceEpoch()) + u'\n' + storedPath;
    const QMutexLocker lock(&m_mutex);
    if (const auto known = m_copies.constFind(key); known != m_copies.cend() && QFileInfo(*known).isFile())
        return *known;
    if (!m_folder) {
        m_folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/kalvex2-images-XXXXXX"_qs);
        if (!m_folder->isValid()) {
            m_folder.reset();
            return {};
        }
    }
    // A folder per copy: two files of one name from two directories or images stay apart, and the
    // copy keeps its own name (and extension) for the program that opens it.
    const QString folder = m_folder->filePath(QString::number(++m_made));
    if (!QDir().mkdir(folder))
        return {};
    const QString path = folder + u'/' + name;
    QFile file(path);
    bool copied = file.open(QIODevice::WriteOnly | QIODevice::NewOnly)
                  && DiscImage::copyFile(image, storedPath, file);
    copied = file.flush() && copied;
    file.close();
    if (!copied) {
        QDir(folder).removeRecursively();
        return {};
    }
    m_copies.insert(key, path);
    return path;
}

bool ImageFiles::isCopy(const QString &localPath) const
{
    const QMutexLocker lock(&m_mutex);
    return m_folder && localPath.startsWith(m_folder->path() + u'/');
}

#include "imagelist.h"

#include "datadirectory.h"
#include "regularfile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

constexpr qint64 kLargestList = qint64(4) << 20;

bool isKeepable(const QString &text)
{
    return !text.isEmpty() && !text.contains(u'\t') && !text.contains(u'\n') && !text.contains(u'\r');
}

} // namespace

ImageList::ImageList(const DataDirectory &data)
    : m_directory(data.storedPath())
    , m_file(data.file(fileName()))
{
}

QString ImageList::keyOf(const QString &archiveFile) const
{
    const QString clean = QDir::cleanPath(archiveFile);
    return clean.startsWith(m_directory) ? clean.mid(m_directory.size()) : clean;
}

ImageList::Entries ImageList::read() const
{
    bool whole = false;
    const QByteArray bytes = readRegularFile(m_file, kLargestList, &whole);
    Entries entries;
    if (!whole)
        return entries; // a list past any real size is no list of ours
    for (const QByteArray &line : bytes.split('\n')) {
        const qsizetype tab = line.indexOf('\t');
        if (tab <= 0)
            continue;
        const QString image = QString::fromUtf8(line.sliced(tab + 1));
        if (QDir::isAbsolutePath(image) && isKeepable(image))
            entries.append({QString::fromUtf8(line.first(tab)), image});
    }
    return entries;
}

bool ImageList::write(const Entries &entries) const
{
    QByteArray bytes;
    for (const auto &[archive, image] : entries)
        bytes += archive.toUtf8() + '\t' + image.toUtf8() + '\n';
    QSaveFile file(m_file);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

QString ImageList::imageOf(const QString &archiveFile) const
{
    const QString key = keyOf(archiveFile);
    for (const auto &[archive, image] : read()) {
        if (archive == key)
            return image;
    }
    return {};
}

bool ImageList::record(const QString &archiveFile, const QString &imagePath)
{
    const QString key = keyOf(archiveFile);
    const QString image = QDir::cleanPath(QFileInfo(imagePath).absoluteFilePath());
    if (!isKeepable(key) || !isKeepable(image))
        return false;
    Entries entries = read();
    entries.removeIf([&](const auto &entry) { return entry.first == key; });
    entries.append({key, image});
    return write(entries);
}

bool ImageList::forget(const QString &archiveFile)
{
    const QString key = keyOf(archiveFile);
    Entries entries = read();
    if (entries.removeIf([&](const auto &entry) { return entry.first == key; }) == 0)
        return true; // nothing to write: a drive's archive costs no write
    return write(entries);
}

bool ImageList::rename(const QString &from, const QString &to)
{
    const QString image = imageOf(from);
    if (image.isEmpty())
        return true;
    forget(from);
    return record(to, image);
}

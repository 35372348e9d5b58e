#include "archivefile.h"

#include "datadirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cstdio>

#include <cstring>

namespace ArchiveFile {

QByteArray encode(const QList<QByteArray> &entries)
{
    qsizetype size = 0;
    for (const QByteArray &entry : entries)
        size += entry.size() + 4;
    QByteArray out(size, Qt::Uninitialized);
    char *next = out.data();
    for (const QByteArray &entry : entries) {
        *next++ = '"';
        std::memcpy(next, entry.constData(), size_t(entry.size()));
        next += entry.size();
        std::memcpy(next, "\"\r\n", 3);
        next += 3;
    }
    return out;
}

QString fileName(const QString &archiveName)
{
    return archiveName + QStringLiteral(".lst");
}

bool write(const QString &folderPath, const QString &archiveName, const QList<QByteArray> &entries)
{
    if (entries.isEmpty())
        return false;
    const QString target = QDir(folderPath).filePath(fileName(archiveName));
    // Written beside the target under a name that is no archive, then renamed over it: readers
    // see the old catalogue or the whole new one, never a part. Unlike QSaveFile this does not
    // wait for the disk (fsync): a catalogue lost to a power cut is made again from its disc.
    QTemporaryFile temporary(target + QStringLiteral(".XXXXXX"));
    if (!temporary.open())
        return false;
    const QByteArray bytes = encode(entries);
    if (temporary.write(bytes) != bytes.size() || !temporary.flush())
        return false;
    const QFileInfo existing(target);
    temporary.setPermissions(existing.exists() ? existing.permissions()
                                               : QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                     | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    if (::rename(QFile::encodeName(temporary.fileName()).constData(), QFile::encodeName(target).constData()) != 0)
        return false;
    temporary.setAutoRemove(false); // it is the archive now
    return true;
}

QStringList list(const QString &folderPath)
{
    QStringList names;
    const QStringList files = QDir(folderPath).entryList(QDir::Files | QDir::Hidden);
    for (const QString &name : files) {
        if (name.endsWith(QLatin1String(".lst"), Qt::CaseInsensitive))
            names.append(name);
    }
    sortAsListed(names);
    return names;
}

} // namespace ArchiveFile

bool ArchiveReader::next(QByteArrayView &line)
{
    if (m_pos >= m_data.size())
        return false;
    const QByteArrayView rest = m_data.sliced(m_pos);
    qsizetype end = rest.indexOf('\n');
    if (end < 0) {
        line = rest;
        m_pos = m_data.size();
    } else {
        line = rest.first(end);
        m_pos += end + 1;
    }
    if (line.endsWith('\r'))
        line.chop(1);
    return true;
}

QList<QByteArray> ArchiveReader::lines(QByteArrayView data)
{
    QList<QByteArray> result;
    ArchiveReader reader(data);
    QByteArrayView line;
    while (reader.next(line))
        result.append(line.toByteArray());
    return result;
}

QByteArrayView unquotedArchiveLine(QByteArrayView line)
{
    return line.size() > 2 ? line.sliced(1, line.size() - 2) : line;
}

#include "archivefile.h"

#include "datadirectory.h"

#include <QDir>
#include <QSaveFile>

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
    QSaveFile file(QDir(folderPath).filePath(fileName(archiveName)));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(encode(entries));
    return file.commit();
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

#include "archivefile.h"

#include "datadirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cstdio>
#include <cstring>

namespace {

// The bytes of one archive line: a quote, the entry, a quote, CR LF.
constexpr qsizetype lineSize(QByteArrayView entry)
{
    return entry.size() + 4;
}

// Writes the line of `entry` at `out`, which has lineSize(entry) bytes; gives the end.
char *putLine(char *out, QByteArrayView entry)
{
    *out++ = '"';
    std::memcpy(out, entry.data(), size_t(entry.size()));
    out += entry.size();
    std::memcpy(out, "\"\r\n", 3);
    return out + 3;
}

} // namespace

namespace ArchiveFile {

QByteArray encode(const QList<QByteArray> &entries)
{
    qsizetype size = 0;
    for (const QByteArray &entry : entries)
        size += lineSize(entry);
    QByteArray out(size, Qt::Uninitialized);
    char *next = out.data();
    for (const QByteArray &entry : entries)
        next = putLine(next, entry);
    return out;
}

QString fileName(const QString &archiveName)
{
    return archiveName + QStringLiteral(".lst");
}

bool write(const QString &folderPath, const QString &archiveName, const QList<QByteArray> &entries)
{
    ArchiveWriter writer(folderPath, archiveName);
    for (const QByteArray &entry : entries)
        writer.add(entry);
    return writer.commit();
}

bool isPlainName(const QString &name)
{
    return !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\')) && !name.contains(QChar(0))
           && !name.contains(QLatin1String(".."));
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

namespace {
// Large enough for few writes, small enough to stay in the cache.
constexpr qsizetype kWriteBufferSize = 64 * 1024;
} // namespace

ArchiveWriter::ArchiveWriter(const QString &folderPath, const QString &archiveName)
    : m_folderPath(folderPath)
{
    setArchiveName(archiveName);
}

void ArchiveWriter::setArchiveName(const QString &archiveName)
{
    if (!ArchiveFile::isPlainName(archiveName))
        m_failed = true;
    m_target = QDir(m_folderPath).filePath(ArchiveFile::fileName(archiveName));
}

ArchiveWriter::~ArchiveWriter() = default; // an uncommitted temporary file removes itself

void ArchiveWriter::add(QByteArrayView entry)
{
    if (m_failed)
        return;
    if (!m_file) {
        // Written beside the target under a name that is no archive, then renamed over it:
        // readers see the old catalogue or the whole new one, never a part. Unlike QSaveFile
        // this does not wait for the disk (fsync): a catalogue lost to a power cut is made
        // again from its disc.
        m_file = std::make_unique<QTemporaryFile>(m_target + QStringLiteral(".XXXXXX"));
        if (!m_file->open()) {
            m_failed = true;
            return;
        }
        m_buffer.resize(kWriteBufferSize);
    }
    const qsizetype line = lineSize(entry);
    if (m_used + line > m_buffer.size()) {
        if (!flush())
            return;
        if (line > m_buffer.size())
            m_buffer.resize(line);
    }
    putLine(m_buffer.data() + m_used, entry);
    m_used += line;
}

bool ArchiveWriter::flush()
{
    if (m_file->write(m_buffer.constData(), m_used) != m_used)
        m_failed = true;
    m_used = 0;
    return !m_failed;
}

bool ArchiveWriter::commit()
{
    if (!m_file || m_failed || !flush() || !m_file->flush())
        return false;
    const QFileInfo existing(m_target);
    m_file->setPermissions(existing.exists() ? existing.permissions()
                                             : QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                   | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    if (::rename(QFile::encodeName(m_file->fileName()).constData(), QFile::encodeName(m_target).constData()) != 0)
        return false;
    m_file->setAutoRemove(false); // it is the archive now
    m_file.reset();
    return true;
}

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

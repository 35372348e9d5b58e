#include "archivestream.h"

#include "regularfile.h"

#include <cstring>

ArchiveStream::ArchiveStream(RegularFile &file, QByteArray &buffer, qsizetype chunk)
    : m_file(file)
    , m_buffer(buffer)
    , m_chunk(std::max<qsizetype>(chunk, 1))
    , m_left(file.sizeAtOpening())
{
}

bool ArchiveStream::next(QByteArrayView &lines)
{
    char *data = m_buffer.data();
    if (m_start > 0) {
        std::memmove(data, data + m_start, size_t(m_end - m_start));
        m_end -= m_start;
        m_start = 0;
    }
    while (!m_atEnd) {
        const qsizetype room = m_buffer.size() - m_end;
        if (room < 1 || room < m_chunk / 2) {
            // Doubling, so that a line of any length costs reads and copies in proportion to it
            // (a line carried over from the last chunk alone does not make it grow).
            m_buffer.resize(std::max(m_end + m_chunk, std::min(m_buffer.size() * 2, m_end + qsizetype(m_left))));
            data = m_buffer.data();
        }
        const qint64 want = std::min<qint64>(m_buffer.size() - m_end, m_left);
        const qint64 got = want > 0 ? m_file.read(data + m_end, want) : 0;
        if (got <= 0) {
            m_atEnd = true;
            break;
        }
        m_left -= got;
        m_read += got;
        const qsizetype from = m_end;
        m_end += got;
        if (const void *lineEnd = memrchr(data + from, '\n', size_t(got))) {
            m_start = static_cast<const char *>(lineEnd) - data + 1;
            lines = QByteArrayView(data, m_start);
            return true;
        }
    }
    if (m_end == 0)
        return false;
    lines = QByteArrayView(data, m_end);
    m_end = 0;
    return true;
}

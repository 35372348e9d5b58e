#pragma once

#include <QByteArray>
#include <QByteArrayView>

class RegularFile;

// Hands out an archive's bytes as runs of whole lines, read in large chunks into a buffer the
// caller keeps from archive to archive (one per worker thread). Archives are read, never mapped:
// a mapped file that shrinks under its reader (copied over, a network or FUSE folder gone) kills
// the process, and here each page's first touch costs more than copying it.
//
// A line may be of any length (the buffer grows to hold it) and hold any byte, NUL included. At most
// the file's size at opening is read; a file cut short while it is read just ends early.
class ArchiveStream
{
public:
    // Large: each read costs the system a lookup per page of its cache besides the copy, and fewer,
    // larger reads measured faster here than chunks that stay in the processor's cache (256 KB:
    // about a tenth slower on a whole search).
    static constexpr qsizetype kChunk = qsizetype(2) << 20;

    ArchiveStream(RegularFile &file, QByteArray &buffer, qsizetype chunk = kChunk);

    // The next run of whole lines (the file's last line may lack its end); false at the end of the
    // file or on a read error. A run stays valid until the next call.
    bool next(QByteArrayView &lines);
    qint64 bytesRead() const { return m_read; }

private:
    RegularFile &m_file;
    QByteArray &m_buffer;
    qsizetype m_chunk;
    qsizetype m_start = 0; // the unfinished line carried over to the next run
    qsizetype m_end = 0;
    qint64 m_left = 0; // of the size at opening
    qint64 m_read = 0;
    bool m_atEnd = false;
};

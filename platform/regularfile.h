#pragma once

#include <QByteArray>
#include <QString>

#include <sys/stat.h>

// A file opened for reading only when it is a regular file (after following links), and without
// ever blocking: a FIFO, a device such as /dev/zero, a socket or a directory is refused at once, so
// a catalogue or a table that points at one can neither hang the reader nor feed it without end.
class RegularFile
{
public:
    explicit RegularFile(const QString &path);
    ~RegularFile();
    RegularFile(const RegularFile &) = delete;
    RegularFile &operator=(const RegularFile &) = delete;

    bool isOpen() const { return m_fd >= 0; }
    // The size when it was opened: readers take no more than that, however the file grows.
    qint64 sizeAtOpening() const { return m_status.st_size; }
    // What fstat said at opening: mode, device and inode included.
    const struct stat &status() const { return m_status; }
    // Reads up to `count` bytes; 0 at the end of the file, -1 on an error.
    qint64 read(char *into, qint64 count);
    // Asks the system to read ahead generously: the file is about to be read from start to end.
    void adviseSequential();
    // Asks the system to read the whole file into its cache now, without waiting for it.
    void adviseWillNeed();
    // Whether the file's first bytes are in the system's cache (asked without reading the disk);
    // true when the system cannot tell.
    bool startIsCached() const;

private:
    int m_fd = -1;
    struct stat m_status{};
};

// The first bytes of a regular file, at most `limit` of them; empty when it is not one or cannot
// be read. `whole` tells whether the file ended within the limit.
QByteArray readRegularFile(const QString &path, qint64 limit, bool *whole = nullptr);
// The same from a file already open (a caller that judged its size first reads it only once).
QByteArray readRegularFile(RegularFile &file, qint64 limit, bool *whole = nullptr);

// Whether `path` is a regular file (after following links), asked without ever blocking: a FIFO,
// a device or a socket found on a medium is no file to read, play or run in this process.
bool isRegularFile(const QString &path);

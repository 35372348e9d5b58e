#include "regularfile.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

RegularFile::RegularFile(const QString &path)
{
    // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer, for ever.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    if (::fstat(fd, &m_status) != 0 || !S_ISREG(m_status.st_mode)) {
        ::close(fd);
        m_status = {};
        return;
    }
    m_fd = fd;
}

RegularFile::~RegularFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

qint64 RegularFile::read(char *into, qint64 count)
{
    if (m_fd < 0)
        return -1;
    for (;;) {
        const ssize_t n = ::read(m_fd, into, size_t(count));
        if (n >= 0 || errno != EINTR)
            return n;
    }
}

void RegularFile::adviseSequential()
{
    if (m_fd >= 0)
        ::posix_fadvise(m_fd, 0, 0, POSIX_FADV_SEQUENTIAL);
}

void RegularFile::adviseWillNeed()
{
    if (m_fd >= 0)
        ::posix_fadvise(m_fd, 0, 0, POSIX_FADV_WILLNEED);
}

bool RegularFile::startIsCached() const
{
    if (m_fd < 0 || m_status.st_size == 0)
        return true;
    char byte = 0;
    iovec into{&byte, 1};
    // RWF_NOWAIT: the read fails with EAGAIN rather than wait for the disk.
    return ::preadv2(m_fd, &into, 1, 0, RWF_NOWAIT) >= 0 || errno != EAGAIN;
}

QByteArray readRegularFile(const QString &path, qint64 limit, bool *whole)
{
    RegularFile file(path);
    return readRegularFile(file, limit, whole);
}

QByteArray readRegularFile(RegularFile &file, qint64 limit, bool *whole)
{
    if (whole)
        *whole = false;
    if (!file.isOpen())
        return {};
    // One byte past the limit tells whether the file ends within it.
    QByteArray data(std::min(file.sizeAtOpening(), limit) + 1, Qt::Uninitialized);
    qint64 got = 0;
    for (;;) {
        if (got == data.size()) {
            if (got > limit)
                break;
            data.resize(std::min(data.size() * 2, limit + 1)); // it grew since it was opened
        }
        const qint64 n = file.read(data.data() + got, data.size() - got);
        if (n < 0)
            return {};
        if (n == 0)
            break;
        got += n;
    }
    if (whole)
        *whole = got <= limit;
    data.truncate(std::min(got, limit));
    return data;
}

bool isRegularFile(const QString &path)
{
    return RegularFile(path).isOpen();
}

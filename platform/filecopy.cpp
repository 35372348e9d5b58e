#include "filecopy.h"

#include "regularfile.h"

#include <QByteArray>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A file descriptor closed when it goes out of scope.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int fd() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    // Closes now, reporting the error that a late write may only show here.
    bool close()
    {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

// Creates a new file in `directory` under a name of its own, readable by its owner only until
// the copy is complete; never opens an entry that was already there, link or not.
int createTemporary(int directory, QByteArray *name)
{
    for (int attempt = 0; attempt < 64; ++attempt) {
        *name = ".kalvex2-copy-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
        const int fd = ::openat(directory, name->constData(),
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

bool writeAll(int fd, const char *data, qint64 count)
{
    while (count > 0) {
        const ssize_t n = ::write(fd, data, size_t(count));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        count -= n;
    }
    return true;
}

// Copies at most `size` bytes: a file that grows while it is read does not feed the copy for ever.
bool copyBytes(RegularFile &from, int to, qint64 size)
{
    constexpr qint64 chunkSize = 1 << 20;
    QByteArray buffer(std::min(size, chunkSize), Qt::Uninitialized);
    while (size > 0) {
        const qint64 got = from.read(buffer.data(), std::min(size, chunkSize));
        if (got < 0)
            return false;
        if (got == 0)
            break;
        if (!writeAll(to, buffer.constData(), got))
            return false;
        size -= got;
    }
    return true;
}

} // namespace

QString copiedFileName(const QString &storedPath)
{
    const QString name = storedPath.mid(storedPath.lastIndexOf(QLatin1Char('\\')) + 1);
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")
        || name.contains(QLatin1Char('/')) || name.contains(QChar(0)))
        return {};
    return name;
}

bool copyFileInto(const QString &source, const QString &directory, const QString &fileName)
{
    if (fileName.isEmpty() || copiedFileName(fileName) != fileName || directory.contains(QChar(0)))
        return false;

    RegularFile input(source);
    if (!input.isOpen())
        return false;
    const struct stat &from = input.status();
    const Descriptor folder(::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return false;

    const QByteArray name = QFile::encodeName(fileName);
    struct stat there{};
    if (::fstatat(folder.fd(), name.constData(), &there, AT_SYMLINK_NOFOLLOW) == 0) {
        // A link is replaced itself, whatever it points at. A read-only file is refused even
        // where the user (root) could write through it.
        if (!S_ISLNK(there.st_mode)
            && (!S_ISREG(there.st_mode) || !(there.st_mode & S_IWUSR)
                || ::faccessat(folder.fd(), name.constData(), W_OK, AT_EACCESS) != 0))
            return false;
        // The same file under two names: it already holds the copy.
        if (there.st_dev == from.st_dev && there.st_ino == from.st_ino)
            return true;
    } else if (errno != ENOENT) {
        return false;
    }

    QByteArray temporary;
    Descriptor output(createTemporary(folder.fd(), &temporary));
    if (!output.isOpen())
        return false;
    // fchmod, not the creation mode: the umask must neither widen nor narrow the source's bits.
    const bool done = copyBytes(input, output.fd(), from.st_size)
                      && ::fchmod(output.fd(), from.st_mode & 0777) == 0 && ::fsync(output.fd()) == 0;
    if (output.close() && done && ::renameat(folder.fd(), temporary.constData(), folder.fd(), name.constData()) == 0)
        return true;
    ::unlinkat(folder.fd(), temporary.constData(), 0);
    return false;
}

QString pathInDirectory(const QString &directory, const QString &fileName)
{
    if (directory.endsWith(QLatin1Char('/')))
        return directory + fileName;
    return directory + QLatin1Char('/') + fileName;
}

#include "linuxdirectorylister.h"

#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The records getdents64 fills; glibc declares no type for them.
struct LinuxDirent
{
    ino64_t d_ino;
    off64_t d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[1];
};

// Lack of permission skips a directory; any other error means the medium is no longer there.
DirectoryLister::Result failure(int error)
{
    return error == EACCES || error == EPERM ? DirectoryLister::Result::Denied : DirectoryLister::Result::Failed;
}

// Reads the directory open at `fd` into `entries`.
DirectoryLister::Result readDirectory(int fd, bool isRoot, DirectoryListing &entries)
{
    if (!isRoot)
        entries.addDots();
    const qsizetype firstName = entries.size();
    // getdents64 on the descriptor itself: one read per block of entries, none of the extra
    // calls of opendir.
    alignas(8) char buffer[32768];
    for (;;) {
        const long got = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer);
        if (got == 0)
            break;
        if (got < 0) {
            const int error = errno;
            entries.clear();
            return failure(error);
        }
        for (long offset = 0; offset < got;) {
            const auto *d = reinterpret_cast<const LinuxDirent *>(buffer + offset);
            offset += d->d_reclen;
            const char *name = d->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
                continue;
            bool isDirectory = false;
            if (d->d_type == DT_DIR) {
                isDirectory = true;
            } else if (d->d_type == DT_UNKNOWN) {
                struct stat st;
                if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) == 0) {
                    isDirectory = S_ISDIR(st.st_mode);
                } else if (failure(errno) == DirectoryLister::Result::Failed) {
                    entries.clear();
                    return DirectoryLister::Result::Failed;
                }
            }
            entries.add(QByteArrayView(name, qsizetype(std::strlen(name))), isDirectory);
        }
    }
    entries.sortFrom(firstName);
    return DirectoryLister::Result::Listed;
}

} // namespace

LinuxDirectoryLister::LinuxDirectoryLister(int maxOpen)
    : m_maxOpen(maxOpen < 1 ? 1 : maxOpen)
{
}

LinuxDirectoryLister::~LinuxDirectoryLister()
{
    close();
}

void LinuxDirectoryLister::close()
{
    for (size_t i = m_firstOpen; i < m_levels.size(); ++i) {
        if (m_levels[i].fd >= 0)
            ::close(m_levels[i].fd);
    }
    m_levels.clear();
    m_firstOpen = 0;
}

DirectoryLister::Result LinuxDirectoryLister::listOpened(int fd, bool isRoot, DirectoryListing &entries)
{
    if (fd < 0)
        return failure(errno);
    const Result result = readDirectory(fd, isRoot, entries);
    if (result == Result::Listed)
        push(fd);
    else
        ::close(fd);
    return result;
}

DirectoryLister::Result LinuxDirectoryLister::open(const QByteArray &nativePath, bool isRoot,
                                                   DirectoryListing &entries)
{
    close();
    entries.clear();
    const int fd = ::open(nativePath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return listOpened(fd, isRoot, entries);
}

DirectoryLister::Result LinuxDirectoryLister::enter(QByteArrayView name, DirectoryListing &entries)
{
    entries.clear();
    // No current directory: a parent that could not be opened again.
    if (m_levels.empty() || m_levels.back().fd < 0)
        return Result::Failed;
    // The name with a NUL after it, in a buffer kept from one directory to the next.
    m_name.resize(name.size());
    std::memcpy(m_name.data(), name.data(), size_t(name.size()));
    // A directory replaced by a link since it was listed is not followed (ELOOP: a changed medium).
    const int fd = ::openat(m_levels.back().fd, m_name.constData(),
                            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    return listOpened(fd, false, entries);
}

void LinuxDirectoryLister::push(int fd)
{
    m_levels.push_back({fd, 0, 0});
    if (openDirectories() <= m_maxOpen)
        return;
    // Let go of the farthest parent, remembering which directory it was.
    Level &farthest = m_levels[m_firstOpen++];
    struct stat st;
    if (::fstat(farthest.fd, &st) == 0) {
        farthest.device = st.st_dev;
        farthest.inode = st.st_ino;
    }
    ::close(farthest.fd);
    farthest.fd = -1;
}

void LinuxDirectoryLister::leave()
{
    if (m_levels.empty())
        return;
    const Level child = m_levels.back();
    m_levels.pop_back();
    if (!m_levels.empty() && m_levels.back().fd < 0 && child.fd >= 0) {
        // The parent was let go: open it again through the child's "..", and check it is the same.
        Level &parent = m_levels.back();
        const int fd = ::openat(child.fd, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        struct stat st;
        if (fd >= 0 && ::fstat(fd, &st) == 0 && st.st_dev == parent.device && st.st_ino == parent.inode) {
            parent.fd = fd;
            m_firstOpen = m_levels.size() - 1;
        } else if (fd >= 0) {
            ::close(fd);
        }
    }
    if (child.fd >= 0)
        ::close(child.fd);
    if (m_firstOpen > m_levels.size() || (!m_levels.empty() && m_levels.back().fd < 0))
        m_firstOpen = m_levels.size(); // nothing open: every later enter() fails
}

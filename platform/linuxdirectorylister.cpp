#include "linuxdirectorylister.h"

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

} // namespace

bool LinuxDirectoryLister::list(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries)
{
    entries.clear();
    const int fd = ::open(nativePath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    if (!isRoot)
        entries.addDots();
    const qsizetype firstName = entries.size();
    // getdents64 on the descriptor itself: one read per block of entries, none of the extra
    // calls of opendir.
    alignas(8) char buffer[32768];
    for (;;) {
        const long got = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer);
        if (got <= 0)
            break;
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
                isDirectory = ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
            }
            entries.add(QByteArrayView(name, qsizetype(std::strlen(name))), isDirectory);
        }
    }
    ::close(fd);
    entries.sortFrom(firstName);
    return true;
}

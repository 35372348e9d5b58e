#include "linuxdirectorylister.h"

#include "windows1252.h"

#include <algorithm>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool LinuxDirectoryLister::list(const QByteArray &nativePath, bool isRoot,
                                std::vector<DirectoryEntry> &entries)
{
    entries.clear();
    const int fd = ::open(nativePath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    DIR *dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return false;
    }
    const int dirFd = ::dirfd(dir);
    while (const dirent *d = ::readdir(dir)) {
        const char *name = d->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        bool isDirectory = false;
        if (d->d_type == DT_DIR) {
            isDirectory = true;
        } else if (d->d_type == DT_UNKNOWN) {
            struct stat st;
            isDirectory = ::fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        const QByteArrayView nameView(name, qsizetype(std::strlen(name)));
        entries.push_back({nameView.toByteArray(), Windows1252::fromNativeFileName(nameView), isDirectory});
    }
    ::closedir(dir);

    std::sort(entries.begin(), entries.end(), directoryEntryLess);
    if (!isRoot) {
        entries.insert(entries.begin(), {DirectoryEntry{QByteArrayLiteral("."), QByteArrayLiteral("."), true},
                                         DirectoryEntry{QByteArrayLiteral(".."), QByteArrayLiteral(".."), true}});
    }
    return true;
}

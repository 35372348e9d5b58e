#pragma once

#include "directorylister.h"

#include <sys/types.h>

#include <vector>

// Reads directories with the POSIX calls. Entry types come from the directory itself where the
// file system gives them; ISO 9660 and UDF give none, so those entries are looked up without
// following links.
//
// Each directory is opened relative to its parent (openat), so a walk goes as deep as the medium
// does, past the 4096 bytes a full path may have. The walk holds the descriptors of the current
// directory and its closest parents, at most `maxOpen` of them: a parent let go is opened again
// from its child by "..", and must be the same directory as before (else the medium changed and
// the walk fails).
class LinuxDirectoryLister final : public DirectoryLister
{
public:
    explicit LinuxDirectoryLister(int maxOpen = 32);
    ~LinuxDirectoryLister() override;
    LinuxDirectoryLister(const LinuxDirectoryLister &) = delete;
    LinuxDirectoryLister &operator=(const LinuxDirectoryLister &) = delete;

    Result open(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries) override;
    Result enter(QByteArrayView name, DirectoryListing &entries) override;
    void leave() override;
    void close() override;

    // The descriptors the walk holds now.
    int openDirectories() const { return int(m_levels.size() - m_firstOpen); }

private:
    struct Level
    {
        int fd;        // -1 once let go
        dev_t device;  // known once let go, to check the directory opened again
        ino_t inode;
    };

    // Lists the directory `fd` (from open or openat; -1 with errno set when that failed) and makes
    // it current when it could be listed, else closes it.
    Result listOpened(int fd, bool isRoot, DirectoryListing &entries);
    void push(int fd);

    int m_maxOpen;
    // The current directory and its parents up to the walk's first; those before m_firstOpen are
    // let go, the others are open.
    std::vector<Level> m_levels;
    size_t m_firstOpen = 0;
    QByteArray m_name; // the name being entered, with its NUL
};

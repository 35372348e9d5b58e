#pragma once

#include <QByteArrayView>

class RegularFile;

// A regular file's bytes, as they were at opening, mapped read-only: a search scans them where the
// system's cache holds them instead of copying them out first.
//
// A page the file no longer has (cut short by another program, a network or FUSE folder gone) can
// not be read: the system then raises SIGBUS, which would kill the process. readGuarded() turns that
// into a read that ends early.
class MappedFile
{
public:
    explicit MappedFile(const RegularFile &file);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    // False for an empty file, or when the system refused the mapping.
    bool isMapped() const { return m_data != nullptr; }
    QByteArrayView bytes() const { return {m_data, m_size}; }

    // Runs `read`, which reads bytes(); false when it touched a page that could not be read: `read`
    // was then left at that point. `read` must hold no object with a destructor while it touches
    // the mapping (what it held would be abandoned, not destroyed).
    template<typename Read>
    bool readGuarded(Read &&read) const
    {
        return runGuarded([](void *context) { (*static_cast<Read *>(context))(); }, &read);
    }

private:
    bool runGuarded(void (*read)(void *), void *context) const;

    const char *m_data = nullptr;
    qsizetype m_size = 0;
};

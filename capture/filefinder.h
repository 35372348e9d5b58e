#pragma once

#include "freshmemory.h"

#include "directorylister.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

class Drives;

// Walks a medium from a drive's root and records the full path of every entry in the catalogue's
// form ("d:\JEUX\CASSE.EXE", Windows-1252), in a one-based list read by index.
//
// The walk is a pre-order one in listing order: a directory's own entries first ("." and ".."
// included for every directory but the root), then the whole of each of its sub-directories.
// Directories whose name begins with "." are recorded but not entered; symbolic links are never
// entered (the lister says they are not directories). A sub-directory that cannot be read for lack
// of permission gives nothing; any other error on one means the medium went away: the walk stops
// and failed() says so.
//
// Rechercher() runs the whole walk in the calling thread. It may run on a worker thread while
// another thread reads State(), NbFichiers() and Lire_Fichiers() and calls Annuler(): the count is
// published after the entry it counts is stored, so every index up to the count read is whole.
// Starting a new Rechercher() while another thread still reads the old results is not allowed.
class FileFinder
{
public:
    // Entries are counted in a signed 16-bit number: the walk ends cleanly after this many.
    static constexpr int kMaxEntries = 32767;

    FileFinder(Drives &drives, DirectoryLister &lister);
    ~FileFinder();
    // The drives and lister the next walk reads through (a disc image's, or the system's); only
    // between walks.
    void setMedium(Drives &drives, DirectoryLister &lister)
    {
        m_drives = &drives;
        m_lister = &lister;
    }
    FileFinder(const FileFinder &) = delete;
    FileFinder &operator=(const FileFinder &) = delete;

    // The root of the walk, always ending with "\": "d:" and "d:\" both give "d:\".
    QString Chemin() const { return m_root; }
    void setChemin(const QString &root);

    // The pattern entries are recorded by ("*.*" records every entry).
    QString Criteres() const { return m_pattern; }
    void setCriteres(const QString &pattern) { m_pattern = pattern; }

    // True from the start to the end of Rechercher(). Writing sets the flag and nothing else.
    bool State() const { return m_state.load(std::memory_order_acquire); }
    void setState(bool busy) { m_state.store(busy, std::memory_order_release); }

    // Discards earlier results and walks the root; returns when the walk is over or cancelled.
    // The same as beginWalk() followed by continueWalk().
    void Rechercher();
    // The first half of Rechercher(), for a walk run by another thread: the earlier results are
    // discarded (count 0, not failed, busy) before this returns, so no reader can take the last
    // walk's entries for the next one's while the worker is still on its way.
    void beginWalk();
    // The walk itself, after beginWalk().
    void continueWalk();
    // Stops a running walk at its next entry; does nothing when no walk runs.
    void Annuler();
    // The last walk stopped because a directory it had seen could no longer be read: what was
    // recorded is not the whole medium.
    bool failed() const { return m_failed.load(std::memory_order_acquire); }

    // The count as decimal text ("0", "1500").
    QString NbFichiers() const { return QString::number(count()); }
    int count() const { return m_count.load(std::memory_order_acquire); }

    // The path recorded at `index` (from 1 to the count); "-1" past the count.
    QByteArray Lire_Fichiers(int index) const;
    // The same without a copy, for an index from 1 to the count: valid until the next Rechercher()
    // or the finder's end.
    QByteArrayView entry(int index) const
    {
        const Slot &slot = m_slots[size_t(index - 1)];
        return {slot.data, slot.size};
    }

private:
    // Recorded paths are written one after the other into large blocks, and each slot points at
    // one: neither ever moves while the walk appends, so readers need no lock.
    static constexpr size_t kBlockSize = 2 * 1024 * 1024;
    struct Slot
    {
        const char *data;
        qsizetype size;
    };

    void walk();
    bool recordAll(const DirectoryListing &entries);
    bool record(QByteArrayView name);
    char *room(qsizetype size);

    Drives *m_drives;
    DirectoryLister *m_lister;
    QString m_root;
    QString m_pattern;
    QByteArray m_patternBytes; // the pattern in Windows-1252, as names are
    bool m_matchesAll = true;
    std::atomic<bool> m_state{false};
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_failed{false};
    std::atomic<int> m_count{0};
    // Memory the walk fills once and keeps for the next walks (FreshMemory: a walk writes
    // megabytes of paths, and the first touch of each fresh page can cost as much as reading a
    // directory). The slots of every entry a walk may record, made at the first walk:
    std::optional<FreshMemory> m_slotMemory;
    Slot *m_slots = nullptr;
    std::vector<FreshMemory> m_blocks;
    qsizetype m_block = -1; // the block being filled
    char *m_free = nullptr;
    char *m_freeEnd = nullptr;
    // The directory being read and its parents: one listing per depth, kept from walk to walk,
    // and where each depth is in its listing. The walk keeps its own stack rather than recursing,
    // so no depth of a medium can overflow the thread's.
    struct Level
    {
        qsizetype next;          // the next entry to look at for a sub-directory
        qsizetype archiveLength; // the path's length before this directory's name, to go back up
    };
    QByteArray m_archivePath;
    std::deque<DirectoryListing> m_listings;
    std::vector<Level> m_levels;
};

// Whether `name` (Windows-1252) matches a wild-card pattern as a directory listing would:
// "*" any run of characters, "?" any one character, letters ignoring case; "*.*" and "*" match
// every name.
bool matchesWildcard(QByteArrayView pattern, QByteArrayView name);

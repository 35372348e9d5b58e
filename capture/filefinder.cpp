#include "filefinder.h"

#include "directorylister.h"
#include "drives.h"
#include "windows1252.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <utility>

FileFinder::FileFinder(Drives &drives, DirectoryLister &lister)
    : m_drives(&drives)
    , m_lister(&lister)
{
}

FileFinder::~FileFinder() = default;

void FileFinder::setChemin(const QString &root)
{
    m_root = root.endsWith(QLatin1Char('\\')) ? root : root + QLatin1Char('\\');
}

void FileFinder::Annuler()
{
    bool expected = true;
    m_running.compare_exchange_strong(expected, false, std::memory_order_acq_rel);
}

QByteArray FileFinder::Lire_Fichiers(int index) const
{
    if (index > count() || index < 1)
        return QByteArrayLiteral("-1");
    return entry(index).toByteArray();
}

void FileFinder::Rechercher()
{
    beginWalk();
    continueWalk();
}

void FileFinder::beginWalk()
{
    m_state.store(true, std::memory_order_release);
    m_count.store(0, std::memory_order_release);
    m_failed.store(false, std::memory_order_release);
    m_running.store(true, std::memory_order_release);
    m_patternBytes = Windows1252::encode(m_pattern);
    m_matchesAll = m_patternBytes == "*.*" || m_patternBytes == "*";
    // The blocks of the last walk are written over from the first.
    m_block = -1;
    m_free = m_freeEnd = nullptr;
}

void FileFinder::continueWalk()
{
    // "d:\JEUX\" is the directory JEUX at the mount point of drive d:; a drive without a medium
    // (or no drive at all) lists nothing, like a drive that is not ready.
    const std::optional<Drive> drive = m_drives->find(m_root);
    if (drive && !drive->mountPoint.isEmpty()) {
        m_archivePath = Windows1252::encode(m_root);
        QByteArray nativeRoot = QFile::encodeName(drive->mountPoint);
        if (!nativeRoot.endsWith('/'))
            nativeRoot += '/';
        const QString below = m_root.mid(3); // after "d:\"
        if (!below.isEmpty())
            nativeRoot += QFile::encodeName(QString(below).replace(QLatin1Char('\\'), QLatin1Char('/')));
        if (m_listings.empty())
            m_listings.emplace_back();
        // A root that cannot be read is a drive that is not ready: an empty walk, not a failed one.
        if (m_lister->open(nativeRoot, below.isEmpty(), m_listings.front()) == DirectoryLister::Result::Listed)
            walk();
        m_lister->close(); // a medium held open could not be ejected
    }

    m_running.store(false, std::memory_order_release);
    m_state.store(false, std::memory_order_release);
}

void FileFinder::walk()
{
    // Each directory's entries are recorded, then its sub-directories are walked one by one in
    // listing order. One listing serves both.
    if (!recordAll(m_listings.front()))
        return;
    m_levels.clear();
    m_levels.push_back({0, m_archivePath.size()});
    while (!m_levels.empty()) {
        const size_t depth = m_levels.size() - 1;
        const DirectoryListing &entries = m_listings[depth];
        qsizetype i = m_levels.back().next;
        while (i < entries.size() && (!entries.isDirectory(i) || entries.nativeName(i).startsWith('.')))
            ++i;
        if (i == entries.size()) {
            m_archivePath.truncate(m_levels.back().archiveLength);
            m_levels.pop_back();
            if (!m_levels.empty())
                m_lister->leave();
            continue;
        }
        m_levels.back().next = i + 1;
        if (!m_running.load(std::memory_order_acquire))
            return;
        if (depth + 1 == m_listings.size())
            m_listings.emplace_back(); // a deque: the listings of the parents stay where they are
        DirectoryListing &children = m_listings[depth + 1];
        switch (m_lister->enter(entries.nativeName(i), children)) {
        case DirectoryLister::Result::Listed:
            break;
        case DirectoryLister::Result::Denied:
            continue;
        case DirectoryLister::Result::Failed:
            m_failed.store(true, std::memory_order_release);
            return;
        }
        const qsizetype parentLength = m_archivePath.size();
        m_archivePath.append(entries.archiveName(i)).append('\\');
        m_levels.push_back({0, parentLength});
        if (!recordAll(children))
            return;
    }
}

bool FileFinder::recordAll(const DirectoryListing &entries)
{
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (!record(entries.archiveName(i)))
            return false;
    }
    return true;
}

bool FileFinder::record(QByteArrayView name)
{
    if (!m_running.load(std::memory_order_relaxed))
        return false;
    if (!m_matchesAll && !matchesWildcard(m_patternBytes, name))
        return true;

    const int count = m_count.load(std::memory_order_relaxed);
    if (count >= kMaxEntries) {
        // The next entry would overflow the 16-bit count: the walk ends here, what was
        // recorded stays.
        m_running.store(false, std::memory_order_release);
        return false;
    }
    if (!m_slotMemory) {
        m_slotMemory.emplace(sizeof(Slot) * size_t(kMaxEntries));
        m_slotMemory->prepare(m_slotMemory->size());
        m_slots = reinterpret_cast<Slot *>(m_slotMemory->data());
    }
    const qsizetype size = m_archivePath.size() + name.size();
    char *path = room(size);
    std::memcpy(path, m_archivePath.constData(), size_t(m_archivePath.size()));
    std::memcpy(path + m_archivePath.size(), name.data(), size_t(name.size()));
    m_slots[size_t(count)] = {path, size};
    m_count.store(count + 1, std::memory_order_release);
    return true;
}

char *FileFinder::room(qsizetype size)
{
    if (m_freeEnd - m_free < size) {
        // The next block, kept from an earlier walk or new; a path longer than a block (deeper
        // than any real medium) gets one of its own.
        ++m_block;
        if (size_t(m_block) == m_blocks.size() || m_blocks[size_t(m_block)].size() < size_t(size))
            m_blocks.insert(m_blocks.begin() + m_block, FreshMemory(std::max(size_t(size), kBlockSize)));
        m_blocks[size_t(m_block)].prepare(m_blocks[size_t(m_block)].size());
        m_free = m_blocks[size_t(m_block)].data();
        m_freeEnd = m_free + m_blocks[size_t(m_block)].size();
    }
    char *at = m_free;
    m_free += size;
    return at;
}

bool matchesWildcard(QByteArrayView pattern, QByteArrayView name)
{
    if (pattern == "*.*" || pattern == "*")
        return true;
    // Iterative matching with one point of return for the last "*".
    qsizetype p = 0, n = 0, starP = -1, starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (p < pattern.size()
                   && (pattern[p] == '?' || Windows1252::toUpper(pattern[p]) == Windows1252::toUpper(name[n]))) {
            ++p;
            ++n;
        } else if (starP >= 0) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

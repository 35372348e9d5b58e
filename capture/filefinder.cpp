#include "filefinder.h"

#include "directorylister.h"
#include "drives.h"
#include "windows1252.h"

#include <QFile>

#include <cstring>
#include <vector>

FileFinder::FileFinder(Drives &drives, DirectoryLister &lister)
    : m_drives(drives)
    , m_lister(lister)
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
    const int slot = index - 1;
    return (*m_chunks[slot / kChunkSize])[slot % kChunkSize];
}

void FileFinder::Rechercher()
{
    m_state.store(true, std::memory_order_release);
    m_count.store(0, std::memory_order_release);
    m_running.store(true, std::memory_order_release);
    m_collecting = true;
    m_patternBytes = Windows1252::encode(m_pattern);
    m_matchesAll = m_patternBytes == "*.*" || m_patternBytes == "*";

    // "d:\JEUX\" is the directory JEUX at the mount point of drive d:; a drive without a medium
    // (or no drive at all) lists nothing, like a drive that is not ready.
    const std::optional<Drive> drive = m_drives.find(m_root);
    if (drive && !drive->mountPoint.isEmpty()) {
        const QByteArray archiveRoot = Windows1252::encode(m_root);
        QByteArray nativeRoot = QFile::encodeName(drive->mountPoint);
        if (!nativeRoot.endsWith('/'))
            nativeRoot += '/';
        const QString below = m_root.mid(3); // after "d:\"
        if (!below.isEmpty())
            nativeRoot += QFile::encodeName(QString(below).replace(QLatin1Char('\\'), QLatin1Char('/')));
        walk(nativeRoot, archiveRoot, below.isEmpty());
    }

    m_collecting = false;
    m_running.store(false, std::memory_order_release);
    m_state.store(false, std::memory_order_release);
}

void FileFinder::walk(const QByteArray &nativePath, const QByteArray &archivePath, bool isRoot)
{
    if (!m_running.load(std::memory_order_acquire))
        return;
    // One listing serves both the recording of this directory's entries and the choice of the
    // sub-directories to enter.
    std::vector<DirectoryEntry> entries;
    if (!m_lister.list(nativePath, isRoot, entries))
        return;

    std::vector<const DirectoryEntry *> subDirectories;
    for (const DirectoryEntry &entry : entries) {
        if (entry.isDirectory && !entry.nativeName.startsWith('.'))
            subDirectories.push_back(&entry);
    }
    if (m_collecting) {
        for (const DirectoryEntry &entry : entries) {
            if (!record(archivePath, entry.archiveName))
                return;
        }
    }
    for (const DirectoryEntry *sub : subDirectories) {
        if (!m_running.load(std::memory_order_acquire))
            return;
        walk(nativePath + sub->nativeName + '/', archivePath + sub->archiveName + '\\', false);
    }
}

bool FileFinder::record(const QByteArray &archivePath, const QByteArray &name)
{
    if (!m_running.load(std::memory_order_relaxed))
        return false;
    // A name is cut at its first NUL, as the system's listing would give it.
    const qsizetype nul = name.indexOf('\0');
    const QByteArrayView cut = nul < 0 ? QByteArrayView(name) : QByteArrayView(name).first(nul);
    if (!m_matchesAll && !matchesWildcard(m_patternBytes, cut))
        return true;

    const int count = m_count.load(std::memory_order_relaxed);
    if (count >= kMaxEntries) {
        // The next entry would overflow the 16-bit count: the walk ends here, what was
        // recorded stays.
        m_running.store(false, std::memory_order_release);
        return false;
    }
    auto &chunk = m_chunks[count / kChunkSize];
    if (!chunk)
        chunk = std::make_unique<Chunk>();
    QByteArray path(archivePath.size() + cut.size(), Qt::Uninitialized);
    std::memcpy(path.data(), archivePath.constData(), size_t(archivePath.size()));
    std::memcpy(path.data() + archivePath.size(), cut.data(), size_t(cut.size()));
    (*chunk)[count % kChunkSize] = std::move(path);
    m_count.store(count + 1, std::memory_order_release);
    return true;
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

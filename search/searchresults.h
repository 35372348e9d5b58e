#pragma once

#include "freshmemory.h"
#include "searchrules.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <span>
#include <vector>

// Memory for found paths: large blocks taken from the system at once and readied a huge page at a
// time as they fill (FreshMemory), so that millions of rows cost a few page faults rather than one
// per 4 KB. The chunks of one worker thread fill a block in turn; each chunk keeps the blocks
// holding its paths.
class PathBlock
{
public:
    static constexpr size_t kSize = size_t(4) << 20;
    // A search's first blocks are small and grow to kSize: a fresh 2 MB huge page costs several
    // milliseconds here (the host backs it at its first touch), more than a small result's whole
    // search is worth.
    static constexpr size_t kFirstSize = size_t(64) << 10;

    explicit PathBlock(size_t capacity = kSize)
        : m_memory(capacity)
    {
    }

    // Where `bytes` were copied, at a multiple of `alignment` (a power of two); nullptr when they do
    // not fit.
    const char *store(QByteArrayView bytes, size_t alignment = 1);
    size_t capacity() const { return m_memory.size(); }

private:
    FreshMemory m_memory;
    size_t m_used = 0;
};

// Copies `bytes` into the last of `blocks`, or into a new block when it is full, at a multiple of
// `alignment` (a power of two); returns the copy.
const char *storeInBlocks(std::vector<std::shared_ptr<PathBlock>> &blocks, QByteArrayView bytes, size_t alignment = 1);

// The same for values (plain data, such as rows or ids): their copy, aligned for them.
template<typename T>
std::span<const T> storeInBlocks(std::vector<std::shared_ptr<PathBlock>> &blocks, std::span<const T> values)
{
    if (values.empty())
        return {};
    const QByteArrayView bytes(reinterpret_cast<const char *>(values.data()), qsizetype(values.size_bytes()));
    return {reinterpret_cast<const T *>(storeInBlocks(blocks, bytes, alignof(T))), values.size()};
}

// The alphabetical view's order: the order-found index of each row it shows, in turn.
using RowOrder = LargeVector<quint32>;

// One found row. Rows of a path found twice (a string occurring twice in a name) share its bytes.
struct ResultRow
{
    const char *path = nullptr;
    quint32 pathLength = 0;
    quint32 nameOffset = 0; // the file name's start within the path
};

// The rows one archive gave, with the stored paths as read (quotes dropped, letters as catalogued).
// While the archive is read its rows gather in `found` (a vector the worker reuses from archive to
// archive); keepFound() then copies them beside the paths, where `rows` shows them.
struct ResultChunk
{
    int archive = 0; // index into the search's archive names
    std::vector<std::shared_ptr<PathBlock>> blocks; // those holding its paths and rows; the last one is filled
    std::vector<ResultRow> found;
    std::span<const ResultRow> rows;

    // Copies `path` into the last block, or into a new one when it is full; returns the copy.
    const char *store(QByteArrayView path) { return storeInBlocks(blocks, path); }
    // Copies the rows in `found` into the blocks, as `rows`, and empties `found` (keeping its room).
    void keepFound();
    QByteArrayView path(const ResultRow &row) const { return {row.path, row.pathLength}; }
    QByteArrayView fileName(const ResultRow &row) const { return path(row).sliced(row.nameOffset); }
};

// The result rows of a search, in the order found, stored compactly: chunks of paths and offsets,
// with every column (file name, extension column, archive name, path, sorted row) derived on demand.
class SearchResults
{
public:
    void clear();
    void setArchiveNames(const QStringList &names) { m_archiveNames = names; }
    // The archives' files, in the order of their names: where each row's disc is checked against.
    void setArchiveFiles(const QStringList &files) { m_archiveFiles = files; }
    // The kind of the search, which decides the extension column's rule.
    void setKind(SearchKind kind) { m_kind = kind; }
    // Appends a chunk's rows after the rows already held.
    void append(std::shared_ptr<const ResultChunk> chunk);

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    // The columns of a row as shown: upper-cased Windows-1252.
    QByteArray path(qsizetype row) const;
    QByteArray fileName(qsizetype row) const;
    QByteArray extension(qsizetype row) const;
    QString archiveName(qsizetype row) const;
    QString archiveFile(qsizetype row) const;
    // A row's path and file name as stored (letters as catalogued), valid while the rows are held.
    QByteArrayView storedPath(qsizetype row) const;
    QByteArrayView storedFileName(qsizetype row) const;

    // The alphabetical view: row `sorted` of it shows the order-found row sortedIndex(sorted).
    void setSortedOrder(RowOrder order) { m_sorted = std::move(order); }
    qsizetype sortedSize() const { return qsizetype(m_sorted.size()); }
    qsizetype sortedIndex(qsizetype sorted) const { return m_sorted[size_t(sorted)]; }
    QString sortedRow(qsizetype sorted) const;

    // The alphabetical view's order of the rows of `chunks` (AlphabeticalOrder); empty when `abandon`
    // is set meanwhile.
    static RowOrder sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
                                const std::atomic_bool *abandon = nullptr);

    // Bytes held, for the memory budget.
    qsizetype memoryUsed() const;

private:
    struct Located
    {
        const ResultChunk *chunk;
        const ResultRow *row;
    };
    Located locate(qsizetype row) const;

    QStringList m_archiveNames;
    QStringList m_archiveFiles;
    std::vector<std::shared_ptr<const ResultChunk>> m_chunks;
    std::vector<qsizetype> m_chunkStarts; // first row of each chunk
    RowOrder m_sorted;
    qsizetype m_size = 0;
    SearchKind m_kind = SearchKind::Name;
};

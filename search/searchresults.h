#pragma once

#include "searchrules.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <vector>

// Memory for found paths: large blocks taken from the system at once (in huge pages where it gives
// them), so that millions of rows cost a few page faults rather than one per 4 KB. The chunks of one
// worker thread fill a block in turn; each chunk keeps the blocks holding its paths.
class PathBlock
{
public:
    static constexpr size_t kSize = size_t(4) << 20;

    explicit PathBlock(size_t capacity = kSize);
    ~PathBlock();
    PathBlock(const PathBlock &) = delete;
    PathBlock &operator=(const PathBlock &) = delete;

    // Where `path` was copied; nullptr when it does not fit.
    const char *store(QByteArrayView path);
    size_t capacity() const { return m_capacity; }

private:
    char *m_data = nullptr;
    size_t m_capacity = 0;
    size_t m_used = 0;
};

// One found row. Rows of a path found twice (a string occurring twice in a name) share its bytes.
struct ResultRow
{
    const char *path = nullptr;
    quint32 pathLength = 0;
    quint32 nameOffset = 0; // the file name's start within the path
};

// The rows one archive gave, with the stored paths as read (quotes dropped, letters as catalogued).
struct ResultChunk
{
    int archive = 0; // index into the search's archive names
    std::vector<std::shared_ptr<PathBlock>> blocks; // those holding its paths; the last one is filled
    std::vector<ResultRow> rows;

    // Copies `path` into the last block, or into a new one when it is full; returns the copy.
    const char *store(QByteArrayView path);
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
    // A row's path and file name as stored (letters as catalogued), valid while the rows are held.
    QByteArrayView storedPath(qsizetype row) const;
    QByteArrayView storedFileName(qsizetype row) const;

    // The alphabetical view: row `sorted` of it shows the order-found row sortedIndex(sorted).
    void setSortedOrder(std::vector<quint32> order) { m_sorted = std::move(order); }
    qsizetype sortedSize() const { return qsizetype(m_sorted.size()); }
    qsizetype sortedIndex(qsizetype sorted) const { return m_sorted[size_t(sorted)]; }
    QString sortedRow(qsizetype sorted) const;

    // The alphabetical view's order of the rows of `chunks` (AlphabeticalOrder); empty when `abandon`
    // is set meanwhile.
    static std::vector<quint32> sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
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
    std::vector<std::shared_ptr<const ResultChunk>> m_chunks;
    std::vector<qsizetype> m_chunkStarts; // first row of each chunk
    std::vector<quint32> m_sorted;
    qsizetype m_size = 0;
    SearchKind m_kind = SearchKind::Name;
};

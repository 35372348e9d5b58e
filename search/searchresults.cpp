#include "searchresults.h"

#include "alphabeticalorder.h"

#include "searchrules.h"
#include "windows1252.h"

#include <algorithm>

#include <cstring>

const char *PathBlock::store(QByteArrayView bytes, size_t alignment)
{
    const size_t start = (m_used + alignment - 1) & ~(alignment - 1);
    if (start > m_memory.size() || size_t(bytes.size()) > m_memory.size() - start)
        return nullptr;
    m_memory.prepare(start + size_t(bytes.size()));
    char *copy = m_memory.data() + start;
    if (!bytes.isEmpty())
        std::memcpy(copy, bytes.data(), size_t(bytes.size()));
    m_used = start + size_t(bytes.size());
    return copy;
}

const char *storeInBlocks(std::vector<std::shared_ptr<PathBlock>> &blocks, QByteArrayView bytes, size_t alignment)
{
    if (!blocks.empty()) {
        if (const char *copy = blocks.back()->store(bytes, alignment))
            return copy;
    }
    const size_t next = blocks.empty() ? PathBlock::kFirstSize : std::min(PathBlock::kSize, blocks.back()->capacity() * 2);
    blocks.push_back(std::make_shared<PathBlock>(std::max(next, size_t(bytes.size()))));
    return blocks.back()->store(bytes, alignment);
}

void ResultChunk::keepFound()
{
    rows = storeInBlocks(blocks, std::span<const ResultRow>(found));
    found.clear();
}

void SearchResults::clear()
{
    m_chunks.clear();
    m_chunkStarts.clear();
    m_sorted.clear();
    m_size = 0;
}

void SearchResults::append(std::shared_ptr<const ResultChunk> chunk)
{
    if (!chunk || chunk->rows.empty())
        return;
    m_chunkStarts.push_back(m_size);
    m_size += qsizetype(chunk->rows.size());
    m_chunks.push_back(std::move(chunk));
}

SearchResults::Located SearchResults::locate(qsizetype row) const
{
    const auto after = std::upper_bound(m_chunkStarts.begin(), m_chunkStarts.end(), row);
    const size_t index = size_t(after - m_chunkStarts.begin()) - 1;
    const ResultChunk *chunk = m_chunks[index].get();
    return {chunk, &chunk->rows[size_t(row - m_chunkStarts[index])]};
}

QByteArray SearchResults::path(qsizetype row) const
{
    const Located at = locate(row);
    return Windows1252::toUpper(at.chunk->path(*at.row));
}

QByteArray SearchResults::fileName(qsizetype row) const
{
    const Located at = locate(row);
    return Windows1252::toUpper(at.chunk->fileName(*at.row));
}

QByteArray SearchResults::extension(qsizetype row) const
{
    const Located at = locate(row);
    const QByteArrayView path = at.chunk->path(*at.row);
    if (m_kind == SearchKind::Theme)
        return Windows1252::toUpper(themeExtensionColumnOf(path));
    // Only the file name is looked through for a dot (where it starts is known): a huge path is not.
    if (!at.chunk->fileName(*at.row).contains('.'))
        return QByteArray("   ");
    return Windows1252::toUpper(path.last(std::min<qsizetype>(3, path.size())));
}

QByteArrayView SearchResults::storedPath(qsizetype row) const
{
    const Located at = locate(row);
    return at.chunk->path(*at.row);
}

QByteArrayView SearchResults::storedFileName(qsizetype row) const
{
    const Located at = locate(row);
    return at.chunk->fileName(*at.row);
}

QString SearchResults::archiveName(qsizetype row) const
{
    return m_archiveNames.value(locate(row).chunk->archive);
}

QString SearchResults::archiveFile(qsizetype row) const
{
    return row >= 0 && row < m_size ? m_archiveFiles.value(locate(row).chunk->archive) : QString();
}

QString SearchResults::sortedRow(qsizetype sorted) const
{
    const qsizetype row = sortedIndex(sorted);
    return sortedRowText(Windows1252::decode(fileName(row)), row);
}

qsizetype SearchResults::memoryUsed() const
{
    qsizetype bytes = qsizetype(m_sorted.capacity() * sizeof(quint32) + m_chunkStarts.capacity() * sizeof(qsizetype));
    std::vector<const PathBlock *> blocks;
    for (const auto &chunk : m_chunks) {
        bytes += qsizetype(sizeof(ResultChunk));
        for (const auto &block : chunk->blocks)
            blocks.push_back(block.get());
    }
    std::sort(blocks.begin(), blocks.end());
    blocks.erase(std::unique(blocks.begin(), blocks.end()), blocks.end());
    for (const PathBlock *block : blocks)
        bytes += qsizetype(block->capacity());
    return bytes;
}

RowOrder SearchResults::sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
                                   const std::atomic_bool *abandon)
{
    AlphabeticalOrder::NameTable table;
    std::vector<AlphabeticalOrder::NamedRows> named;
    for (const auto &chunk : chunks)
        named.push_back({&table, table.nameRows(*chunk)});
    return AlphabeticalOrder::order(chunks, named, abandon);
}

#include "searchresults.h"

#include "alphabeticalorder.h"

#include "searchrules.h"
#include "windows1252.h"

#include <algorithm>

#include <cstdlib>
#include <cstring>
#include <new>

#include <sys/mman.h>

PathBlock::PathBlock(size_t capacity)
{
    // Whole huge pages, aligned on one, so the system may back the block with them.
    constexpr size_t kHugePage = size_t(2) << 20;
    m_capacity = (std::max<size_t>(capacity, 1) + kHugePage - 1) / kHugePage * kHugePage;
    m_data = static_cast<char *>(std::aligned_alloc(kHugePage, m_capacity));
    if (!m_data)
        throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
    madvise(m_data, m_capacity, MADV_HUGEPAGE);
#endif
}

PathBlock::~PathBlock()
{
    std::free(m_data);
}

const char *PathBlock::store(QByteArrayView path)
{
    if (size_t(path.size()) > m_capacity - m_used)
        return nullptr;
    char *copy = m_data + m_used;
    std::memcpy(copy, path.data(), size_t(path.size()));
    m_used += size_t(path.size());
    return copy;
}

const char *ResultChunk::store(QByteArrayView path)
{
    if (!blocks.empty()) {
        if (const char *copy = blocks.back()->store(path))
            return copy;
    }
    blocks.push_back(std::make_shared<PathBlock>(std::max(PathBlock::kSize, size_t(path.size()))));
    return blocks.back()->store(path);
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
        bytes += qsizetype(chunk->rows.capacity() * sizeof(ResultRow) + sizeof(ResultChunk));
        for (const auto &block : chunk->blocks)
            blocks.push_back(block.get());
    }
    std::sort(blocks.begin(), blocks.end());
    blocks.erase(std::unique(blocks.begin(), blocks.end()), blocks.end());
    for (const PathBlock *block : blocks)
        bytes += qsizetype(block->capacity());
    return bytes;
}

std::vector<quint32> SearchResults::sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
                                                const std::atomic_bool *abandon)
{
    AlphabeticalOrder::NameTable table;
    std::vector<std::vector<quint32>> ids;
    ids.reserve(chunks.size());
    std::vector<AlphabeticalOrder::NamedRows> named;
    for (const auto &chunk : chunks) {
        ids.push_back(table.nameRows(*chunk));
        named.push_back({&table, &ids.back()});
    }
    return AlphabeticalOrder::order(chunks, named, abandon);
}

#include "searchresults.h"

#include "searchrules.h"
#include "windows1252.h"

#include <algorithm>
#include <charconv>
#include <cstring>

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

QByteArrayView SearchResults::path(qsizetype row) const
{
    const Located at = locate(row);
    return QByteArrayView(at.chunk->pool).sliced(at.row->pathStart, at.row->pathLength);
}

QByteArrayView SearchResults::fileName(qsizetype row) const
{
    const Located at = locate(row);
    return QByteArrayView(at.chunk->pool)
        .sliced(at.row->pathStart + at.row->nameOffset, at.row->pathLength - at.row->nameOffset);
}

QByteArrayView SearchResults::extension(qsizetype row) const
{
    return extensionColumnOf(path(row));
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
    for (const auto &chunk : m_chunks)
        bytes += chunk->pool.capacity() + qsizetype(chunk->rows.capacity() * sizeof(ResultRow)) + qsizetype(sizeof(ResultChunk));
    return bytes;
}

namespace {

struct SortKey
{
    const char *name;
    quint32 length;
};

// The text after a sorted row's name: 60 blanks, then the index with its sign position.
struct RowTail
{
    explicit RowTail(quint32 index)
    {
        std::memset(text, ' ', 61);
        length = 61 + int(std::to_chars(text + 61, text + sizeof text, index).ptr - (text + 61));
    }
    char text[72];
    int length = 0;
};

} // namespace

std::vector<quint32> SearchResults::sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks)
{
    std::vector<SortKey> keys;
    for (const auto &chunk : chunks) {
        for (const ResultRow &row : chunk->rows)
            keys.push_back({chunk->pool.constData() + row.pathStart + row.nameOffset, row.pathLength - row.nameOffset});
    }
    std::vector<quint32> order(keys.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = quint32(i);
    std::sort(order.begin(), order.end(), [&keys](quint32 a, quint32 b) {
        const SortKey &ka = keys[a];
        const SortKey &kb = keys[b];
        const quint32 common = std::min(ka.length, kb.length);
        const int c = std::memcmp(ka.name, kb.name, common);
        if (c != 0)
            return c < 0;
        // Equal up to the shorter name: the rest of both rows' texts decides, blanks and index included.
        if (ka.length != kb.length) {
            const char next = ka.length > kb.length ? ka.name[common] : kb.name[common];
            if (next != ' ') // the shorter row goes on with a blank
                return (ka.length < kb.length) == (' ' < static_cast<unsigned char>(next));
        } else {
            char da[16], db[16];
            const auto ea = std::to_chars(da, da + sizeof da, a).ptr;
            const auto eb = std::to_chars(db, db + sizeof db, b).ptr;
            return std::lexicographical_compare(da, ea, db, eb);
        }
        const RowTail ta(a);
        const RowTail tb(b);
        const auto at = [](const SortKey &key, const RowTail &tail, qsizetype k) -> int {
            if (k < key.length)
                return static_cast<unsigned char>(key.name[k]);
            k -= key.length;
            return k < tail.length ? static_cast<unsigned char>(tail.text[k]) : -1;
        };
        const qsizetype end = std::max(ka.length + ta.length, kb.length + tb.length);
        for (qsizetype k = common; k < end; ++k) {
            const int ca = at(ka, ta, k);
            const int cb = at(kb, tb, k);
            if (ca != cb)
                return ca < cb;
        }
        return a < b;
    });
    return order;
}

#include "searchresults.h"

#include "searchrules.h"
#include "windows1252.h"

#include <algorithm>
#include <array>
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
    return Windows1252::toUpper(extensionColumnOf(at.chunk->path(*at.row)));
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
        bytes += qsizetype(chunk->pool.capacity()) + qsizetype(chunk->rows.capacity() * sizeof(ResultRow)) + qsizetype(sizeof(ResultChunk));
    return bytes;
}

namespace {

// The letter each byte sorts as: upper-cased, accented capitals as their base letter.
std::array<unsigned char, 256> makeSortLetters()
{
    const unsigned char *upper = Windows1252::upperTable();
    // Windows-1252 0xC0 to 0xDF, then Š, Œ, Ž and Ÿ.
    const char accented[] = "AAAAAAACEEEEIIIIDNOOOOO\xd7OUUUUY\xdeS";
    std::array<unsigned char, 256> letters{};
    for (int b = 0; b < 256; ++b) {
        unsigned char u = upper[b];
        if (u >= 0xC0 && u <= 0xDF)
            u = static_cast<unsigned char>(accented[u - 0xC0]);
        else if (u == 0x8A)
            u = 'S';
        else if (u == 0x8C)
            u = 'O';
        else if (u == 0x8E)
            u = 'Z';
        else if (u == 0x9F)
            u = 'Y';
        letters[size_t(b)] = u;
    }
    return letters;
}

// A row's place in the alphabetical view: its first sixteen sort letters, big-endian, so most
// rows are ordered by two integer comparisons; the names decide the rest.
struct SortEntry
{
    quint64 head[2];
    quint32 row;
    quint32 chunk;
};

} // namespace

std::vector<quint32> SearchResults::sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks)
{
    static const std::array<unsigned char, 256> letters = makeSortLetters();
    const unsigned char *upper = Windows1252::upperTable();
    std::vector<quint32> chunkStarts;
    size_t total = 0;
    for (const auto &chunk : chunks) {
        chunkStarts.push_back(quint32(total));
        total += chunk->rows.size();
    }
    const auto nameOf = [&](const SortEntry &entry) {
        const ResultChunk &chunk = *chunks[entry.chunk];
        return chunk.fileName(chunk.rows[entry.row - chunkStarts[entry.chunk]]);
    };

    std::vector<SortEntry> entries;
    entries.reserve(total);
    for (quint32 c = 0; c < chunks.size(); ++c) {
        for (const ResultRow &row : chunks[c]->rows) {
            SortEntry entry{{0, 0}, quint32(entries.size()), c};
            const QByteArrayView name = chunks[c]->fileName(row);
            const auto length = std::min<qsizetype>(16, name.size());
            for (qsizetype i = 0; i < length; ++i)
                entry.head[i / 8] |= quint64(letters[static_cast<unsigned char>(name[i])]) << (56 - 8 * (i % 8));
            entries.push_back(entry);
        }
    }
    std::sort(entries.begin(), entries.end(), [&](const SortEntry &a, const SortEntry &b) {
        if (a.head[0] != b.head[0])
            return a.head[0] < b.head[0];
        if (a.head[1] != b.head[1])
            return a.head[1] < b.head[1];
        const QByteArrayView na = nameOf(a);
        const QByteArrayView nb = nameOf(b);
        const auto compareBy = [&](const unsigned char *table) {
            const qsizetype common = std::min(na.size(), nb.size());
            for (qsizetype i = 0; i < common; ++i) {
                const unsigned char ca = table[static_cast<unsigned char>(na[i])];
                const unsigned char cb = table[static_cast<unsigned char>(nb[i])];
                if (ca != cb)
                    return ca < cb ? -1 : 1;
            }
            return na.size() == nb.size() ? 0 : na.size() < nb.size() ? -1 : 1;
        };
        if (const int byLetters = compareBy(letters.data()))
            return byLetters < 0;
        if (const int byBytes = compareBy(upper))
            return byBytes < 0;
        return a.row < b.row;
    });
    std::vector<quint32> order(entries.size());
    for (size_t i = 0; i < entries.size(); ++i)
        order[i] = entries[i].row;
    return order;
}

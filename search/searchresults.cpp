#include "searchresults.h"

#include "searchrules.h"
#include "windows1252.h"

#include <algorithm>

#include <array>
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

// A row's place in the alphabetical view: its first sort letters, big-endian, so most rows are
// ordered by integer comparisons, and where its name lies for the others.
constexpr int kHeadWords = 4;
constexpr quint32 kHeadLetters = kHeadWords * 8;

struct SortEntry
{
    quint64 head[kHeadWords];
    const char *name;
    quint32 length;
    quint32 row; // of a distinct name: its index among them
};

// -1, 0 or 1 as `a` sorts before, with or after `b`, letter by letter through `table` from `from` on.
int compareNames(const SortEntry &a, const SortEntry &b, const unsigned char *table, quint32 from)
{
    const quint32 common = std::min(a.length, b.length);
    quint32 i = from;
    // Bytes stored alike sort alike: long equal stretches (huge names) are passed eight at a time.
    while (i + 8 <= common && std::memcmp(a.name + i, b.name + i, 8) == 0)
        i += 8;
    for (; i < common; ++i) {
        const unsigned char ca = table[static_cast<unsigned char>(a.name[i])];
        const unsigned char cb = table[static_cast<unsigned char>(b.name[i])];
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
    return a.length == b.length ? 0 : a.length < b.length ? -1 : 1;
}

// Whether two names read the same once upper-cased.
bool sameShownName(QByteArrayView a, QByteArrayView b, const unsigned char *upper)
{
    if (a.size() != b.size())
        return false;
    if (std::memcmp(a.data(), b.data(), size_t(a.size())) == 0)
        return true;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (upper[static_cast<unsigned char>(a[i])] != upper[static_cast<unsigned char>(b[i])])
            return false;
    }
    return true;
}

// A name's hash from its first sort letters (already made for its key) and its other bytes
// upper-cased; names that read the same once upper-cased hash alike.
quint64 hashOfShownName(const SortEntry &entry, const unsigned char *upper)
{
    quint64 h = quint64(entry.length) * 0x9e3779b97f4a7c15ull;
    for (const quint64 word : entry.head)
        h = (h ^ word) * 0xbf58476d1ce4e5b9ull;
    for (quint32 i = kHeadLetters; i < entry.length; ++i)
        h = (h ^ upper[static_cast<unsigned char>(entry.name[i])]) * 0x100000001b3ull;
    h ^= h >> 31;
    h *= 0x94d049bb133111ebull;
    return h ^ (h >> 29);
}

// The distinct names of a result, as shown (upper-cased), by open addressing. A slot holds a
// name's index + 1 and the high half of its hash, so most probes read nothing else.
class ShownNames
{
public:
    ShownNames(const unsigned char *upper, size_t rows)
        : m_upper(upper)
    {
        size_t slotCount = 1024;
        while (slotCount < rows / 2 && slotCount < (size_t(1) << 22))
            slotCount *= 2;
        m_slots.assign(slotCount, 0);
    }

    // The index of `entry`'s name among the distinct names in `names`, where it is added when new.
    quint32 find(SortEntry &entry, std::vector<SortEntry> &names)
    {
        const quint64 hash = hashOfShownName(entry, m_upper);
        const quint64 tag = hash & ~quint64(0xffffffff);
        const size_t mask = m_slots.size() - 1;
        size_t at = size_t(hash) & mask;
        for (; m_slots[at] != 0; at = (at + 1) & mask) {
            if ((m_slots[at] & ~quint64(0xffffffff)) != tag)
                continue;
            const quint32 id = quint32(m_slots[at]) - 1;
            const SortEntry &known = names[id];
            if (sameShownName({known.name, known.length}, {entry.name, entry.length}, m_upper))
                return id;
        }
        const auto id = quint32(names.size());
        entry.row = id;
        names.push_back(entry);
        m_hashes.push_back(hash);
        m_slots[at] = tag | (id + 1);
        if (m_hashes.size() * 2 > m_slots.size())
            grow();
        return id;
    }

private:
    void grow()
    {
        m_slots.assign(m_slots.size() * 2, 0);
        const size_t mask = m_slots.size() - 1;
        for (size_t id = 0; id < m_hashes.size(); ++id) {
            size_t at = size_t(m_hashes[id]) & mask;
            while (m_slots[at] != 0)
                at = (at + 1) & mask;
            m_slots[at] = (m_hashes[id] & ~quint64(0xffffffff)) | (id + 1);
        }
    }

    const unsigned char *m_upper;
    std::vector<quint64> m_slots; // 0 for none
    std::vector<quint64> m_hashes;
};

} // namespace

std::vector<quint32> SearchResults::sortedOrder(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
                                                const std::atomic_bool *abandon)
{
    static const std::array<unsigned char, 256> letters = makeSortLetters();
    const unsigned char *upper = Windows1252::upperTable();

    // Rows whose names read the same once upper-cased look alike in the view: they share one name
    // and keep the order found. Results hold the same names many times (a file on many discs, every
    // SETUP.EXE of a search by name): each distinct name is sorted once, then the rows are placed
    // by their name's rank.
    size_t total = 0;
    for (const auto &chunk : chunks)
        total += chunk->rows.size();
    std::vector<quint32> nameOfRow;
    nameOfRow.reserve(total);
    ShownNames shown(upper, total);
    std::vector<SortEntry> names;
    const ResultRow *previous = nullptr;
    for (const auto &chunk : chunks) {
        for (const ResultRow &row : chunk->rows) {
            // The rows of one path found several times (a string repeated in one name) follow one
            // another and share its bytes: they take its name without reading it again, so a
            // million rows of one huge name cost one reading of it.
            if (previous && previous->path == row.path && previous->pathLength == row.pathLength
                && previous->nameOffset == row.nameOffset) {
                nameOfRow.push_back(nameOfRow.back());
                continue;
            }
            previous = &row;
            if ((nameOfRow.size() & 0xffff) == 0 && abandon && abandon->load(std::memory_order_relaxed))
                return {};
            const QByteArrayView name = chunk->fileName(row);
            SortEntry entry{{}, name.data(), quint32(name.size()), 0};
            const auto length = std::min<qsizetype>(kHeadLetters, name.size());
            const auto *bytes = reinterpret_cast<const unsigned char *>(name.data());
            for (qsizetype word = 0; word * 8 < length; ++word) {
                const qsizetype end = std::min<qsizetype>(8, length - word * 8);
                quint64 head = 0;
                for (qsizetype i = 0; i < end; ++i)
                    head |= quint64(letters[bytes[word * 8 + i]]) << (56 - 8 * i);
                entry.head[word] = head;
            }
            nameOfRow.push_back(shown.find(entry, names));
        }
    }
    std::sort(names.begin(), names.end(), [&](const SortEntry &a, const SortEntry &b) {
        for (int i = 0; i < kHeadWords; ++i) {
            if (a.head[i] != b.head[i])
                return a.head[i] < b.head[i];
        }
        if (const int byLetters = compareNames(a, b, letters.data(), kHeadLetters))
            return byLetters < 0;
        return compareNames(a, b, upper, 0) < 0;
    });

    // Rows by their name's rank, the same name's rows in the order found.
    std::vector<quint32> firstOfRank(names.size() + 1, 0);
    std::vector<quint32> rankOfName(names.size());
    for (size_t rank = 0; rank < names.size(); ++rank)
        rankOfName[names[rank].row] = quint32(rank);
    for (quint32 &name : nameOfRow) {
        name = rankOfName[name];
        ++firstOfRank[name + 1];
    }
    for (size_t rank = 1; rank < firstOfRank.size(); ++rank)
        firstOfRank[rank] += firstOfRank[rank - 1];
    std::vector<quint32> order(total);
    for (size_t row = 0; row < total; ++row)
        order[firstOfRank[nameOfRow[row]]++] = quint32(row);
    return order;
}

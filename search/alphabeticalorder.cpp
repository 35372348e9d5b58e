#include "alphabeticalorder.h"

#include "freshmemory.h"
#include "windows1252.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <numeric>
#include <thread>
#include <utility>

namespace AlphabeticalOrder {
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

const unsigned char *sortLetters()
{
    static const std::array<unsigned char, 256> letters = makeSortLetters();
    return letters.data();
}

// A distinct name: its first sort letters, big-endian, so most names are ordered by integer
// comparisons, and where it lies for the others.
constexpr int kHeadWords = 4;
constexpr quint32 kHeadLetters = kHeadWords * 8;

struct SortEntry
{
    quint64 head[kHeadWords];
    const char *name;
    quint32 length : 31;
    quint32 folded : 1; // holds a letter that sorts as another (an accented one)
    quint32 id;         // in its table, once it has one
};

constexpr quint64 kHighBits = 0x8080808080808080ull;

// Up to eight bytes of `bytes` from `at`, the first in the lowest byte, zeros after the end.
quint64 wordAt(const unsigned char *bytes, qsizetype at, qsizetype size)
{
    const unsigned char *p = bytes + at;
    const qsizetype n = size - at;
    quint64 word = 0;
    if (n >= 8) {
        std::memcpy(&word, p, 8);
    } else if (n >= 4) {
        // Two overlapping reads of four rather than a copy of variable length (a call per name).
        quint32 low = 0;
        quint32 high = 0;
        std::memcpy(&low, p, 4);
        std::memcpy(&high, p + n - 4, 4);
        word = low | quint64(high) << (8 * (n - 4));
    } else if (n > 0) {
        word = quint64(p[0]) | quint64(p[n / 2]) << (8 * (n / 2)) | quint64(p[n - 1]) << (8 * (n - 1));
    }
    return word;
}

// Eight ASCII bytes upper-cased at once: a to z less 0x20, every other byte kept.
quint64 upperCasedAscii(quint64 word)
{
    const quint64 fromA = word + 0x1f1f1f1f1f1f1f1full; // 'a' and above reach 0x80
    const quint64 pastZ = word + 0x0505050505050505ull; // above 'z' reaches 0x80
    return word - (((fromA & ~pastZ) & kHighBits) >> 2);
}

SortEntry entryOf(QByteArrayView name)
{
    const unsigned char *letters = sortLetters();
    // A name of 2 GB or more (none fits in an archive's line) would be compared by its first 2 GB.
    SortEntry entry{{}, name.data(), quint32(std::min<qsizetype>(name.size(), 0x7fffffff)), false, 0};
    const auto *bytes = reinterpret_cast<const unsigned char *>(name.data());
    const auto inHead = std::min<qsizetype>(kHeadLetters, name.size());
    // Most names are ASCII, whose sort letters are their capitals: eight at a time. Only a byte
    // from 0x80 on can be a letter that sorts as another.
    quint64 highBits = 0;
    for (qsizetype word = 0; word * 8 < inHead; ++word) {
        const quint64 eight = wordAt(bytes, word * 8, inHead);
        highBits |= eight & kHighBits;
        if ((eight & kHighBits) == 0) {
            entry.head[word] = qToBigEndian(upperCasedAscii(eight));
            continue;
        }
        const qsizetype end = std::min<qsizetype>(8, inHead - word * 8);
        quint64 head = 0;
        for (qsizetype i = 0; i < end; ++i)
            head |= quint64(letters[bytes[word * 8 + i]]) << (56 - 8 * i);
        entry.head[word] = head;
    }
    for (qsizetype at = inHead; at < name.size() && highBits == 0; at += 8)
        highBits |= wordAt(bytes, at, name.size()) & kHighBits;
    if (highBits != 0) {
        const unsigned char *upper = Windows1252::upperTable();
        bool folded = false;
        for (qsizetype i = 0; i < name.size() && !folded; ++i)
            folded = letters[bytes[i]] != upper[bytes[i]];
        entry.folded = folded;
    }
    return entry;
}

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

// -1, 0 or 1 as `a` sorts before, with or after `b`; 0 when they read the same once upper-cased.
int compareEntries(const SortEntry &a, const SortEntry &b)
{
    for (int i = 0; i < kHeadWords; ++i) {
        if (a.head[i] != b.head[i])
            return a.head[i] < b.head[i] ? -1 : 1;
    }
    if (a.length <= kHeadLetters && b.length <= kHeadLetters) {
        if (a.length != b.length)
            return a.length < b.length ? -1 : 1;
        // The same letters throughout: only an accented letter can tell the names apart, so names
        // without one are equal unread (they lie far apart in memory).
        if (!a.folded && !b.folded)
            return 0;
    } else if (const int byLetters = compareNames(a, b, sortLetters(), kHeadLetters)) {
        return byLetters;
    }
    return compareNames(a, b, Windows1252::upperTable(), 0);
}

// Whether two names read the same once upper-cased.
bool sameShownName(const SortEntry &a, const SortEntry &b, const unsigned char *upper)
{
    if (a.length != b.length)
        return false;
    for (int i = 0; i < kHeadWords; ++i) {
        if (a.head[i] != b.head[i])
            return false;
    }
    // Names held whole in their heads, without a letter that sorts as another: equal heads say
    // all, and the names are not read (they lie far apart in memory).
    if (a.length <= kHeadLetters && !a.folded && !b.folded)
        return true;
    if (std::memcmp(a.name, b.name, a.length) == 0)
        return true;
    for (quint32 i = 0; i < a.length; ++i) {
        if (upper[static_cast<unsigned char>(a.name[i])] != upper[static_cast<unsigned char>(b.name[i])])
            return false;
    }
    return true;
}

// A name's hash from its first sort letters (already made for its entry) and its other bytes
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

// A found row's name as the table is asked for it.
struct NamedRow
{
    SortEntry entry;
    quint64 hash;
    bool sameAsPrevious; // the row takes the previous row's name
};

// A distinct name in its table's cell: its entry and hash side by side in one cache line, so that
// finding a name again costs one read from memory, which can be asked for ahead.
struct alignas(64) NameCell
{
    SortEntry entry;
    quint64 hash;
    bool used;
};

} // namespace

// The distinct names a table has met, as shown (upper-cased), found again by open addressing.
struct NameTable::Names
{
    LargeVector<NameCell> cells = LargeVector<NameCell>(1024, NameCell{});
    quint32 count = 0;   // names held, their ids 0 to count - 1
    bool sorted = false; // order() has sorted the cells: they name no more rows
    std::vector<std::shared_ptr<PathBlock>> blocks;   // holding the names
    std::vector<std::shared_ptr<PathBlock>> idBlocks; // holding the rows' ids
    std::vector<quint32> idScratch;                   // reused from chunk to chunk
    std::mutex mutex; // the workers of a search share one table; each makes its rows' keys outside it

    // Asks the processor for the cell idOf(…, hash) reads first: the table is large and the read
    // would otherwise wait.
    void prefetch(quint64 hash) const { __builtin_prefetch(&cells[size_t(hash) & (cells.size() - 1)]); }

    quint32 idOf(const SortEntry &entry, quint64 hash)
    {
        const unsigned char *upper = Windows1252::upperTable();
        const size_t mask = cells.size() - 1;
        size_t at = size_t(hash) & mask;
        for (; cells[at].used; at = (at + 1) & mask) {
            if (cells[at].hash == hash && sameShownName(cells[at].entry, entry, upper))
                return cells[at].entry.id;
        }
        const quint32 id = count++;
        cells[at] = {entry, hash, true};
        cells[at].entry.id = id;
        if (size_t(count) * 2 > cells.size())
            grow();
        return id;
    }

    void grow()
    {
        LargeVector<NameCell> larger(cells.size() * 2, NameCell{});
        const size_t mask = larger.size() - 1;
        for (const NameCell &cell : cells) {
            if (!cell.used)
                continue;
            size_t at = size_t(cell.hash) & mask;
            while (larger[at].used)
                at = (at + 1) & mask;
            larger[at] = cell;
        }
        cells = std::move(larger);
    }

    // The cells of every name, moved to the front for sorting where they lie; the table then finds
    // no name again.
    std::span<NameCell> compacted()
    {
        if (!sorted) {
            size_t kept = 0;
            for (size_t at = 0; at < cells.size(); ++at) {
                if (cells[at].used)
                    cells[kept++] = cells[at];
            }
            sorted = true;
        }
        return {cells.data(), count};
    }

    void releaseCells()
    {
        cells = {};
        count = 0;
    }
};

NameTable::NameTable()
    : m_names(std::make_unique<Names>())
{
}

NameTable::~NameTable() = default;

std::span<const quint32> NameTable::nameRows(const ResultChunk &chunk)
{
    // First every row's name and hash (reading the names while they are in the cache), then their ids,
    // each asked for ahead so that the table's reads overlap.
    const unsigned char *upper = Windows1252::upperTable();
    thread_local std::vector<NamedRow> rows; // reused from chunk to chunk
    rows.clear();
    const ResultRow *previous = nullptr;
    for (const ResultRow &row : chunk.rows) {
        // The rows of one path found several times (a string repeated in one name) follow one
        // another and share its bytes: they take its name without reading it again, so a million
        // rows of one huge name cost one reading of it.
        if (previous && previous->path == row.path && previous->pathLength == row.pathLength
            && previous->nameOffset == row.nameOffset) {
            rows.push_back({rows.back().entry, rows.back().hash, true});
            continue;
        }
        previous = &row;
        const SortEntry entry = entryOf(chunk.fileName(row));
        rows.push_back({entry, hashOfShownName(entry, upper), false});
    }
    std::lock_guard lock(m_names->mutex);
    Q_ASSERT(!m_names->sorted);
    for (const auto &block : chunk.blocks) {
        if (m_names->blocks.empty() || m_names->blocks.back() != block)
            m_names->blocks.push_back(block);
    }
    constexpr size_t kCellAhead = 16;
    std::vector<quint32> &ids = m_names->idScratch;
    ids.clear();
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].sameAsPrevious) {
            ids.push_back(ids.back());
            continue;
        }
        if (i + kCellAhead < rows.size())
            m_names->prefetch(rows[i + kCellAhead].hash);
        ids.push_back(m_names->idOf(rows[i].entry, rows[i].hash));
    }
    // Kept in large blocks, like the rows: an archive's worth of fresh memory at a time costs a fault
    // a page.
    return storeInBlocks(m_names->idBlocks, std::span<const quint32>(ids));
}

RowOrder order(const std::vector<std::shared_ptr<const ResultChunk>> &chunks, const std::vector<NamedRows> &named,
               const std::atomic_bool *abandon)
{
    const size_t chunkCount = std::min(chunks.size(), named.size());
    std::vector<NameTable *> tables;
    for (size_t i = 0; i < chunkCount; ++i) {
        if (std::find(tables.begin(), tables.end(), named[i].table) == tables.end())
            tables.push_back(named[i].table);
    }
    const auto abandoned = [&] { return abandon && abandon->load(std::memory_order_relaxed); };

    // Work the processors share: each of the `parts` runs on its own thread, the first on this one.
    const size_t processors = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, 4);
    const auto inParallel = [](size_t parts, const auto &work) {
        std::vector<std::thread> helpers;
        for (size_t part = 1; part < parts; ++part)
            helpers.emplace_back(work, part);
        if (parts > 0)
            work(size_t(0));
        for (std::thread &helper : helpers)
            helper.join();
    };

    // Each table's names sorted where they lie (a large lone table in as many lists as
    // processors); an entry keeps its id. No list holds a name twice.
    struct List
    {
        size_t table;
        NameCell *first; // a stretch of the table's cells, compacted
        NameCell *end;
    };
    std::vector<List> lists;
    for (size_t t = 0; t < tables.size(); ++t) {
        const std::span<NameCell> cells = tables[t]->names().compacted();
        const size_t parts = tables.size() == 1 && cells.size() >= (size_t(1) << 16) ? processors : 1;
        for (size_t part = 0; part < parts; ++part)
            lists.push_back({t, cells.data() + cells.size() * part / parts, cells.data() + cells.size() * (part + 1) / parts});
    }
    inParallel(lists.size(), [&](size_t l) {
        std::sort(lists[l].first, lists[l].end,
                  [](const NameCell &a, const NameCell &b) { return compareEntries(a.entry, b.entry) < 0; });
    });
    if (abandoned())
        return {};

    // The lists merged into ranks: names that read the same in two lists share one.
    std::vector<LargeVector<quint32>> rankOf(tables.size());
    for (size_t t = 0; t < tables.size(); ++t)
        rankOf[t].resize(tables[t]->names().count);
    quint32 ranks = 0;
    const SortEntry *previous = nullptr;
    for (;;) {
        size_t best = lists.size();
        for (size_t l = 0; l < lists.size(); ++l) {
            if (lists[l].first == lists[l].end)
                continue;
            if (best == lists.size() || compareEntries(lists[l].first->entry, lists[best].first->entry) < 0)
                best = l;
        }
        if (best == lists.size())
            break;
        const SortEntry &name = (lists[best].first++)->entry;
        if (!previous || compareEntries(*previous, name) != 0)
            ++ranks;
        rankOf[lists[best].table][name.id] = ranks - 1;
        previous = &name;
    }
    // The names are ranked: their cells are given back, and the order below takes their memory
    // again, already mapped, rather than pages the system has to find and clear.
    for (NameTable *table : tables)
        table->names().releaseCells();

    // Rows by their name's rank, the same name's rows in the order found: the chunks are shared out
    // in stretches of about as many rows, each stretch's ranks counted, then its rows placed after
    // those of the earlier stretches with the same rank.
    std::vector<size_t> tableOf(chunkCount);
    std::vector<quint32> firstRowOf(chunkCount + 1, 0);
    for (size_t i = 0; i < chunkCount; ++i) {
        tableOf[i] = size_t(std::find(tables.begin(), tables.end(), named[i].table) - tables.begin());
        firstRowOf[i + 1] = firstRowOf[i] + quint32(std::min(chunks[i]->rows.size(), named[i].ids.size()));
    }
    const quint32 total = firstRowOf[chunkCount];
    const size_t stretches = total >= (1u << 16) ? processors : 1;
    std::vector<size_t> stretchStart(stretches + 1, chunkCount);
    for (size_t s = 0, i = 0; s < stretches; ++s) {
        while (i < chunkCount && firstRowOf[i] < quint64(total) * s / stretches)
            ++i;
        stretchStart[s] = i;
    }
    const auto forEachRank = [&](size_t stretch, auto &&visit) {
        for (size_t i = stretchStart[stretch]; i < stretchStart[stretch + 1]; ++i) {
            const LargeVector<quint32> &ranksOfTable = rankOf[tableOf[i]];
            const std::span<const quint32> ids = named[i].ids;
            const quint32 kept = firstRowOf[i + 1] - firstRowOf[i];
            for (quint32 row = 0; row < kept; ++row)
                visit(ranksOfTable[ids[row]], firstRowOf[i] + row);
        }
    };
    std::vector<LargeVector<quint32>> placeOf(stretches, LargeVector<quint32>(size_t(ranks), 0));
    inParallel(stretches, [&](size_t stretch) {
        forEachRank(stretch, [&](quint32 rank, quint32) { ++placeOf[stretch][rank]; });
    });
    if (abandoned())
        return {};
    quint32 place = 0;
    for (quint32 rank = 0; rank < ranks; ++rank) {
        for (size_t stretch = 0; stretch < stretches; ++stretch)
            place += std::exchange(placeOf[stretch][rank], place);
    }
    RowOrder order(total);
    inParallel(stretches, [&](size_t stretch) {
        forEachRank(stretch, [&](quint32 rank, quint32 row) { order[placeOf[stretch][rank]++] = row; });
    });
    return order;
}

} // namespace AlphabeticalOrder

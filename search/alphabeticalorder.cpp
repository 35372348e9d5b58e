#include "alphabeticalorder.h"

#include "windows1252.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>
#include <thread>
#include <utility>

#include <sys/mman.h>

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
    quint32 length;
    bool folded; // holds a letter that sorts as another (an accented one)
};

SortEntry entryOf(QByteArrayView name)
{
    const unsigned char *letters = sortLetters();
    SortEntry entry{{}, name.data(), quint32(name.size()), false};
    const auto *bytes = reinterpret_cast<const unsigned char *>(name.data());
    const auto inHead = std::min<qsizetype>(kHeadLetters, name.size());
    for (qsizetype word = 0; word * 8 < inHead; ++word) {
        const qsizetype end = std::min<qsizetype>(8, inHead - word * 8);
        quint64 head = 0;
        for (qsizetype i = 0; i < end; ++i)
            head |= quint64(letters[bytes[word * 8 + i]]) << (56 - 8 * i);
        entry.head[word] = head;
    }
    const unsigned char *upper = Windows1252::upperTable();
    for (qsizetype i = 0; i < name.size() && !entry.folded; ++i)
        entry.folded = letters[bytes[i]] != upper[bytes[i]];
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

// Memory for the large tables below: in huge pages where the system gives them, as they are read at
// random and each 4 KB page would otherwise cost its own address translation.
template<typename T>
struct HugePageAllocator
{
    using value_type = T;
    static constexpr size_t kHugePage = size_t(2) << 20;

    HugePageAllocator() = default;
    template<typename U>
    HugePageAllocator(const HugePageAllocator<U> &) noexcept
    {
    }

    T *allocate(size_t count)
    {
        const size_t bytes = count * sizeof(T);
        if (bytes < kHugePage) {
            if (void *memory = std::malloc(bytes))
                return static_cast<T *>(memory);
            throw std::bad_alloc();
        }
        const size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        void *memory = std::aligned_alloc(kHugePage, rounded);
        if (!memory)
            throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        madvise(memory, rounded, MADV_HUGEPAGE);
#endif
        return static_cast<T *>(memory);
    }
    void deallocate(T *memory, size_t) noexcept { std::free(memory); }

    template<typename U>
    bool operator==(const HugePageAllocator<U> &) const noexcept
    {
        return true;
    }
};

template<typename T>
using LargeVector = std::vector<T, HugePageAllocator<T>>;

} // namespace

// The distinct names a table has met, as shown (upper-cased), found again by open addressing. A
// slot holds a name's id + 1 and the high half of its hash, so most probes read nothing else.
struct NameTable::Names
{
    LargeVector<SortEntry> entries; // by id
    LargeVector<quint64> hashes;    // by id
    LargeVector<quint64> slotTable = LargeVector<quint64>(1024, 0); // 0 for none
    std::vector<std::shared_ptr<PathBlock>> blocks; // holding the names
    std::vector<NamedRow> scratch;                  // reused from chunk to chunk

    // Asks the processor for what idOf(…, hash) will read first: the name's home slot, then (once
    // that has come) the name it holds. The tables are large: each read would otherwise wait.
    void prefetchSlot(quint64 hash) const { __builtin_prefetch(&slotTable[size_t(hash) & (slotTable.size() - 1)]); }
    void prefetchName(quint64 hash) const
    {
        const quint64 slot = slotTable[size_t(hash) & (slotTable.size() - 1)];
        if (slot != 0)
            __builtin_prefetch(&entries[quint32(slot) - 1]);
    }

    quint32 idOf(const SortEntry &entry, quint64 hash)
    {
        const unsigned char *upper = Windows1252::upperTable();
        const quint64 tag = hash & ~quint64(0xffffffff);
        const size_t mask = slotTable.size() - 1;
        size_t at = size_t(hash) & mask;
        for (; slotTable[at] != 0; at = (at + 1) & mask) {
            if ((slotTable[at] & ~quint64(0xffffffff)) != tag)
                continue;
            const quint32 id = quint32(slotTable[at]) - 1;
            if (sameShownName(entries[id], entry, upper))
                return id;
        }
        const auto id = quint32(entries.size());
        entries.push_back(entry);
        hashes.push_back(hash);
        slotTable[at] = tag | (id + 1);
        if (hashes.size() * 2 > slotTable.size())
            grow();
        return id;
    }

    void grow()
    {
        slotTable.assign(slotTable.size() * 2, 0);
        const size_t mask = slotTable.size() - 1;
        for (size_t id = 0; id < hashes.size(); ++id) {
            size_t at = size_t(hashes[id]) & mask;
            while (slotTable[at] != 0)
                at = (at + 1) & mask;
            slotTable[at] = (hashes[id] & ~quint64(0xffffffff)) | (id + 1);
        }
    }
};

NameTable::NameTable()
    : m_names(std::make_unique<Names>())
{
}

NameTable::~NameTable() = default;

std::vector<quint32> NameTable::nameRows(const ResultChunk &chunk)
{
    for (const auto &block : chunk.blocks) {
        if (m_names->blocks.empty() || m_names->blocks.back() != block)
            m_names->blocks.push_back(block);
    }
    // First every row's name and hash (reading the names while they are in the cache), then their ids,
    // each asked for ahead so that the tables' reads overlap.
    const unsigned char *upper = Windows1252::upperTable();
    std::vector<NamedRow> &rows = m_names->scratch;
    rows.clear();
    rows.reserve(chunk.rows.size());
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
    constexpr size_t kSlotAhead = 32;
    constexpr size_t kNameAhead = 16;
    std::vector<quint32> ids;
    ids.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].sameAsPrevious) {
            ids.push_back(ids.back());
            continue;
        }
        if (i + kSlotAhead < rows.size())
            m_names->prefetchSlot(rows[i + kSlotAhead].hash);
        if (i + kNameAhead < rows.size())
            m_names->prefetchName(rows[i + kNameAhead].hash);
        ids.push_back(m_names->idOf(rows[i].entry, rows[i].hash));
    }
    return ids;
}

std::vector<quint32> order(const std::vector<std::shared_ptr<const ResultChunk>> &chunks,
                           const std::vector<NamedRows> &named, const std::atomic_bool *abandon)
{
    const size_t chunkCount = std::min(chunks.size(), named.size());
    std::vector<const NameTable *> tables;
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

    // Each table's names sorted (a large lone table in as many lists as processors), as copies so
    // that the merge below reads them in order. No list holds a name twice.
    struct Sorted
    {
        SortEntry entry;
        quint32 id;
    };
    struct List
    {
        size_t table;
        size_t first; // the ids [first, end) of the table
        size_t end;
        std::vector<Sorted> names;
    };
    std::vector<List> lists;
    for (size_t t = 0; t < tables.size(); ++t) {
        const size_t count = tables[t]->names().entries.size();
        const size_t parts = tables.size() == 1 && count >= (size_t(1) << 16) ? processors : 1;
        for (size_t part = 0; part < parts; ++part)
            lists.push_back({t, count * part / parts, count * (part + 1) / parts, {}});
    }
    inParallel(lists.size(), [&](size_t l) {
        List &list = lists[l];
        const auto &entries = tables[list.table]->names().entries;
        list.names.reserve(list.end - list.first);
        for (size_t id = list.first; id < list.end; ++id)
            list.names.push_back({entries[id], quint32(id)});
        std::sort(list.names.begin(), list.names.end(),
                  [](const Sorted &a, const Sorted &b) { return compareEntries(a.entry, b.entry) < 0; });
    });
    if (abandoned())
        return {};

    // The lists merged into ranks: names that read the same in two lists share one.
    std::vector<std::vector<quint32>> rankOf(tables.size());
    for (size_t t = 0; t < tables.size(); ++t)
        rankOf[t].resize(tables[t]->names().entries.size());
    std::vector<size_t> next(lists.size(), 0);
    quint32 ranks = 0;
    const SortEntry *previous = nullptr;
    for (;;) {
        size_t best = lists.size();
        for (size_t l = 0; l < lists.size(); ++l) {
            if (next[l] == lists[l].names.size())
                continue;
            if (best == lists.size() || compareEntries(lists[l].names[next[l]].entry, lists[best].names[next[best]].entry) < 0)
                best = l;
        }
        if (best == lists.size())
            break;
        const Sorted &name = lists[best].names[next[best]++];
        if (!previous || compareEntries(*previous, name.entry) != 0)
            ++ranks;
        rankOf[lists[best].table][name.id] = ranks - 1;
        previous = &name.entry;
    }

    // Rows by their name's rank, the same name's rows in the order found: the chunks are shared out
    // in stretches of about as many rows, each stretch's ranks counted, then its rows placed after
    // those of the earlier stretches with the same rank.
    std::vector<size_t> tableOf(chunkCount);
    std::vector<quint32> firstRowOf(chunkCount + 1, 0);
    for (size_t i = 0; i < chunkCount; ++i) {
        tableOf[i] = size_t(std::find(tables.begin(), tables.end(), named[i].table) - tables.begin());
        firstRowOf[i + 1] = firstRowOf[i] + quint32(std::min(chunks[i]->rows.size(), named[i].ids->size()));
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
            const std::vector<quint32> &ranksOfTable = rankOf[tableOf[i]];
            const std::vector<quint32> &ids = *named[i].ids;
            const quint32 kept = firstRowOf[i + 1] - firstRowOf[i];
            for (quint32 row = 0; row < kept; ++row)
                visit(ranksOfTable[ids[row]], firstRowOf[i] + row);
        }
    };
    std::vector<std::vector<quint32>> placeOf(stretches, std::vector<quint32>(size_t(ranks), 0));
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
    std::vector<quint32> order(total);
    inParallel(stretches, [&](size_t stretch) {
        forEachRank(stretch, [&](quint32 rank, quint32 row) { order[placeOf[stretch][rank]++] = row; });
    });
    return order;
}

} // namespace AlphabeticalOrder

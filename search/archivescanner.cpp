#include "archivescanner.h"

#include "archivefile.h"
#include "windows1252.h"

#include <cstring>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define KALVEX_HAVE_X86 1
#endif

namespace {

// How often an upper-cased byte turns up in catalogued paths, roughly: letters by their frequency in
// French and English names, then digits and the separators. The scan looks for the term's two rarest
// bytes, so that fewer places need a closer look.
int commonness(unsigned char upper)
{
    static constexpr char kByFrequency[] = "\\ .ESAIRTNOLUCDPM0123456789_-VGBFHYWKQXJZ";
    for (int i = 0; kByFrequency[i]; ++i) {
        if (static_cast<unsigned char>(kByFrequency[i]) == upper)
            return 64 - i;
    }
    return 0;
}

} // namespace

ArchiveScanner::ArchiveScanner(SearchKind kind, QByteArray term)
    : m_kind(kind)
    , m_term(std::move(term))
{
    // The two rarest bytes, in the order they stand in the term (one place when it is one byte).
    const auto rank = [this](qsizetype at) { return commonness(static_cast<unsigned char>(m_term[at])); };
    for (qsizetype at = 1; at < m_term.size(); ++at) {
        if (rank(at) < rank(m_firstAt))
            m_firstAt = at;
    }
    m_lastAt = m_firstAt;
    for (qsizetype at = 0; at < m_term.size(); ++at) {
        if (at != m_firstAt && (m_lastAt == m_firstAt || rank(at) < rank(m_lastAt)))
            m_lastAt = at;
    }
    if (m_lastAt < m_firstAt)
        std::swap(m_firstAt, m_lastAt);
    // A term holding a line end cannot be found by a scan over raw bytes; such terms (never typed)
    // take the plain line-by-line reading.
    m_blockScan = !m_term.isEmpty() && !m_term.contains('\n') && !m_term.contains('\r')
                  && casesOf(static_cast<unsigned char>(m_term[m_firstAt]), m_first)
                  && casesOf(static_cast<unsigned char>(m_term[m_lastAt]), m_last);
}

void ArchiveScanner::judgeLine(QByteArrayView line, ResultChunk &out, qsizetype rowCap) const
{
    const QByteArrayView path = unquotedArchiveLine(line);
    const PathParts parts = splitPath(path);
    int rows = rowsForPath(m_kind, path, parts, m_term);
    if (rows == 0)
        return;
    if (rowCap > 0)
        rows = int(std::min<qsizetype>(rows, rowCap - qsizetype(out.found.size())));
    // The path is kept as read: it is upper-cased only when shown.
    const char *copy = out.store(path);
    for (int i = 0; i < rows; ++i)
        out.found.push_back({copy, quint32(path.size()), quint32(parts.nameStart)});
}

qsizetype ArchiveScanner::takeLine(QByteArrayView data, qsizetype pos, ResultChunk &out, qsizetype rowCap) const
{
    const char *base = data.data();
    const void *previousEnd = pos > 0 ? memrchr(base, '\n', size_t(pos)) : nullptr;
    const qsizetype lineStart = previousEnd ? static_cast<const char *>(previousEnd) - base + 1 : 0;
    const void *end = std::memchr(base + pos, '\n', size_t(data.size() - pos));
    const qsizetype lineEnd = end ? static_cast<const char *>(end) - base : data.size();
    QByteArrayView line = data.sliced(lineStart, lineEnd - lineStart);
    if (line.endsWith('\r'))
        line.chop(1);
    judgeLine(line, out, rowCap);
    return lineEnd + 1;
}

void ArchiveScanner::scanLineByLine(QByteArrayView data, ResultChunk &out, qsizetype rowCap,
                                    const std::atomic_bool *stop) const
{
    ArchiveReader reader(data);
    QByteArrayView line;
    while (reader.next(line)) {
        if ((rowCap > 0 && qsizetype(out.found.size()) >= rowCap) || (stop && stop->load(std::memory_order_relaxed)))
            return;
        judgeLine(line, out, rowCap);
    }
}

#ifdef KALVEX_HAVE_X86
namespace {

// The scanners' blocks: 64 bytes, whose candidates make one 64-bit mask. Bit k is set when the byte
// at k is one of `first` and the byte at k + distance one of `last`.
constexpr qsizetype kBlock = 64;

__attribute__((target("avx2"), always_inline)) inline __m256i hitsAvx2(const char *at, qsizetype distance, __m256i first0,
                                                                       __m256i first1, __m256i last0, __m256i last1)
{
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at + distance));
    return _mm256_and_si256(_mm256_or_si256(_mm256_cmpeq_epi8(a, first0), _mm256_cmpeq_epi8(a, first1)),
                            _mm256_or_si256(_mm256_cmpeq_epi8(b, last0), _mm256_cmpeq_epi8(b, last1)));
}

// The first block from `pos` on, up to `limit` (the last block start), that holds a candidate; its
// start, or a position past `limit` when none does.
__attribute__((target("avx2"))) qsizetype findBlockAvx2(const char *base, qsizetype pos, qsizetype limit,
                                                          qsizetype distance, const std::array<unsigned char, 2> &first,
                                                          const std::array<unsigned char, 2> &last, quint64 &mask)
{
    const __m256i first0 = _mm256_set1_epi8(char(first[0]));
    const __m256i first1 = _mm256_set1_epi8(char(first[1]));
    const __m256i last0 = _mm256_set1_epi8(char(last[0]));
    const __m256i last1 = _mm256_set1_epi8(char(last[1]));
    for (; pos <= limit; pos += kBlock) {
        const __m256i low = hitsAvx2(base + pos, distance, first0, first1, last0, last1);
        const __m256i high = hitsAvx2(base + pos + 32, distance, first0, first1, last0, last1);
        const __m256i any = _mm256_or_si256(low, high);
        if (!_mm256_testz_si256(any, any)) {
            mask = quint64(quint32(_mm256_movemask_epi8(low))) | quint64(quint32(_mm256_movemask_epi8(high))) << 32;
            return pos;
        }
    }
    return pos;
}

qsizetype findBlockSse2(const char *base, qsizetype pos, qsizetype limit, qsizetype distance,
                        const std::array<unsigned char, 2> &first, const std::array<unsigned char, 2> &last, quint64 &mask)
{
    const __m128i first0 = _mm_set1_epi8(char(first[0]));
    const __m128i first1 = _mm_set1_epi8(char(first[1]));
    const __m128i last0 = _mm_set1_epi8(char(last[0]));
    const __m128i last1 = _mm_set1_epi8(char(last[1]));
    const auto hits = [&](const char *at) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at + distance));
        return quint64(quint32(_mm_movemask_epi8(_mm_and_si128(_mm_or_si128(_mm_cmpeq_epi8(a, first0), _mm_cmpeq_epi8(a, first1)),
                                                              _mm_or_si128(_mm_cmpeq_epi8(b, last0), _mm_cmpeq_epi8(b, last1))))));
    };
    for (; pos <= limit; pos += kBlock) {
        const quint64 found = hits(base + pos) | hits(base + pos + 16) << 16 | hits(base + pos + 32) << 32
                              | hits(base + pos + 48) << 48;
        if (found) {
            mask = found;
            return pos;
        }
    }
    return pos;
}

bool g_useAvx2 = __builtin_cpu_supports("avx2");

} // namespace
#endif

bool ArchiveScanner::allowAvx2(bool allowed)
{
#ifdef KALVEX_HAVE_X86
    const bool was = g_useAvx2;
    g_useAvx2 = allowed && __builtin_cpu_supports("avx2");
    return was;
#else
    Q_UNUSED(allowed);
    return false;
#endif
}

void ArchiveScanner::scan(QByteArrayView data, ResultChunk &out, qsizetype rowCap, const std::atomic_bool *stop) const
{
    if (!m_blockScan) {
        scanLineByLine(data, out, rowCap, stop);
        return;
    }
    const qsizetype n = m_term.size();
    const qsizetype size = data.size();
    const char *base = data.data();
    const auto full = [&] { return rowCap > 0 && qsizetype(out.found.size()) >= rowCap; };
    qsizetype pos = 0;
#ifdef KALVEX_HAVE_X86
    // Blocks are compared from the term's first chosen byte on, and read up to the second one past
    // their end: candidates start at most at size - n, so the term read from one lies in the data.
    const qsizetype limit = size - (n - 1) - kBlock;
    const char *chosen = base + m_firstAt;
    const qsizetype distance = m_lastAt - m_firstAt;
    constexpr qsizetype kStopCheck = qsizetype(1) << 20; // bytes scanned between looks at the stop flag
    while (pos <= limit) {
        if (stop && stop->load(std::memory_order_relaxed))
            return;
        const qsizetype sliceLimit = std::min(limit, pos + kStopCheck);
        quint64 mask = 0;
        pos = g_useAvx2 ? findBlockAvx2(chosen, pos, sliceLimit, distance, m_first, m_last, mask)
                        : findBlockSse2(chosen, pos, sliceLimit, distance, m_first, m_last, mask);
        if (pos > sliceLimit)
            continue; // no candidate in this slice
        qsizetype next = pos + kBlock;
        while (mask) {
            const qsizetype at = pos + __builtin_ctzll(mask);
            mask &= mask - 1;
            if (equalsUpperCased(base + at, m_term)) {
                next = takeLine(data, at, out, rowCap);
                break; // the rest of that line is judged; go on after it
            }
        }
        pos = next;
        if (full())
            return;
    }
#endif
    for (; pos + n <= size && !full(); ++pos) {
        if (equalsUpperCased(base + pos, m_term))
            pos = takeLine(data, pos, out, rowCap) - 1;
    }
}

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

// The bytes that upper-case to `upper`; false when there are more than two.
bool casesOf(unsigned char upper, std::array<unsigned char, 2> &cases)
{
    const unsigned char *table = Windows1252::upperTable();
    int found = 0;
    for (int b = 0; b < 256; ++b) {
        if (table[b] == upper) {
            if (found == 2)
                return false;
            cases[size_t(found++)] = static_cast<unsigned char>(b);
        }
    }
    if (found == 0)
        return false;
    if (found == 1)
        cases[1] = cases[0];
    return true;
}

void appendRows(ResultChunk &out, QByteArrayView path, int rows, qsizetype rowCap)
{
    const qsizetype start = out.pool.size();
    out.pool.append(path.data(), path.size());
    const auto nameOffset = quint32(splitPath(path).nameStart);
    for (int i = 0; i < rows; ++i) {
        if (rowCap > 0 && qsizetype(out.rows.size()) >= rowCap)
            return;
        out.rows.push_back({start, quint32(path.size()), nameOffset});
    }
}

} // namespace

ArchiveScanner::ArchiveScanner(SearchKind kind, QByteArray term)
    : m_kind(kind)
    , m_term(std::move(term))
{
    // A term holding a line end cannot be found by a scan over raw bytes; such terms (never typed)
    // take the plain line-by-line reading.
    m_blockScan = !m_term.isEmpty() && !m_term.contains('\n') && !m_term.contains('\r')
                  && casesOf(static_cast<unsigned char>(m_term.front()), m_first)
                  && casesOf(static_cast<unsigned char>(m_term.back()), m_last);
}

bool ArchiveScanner::matchesAt(const char *at) const
{
    const unsigned char *table = Windows1252::upperTable();
    for (qsizetype i = 0; i < m_term.size(); ++i) {
        if (char(table[static_cast<unsigned char>(at[i])]) != m_term[i])
            return false;
    }
    return true;
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
    thread_local QByteArray upper;
    upper.resize(line.size());
    const unsigned char *table = Windows1252::upperTable();
    for (qsizetype i = 0; i < line.size(); ++i)
        upper[i] = char(table[static_cast<unsigned char>(line[i])]);
    const QByteArrayView path = unquotedArchiveLine(upper);
    const int rows = rowsForPath(m_kind, path, m_term);
    if (rows > 0)
        appendRows(out, path, rows, rowCap);
    return lineEnd + 1;
}

void ArchiveScanner::scanLineByLine(QByteArrayView data, ResultChunk &out, qsizetype rowCap,
                                    const std::atomic_bool *stop) const
{
    ArchiveReader reader(data);
    QByteArrayView line;
    while (reader.next(line)) {
        if ((rowCap > 0 && qsizetype(out.rows.size()) >= rowCap) || (stop && stop->load(std::memory_order_relaxed)))
            return;
        const QByteArray upper = Windows1252::toUpper(line);
        const QByteArrayView path = unquotedArchiveLine(upper);
        const int rows = rowsForPath(m_kind, path, m_term);
        if (rows > 0)
            appendRows(out, path, rows, rowCap);
    }
}

#ifdef KALVEX_HAVE_X86
namespace {

// The candidates of a 32-byte block at `at`: bit k set when the byte at k may start the term (its
// first byte) and the byte at k + distance may end it.
__attribute__((target("avx2"))) quint32 candidatesAvx2(const char *at, qsizetype distance,
                                                         const std::array<unsigned char, 2> &first,
                                                         const std::array<unsigned char, 2> &last)
{
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at + distance));
    const __m256i startHit = _mm256_or_si256(_mm256_cmpeq_epi8(a, _mm256_set1_epi8(char(first[0]))),
                                             _mm256_cmpeq_epi8(a, _mm256_set1_epi8(char(first[1]))));
    const __m256i endHit = _mm256_or_si256(_mm256_cmpeq_epi8(b, _mm256_set1_epi8(char(last[0]))),
                                           _mm256_cmpeq_epi8(b, _mm256_set1_epi8(char(last[1]))));
    return quint32(_mm256_movemask_epi8(_mm256_and_si256(startHit, endHit)));
}

quint32 candidatesSse2(const char *at, qsizetype distance, const std::array<unsigned char, 2> &first,
                       const std::array<unsigned char, 2> &last)
{
    quint32 mask = 0;
    for (int half = 0; half < 2; ++half) {
        const char *p = at + half * 16;
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + distance));
        const __m128i startHit = _mm_or_si128(_mm_cmpeq_epi8(a, _mm_set1_epi8(char(first[0]))),
                                              _mm_cmpeq_epi8(a, _mm_set1_epi8(char(first[1]))));
        const __m128i endHit = _mm_or_si128(_mm_cmpeq_epi8(b, _mm_set1_epi8(char(last[0]))),
                                            _mm_cmpeq_epi8(b, _mm_set1_epi8(char(last[1]))));
        mask |= quint32(_mm_movemask_epi8(_mm_and_si128(startHit, endHit))) << (half * 16);
    }
    return mask;
}

const bool kHaveAvx2 = __builtin_cpu_supports("avx2");

} // namespace
#endif

void ArchiveScanner::scan(QByteArrayView data, ResultChunk &out, qsizetype rowCap, const std::atomic_bool *stop) const
{
    if (!m_blockScan) {
        scanLineByLine(data, out, rowCap, stop);
        return;
    }
    const qsizetype n = m_term.size();
    const qsizetype size = data.size();
    const char *base = data.data();
    const auto full = [&] { return rowCap > 0 && qsizetype(out.rows.size()) >= rowCap; };
    qsizetype pos = 0;
#ifdef KALVEX_HAVE_X86
    constexpr qsizetype kBlock = 32;
    qsizetype blocks = 0;
    while (pos + n - 1 + kBlock <= size) {
        quint32 mask = kHaveAvx2 ? candidatesAvx2(base + pos, n - 1, m_first, m_last)
                                 : candidatesSse2(base + pos, n - 1, m_first, m_last);
        qsizetype next = pos + kBlock;
        while (mask) {
            const qsizetype at = pos + __builtin_ctz(mask);
            mask &= mask - 1;
            if (matchesAt(base + at)) {
                next = takeLine(data, at, out, rowCap);
                break; // the rest of that line is judged; go on after it
            }
        }
        pos = next;
        if (full())
            return;
        if ((++blocks & 0xFFFF) == 0 && stop && stop->load(std::memory_order_relaxed))
            return;
    }
#endif
    for (; pos + n <= size && !full(); ++pos) {
        if (matchesAt(base + pos))
            pos = takeLine(data, pos, out, rowCap) - 1;
    }
}

#include "searchrules.h"

#include "textformat.h"
#include "windows1252.h"

#include <array>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

const unsigned char *const kUpper = Windows1252::upperTable();

// For each byte, the bytes that upper-case to it: none, one (given twice) or two; more count as none.
struct Preimages
{
    std::array<unsigned char, 2> bytes{};
    int count = 0;
};

std::array<Preimages, 256> makePreimages()
{
    std::array<Preimages, 256> all{};
    for (int b = 0; b < 256; ++b) {
        Preimages &of = all[kUpper[b]];
        if (of.count < 2)
            of.bytes[size_t(of.count)] = static_cast<unsigned char>(b);
        ++of.count;
    }
    for (Preimages &of : all) {
        if (of.count == 1)
            of.bytes[1] = of.bytes[0];
        else if (of.count > 2)
            of.count = 0;
    }
    return all;
}

const std::array<Preimages, 256> kPreimages = makePreimages();

inline bool equalAt(const char *at, QByteArrayView term)
{
    for (qsizetype i = 0; i < term.size(); ++i) {
        if (char(kUpper[static_cast<unsigned char>(at[i])]) != term[i])
            return false;
    }
    return true;
}

} // namespace

bool casesOf(unsigned char upper, std::array<unsigned char, 2> &cases)
{
    const Preimages &of = kPreimages[upper];
    cases = of.bytes;
    return of.count > 0;
}

bool equalsUpperCased(const char *at, QByteArrayView term)
{
    return equalAt(at, term);
}

PathParts splitPath(QByteArrayView path)
{
    PathParts parts;
    parts.baseEnd = path.size();
    if (path.isEmpty())
        return parts;
    const char *p = path.data();
    if (const void *backslash = memrchr(p, '\\', size_t(path.size())))
        parts.nameStart = static_cast<const char *>(backslash) - p + 1;
    if (const void *dot = memrchr(p + parts.nameStart, '.', size_t(path.size() - parts.nameStart))) {
        parts.baseEnd = static_cast<const char *>(dot) - p;
        parts.hasExtension = true;
    }
    return parts;
}

int rowsForPath(SearchKind kind, QByteArrayView path, const PathParts &parts, QByteArrayView term)
{
    const qsizetype n = term.size();
    if (n == 0)
        return 0;
    switch (kind) {
    case SearchKind::Name:
        return parts.baseEnd - parts.nameStart == n && equalAt(path.data() + parts.nameStart, term) ? 1 : 0;
    case SearchKind::String: {
        int rows = 0;
        const char *p = path.data();
        const char first = term[0];
        const QByteArrayView rest = term.sliced(1);
        const qsizetype last = path.size() - n - 2;
        qsizetype start = parts.nameStart;
#ifdef __SSE2__
        // Sixteen starts at a time, from sixteen bytes of the path: only those whose byte may begin
        // the term are compared; the last block ends at the path's end and skips what was done.
        const Preimages &cases = kPreimages[static_cast<unsigned char>(first)];
        const __m128i firstUpper = _mm_set1_epi8(char(cases.bytes[0]));
        const __m128i firstLower = _mm_set1_epi8(char(cases.bytes[1]));
        const qsizetype size = path.size();
        while (cases.count > 0 && start <= last && size >= 16) {
            const qsizetype block = std::min(start, size - 16);
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + block));
            auto mask = unsigned(_mm_movemask_epi8(
                _mm_or_si128(_mm_cmpeq_epi8(bytes, firstUpper), _mm_cmpeq_epi8(bytes, firstLower))));
            mask &= ~0u << (start - block);
            if (last - block < 15)
                mask &= (2u << (last - block)) - 1;
            for (; mask; mask &= mask - 1) {
                const qsizetype at = block + __builtin_ctz(mask);
                if (char(kUpper[static_cast<unsigned char>(p[at])]) == first && equalAt(p + at + 1, rest))
                    ++rows;
            }
            start = block + 16;
        }
#endif
        for (; start <= last; ++start) {
            if (char(kUpper[static_cast<unsigned char>(p[start])]) == first && equalAt(p + start + 1, rest))
                ++rows;
        }
        return rows;
    }
    case SearchKind::Extension:
        return std::min<qsizetype>(3, path.size()) == n && equalAt(path.data() + path.size() - n, term) ? 1 : 0;
    case SearchKind::Theme: {
        // Only lines around a hit of the scanner get here: a plain window is fast enough.
        const char *p = path.data();
        for (qsizetype start = 0; start < path.size() - n; ++start) {
            if (equalAt(p + start, term))
                return 1; // the first match only
        }
        return 0;
    }
    }
    return 0;
}

QByteArrayView extensionColumnOf(QByteArrayView path)
{
    if (!splitPath(path).hasExtension)
        return "   ";
    return path.last(std::min<qsizetype>(3, path.size()));
}

QByteArrayView themeExtensionColumnOf(QByteArrayView path)
{
    if (!path.contains('.'))
        return "    ";
    return path.last(std::min<qsizetype>(3, path.size()));
}

QByteArray searchTerm(const QString &typed)
{
    return Windows1252::encode(Windows1252::toUpper(typed));
}

QString archiveNameOf(const QString &fileName)
{
    return fileName.chopped(std::min<qsizetype>(4, fileName.size()));
}

QString sortedRowText(const QString &fileName, qsizetype index)
{
    return fileName + QString(60, QLatin1Char(' ')) + formatSigned(index);
}

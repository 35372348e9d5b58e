#pragma once

#include "searchresults.h"
#include "searchrules.h"

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <atomic>

// Finds the rows of one archive's bytes. The bytes are scanned in blocks for the term in either
// letter case; only the lines around a hit are split and judged by rowsForPath(), so the rows are
// exactly those of a line-by-line reading (lines end with LF or CR LF).
class ArchiveScanner
{
public:
    ArchiveScanner(SearchKind kind, QByteArray term);

    // Appends the rows of `data` to `out`, in line order, until `rowCap` rows are held (0: no cap)
    // or `stop` is set.
    void scan(QByteArrayView data, ResultChunk &out, qsizetype rowCap = 0,
              const std::atomic_bool *stop = nullptr) const;

    // Whether blocks are scanned with AVX2 where the processor has it (else SSE2); returns the
    // previous setting. For checking both scans on one machine.
    static bool allowAvx2(bool allowed);

private:
    // Judges the line holding `pos`; returns the position after it.
    qsizetype takeLine(QByteArrayView data, qsizetype pos, ResultChunk &out, qsizetype rowCap) const;
    void scanLineByLine(QByteArrayView data, ResultChunk &out, qsizetype rowCap, const std::atomic_bool *stop) const;
    void judgeLine(QByteArrayView line, ResultChunk &out, qsizetype rowCap) const;

    SearchKind m_kind;
    QByteArray m_term;
    // Where the term's two rarest bytes lie, and the bytes that upper-case to each (two each; the
    // same twice when one).
    qsizetype m_firstAt = 0;
    qsizetype m_lastAt = 0;
    std::array<unsigned char, 2> m_first{};
    std::array<unsigned char, 2> m_last{};
    bool m_blockScan = false;
};

// The search engine at scale: a million rows kept, a large result sorted against a small one's
// order, a million rows of one huge name sorted. Prints each case's time and what it holds, and
// whether the result is right; not a test (CTest never runs it): run it by hand after a change to
// the result store or the alphabetical order.
#include "archivescanner.h"
#include "searchrun.h"
#include "windows1252.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace {

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

void report(const char *what, const QElapsedTimer &timer, bool right, const QByteArray &more = {})
{
    std::printf("%-40s %8lld ms  %s  %s\n", what, timer.elapsed(), right ? "right" : "WRONG", more.constData());
}

// A million distinct paths over many blocks and one longer than a block: each row keeps its own.
bool millionRowsStayCompact()
{
    QElapsedTimer timer;
    timer.start();
    SearchResults results;
    auto chunk = std::make_shared<ResultChunk>();
    for (int i = 0; i < 1000000; ++i) {
        const QByteArray path = "d:\\PHOTOS\\VACANCES\\img_" + QByteArray::number(999999 - i) + ".jpg";
        chunk->found.push_back({chunk->store(path), quint32(path.size()), 19});
    }
    const QByteArray huge = "d:\\" + QByteArray(5 << 20, 'x');
    chunk->found.push_back({chunk->store(huge), quint32(huge.size()), 3});
    chunk->keepFound();
    results.append(chunk);
    results.setSortedOrder(SearchResults::sortedOrder({chunk}));
    bool right = results.path(999999) == "D:\\PHOTOS\\VACANCES\\IMG_0.JPG" && results.fileName(1000000) == QByteArray(5 << 20, 'X')
                 && results.sortedIndex(0) == 999999 && results.sortedIndex(1000000) == 1000000;
    for (int i = 0; i < 1000000 && right; i += 997)
        right = results.fileName(i) == "IMG_" + QByteArray::number(999999 - i) + ".JPG";
    report("million rows kept", timer, right && results.memoryUsed() < 100 * 1024 * 1024,
           "memory " + QByteArray::number(results.memoryUsed() >> 20) + " MiB (under 100)");
    return right;
}

// Past 65,536 names or rows the order is built in parts, on as many threads as processors: it
// must equal the order of the same rows sorted whole (by their upper-cased names, É as E first).
bool largeResultsSortAsSmallOnes(const QString &dir)
{
    const QByteArray alphabet("aAbBcCdD\xe9\xc9x");
    QRandomGenerator random(20261122);
    QList<ArchiveToScan> archives;
    for (int a = 0; a < 3; ++a) {
        QByteArray archive;
        for (int l = 0; l < 60000; ++l) {
            archive.append("\"d:\\X\\");
            const int length = random.bounded(1, l % 7 == 0 ? 40 : 12);
            for (int i = 0; i < length; ++i)
                archive.append(alphabet[random.bounded(int(alphabet.size()))]);
            archive.append("\"\r\n");
        }
        archives.append({dir + u"/L%1.lst"_qs.arg(a), u"L%1"_qs.arg(a)});
        writeFile(archives.last().filePath, archive);
    }
    bool right = true;
    for (int threads : {1, 2}) {
        QElapsedTimer timer;
        timer.start();
        const SearchResults results = SearchRun::runAndWait({SearchKind::Theme, "X", archives, 0, threads});
        const qint64 searched = timer.elapsed();
        std::vector<qsizetype> expected(size_t(results.size()));
        std::iota(expected.begin(), expected.end(), 0);
        const auto key = [&](qsizetype i) {
            QByteArray name = results.fileName(i);
            QByteArray letters = name;
            letters.replace('\xc9', 'E');
            return std::pair{letters, name};
        };
        std::stable_sort(expected.begin(), expected.end(), [&](qsizetype a, qsizetype b) { return key(a) < key(b); });
        bool same = results.sortedSize() == 180000;
        for (qsizetype i = 0; same && i < results.sortedSize(); ++i)
            same = results.sortedIndex(i) == expected[size_t(i)];
        report(threads == 1 ? "180,000 rows sorted, 1 thread" : "180,000 rows sorted, 2 threads", timer, same,
               "search and order " + QByteArray::number(searched) + " ms");
        right = right && same;
    }
    return right;
}

// One line of 1 MiB of A: AAA starts at every place but the last ones, about a million rows of
// one path. Sorting them hashed the whole name once a row: over a minute.
bool millionRowsOfOneHugeNameSortInLinearTime(const QString &dir)
{
    writeFile(dir + u"/A.lst"_qs, "\"d:\\" + QByteArray(1 << 20, 'A') + "\"\r\n");
    QElapsedTimer timer;
    timer.start();
    SearchRun run({SearchKind::String, "AAA", archivesToScan(dir, {u"A.lst"_qs}), 0, 1});
    run.start();
    run.wait();
    qsizetype rows = 0;
    for (const auto &chunk : run.takeChunks())
        rows += qsizetype(chunk->rows.size());
    const RowOrder order = run.takeSortedOrder();
    const bool right = rows == (1 << 20) - 4 && qsizetype(order.size()) == rows && std::is_sorted(order.begin(), order.end());
    report("million rows of one name sorted", timer, right, "well under a second expected");
    return right;
}

} // namespace

int main()
{
    QTemporaryDir dir;
    const bool right = millionRowsStayCompact() & largeResultsSortAsSmallOnes(dir.path())
                       & millionRowsOfOneHugeNameSortInLinearTime(dir.path());
    return right ? 0 : 1;
}

// One search from the command line, for profiling (callgrind) and for timing beside other tools:
//   kalvex2-search-once [--sorted] [--chunk BYTES] name|string|extension|theme TERM THREADS ARCHIVE.lst...
// prints the number of rows found and the time taken (with the alphabetical order: --sorted;
// archives read by chunks of BYTES rather than the engine's own size: --chunk).

#include "searchrun.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments();
    const bool sorted = args.removeAll(QStringLiteral("--sorted")) > 0;
    qsizetype chunk = 0;
    if (const qsizetype at = args.indexOf(QStringLiteral("--chunk")); at >= 0 && at + 1 < args.size()) {
        chunk = args[at + 1].toLongLong();
        args.remove(at, 2);
    }
    const QStringList kinds = {QStringLiteral("name"), QStringLiteral("string"), QStringLiteral("extension"),
                               QStringLiteral("theme")};
    if (args.size() < 5 || !kinds.contains(args[1])) {
        std::fprintf(stderr, "usage: %s [--sorted] [--chunk BYTES] name|string|extension|theme TERM THREADS ARCHIVE.lst...\n", argv[0]);
        return 2;
    }
    SearchRequest request;
    request.kind = SearchKind(kinds.indexOf(args[1]));
    request.term = searchTerm(args[2]);
    request.threads = args[3].toInt();
    request.sortRows = sorted;
    if (chunk > 0)
        request.readChunk = chunk;
    for (const QString &file : args.mid(4))
        request.archives.append({file, archiveNameOf(QFileInfo(file).fileName())});
    QElapsedTimer timer;
    timer.start();
    const SearchResults results = SearchRun::runAndWait(request);
    std::printf("%lld rows in %.3f s\n", static_cast<long long>(results.size()), timer.nsecsElapsed() / 1e9);
    return 0;
}

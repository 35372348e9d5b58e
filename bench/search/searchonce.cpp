// One search from the command line, for profiling (callgrind) and for timing beside other tools:
//   kalvex2-search-once [--sorted] name|string|extension|theme TERM THREADS ARCHIVE.lst...
// prints the number of rows found and the time taken (with the alphabetical order: --sorted).

#include "searchengine.h"

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
    const QStringList kinds = {QStringLiteral("name"), QStringLiteral("string"), QStringLiteral("extension"),
                               QStringLiteral("theme")};
    if (args.size() < 5 || !kinds.contains(args[1])) {
        std::fprintf(stderr, "usage: %s [--sorted] name|string|extension|theme TERM THREADS ARCHIVE.lst...\n", argv[0]);
        return 2;
    }
    SearchRequest request;
    request.kind = SearchKind(kinds.indexOf(args[1]));
    request.term = searchTerm(args[2]);
    request.threads = args[3].toInt();
    request.sortRows = sorted;
    for (const QString &file : args.mid(4))
        request.archives.append({file, archiveNameOf(QFileInfo(file).fileName())});
    QElapsedTimer timer;
    timer.start();
    const SearchResults results = SearchRun::runAndWait(request);
    std::printf("%lld rows in %.3f s\n", static_cast<long long>(results.size()), timer.nsecsElapsed() / 1e9);
    return 0;
}

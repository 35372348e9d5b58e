// Times the archive search against ripgrep over a generated corpus of 1,000 archives of about
// 31,000 lines (about 1.9 GB), then the search window's display of large results.
// Usage: kalvex2-search-bench [archives] [work directory] [--corpus DIR] [--pairs N]
//        [--cold-pairs N] [--sections process,sorted,random,cold,inprocess,window]
// Without --corpus the corpus is made in a temporary folder and deleted at the end.

#include "archivefile.h"
#include "corpus.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "processtiming.h"
#include "searchrun.h"
#include "searchform.h"
#include "tablefile.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QListView>
#include <QListWidget>
#include <QProcess>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>

namespace {

constexpr int kRuns = 5;

using ProcessTiming::median;

// ripgrep counting the literals in every archive, its output read through a pipe.
double ripgrepSeconds(const QStringList &literals, int threads, const QString &folder, qint64 *matches)
{
    QStringList args = {QStringLiteral("-c"), QStringLiteral("-F"), QStringLiteral("-i"), QStringLiteral("-j"),
                        QString::number(threads)};
    for (const QString &literal : literals)
        args << QStringLiteral("-e") << literal;
    args << folder;
    QElapsedTimer timer;
    timer.start();
    QProcess rg;
    rg.start(QStringLiteral("rg"), args);
    rg.waitForFinished(-1);
    const QByteArray out = rg.readAllStandardOutput();
    const double seconds = timer.nsecsElapsed() / 1e9;
    *matches = 0;
    for (const QByteArray &line : out.split('\n')) {
        const qsizetype colon = line.lastIndexOf(':');
        if (colon > 0)
            *matches += line.mid(colon + 1).toLongLong();
    }
    return seconds;
}

long peakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

struct Case
{
    const char *label;
    SearchKind kind;
    QByteArray term;
    QStringList literals; // ripgrep's equivalent
};

QList<Case> benchCases()
{
    // By name, the name alone: it finds the same lines in this corpus, and is ripgrep's fastest
    // path; the backslash before it (or two literals, a dot or the line's end after it) makes
    // `rg -i` about five times slower, which would flatter the engine.
    return {
        {"name, rare", SearchKind::Name, "LISEZMOI", {QStringLiteral("lisezmoi")}},
        {"name, frequent", SearchKind::Name, "SETUP", {QStringLiteral("setup")}},
        {"string, rare", SearchKind::String, "KALV", {QStringLiteral("kalv")}},
        {"string, frequent", SearchKind::String, "IMG", {QStringLiteral("img")}},
        {"extension, rare", SearchKind::Extension, "WMF", {QStringLiteral("wmf\"")}},
        {"extension, frequent", SearchKind::Extension, "GIF", {QStringLiteral("gif\"")}},
        // By theme, anywhere in the path (never its last letters, which these terms never are), with
        // no 20001-row stop, so both read every archive.
        {"theme, rare", SearchKind::Theme, "KALV", {QStringLiteral("kalv")}},
        {"theme, frequent", SearchKind::Theme, "JEUX", {QStringLiteral("jeux")}},
    };
}

const char *kindWord(SearchKind kind)
{
    switch (kind) {
    case SearchKind::Name:
        return "name";
    case SearchKind::String:
        return "string";
    case SearchKind::Extension:
        return "extension";
    case SearchKind::Theme:
        return "theme";
    }
    return "name";
}

// The rows kalvex2-search-once found ("N rows in ..."), or the lines `rg -c` counted (one
// "file:count" line per file holding any).
qint64 countIn(const QByteArray &output)
{
    if (output.contains(" rows in "))
        return output.left(output.indexOf(' ')).toLongLong();
    qint64 count = 0;
    for (const QByteArray &line : output.split('\n')) {
        if (!line.isEmpty())
            count += line.mid(line.lastIndexOf(':') + 1).toLongLong();
    }
    return count;
}

struct Pairing
{
    double ratio = 0; // the median of the pair-by-pair ratios a / b
    double a = 0;     // the median times
    double b = 0;
    qint64 countA = 0;
    qint64 countB = 0;
    qint64 resident = 0; // the most bytes of the corpus cached when a run began (cold runs)
};

// Runs `a` and `b` alternately, a b a b ..., `pairs` times each after one run of each that only
// warms up (unless `beforeEach` empties the cache before every run, which is then timed from cold).
Pairing interleave(const QStringList &a, const QStringList &b, int pairs,
                   const std::function<qint64()> &beforeEach = {})
{
    Pairing result;
    QList<double> ratios, timesA, timesB;
    for (int pair = beforeEach ? 0 : -1; pair < pairs; ++pair) {
        QByteArray out;
        if (beforeEach)
            result.resident = std::max(result.resident, beforeEach());
        const double ta = ProcessTiming::run(a, &out);
        result.countA = countIn(out);
        if (beforeEach)
            result.resident = std::max(result.resident, beforeEach());
        const double tb = ProcessTiming::run(b, &out);
        result.countB = countIn(out);
        if (ta <= 0 || tb <= 0) {
            std::printf("a run failed: %s\n", qPrintable((ta <= 0 ? a : b).first()));
            return result;
        }
        if (pair >= 0) {
            ratios.append(ta / tb);
            timesA.append(ta);
            timesB.append(tb);
        }
    }
    result.ratio = median(ratios);
    result.a = median(timesA);
    result.b = median(timesB);
    return result;
}

QStringList onceCommand(const QStringList &options, SearchKind kind, const QByteArray &term, int threads,
                        const QStringList &files)
{
    return QStringList{QCoreApplication::applicationDirPath() + QStringLiteral("/kalvex2-search-once")} + options
           + QStringList{QString::fromLatin1(kindWord(kind)), QString::fromLatin1(term), QString::number(threads)} + files;
}

QStringList ripgrepCommand(const QStringList &literals, int threads, const QString &folder)
{
    QStringList command = {QStringLiteral("rg"), QStringLiteral("-c"), QStringLiteral("-F"), QStringLiteral("-i"),
                           QStringLiteral("-j"), QString::number(threads)};
    for (const QString &literal : literals)
        command << QStringLiteral("-e") << literal;
    return command << folder;
}

QStringList archiveFiles(const QString &folder)
{
    QStringList files;
    for (const QString &file : ArchiveFile::list(folder))
        files.append(folder + QLatin1Char('/') + file);
    return files;
}

// Each side as a whole process, as a user runs it: kalvex2-search-once with the archives' names
// against ripgrep with their folder.
void benchProcesses(const QString &folder, int pairs)
{
    const QStringList files = archiveFiles(folder);
    std::printf("Whole processes, warm cache, interleaved (%d pairs): kalvex2-search-once / rg -c -F -i -j N\n\n", pairs);
    std::printf("| case | threads | rows | rg lines | kalvex s | rg s | ratio (median of pairs) |\n");
    std::printf("|---|---|---|---|---|---|---|\n");
    for (const Case &c : benchCases()) {
        for (int threads : {1, 2}) {
            const Pairing p = interleave(onceCommand({}, c.kind, c.term, threads, files),
                                         ripgrepCommand(c.literals, threads, folder), pairs);
            std::printf("| %s | %d | %lld | %lld | %.3f | %.3f | %.2f |\n", c.label, threads,
                        static_cast<long long>(p.countA), static_cast<long long>(p.countB), p.a, p.b, p.ratio);
            std::fflush(stdout);
        }
    }
}

// The rare string over archives whose names are random letters and digits: no letter of the term
// is rarer than another there.
void benchRandomLetters(const QString &work, int pairs)
{
    const QString folder = work + QStringLiteral("/Aleatoire");
    constexpr int kArchives = 150;
    if (ArchiveFile::list(folder).size() != kArchives) {
        QDir(folder).removeRecursively();
        BenchCorpus::generateRandomLetters(folder, kArchives);
    }
    const QStringList files = archiveFiles(folder);
    std::printf("\nRandom letters and digits (%d archives, %.2f GB), whole processes, interleaved (%d pairs): "
                "kalvex2-search-once / rg -c -F -i -j N\n\n",
                kArchives, BenchCorpus::bytesIn(folder) / 1e9, pairs);
    std::printf("| case | threads | rows | rg lines | kalvex s | rg s | ratio (median of pairs) |\n|---|---|---|---|---|---|---|\n");
    for (int threads : {1, 2}) {
        const Pairing p = interleave(onceCommand({}, SearchKind::String, "KALV", threads, files),
                                     ripgrepCommand({QStringLiteral("kalv")}, threads, folder), pairs);
        std::printf("| string, rare | %d | %lld | %lld | %.3f | %.3f | %.2f |\n", threads,
                    static_cast<long long>(p.countA), static_cast<long long>(p.countB), p.a, p.b, p.ratio);
        std::fflush(stdout);
    }
}

// About two million rows with the alphabetical order against the same search without it.
void benchSorted(const QString &folder, int pairs)
{
    const QStringList files = archiveFiles(folder);
    std::printf("\nThe alphabetical order, whole processes, interleaved (%d pairs): sorted / unsorted\n\n", pairs);
    std::printf("| case | threads | rows | sorted s | unsorted s | ratio (median of pairs) |\n|---|---|---|---|---|---|\n");
    for (int threads : {1, 2}) {
        const Pairing p = interleave(onceCommand({QStringLiteral("--sorted")}, SearchKind::String, "IMG", threads, files),
                                     onceCommand({}, SearchKind::String, "IMG", threads, files), pairs);
        std::printf("| string, frequent | %d | %lld | %.3f | %.3f | %.2f |\n", threads,
                    static_cast<long long>(p.countA), p.a, p.b, p.ratio);
        std::fflush(stdout);
    }
}

// From a cold cache: every archive is dropped from the page cache before each run.
void benchCold(const QString &folder, int pairs)
{
    const QStringList files = archiveFiles(folder);
    const auto evict = [&files] {
        ProcessTiming::evict(files);
        return ProcessTiming::residentBytes(files);
    };
    std::printf("\nWhole processes, cold cache (evicted before every run), interleaved (%d pairs)\n\n", pairs);
    std::printf("| case | threads | kalvex s | rg s | ratio (median of pairs) | most cached at a start |\n|---|---|---|---|---|---|\n");
    const QList<Case> cases = benchCases();
    for (const Case &c : {cases[0], cases[3]}) {
        for (int threads : {1, 2}) {
            const Pairing p = interleave(onceCommand({}, c.kind, c.term, threads, files),
                                         ripgrepCommand(c.literals, threads, folder), pairs, evict);
            std::printf("| %s | %d | %.3f | %.3f | %.2f | %lld KB |\n", c.label, threads, p.a, p.b, p.ratio,
                        static_cast<long long>(p.resident / 1024));
            std::fflush(stdout);
        }
    }
    ProcessTiming::run(QStringList{QStringLiteral("cat")} + files); // the corpus back in the cache
}

void benchEngine(const QString &folder)
{
    // Every archive of the folder, beyond the window's 500: the engine itself has no such limit.
    QList<ArchiveToScan> all;
    for (const QString &file : ArchiveFile::list(folder))
        all.append({folder + QLatin1Char('/') + file, archiveNameOf(file)});
    const QList<Case> cases = benchCases();
    std::printf("In one process: the engine's median of five warm runs against rg's\n\n");
    std::printf("%-20s %7s %10s %10s %10s %7s\n", "case", "threads", "rows", "kalvex s", "rg s", "ratio");
    for (const Case &c : cases) {
        for (int threads : {1, 2}) {
            QList<double> ours, theirs;
            qsizetype rows = 0;
            qint64 rgMatches = 0;
            for (int run = 0; run <= kRuns; ++run) { // the first run of each only warms up
                QElapsedTimer timer;
                timer.start();
                const SearchResults results = SearchRun::runAndWait({c.kind, c.term, all, 0, threads, false});
                const double seconds = timer.nsecsElapsed() / 1e9;
                rows = results.size();
                const double rgSeconds = ripgrepSeconds(c.literals, threads, folder, &rgMatches);
                if (run > 0) {
                    ours.append(seconds);
                    theirs.append(rgSeconds);
                }
            }
            std::printf("%-20s %7d %10lld %10.3f %10.3f %7.2f   (rg lines: %lld)\n", c.label, threads,
                        static_cast<long long>(rows), median(ours), median(theirs), median(ours) / median(theirs),
                        static_cast<long long>(rgMatches));
            std::fflush(stdout);
        }
    }
    QElapsedTimer timer;
    timer.start();
    const SearchResults big = SearchRun::runAndWait({SearchKind::String, "IMG", all, 0, 2});
    std::printf("\nstring, frequent, 2 threads, with the alphabetical order: %.3f s\n", timer.nsecsElapsed() / 1e9);
    std::printf("result of %lld rows holds %.1f MB; peak memory of the process %ld MB\n",
                static_cast<long long>(big.size()), big.memoryUsed() / 1048576.0, peakMegabytes());
}

template<typename T> T *child(QWidget &form, const QString &name)
{
    for (T *widget : form.findChildren<T *>()) {
        if (widget->accessibleName() == name)
            return widget;
    }
    return nullptr;
}

void benchWindow(const QString &dataPath)
{
    const DataDirectory data(dataPath);
    TableFile::write(data.file(QStringLiteral("extens.txt")), {QStringLiteral("GIF         &1D:\\VIEW")});
    FakeServices fakes;
    SearchForm form(data,
                    {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
                    fakes.printer, fakes.clock);
    form.show();
    if (!QTest::qWaitForWindowExposed(&form))
        std::printf("the window was not shown\n");
    form.findChild<QCheckBox *>(QStringLiteral("selectAll"))->setChecked(true);
    QProgressBar *progress = child<QProgressBar>(form, QStringLiteral("Progression de la recherche"));
    QListView *sorted = child<QListView>(form, QStringLiteral("Classement alphabétique"));
    QListView *names = child<QListView>(form, QStringLiteral("Classement ordre du support"));

    // 30,000 rows: from the last archive read to the sorted list painted.
    QList<double> shows;
    for (int run = 0; run < kRuns; ++run) {
        fakes.dialogs.clear();
        child<QListWidget>(form, QStringLiteral("Extensions"))->setCurrentRow(0);
        QElapsedTimer sinceEnd;
        bool ended = false;
        QSignalSpy finished(&form, &SearchForm::searchFinished);
        auto watch = QObject::connect(progress, &QProgressBar::valueChanged, &form, [&](int value) {
            if (!ended && value > 0) { sinceEnd.start(); }
        });
        auto end = QObject::connect(&form, &SearchForm::searchFinished, &form, [&] { ended = true; });
        child<QToolButton>(form, QStringLiteral("Liste des fichiers ayant la même extension."))->click();
        finished.wait(60000);
        sorted->repaint();
        shows.append(sinceEnd.nsecsElapsed() / 1e6);
        QObject::disconnect(watch);
        QObject::disconnect(end);
        QCoreApplication::processEvents();
    }
    std::printf("window, 30,000-row result: %lld rows shown and sorted %.1f ms (median) after the last archive's rows\n",
                static_cast<long long>(sorted->model()->rowCount()), median(shows));

    // About a million rows: first rows on screen, then the whole result.
    fakes.dialogs.inputs = {QStringLiteral("img")};
    QElapsedTimer timer;
    double firstRows = -1;
    auto first = QObject::connect(names->model(), &QAbstractItemModel::rowsInserted, &form, [&] {
        if (firstRows < 0) {
            names->repaint();
            firstRows = timer.nsecsElapsed() / 1e6;
        }
    });
    QSignalSpy finished(&form, &SearchForm::searchFinished);
    timer.start();
    child<QToolButton>(form, QStringLiteral("Recherche d'un fichier à partir d'une chaîne d'au moins 3 caractères."))->click();
    finished.wait(120000);
    sorted->repaint();
    const double all = timer.nsecsElapsed() / 1e6;
    QObject::disconnect(first);
    std::printf("window, %lld-row result: first rows painted after %.0f ms, whole result and sorted view after %.0f ms\n",
                static_cast<long long>(form.foundCount()), firstRows, all);
    std::printf("peak memory of the process %ld MB\n", peakMegabytes());
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", qEnvironmentVariable("QT_QPA_PLATFORM", QStringLiteral("offscreen")).toLocal8Bit());
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    const auto option = [&args](const QString &name, const QString &fallback) {
        const qsizetype at = args.indexOf(name);
        if (at < 0 || at + 1 >= args.size())
            return fallback;
        const QString value = args[at + 1];
        args.remove(at, 2);
        return value;
    };
    const int pairs = option(QStringLiteral("--pairs"), QStringLiteral("7")).toInt();
    const int coldPairs = option(QStringLiteral("--cold-pairs"), QStringLiteral("3")).toInt();
    const QStringList sections = option(QStringLiteral("--sections"), QStringLiteral("process,sorted,random,cold,inprocess,window"))
                                     .split(QLatin1Char(','));
    // --corpus DIR: the corpus is kept in DIR/Divers (generated there when missing), for repeated runs.
    QString kept;
    if (const qsizetype at = args.indexOf(QStringLiteral("--corpus")); at >= 0 && at + 1 < args.size()) {
        kept = args[at + 1];
        args.remove(at, 2);
    }
    const int archives = args.size() > 0 ? args[0].toInt() : 1000;
    std::optional<QTemporaryDir> temporary;
    if (kept.isEmpty())
        temporary.emplace(args.size() > 1 ? args[1] + QStringLiteral("/kalvex-bench-XXXXXX")
                                          : QDir::tempPath() + QStringLiteral("/kalvex-bench-XXXXXX"));
    const QString work = temporary ? temporary->path() : kept;
    const QString folder = work + QStringLiteral("/Divers");
    QElapsedTimer timer;
    timer.start();
    if (kept.isEmpty() || ArchiveFile::list(folder).size() != archives) {
        QDir(folder).removeRecursively();
        BenchCorpus::generate(folder, archives);
    }
    std::printf("corpus: %d archives, %.2f GB, ready in %.0f s, in %s\n\n", archives,
                BenchCorpus::bytesIn(folder) / 1e9, timer.elapsed() / 1000.0, qPrintable(work));
    std::fflush(stdout);
    if (sections.contains(QStringLiteral("process")))
        benchProcesses(folder, pairs);
    if (sections.contains(QStringLiteral("sorted")))
        benchSorted(folder, pairs);
    if (sections.contains(QStringLiteral("random")))
        benchRandomLetters(work, pairs);
    if (sections.contains(QStringLiteral("cold")))
        benchCold(folder, coldPairs);
    std::printf("\n");
    if (sections.contains(QStringLiteral("inprocess")))
        benchEngine(folder);
    std::printf("\n");
    if (sections.contains(QStringLiteral("window")))
        benchWindow(work);
    return 0;
}

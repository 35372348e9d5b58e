// Times the archive search against ripgrep over a generated corpus of 1,000 archives of about
// 31,000 lines (about 1.9 GB), then the search window's display of large results.
// Usage: kalvex2-search-bench [archives] [work directory]; the corpus is deleted at the end.

#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "searchengine.h"
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
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kLinesPerArchive = 31000;
constexpr int kRuns = 5;

const char *const kWords[] = {"PROGRAM", "DATA", "SYSTEM", "DRIVERS", "JEUX", "DEMOS", "SONS", "MUSIQUE",
                              "PHOTOS", "TEXTES", "OUTILS", "UTILS", "WINDOWS", "SHARE", "DOC", "AIDE",
                              "INSTALL", "FONTS", "PATCH", "NIVEAUX", "CARTES", "VIDEO", "SCENES", "MODELES"};
const char *const kExtensions[] = {"TXT", "EXE", "DLL", "BMP", "JPG", "WAV", "MID", "HLP", "INI", "DAT",
                                   "DOC", "ZIP", "AVI", "ICO", "COM", "BAT", "PCX", "TGA", "HTM", "CFG"};

// One catalogued path, lower-case drive, as the creation window writes it. About 0.2% of lines hold
// the rare name, string and extension, about 7% the frequent ones.
QByteArray makeLine(QRandomGenerator &random)
{
    QByteArray line = "d:";
    const int depth = random.bounded(3, 7);
    for (int d = 0; d < depth; ++d)
        line += '\\' + QByteArray(kWords[random.bounded(int(std::size(kWords)))]);
    line += '\\';
    const int pick = random.bounded(1000);
    if (pick < 2)
        line += "LISEZMOI";                    // rare name
    else if (pick < 72)
        line += "SETUP";                       // frequent name
    else {
        QByteArray base = kWords[random.bounded(int(std::size(kWords)))];
        const int s = random.bounded(1000);
        if (s < 2)
            base = "KALV" + base;              // rare string
        else if (s < 72)
            base = "IMG" + base;               // frequent string
        line += base.left(8) + QByteArray::number(random.bounded(1000));
    }
    const int e = random.bounded(1000);
    const char *extension = e < 2 ? "WMF" : e < 72 ? "GIF" : kExtensions[random.bounded(int(std::size(kExtensions)))];
    return line + '.' + extension;
}

void generateCorpus(const QString &folder, int archives)
{
    QDir().mkpath(folder);
    QRandomGenerator random(1975);
    for (int a = 0; a < archives; ++a) {
        QList<QByteArray> entries;
        entries.reserve(kLinesPerArchive);
        for (int i = 0; i < kLinesPerArchive; ++i)
            entries.append(makeLine(random));
        ArchiveFile::write(folder, QStringLiteral("CD%1").arg(a, 4, 10, QLatin1Char('0')), entries);
    }
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

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

void benchEngine(const QString &folder)
{
    // Every archive of the folder, beyond the window's 500: the engine itself has no such limit.
    QList<ArchiveToScan> all;
    for (const QString &file : ArchiveFile::list(folder))
        all.append({folder + QLatin1Char('/') + file, archiveNameOf(file)});
    const QList<Case> cases = {
        {"name, rare", SearchKind::Name, "LISEZMOI", {QStringLiteral("\\lisezmoi."), QStringLiteral("\\lisezmoi\"")}},
        {"name, frequent", SearchKind::Name, "SETUP", {QStringLiteral("\\setup."), QStringLiteral("\\setup\"")}},
        {"string, rare", SearchKind::String, "KALV", {QStringLiteral("kalv")}},
        {"string, frequent", SearchKind::String, "IMG", {QStringLiteral("img")}},
        {"extension, rare", SearchKind::Extension, "WMF", {QStringLiteral("wmf\"")}},
        {"extension, frequent", SearchKind::Extension, "GIF", {QStringLiteral("gif\"")}},
    };
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
    SearchForm form(data, fakes.dialogs, fakes.pictures);
    form.show();
    if (!QTest::qWaitForWindowExposed(&form))
        std::printf("the window was not shown\n");
    child<QCheckBox>(form, QStringLiteral("Sélection de tous les fichiers d'archives"))->setChecked(true);
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
        QObject::connect(&form, &SearchForm::searchFinished, &form, [&] { ended = true; });
        child<QToolButton>(form, QStringLiteral("Liste des fichiers ayant la même extension."))->click();
        finished.wait(60000);
        sorted->repaint();
        shows.append(sinceEnd.nsecsElapsed() / 1e6);
        QObject::disconnect(watch);
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
    const int archives = argc > 1 ? std::atoi(argv[1]) : 1000;
    QTemporaryDir work(argc > 2 ? QString::fromLocal8Bit(argv[2]) + QStringLiteral("/kalvex-bench-XXXXXX")
                                : QDir::tempPath() + QStringLiteral("/kalvex-bench-XXXXXX"));
    const QString folder = work.path() + QStringLiteral("/Divers");
    QElapsedTimer timer;
    timer.start();
    generateCorpus(folder, archives);
    qint64 bytes = 0;
    for (const QFileInfo &info : QDir(folder).entryInfoList(QDir::Files))
        bytes += info.size();
    std::printf("corpus: %d archives, %.2f GB, generated in %.0f s, in %s\n\n", archives, bytes / 1e9,
                timer.elapsed() / 1000.0, qPrintable(work.path()));
    std::fflush(stdout);
    benchEngine(folder);
    std::printf("\n");
    benchWindow(work.path());
    return 0;
}

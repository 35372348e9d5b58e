// The capture benchmark's program:
//   capture_bench generate TREE [ENTRIES]  makes a tree whose walk records exactly ENTRIES lines
//   capture_bench pairs TREE OUTDIR WALK RUNS times `find TREE -fprint` and `WALK TREE OUTDIR` as
//                                          whole processes, one after the other, RUNS pairs
//   capture_bench window TREE DATADIR RUNS times the creation window's scan against the bare walk
#include "archivefile.h"
#include "createarchiveform.h"
#include "datadirectory.h"
#include "dialogs.h"
#include "drives.h"
#include "filefinder.h"
#include "treewalk.h"
#include "qtpictureloader.h"
#include "qtprinter.h"
#include "systemclock.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <ctime>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char **environ;

namespace {

// The scan shows no box; a beep is no work worth timing.
class SilentDialogs final : public Dialogs
{
public:
    void message(const QString &, const QString &) override {}
    Answer question(const QString &, const QString &, const HelpTopic &) override { return Answer::No; }
    QString input(const QString &, const QString &, const QString &) override { return {}; }
    void beep() override {}
};

// A cover disc's spread: a few top folders, depths up to 8, 1 to 40 files a folder, names of 1 to
// 60 characters, some with blanks and accents. Every folder costs three lines (its name, "." and
// ".."), every file one; the tree is cut to give exactly `entries` lines.
int generate(const QString &root, int entries)
{
    QRandomGenerator random(1995);
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-  éèàç");
    const QStringList extensions = {QStringLiteral(".EXE"), QStringLiteral(".TXT"), QStringLiteral(".BMP"),
                                    QStringLiteral(".jpg"), QStringLiteral(".DLL"), QStringLiteral(".htm"),
                                    QStringLiteral(".WAV"), QStringLiteral(".ico"), QString()};
    int left = entries;
    int serial = 0;
    auto name = [&](bool directory) {
        const int length = 1 + int(std::min<quint32>(random.bounded(12u) + random.bounded(12u) * random.bounded(5u), 55u));
        QString text;
        for (int i = 0; i < length; ++i)
            text += letters.at(random.bounded(letters.size()));
        text = text.trimmed() + QString::number(++serial); // unique, never blank at either end
        return directory ? text : text + extensions.at(random.bounded(extensions.size()));
    };
    std::vector<std::pair<QString, int>> pending{{root, 0}};
    while (left > 0 && !pending.empty()) {
        const auto [path, depth] = pending.front();
        pending.erase(pending.begin());
        const int files = 1 + int(random.bounded(40u));
        for (int i = 0; i < files && left > 0; ++i, --left) {
            QFile file(path + QLatin1Char('/') + name(false));
            if (!file.open(QIODevice::WriteOnly))
                return 1;
        }
        const int folders = depth >= 8 ? 0 : int(random.bounded(depth == 0 ? 12u : 5u));
        for (int i = 0; i < folders && left >= 3; ++i, left -= 3) {
            const QString sub = path + QLatin1Char('/') + name(true);
            if (!QDir().mkdir(sub))
                return 1;
            pending.emplace_back(sub, depth + 1);
        }
        if (pending.empty() && left > 0) // keep going until the count is reached
            pending.emplace_back(root, 0);
    }
    return left == 0 ? 0 : 1;
}

// CPU time of the calling thread, in milliseconds: the window's own work, whatever else runs.
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

struct ProcessTime
{
    double wallMs = -1; // -1: the process could not be run or failed
    double cpuMs = 0;   // user and system
};

// Runs a command to its end, its output to /dev/null, and times it from spawn to exit.
ProcessTime timeProcess(const std::vector<QByteArray> &command)
{
    std::vector<char *> argv;
    for (const QByteArray &arg : command)
        argv.push_back(const_cast<char *>(arg.constData()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    ProcessTime time;
    timespec start, end;
    clock_gettime(CLOCK_MONOTONIC, &start);
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return time;
    int status = 0;
    rusage usage{};
    // Any exit counts: the walk tool says 1 for an empty folder, which is timed for its start-up.
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status))
        return time;
    clock_gettime(CLOCK_MONOTONIC, &end);
    time.wallMs = (end.tv_sec - start.tv_sec) * 1e3 + (end.tv_nsec - start.tv_nsec) / 1e6;
    time.cpuMs = (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3
                 + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
    return time;
}

struct PairStats
{
    double findMs, walkMs, wallRatio, cpuRatio;
};

// `runs` pairs, find then the walk, after three pairs not counted: the medians of each side and of
// the pair-by-pair ratios, so that a change in the machine's load touches both sides of a pair.
bool timePairs(const QByteArray &tree, const QByteArray &out, const QByteArray &walk, int runs, PairStats &stats)
{
    const std::vector<QByteArray> find = {"find", tree, "-fprint", out + "/find.txt"};
    const std::vector<QByteArray> walker = {walk, tree, out};
    std::vector<double> finds, walks, wallRatios, cpuRatios;
    for (int run = -3; run < runs; ++run) {
        const ProcessTime a = timeProcess(find);
        const ProcessTime b = timeProcess(walker);
        if (a.wallMs < 0 || b.wallMs < 0)
            return false;
        if (run < 0)
            continue;
        finds.push_back(a.wallMs);
        walks.push_back(b.wallMs);
        wallRatios.push_back(b.wallMs / a.wallMs);
        cpuRatios.push_back(a.cpuMs > 0 ? b.cpuMs / a.cpuMs : 1);
    }
    stats = {median(finds), median(walks), median(wallRatios), median(cpuRatios)};
    return true;
}

// The walk tool against find, whole processes interleaved, on the tree and on an empty folder
// (what starting each process costs).
int pairs(const QString &tree, const QString &out, const QString &walk, int runs)
{
    const QString empty = out + QStringLiteral("/empty");
    QDir().mkpath(empty);
    PairStats full{}, start{};
    if (!timePairs(QFile::encodeName(tree), QFile::encodeName(out), QFile::encodeName(walk), runs, full)
        || !timePairs(QFile::encodeName(empty), QFile::encodeName(out), QFile::encodeName(walk), runs, start)) {
        std::fprintf(stderr, "find or the walk tool failed\n");
        return 1;
    }
    std::printf("%d pairs, whole processes, find then the walk\n", runs);
    std::printf("find -fprint:        median %.2f ms (empty folder %.2f ms)\n", full.findMs, start.findMs);
    std::printf("walk and archive:    median %.2f ms (empty folder %.2f ms)\n", full.walkMs, start.walkMs);
    std::printf("walk / find, median of pair ratios: %.3f wall, %.3f CPU\n", full.wallRatio, full.cpuRatio);
    std::printf("net of start-up (medians less the empty folder's): %.3f\n",
                (full.walkMs - start.walkMs) / (full.findMs - start.findMs));
    return 0;
}

// In one process, alternately: the bare walk and write, and the window's whole scan from the
// press of its create button to the written archive; and the longest the event loop went without
// running a 1 ms timer during the window's scans.
int window(const QString &tree, const QString &dataPath, int runs)
{
    const DataDirectory data(dataPath);
    data.startUp();
    TreeDrives drives(tree);
    LinuxDirectoryLister lister;
    SilentDialogs dialogs;
    QtPrinter printer;
    QtPictureLoader pictures;
    SystemClock clock;
    CreateArchiveForm form(data, drives, lister, dialogs, printer, pictures, clock);
    form.show();
    form.findChild<QLineEdit *>(QStringLiteral("name"))->setText(QStringLiteral("BENCH"));
    form.findChild<QComboBox *>(QStringLiteral("driveChooser"))->setCurrentText(QStringLiteral("d:"));
    QToolButton *create = form.findChild<QToolButton *>(QStringLiteral("create"));
    const QString folder = data.folderPath(data.archiveFolders().value(0));

    TreeWalk bareWalk(tree); // reused like the window's finder, so that only the window differs
    std::vector<double> bare, windowed, windowCpu;
    qint64 longestStall = 0;
    QStringList counters;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        bareWalk.run(folder);
        bare.push_back(timer.nsecsElapsed() / 1e6);

        QEventLoop loop;
        QObject::connect(&form, &CreateArchiveForm::scanFinished, &loop, &QEventLoop::quit);
        QElapsedTimer sinceTick;
        QTimer ticker;
        ticker.setInterval(1);
        QObject::connect(&ticker, &QTimer::timeout, &loop, [&] {
            longestStall = std::max(longestStall, sinceTick.restart());
            counters.append(form.findChild<QLabel *>(QStringLiteral("counter"))->text());
        });
        timer.restart();
        const double cpuBefore = threadCpuMs();
        sinceTick.start();
        ticker.start();
        create->click();
        loop.exec();
        ticker.stop();
        windowed.push_back(timer.nsecsElapsed() / 1e6);
        windowCpu.push_back(threadCpuMs() - cpuBefore);
    }
    counters.removeDuplicates();
    const double bareMedian = median(bare), windowMedian = median(windowed);
    std::printf("bare walk and write: median %.2f ms over %d runs\n", bareMedian, runs);
    std::printf("window scan:         median %.2f ms over %d runs\n", windowMedian, runs);
    std::printf("window / bare walk:  %.3f\n", windowMedian / bareMedian);
    std::printf("window thread's CPU during a scan (archive written included): median %.2f ms\n",
                median(windowCpu));
    std::printf("longest event-loop stall during the scans: %lld ms; %lld counter values shown\n",
                static_cast<long long>(longestStall), static_cast<long long>(counters.size()));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QStringList args = [&] {
        QStringList list;
        for (int i = 1; i < argc; ++i)
            list.append(QString::fromLocal8Bit(argv[i]));
        return list;
    }();
    if (args.size() >= 2 && args[0] == QLatin1String("generate"))
        return generate(args[1], args.size() > 2 ? args[2].toInt() : FileFinder::kMaxEntries);
    if (args.size() >= 4 && args[0] == QLatin1String("pairs"))
        return pairs(args[1], args[2], args[3], args.size() > 4 ? args[4].toInt() : 30);
    if (args.size() >= 3 && args[0] == QLatin1String("window")) {
        QApplication app(argc, argv);
        return window(args[1], args[2], args.size() > 3 ? args[3].toInt() : 15);
    }
    std::fprintf(stderr, "usage: capture_bench generate TREE [ENTRIES] | pairs TREE OUTDIR WALK [RUNS]"
                         " | window TREE DATADIR [RUNS]\n");
    return 2;
}

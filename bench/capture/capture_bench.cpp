// The capture benchmark's program:
//   capture_bench generate TREE [ENTRIES]  makes a tree whose walk records exactly ENTRIES lines
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
    if (args.size() >= 3 && args[0] == QLatin1String("window")) {
        QApplication app(argc, argv);
        return window(args[1], args[2], args.size() > 3 ? args[3].toInt() : 15);
    }
    std::fprintf(stderr, "usage: capture_bench generate TREE [ENTRIES] | window TREE DATADIR [RUNS]\n");
    return 2;
}

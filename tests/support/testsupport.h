#pragma once

#include <QByteArray>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QTest>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace TestSupport {

QByteArray readFile(const QString &path);
bool writeFile(const QString &path, const QByteArray &bytes); // makes the directories on the way

// Copies the program's staged pictures and pages into `directory` (a test's data directory).
void copyProgramFiles(const QString &directory);

struct PdfWord
{
    QString text;
    QRectF box; // in points from the page's top-left corner
    int page = 0;
};

// The words of a PDF with their boxes (pdftotext -bbox); empty when pdftotext is missing.
QList<PdfWord> pdfWords(const QString &pdfPath);

// The control `objectName` under `parent`. A missing one (renamed, or of another type) fails the
// test with its name and ends the test program, where an unchecked lookup would crash unnamed.
template<typename T>
T *child(const QObject *parent, const QString &objectName)
{
    T *found = parent->findChild<T *>(objectName);
    if (!found) {
        QTest::qFail(qPrintable(QStringLiteral("no control \"%1\" of the expected type").arg(objectName)), __FILE__,
                     __LINE__);
        throw std::runtime_error("missing control");
    }
    return found;
}

// Whether a command is on the PATH.
bool haveProgram(const QString &name);

// Skips the test when a program it needs is not on the PATH; fails it where CI is set, since the
// test command installs every program the tests use: there a missing one is a fault of the set-up.
#define KALVEX_REQUIRE_PROGRAM(name)                                                                      \
    do {                                                                                                   \
        if (!TestSupport::haveProgram(name)) {                                                             \
            const QByteArray why = (QStringLiteral("not installed: ") + (name)).toUtf8();                  \
            if (qEnvironmentVariableIsSet("CI"))                                                           \
                QFAIL(why.constData());                                                                    \
            QSKIP(why.constData());                                                                        \
        }                                                                                                  \
    } while (false)

// Whether FUSE file systems can be mounted here; `why` tells what is missing when not.
bool fuseUsable(QString *why);

// Unmounts a FUSE mount. One another program holds busy (a desktop's drive watcher looking at the
// new medium) is detached lazily, so no test leaves a mount behind.
bool unmountFuse(const QString &mountPoint);

// Makes a FIFO at `path` and, once `seconds` have passed without the watchdog being destroyed,
// keeps opening it for writing: a reader stuck opening it (the fault under test) then goes on and
// reads an empty file, so a failing test ends instead of hanging. fired() tells it happened.
class FifoWatchdog
{
public:
    FifoWatchdog(const QString &path, int seconds);
    ~FifoWatchdog();
    FifoWatchdog(const FifoWatchdog &) = delete;
    FifoWatchdog &operator=(const FifoWatchdog &) = delete;

    bool made() const { return m_made; }
    bool fired() const { return m_fired.load(); }

private:
    QByteArray m_path;
    bool m_made = false;
    std::atomic_bool m_fired{false};
    std::mutex m_mutex;
    std::condition_variable m_cancelled;
    bool m_done = false;
    std::thread m_thread;
};

// Runs a program to its end (a minute at most); true when it exited with 0. `output` gets what it
// wrote on both channels.
bool run(const QString &program, const QStringList &arguments, QString *output = nullptr);

} // namespace TestSupport

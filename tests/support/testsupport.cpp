#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <chrono>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TestSupport {

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

FifoWatchdog::FifoWatchdog(const QString &path, int seconds)
    : m_path(QFile::encodeName(path))
{
    m_made = ::mkfifo(m_path.constData(), 0600) == 0;
    m_thread = std::thread([this, seconds] {
        std::unique_lock lock(m_mutex);
        if (m_cancelled.wait_for(lock, std::chrono::seconds(seconds), [this] { return m_done; }))
            return;
        m_fired = true;
        while (!m_cancelled.wait_for(lock, std::chrono::milliseconds(50), [this] { return m_done; })) {
            const int fd = ::open(m_path.constData(), O_WRONLY | O_NONBLOCK); // only while a reader waits
            if (fd >= 0)
                ::close(fd);
        }
    });
}

FifoWatchdog::~FifoWatchdog()
{
    {
        std::lock_guard lock(m_mutex);
        m_done = true;
    }
    m_cancelled.notify_all();
    m_thread.join();
}

void copyProgramFiles(const QString &directory)
{
    const QDir program(qEnvironmentVariable("KALVEX_PROGRAM_DIR")); // where the build stages them
    const QStringList files = program.entryList({QStringLiteral("*.ico"), QStringLiteral("*.jpg"),
                                                 QStringLiteral("*.htm")}, QDir::Files);
    for (const QString &name : files)
        QFile::copy(program.filePath(name), QDir(directory).filePath(name));
}

QList<PdfWord> pdfWords(const QString &pdfPath)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), pdfPath, QStringLiteral("-")});
    if (!process.waitForFinished(30000))
        return {};
    const QString html = QString::fromUtf8(process.readAllStandardOutput());
    static const QRegularExpression wordRe(QStringLiteral(
        R"re(<word xMin="(-?[\d.]+)" yMin="(-?[\d.]+)" xMax="(-?[\d.]+)" yMax="(-?[\d.]+)">([^<]*)</word>)re"));
    QList<PdfWord> words;
    const QStringList pages = html.split(QStringLiteral("<page "));
    for (int page = 1; page < pages.size(); ++page) {
        auto it = wordRe.globalMatch(pages[page]);
        while (it.hasNext()) {
            const auto m = it.next();
            const QPointF topLeft(m.captured(1).toDouble(), m.captured(2).toDouble());
            const QPointF bottomRight(m.captured(3).toDouble(), m.captured(4).toDouble());
            words.append({m.captured(5), QRectF(topLeft, bottomRight), page});
        }
    }
    return words;
}

bool haveProgram(const QString &name)
{
    return !QStandardPaths::findExecutable(name).isEmpty();
}

bool fuseUsable(QString *why)
{
    QFile fuse(QStringLiteral("/dev/fuse"));
    if (!fuse.open(QIODevice::ReadWrite)) {
        *why = QStringLiteral("/dev/fuse cannot be opened: ") + fuse.errorString();
        return false;
    }
    for (const char *tool : {"fuseiso", "fusermount", "genisoimage"}) {
        if (!haveProgram(QLatin1String(tool))) {
            *why = QStringLiteral("%1 is not installed").arg(QLatin1String(tool));
            return false;
        }
    }
    return true;
}

bool unmountFuse(const QString &mountPoint)
{
    return run(QStringLiteral("fusermount"), {QStringLiteral("-u"), mountPoint})
           || run(QStringLiteral("fusermount"), {QStringLiteral("-u"), QStringLiteral("-z"), mountPoint});
}

bool run(const QString &program, const QStringList &arguments, QString *output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool ok = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit
                    && process.exitCode() == 0;
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return ok;
}

} // namespace TestSupport

#include "processtiming.h"

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace ProcessTiming {

double run(const QStringList &command, QByteArray *output)
{
    std::vector<QByteArray> bytes;
    for (const QString &arg : command)
        bytes.push_back(QFile::encodeName(arg));
    std::vector<char *> argv;
    for (QByteArray &arg : bytes)
        argv.push_back(arg.data());
    argv.push_back(nullptr);

    int pipeEnds[2];
    if (::pipe2(pipeEnds, O_CLOEXEC) != 0)
        return -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    const auto start = std::chrono::steady_clock::now();
    pid_t child = -1;
    const int spawned = ::posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipeEnds[1]);
    QByteArray out;
    char buffer[65536];
    for (ssize_t n; spawned == 0 && (n = ::read(pipeEnds[0], buffer, sizeof buffer)) != 0;) {
        if (n > 0)
            out.append(buffer, n);
        else if (errno != EINTR)
            break;
    }
    ::close(pipeEnds[0]);
    int status = 0;
    if (spawned != 0 || ::waitpid(child, &status, 0) != child)
        return -1;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (output)
        *output = out;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? seconds : -1;
}

void evict(const QStringList &files)
{
    for (const QString &file : files) {
        const int fd = ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue;
        ::fdatasync(fd); // dirty pages (a corpus just written) cannot be dropped
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

qint64 residentBytes(const QStringList &files)
{
    QProcess fincore;
    fincore.start(QStringLiteral("fincore"),
                  QStringList{QStringLiteral("--bytes"), QStringLiteral("--noheadings"), QStringLiteral("--raw"),
                              QStringLiteral("--output"), QStringLiteral("RES")}
                      + files);
    if (!fincore.waitForFinished(-1) || fincore.exitCode() != 0)
        return -1;
    qint64 bytes = 0;
    for (const QByteArray &line : fincore.readAllStandardOutput().split('\n'))
        bytes += line.trimmed().toLongLong();
    return bytes;
}

double median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

} // namespace ProcessTiming

#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// Whole-process timing, for comparing two programs as a user runs them: start-up, reading, output
// and exit included.
namespace ProcessTiming {

// Runs `command` (a program found on the PATH, then its arguments) to its end, its standard output
// read through a pipe into `output`; the wall-clock seconds from start to exit, -1 when it could
// not be started or failed.
double run(const QStringList &command, QByteArray *output = nullptr);

// Drops the files' pages from the page cache (posix_fadvise POSIX_FADV_DONTNEED), so the next
// reading comes from the disk.
void evict(const QStringList &files);

// The bytes of the files still in the page cache, as `fincore` counts them; -1 without fincore.
qint64 residentBytes(const QStringList &files);

double median(QList<double> values);

} // namespace ProcessTiming

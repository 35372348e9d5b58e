#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

// The program's tables (extens.txt, themes.txt): Windows-1252 text, one item a line, CR LF after
// every line. They are read back as comma-separated fields, so a comma inside a line splits it.
namespace TableFile {

// The fields of `data`, one list item per field: a field ends at a comma or at the end of its
// line, and its leading blanks are dropped. An empty line gives one empty field.
QStringList fields(QByteArrayView data);

// The most of a table that is read: far beyond any table a user keeps (about 100,000 lines), small
// enough that a list of it fills in well under a second.
inline constexpr qint64 kMaxBytes = qint64(4) << 20;

// The fields of the file at `path`; a file that cannot be read, or that is not a regular file
// (a FIFO, a device: a link to /dev/zero), gives none. Of a file larger than kMaxBytes only the
// whole lines within that bound are read.
QStringList read(const QString &path);

QByteArray encode(const QStringList &lines);

// Rewrites the file whole from `lines`; it appears whole or not at all.
bool write(const QString &path, const QStringList &lines);

} // namespace TableFile

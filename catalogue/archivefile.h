#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

// An archive file is the catalogue of one medium: NAME.lst in an archive folder, one entry a line,
// each line a double quote, the entry's full path ("d:\JEUX\CASSE.EXE"), a double quote and CR LF,
// in Windows-1252. No header, no trailer: the number of entries is the number of lines.
namespace ArchiveFile {

// The bytes of an archive holding `entries` (already in Windows-1252), in their order.
QByteArray encode(const QList<QByteArray> &entries);

// The file name of an archive: the name as given, then ".lst".
QString fileName(const QString &archiveName);

// Writes the archive `archiveName` into `folderPath`, replacing a file of the same name.
// An empty list writes nothing. The file appears whole or not at all: a failed write (read-only
// folder, full disk) leaves any earlier file of that name as it was, and no other file behind.
// Returns whether it was written.
bool write(const QString &folderPath, const QString &archiveName, const QList<QByteArray> &entries);

// The archives of a folder: its files whose extension is ".lst" (any case), with their
// extension, in alphabetical order.
QStringList list(const QString &folderPath);

} // namespace ArchiveFile

// Takes an archive's bytes line by line, each line whole and as it stands (quotes included).
// Lines end with CR LF or a bare LF; the last line may lack its end. Any byte is accepted,
// NUL included, and a line may be of any length.
class ArchiveReader
{
public:
    explicit ArchiveReader(QByteArrayView data)
        : m_data(data)
    {
    }

    // The next line without its end, or false at the end of the data.
    bool next(QByteArrayView &line);

    // Every line of `data`.
    static QList<QByteArray> lines(QByteArrayView data);

private:
    QByteArrayView m_data;
    qsizetype m_pos = 0;
};

// The stored path of an archive line: the line less its first and last characters when it is
// longer than two characters (the quotes), as it stands otherwise.
QByteArrayView unquotedArchiveLine(QByteArrayView line);

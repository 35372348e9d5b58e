#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QTemporaryFile;

// An archive file is the catalogue of one medium: NAME.lst in an archive folder, one entry a line,
// each line a double quote, the entry's full path ("d:\JEUX\CASSE.EXE"), a double quote and CR LF,
// in Windows-1252. No header, no trailer: the number of entries is the number of lines.
namespace ArchiveFile {

// The bytes of an archive holding `entries` (already in Windows-1252), in their order.
QByteArray encode(const QList<QByteArray> &entries);

// The file name of an archive: the name as given, then ".lst".
QString fileName(const QString &archiveName);

// Whether a typed name can only name an entry of the folder it is meant for: no separator ("/",
// or "\\" which stands for one in the catalogue's own paths), no "..", no NUL (which would cut
// the name short in the system's calls). Archive, folder and rename names all go through it, so no
// typed text makes or moves a file outside the data directory.
bool isPlainName(const QString &name);

// Writes the archive `archiveName` into `folderPath`, replacing a file of the same name.
// An empty list writes nothing. The file appears whole or not at all: a failed write (read-only
// folder, full disk) leaves any earlier file of that name as it was, and no other file behind.
// Returns whether it was written.
bool write(const QString &folderPath, const QString &archiveName, const QList<QByteArray> &entries);

// The archives of a folder: its files whose extension is ".lst" (any case), with their
// extension, in alphabetical order.
QStringList list(const QString &folderPath);

} // namespace ArchiveFile

// Writes an archive entry by entry, for entries held elsewhere (a walk's results): each is copied
// only into a small buffer on its way to the file. Like ArchiveFile::write(), the archive appears
// at commit(), whole, or not at all. A name that is not plain (isPlainName) writes nothing.
class ArchiveWriter
{
public:
    ArchiveWriter(const QString &folderPath, const QString &archiveName);
    ~ArchiveWriter();
    ArchiveWriter(const ArchiveWriter &) = delete;
    ArchiveWriter &operator=(const ArchiveWriter &) = delete;

    void add(QByteArrayView entry);
    // The archive will take this name in the same folder (the temporary file stays where it is).
    void setArchiveName(const QString &archiveName);
    // Puts the archive in place, replacing a file of the same name. Returns false, and leaves no
    // file behind and any earlier one as it was, when nothing was added or the file could not be
    // written.
    bool commit();

private:
    bool flush();

    QString m_folderPath;
    QString m_target;
    std::unique_ptr<QTemporaryFile> m_file;
    QByteArray m_buffer;
    qsizetype m_used = 0;
    bool m_failed = false;
};

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

#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <optional>

class Drives;
class ImageFiles;
struct Drive;

// Finds a found file on its own disc. A letter is only the name a medium had when it was
// catalogued: before a file is opened, run, shown or copied, the medium at the row's letter must
// hold the row's archive (a few of the archive's entries, from its start and spread through it,
// are there, ignoring case). When it holds another disc, the mounted medium that holds the archive
// is used (the first by letter); when none does, the removable media present but not mounted are
// mounted (Drives::mountUnmountedMedia) and looked at once more; still none: there is no file.
class DiscLocator
{
public:
    explicit DiscLocator(Drives &drives, ImageFiles *images = nullptr)
        : m_drives(drives)
        , m_images(images)
    {
    }

    // The local path of `storedPath` ("D:\JEUX\CASSE.EXE"), a row of the archive file
    // `archiveFile`, on the medium holding that archive; empty when no mounted medium holds it or
    // the file is not on it. Verdicts are kept per archive and mounted medium, so a check costs
    // its directory look-ups once. When no medium holds it and the archive was made from a disc
    // image still at its place, the path is that of a copy read out of the image (ImageFiles).
    QString localPath(const QString &storedPath, const QString &archiveFile);
    // Whether `localPath` is such a copy out of an image.
    bool isImageCopy(const QString &localPath) const;

    // The entries the check looks for, as stored ("d:\DOC\LISEZMOI.TXT"): the first `fromStart`
    // that name files (not "." or ".."; not holding "?", which stands for a character the
    // catalogue could not hold), then `spread` more evenly spaced through the rest.
    static QStringList sampleEntries(QByteArrayView archive, int fromStart = 3, int spread = 5);

private:
    // The mounted medium holding the archive: the one at `letter` first, then the others by letter.
    std::optional<Drive> mediumHolding(const QString &letter, const QString &archiveFile);
    bool holdsArchive(const Drive &drive, const QString &archiveFile);
    QStringList samplesOf(const QString &archiveFile);

    // Images stand in for their discs when no medium holds the archive.
    QString outOfImage(const QString &storedPath, const QString &archiveFile);

    Drives &m_drives;
    ImageFiles *m_images;
    QMutex m_mutex; // viewers may ask from a worker
    QHash<QString, QStringList> m_samples; // by archive file, its size and time
    QHash<QString, bool> m_verdicts;       // by archive file and medium
};

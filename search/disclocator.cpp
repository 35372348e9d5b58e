#include "disclocator.h"

#include "archivefile.h"
#include "drives.h"
#include "imagefiles.h"
#include "localpath.h"
#include "regularfile.h"
#include "windows1252.h"

#include <QDateTime>
#include <QFileInfo>

namespace {

constexpr qint64 kLargestArchive = qint64(256) << 20;

bool namesAFile(QByteArrayView path)
{
    if (path.size() < 4 || path[1] != ':' || path[2] != '\\' || path.contains('?'))
        return false;
    const QByteArrayView name = path.sliced(path.lastIndexOf('\\') + 1);
    return !name.isEmpty() && name != "." && name != "..";
}

// Whether a stored path is on the medium at `mountPoint`: its own spelling first (a catalogue
// keeps the names' case), else each component ignoring case.
bool isOn(const QString &mountPoint, const QString &storedPath)
{
    QString exact = storedPath.mid(2);
    exact.replace(u'\\', u'/');
    return QFileInfo::exists(mountPoint + exact) || !localPathOn(mountPoint, storedPath).isEmpty();
}

} // namespace

QStringList DiscLocator::sampleEntries(QByteArrayView archive, int fromStart, int spread)
{
    QList<QByteArrayView> files;
    ArchiveReader reader(archive);
    QByteArrayView line;
    while (reader.next(line)) {
        const QByteArrayView path = unquotedArchiveLine(line);
        if (namesAFile(path))
            files.append(path);
    }
    QList<qsizetype> chosen;
    for (qsizetype i = 0; i < std::min<qsizetype>(fromStart, files.size()); ++i)
        chosen.append(i);
    const qsizetype first = chosen.size();
    const qsizetype rest = files.size() - first;
    for (int i = 0; i < spread && rest > 0; ++i) { // from the first after those to the last
        const qsizetype index = first + (spread == 1 ? rest - 1 : (rest - 1) * i / (spread - 1));
        if (!chosen.contains(index))
            chosen.append(index);
    }
    QStringList samples;
    for (qsizetype index : std::as_const(chosen))
        samples.append(Windows1252::decode(files[index]));
    return samples;
}

QStringList DiscLocator::samplesOf(const QString &archiveFile)
{
    const QFileInfo info(archiveFile);
    const QString key = archiveFile + u'\n' + QString::number(info.size()) + u'\n'
                        + QString::number(info.lastModified().toMSecsSinceEpoch());
    const auto known = m_samples.constFind(key);
    if (known != m_samples.cend())
        return *known;
    bool whole = false;
    const QByteArray archive = readRegularFile(archiveFile, kLargestArchive, &whole);
    const QStringList samples = whole ? sampleEntries(archive) : QStringList();
    m_samples.insert(key, samples);
    return samples;
}

bool DiscLocator::holdsArchive(const Drive &drive, const QString &archiveFile)
{
    // A medium is known by what it is (a disc replaced in its drive is another one), not by its letter.
    const QString key = archiveFile + u'\n' + drive.mountPoint + u'\n' + drive.device + u'\n' + drive.medium;
    const auto known = m_verdicts.constFind(key);
    if (known != m_verdicts.cend())
        return *known;
    const QStringList samples = samplesOf(archiveFile);
    QString root = drive.mountPoint;
    if (!root.endsWith(u'/'))
        root += u'/';
    const bool holds = !samples.isEmpty() && std::all_of(samples.cbegin(), samples.cend(), [&](const QString &sample) {
        return isOn(root, sample);
    });
    if (!drive.medium.isEmpty()) // a mount nothing tells apart from the next one is looked at each time
        m_verdicts.insert(key, holds);
    return holds;
}

std::optional<Drive> DiscLocator::mediumHolding(const QString &letter, const QString &archiveFile)
{
    QList<Drive> drives = m_drives.drives();
    std::stable_partition(drives.begin(), drives.end(), [&](const Drive &drive) { return drive.name == letter; });
    const QMutexLocker lock(&m_mutex);
    for (const Drive &drive : std::as_const(drives)) {
        if (drive.mountPoint.isEmpty() || (drive.mountPoint == u"/" && drive.name != letter))
            continue; // the system's disk is no disc
        if (holdsArchive(drive, archiveFile))
            return drive;
    }
    return std::nullopt;
}

QString DiscLocator::localPath(const QString &storedPath, const QString &archiveFile)
{
    const QString letter = driveNameOf(storedPath);
    if (letter.isEmpty() || storedPath.indexOf(u':') != 1 || archiveFile.isEmpty())
        return {};
    std::optional<Drive> drive = mediumHolding(letter, archiveFile);
    // The disc may be in a drive nobody mounted (no automounter): mount what is there, look again.
    if (!drive && m_drives.mountUnmountedMedia())
        drive = mediumHolding(letter, archiveFile);
    return drive ? localPathOn(drive->mountPoint, storedPath) : outOfImage(storedPath, archiveFile);
}

// Disc images: the last place looked at, so a mounted disc (or image) always comes first.
QString DiscLocator::outOfImage(const QString &storedPath, const QString &archiveFile)
{
    return m_images ? m_images->copyOf(storedPath, archiveFile) : QString();
}

bool DiscLocator::isImageCopy(const QString &localPath) const
{
    return m_images && m_images->isCopy(localPath);
}

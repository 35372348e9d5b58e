#include "qtpictureloader.h"

#include "backgroundwork.h"
#include "metafiles.h"
#include "pictureformats.h"
#include "regularfile.h"

#include <QBuffer>
#include <QImageReader>

// The bounds, for pictures of floppies and CD-ROMs of the 1990s:
// - kLargestFile (32 MB): the largest pictures of the time (a Photo CD scan as a BMP is 18 MB) fit;
//   a file padded to gigabytes after a valid header is not read.
// - PictureFormats::kLargestPicturePixels for one picture.
// - kLargestIconFilePixels: 256 entries of 256 x 256, all an icon file's entries together; their
//   sizes are read from the entries' headers before anything is decoded.
// - kMostJpegScans: encoders write about 10 scans to a progressive JPEG; each scan is a pass over
//   the whole picture, so thousands of empty scans freeze the decoder for tens of seconds. Measured
//   here: 5,000 empty scans over 2048 x 2048 take 1.6 s, 100 over 4096 x 4096 add 0.13 s.
// - kDeadlineMilliseconds: the backstop for what the bounds above do not foresee.

namespace {

// Qt's reader refuses to allocate more than this (MB) for one picture.
constexpr int kAllocationLimitMegabytes = int(PictureFormats::kLargestPicturePixels * 4 / (1024 * 1024)) + 1;

// The entries an icon file's preview shows (the first) or an icon's sizes keep: those up to 64
// pixels (the gallery draws 48-pixel cells, buttons smaller), or the smallest larger one when none
// reaches 48.
constexpr int kLargestKeptIconSide = 64;
constexpr int kGalleryCellSide = 48;

bool tooLarge(const QSize &size)
{
    return qint64(size.width()) * size.height() > PictureFormats::kLargestPicturePixels;
}

// The first picture of a file in one of the formats Qt reads for us (nothing that could load other
// files, such as SVG); null when it is another format or too large.
QImage readWithQt(const QByteArray &data, const QByteArrayList &formats)
{
    QByteArray bytes = data;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAllocationLimit(kAllocationLimitMegabytes);
    if (!formats.contains(reader.format()) || tooLarge(reader.size()))
        return {};
    return reader.read();
}

QImage readIconEntry(const QByteArray &ico, const PictureFormats::IconEntry &entry)
{
    if (entry.png)
        return readWithQt(entry.data, {"png"});
    const QByteArray single = PictureFormats::singleEntryIcon(ico, entry);
    return PictureFormats::applyIconMask(single, 0, readWithQt(single, {"ico", "cur"}));
}

// The entries the caller needs, decoded; nothing when the file's entries together are too large.
QList<QImage> readIcon(const QByteArray &ico, bool allSizes)
{
    const QList<PictureFormats::IconEntry> entries = PictureFormats::iconEntries(ico);
    qint64 total = 0;
    QList<PictureFormats::IconEntry> usable;
    for (const PictureFormats::IconEntry &entry : entries) {
        if (!entry.real.isValid())
            continue;
        total += qint64(entry.real.width()) * entry.real.height();
        if (PictureFormats::entryIsConsistent(entry) && !tooLarge(entry.real))
            usable.append(entry);
    }
    if (total > QtPictureLoader::kLargestIconFilePixels || usable.isEmpty())
        return {};
    QList<PictureFormats::IconEntry> wanted;
    if (!allSizes) {
        wanted.append(usable.first());
    } else {
        bool reaches = false;
        const PictureFormats::IconEntry *smallestLarger = nullptr;
        for (const PictureFormats::IconEntry &entry : std::as_const(usable)) {
            const int side = std::max(entry.real.width(), entry.real.height());
            if (side <= kLargestKeptIconSide) {
                wanted.append(entry);
                reaches = reaches || side >= kGalleryCellSide;
            } else if (!smallestLarger || side < std::max(smallestLarger->real.width(), smallestLarger->real.height())) {
                smallestLarger = &entry;
            }
        }
        if (!reaches && smallestLarger)
            wanted.append(*smallestLarger);
    }
    QList<QImage> images;
    for (const PictureFormats::IconEntry &entry : std::as_const(wanted)) {
        const QImage image = readIconEntry(ico, entry);
        if (!image.isNull())
            images.append(image);
    }
    return images;
}

QList<QImage> readImages(const QByteArray &data, bool allSizes)
{
    switch (PictureFormats::kindOf(data)) {
    case PictureFormats::Kind::Wmf:
        return {Metafiles::drawWmf(data)};
    case PictureFormats::Kind::Emf:
        return {Metafiles::drawEmf(data)};
    case PictureFormats::Kind::Ani:
        return readIcon(PictureFormats::firstAniIcon(data), allSizes);
    case PictureFormats::Kind::Icon:
        return readIcon(data, allSizes);
    case PictureFormats::Kind::Other:
        break;
    }
    if (PictureFormats::jpegScanCount(data) > QtPictureLoader::kMostJpegScans)
        return {};
    return {readWithQt(data, {"bmp", "gif", "jpeg", "png"})};
}

} // namespace

QtPictureLoader::QtPictureLoader(const Clock *clock)
    : m_clock(clock)
{
}

QImage QtPictureLoader::readPicture(const QByteArray &data)
{
    const QList<QImage> images = readImages(data, false);
    return images.isEmpty() ? QImage() : images.first();
}

QList<QImage> QtPictureLoader::readIconImages(const QByteArray &data)
{
    QList<QImage> images = readImages(data, true);
    images.removeAll(QImage());
    return images;
}

QByteArray QtPictureLoader::readPictureFile(const QString &path)
{
    // A file already too large is refused without reading a byte (a whole CD's worth of it).
    RegularFile file(path);
    if (!file.isOpen() || file.sizeAtOpening() > kLargestFile)
        return {};
    bool whole = false; // a file that grew since
    const QByteArray data = readRegularFile(file, kLargestFile, &whole);
    return whole ? data : QByteArray();
}

QImage QtPictureLoader::loadPicture(const QString &path)
{
    const auto image = BackgroundWork::call<QImage>([path] { return readPicture(readPictureFile(path)); },
                                                    clock(), kDeadlineMilliseconds);
    return image.value_or(QImage());
}

QIcon QtPictureLoader::loadIcon(const QString &path)
{
    const auto images = BackgroundWork::call<QList<QImage>>(
        [path] { return readIconImages(readPictureFile(path)); }, clock(), kDeadlineMilliseconds);
    QIcon icon;
    for (const QImage &image : images.value_or(QList<QImage>()))
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}

#include "qtpictureloader.h"

#include "metafiles.h"
#include "pictureformats.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

namespace {

// Pictures larger than this (in MB of pixels) are not pictures of a floppy or a CD of the time:
// refuse them rather than allocate gigabytes for a forged header.
constexpr int kLargestPictureMegabytes = 256;

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QList<QImage> readWithQt(const QByteArray &data, bool allImages)
{
    QByteArray bytes = data;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAllocationLimit(kLargestPictureMegabytes);
    const bool isIcon = reader.format() == "ico" || reader.format() == "cur";
    QList<QImage> images;
    for (int index = 0; index < 256; ++index) {
        const QImage image = reader.read();
        if (image.isNull())
            break;
        images.append(isIcon ? PictureFormats::applyIconMask(data, index, image) : image);
        if (!allImages || !reader.jumpToNextImage())
            break;
    }
    return images;
}

} // namespace

QImage QtPictureLoader::readPicture(const QByteArray &data)
{
    switch (PictureFormats::kindOf(data)) {
    case PictureFormats::Kind::Wmf:
        return Metafiles::drawWmf(data);
    case PictureFormats::Kind::Emf:
        return Metafiles::drawEmf(data);
    case PictureFormats::Kind::Ani: {
        const QList<QImage> images = readWithQt(PictureFormats::firstAniIcon(data), false);
        return images.isEmpty() ? QImage() : images.first();
    }
    case PictureFormats::Kind::Other:
        break;
    }
    const QList<QImage> images = readWithQt(data, false);
    return images.isEmpty() ? QImage() : images.first();
}

QList<QImage> QtPictureLoader::readIconImages(const QByteArray &data)
{
    switch (PictureFormats::kindOf(data)) {
    case PictureFormats::Kind::Ani:
        return readWithQt(PictureFormats::firstAniIcon(data), true);
    case PictureFormats::Kind::Other:
        return readWithQt(data, true);
    case PictureFormats::Kind::Wmf:
    case PictureFormats::Kind::Emf:
        break;
    }
    const QImage image = readPicture(data);
    return image.isNull() ? QList<QImage>() : QList<QImage>{image};
}

QImage QtPictureLoader::loadPicture(const QString &path)
{
    return readPicture(readAll(path));
}

QIcon QtPictureLoader::loadIcon(const QString &path)
{
    QIcon icon;
    for (const QImage &image : readIconImages(readAll(path)))
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}

#include "qtpictureloader.h"

#include <QImageReader>

QImage QtPictureLoader::loadPicture(const QString &path)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    return reader.read();
}

QIcon QtPictureLoader::loadIcon(const QString &path)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    QIcon icon;
    do {
        const QImage image = reader.read();
        if (image.isNull())
            break;
        icon.addPixmap(QPixmap::fromImage(image));
    } while (reader.jumpToNextImage());
    return icon;
}

#pragma once

#include "pictureloader.h"

// Pictures by their content, whatever their name: BMP, GIF, JPEG, ICO and CUR through Qt's image
// readers (the AND mask of icons of 24 bits or fewer honoured), the first frame of an animated
// cursor (.ANI), WMF and EMF drawn at their natural size (see metafiles.h).
class QtPictureLoader final : public PictureLoader
{
public:
    QImage loadPicture(const QString &path) override;
    QIcon loadIcon(const QString &path) override;

    // The same readers over a file's bytes.
    static QImage readPicture(const QByteArray &data);
    static QList<QImage> readIconImages(const QByteArray &data);
};

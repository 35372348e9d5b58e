#pragma once

#include "pictureloader.h"

// Pictures through Qt's image readers (BMP, GIF, JPEG, ICO, CUR, ...).
class QtPictureLoader final : public PictureLoader
{
public:
    QImage loadPicture(const QString &path) override;
    QIcon loadIcon(const QString &path) override;
};

#pragma once

#include <QIcon>
#include <QImage>
#include <QString>

// Reads pictures and icons from files. A file that cannot be read gives a null image or icon.
class PictureLoader
{
public:
    virtual ~PictureLoader() = default;

    // The picture at its natural size in pixels (metafiles at 96 pixels to the inch): its width and
    // height are the natural size the viewers fit into their frame.
    virtual QImage loadPicture(const QString &path) = 0;

    // The sizes of an icon file the windows draw: those up to 64 pixels, or the smallest larger one
    // when none reaches the gallery's 48.
    virtual QIcon loadIcon(const QString &path) = 0;
};

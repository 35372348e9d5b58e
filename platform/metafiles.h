#pragma once

#include <QByteArray>
#include <QImage>

// Windows metafiles drawn at their natural size (96 pixels to the inch) on a white page.
// A file that cannot be drawn gives a null image.
namespace Metafiles {

// WMF through ImageMagick's reader (libwmf) in this process: accents, fills and text boxes as
// Windows draws them. The size comes from the placeable header.
QImage drawWmf(const QByteArray &wmf);

// EMF through libemf2svg in this process, the SVG drawn by Qt SVG. The size comes from the
// header's frame.
QImage drawEmf(const QByteArray &emf);

} // namespace Metafiles

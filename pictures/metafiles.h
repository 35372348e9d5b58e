#pragma once

#include <QByteArray>
#include <QImage>

// Windows metafiles drawn at their natural size (96 pixels to the inch) on a white page.
// A file that cannot be drawn gives a null image.
namespace Metafiles {

// WMF through ImageMagick's reader (libwmf) in this process: accents, fills and text boxes as
// Windows draws them. The size comes from the placeable header. A file of more than 10,000 records
// is refused: libwmf's time grows with their square (figures in metafiles.cpp).
QImage drawWmf(const QByteArray &wmf);

// EMF through libemf2svg in this process, the SVG drawn by Qt SVG. The size comes from the
// header's frame.
QImage drawEmf(const QByteArray &emf);

// libemf2svg writes the metafile's text into its SVG as it comes, so a text can close its element
// and add others. The SVG is rewritten keeping only the elements and attributes of a drawing (no
// use, no style sheet, no reference but url(#id), images only from inline data: the metafile's own
// bitmaps), so the drawing cannot load a file.
// What follows an XML error is left out.
QByteArray safeSvg(const QByteArray &svg);

} // namespace Metafiles

// Windows icon (.ico) container writer.
//
// Each image is stored as a classic DIB entry: BITMAPINFOHEADER, 32-bit
// BGRA pixels bottom-up (the header height is doubled to account for the
// mask) followed by the 1-bit AND mask.  This layout is understood by every
// Windows version since 95 as well as by Qt's own ico reader.
#pragma once

#include <QByteArray>
#include <QList>
#include <QImage>
#include <QString>

namespace kalvex2::assets {

// Mask threshold: pixels whose alpha is below this value are marked
// transparent in the AND mask, for readers that ignore the alpha channel.
inline constexpr int kMaskAlphaThreshold = 128;

// Encodes the images (1 to 255 of them, each 1 to 256 px wide and high)
// into an .ico file.  Returns an empty array and fills *error on failure.
QByteArray encodeIco(const QList<QImage> &images, QString *error);

} // namespace kalvex2::assets

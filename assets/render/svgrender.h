// Rendering of the program's SVG drawings to raster images and files.
//
// A QGuiApplication must exist before any of these functions is called
// (SVG text needs the font database).
#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

namespace kalvex2::assets {

// Sizes stored in every program icon, smallest first.
inline constexpr int kIconSizes[] = {16, 32, 48};

// Renders SVG data at the given pixel size.  The drawing keeps its aspect
// ratio and is centred; the rest is filled with the background (which may be
// transparent).  Any warning the SVG module raises while reading or drawing
// (unknown element, bad attribute...) is treated as an error so that a faulty
// drawing fails the build instead of silently rendering wrong.
QImage renderSvgData(const QByteArray &svg, QSize size, const QColor &background, QString *error);

// Renders one transparent image per entry of kIconSizes.
QList<QImage> renderIconImages(const QByteArray &svg, QString *error);

// "ico" command: IN.svg -> OUT.ico holding the 16, 32 and 48 px images.
bool writeIconFile(const QString &svgPath, const QString &icoPath, QString *error);

// "jpg" command: IN.svg -> OUT.jpg of the given size on a white background.
bool writeJpegFile(const QString &svgPath, const QString &jpgPath, QSize size, QString *error);

} // namespace kalvex2::assets

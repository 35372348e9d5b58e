#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

// Small pure readers of picture file headers, driven by tests with byte strings. Every reader
// checks each offset against the data's length: a truncated or hostile file gives an empty answer.
namespace PictureFormats {

enum class Kind { Other, Wmf, Emf, Ani };

// What a file is, judged by its first bytes (never by its name).
Kind kindOf(const QByteArray &data);

// The first "icon" chunk of an animated cursor (RIFF "ACON"): a plain .CUR or .ICO file.
QByteArray firstAniIcon(const QByteArray &ani);

// A placeable metafile's size at 96 pixels to the inch: (right - left) * 96 / units per inch.
// An invalid size when the file has no placeable header.
QSize wmfNaturalSize(const QByteArray &wmf);

// An enhanced metafile's frame (0.01 mm units) at 96 pixels to the inch.
QSize emfNaturalSize(const QByteArray &emf);

// Applies the AND mask of entry `index` of an icon or cursor file to `image` (as read from that
// entry) when the entry is a bitmap of 24 bits or fewer: Qt's reader leaves the masked pixels of a
// 24-bit icon opaque. A PNG entry, a 32-bit entry or a bad offset leaves the image as it is.
QImage applyIconMask(const QByteArray &ico, int index, const QImage &image);

} // namespace PictureFormats

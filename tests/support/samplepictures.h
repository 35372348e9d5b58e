#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QString>

// Picture files written byte by byte for tests, so every field is known.
namespace SamplePictures {

// A picture of vertical bands, one per colour, left to right.
QImage bands(int width, int height, const QList<QColor> &colours);

// A one-entry icon (or cursor, hot spot 0,0) of `bits` bits per pixel (1, 4, 8, 24 or 32), the
// black pixels of `transparent` (when not null) set in its AND mask.
QByteArray icon(const QImage &picture, int bits, const QImage &transparent, bool cursor = false);

// An animated cursor holding `frames` as its icon chunks.
QByteArray animatedCursor(const QList<QByteArray> &frames);

// A placeable metafile of width x height pixels (15 units a pixel): the page in `background`, a
// rectangle of `fill` on its left half, `text` (Windows-1252) in black from the right half, a
// quarter down, 20 pixels high, then `rectangles` more rectangles. emf(): the same drawing (without
// the extra rectangles) in an enhanced metafile at 96 dpi.
QByteArray wmf(int width, int height, const QColor &background, const QColor &fill, const QString &text, int rectangles = 0);
QByteArray emf(int width, int height, const QColor &background, const QColor &fill, const QString &text);

// An icon file of `count` entries that all point at one PNG of width x height transparent pixels
// (a few KB on disk for megabytes decoded), each declaring 256 x 256.
QByteArray pngIcon(int width, int height, int count);
// One icon file of the entries of one-entry icon files (as icon() writes them), in that order.
QByteArray iconOfEntries(const QList<QByteArray> &icons);
// A progressive JPEG with `emptyScans` refinement scans of no data before its end: each one a
// pass of the decoder over the whole picture.
QByteArray jpegWithEmptyScans(int width, int height, int emptyScans);

} // namespace SamplePictures

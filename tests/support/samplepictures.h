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

// A one-entry icon (or cursor, hot spot 0,0) of `bits` bits per pixel (1, 4, 8, 24 or 32). For 8
// bits or fewer the picture's colours must fit the palette. `transparent` marks the pixels set in
// the AND mask (the top-left quarter when empty is not wanted: pass a null image for none).
QByteArray icon(const QImage &picture, int bits, const QImage &transparent, bool cursor = false);

// An animated cursor holding `frames` as its icon chunks, after an "anih" chunk.
QByteArray animatedCursor(const QList<QByteArray> &frames);

// A placeable metafile of width x height pixels (at 1440 units to the inch, 15 units a pixel):
// the page filled with `background`, a rectangle of `fill` on its left half, and `text` written
// in Windows-1252 in black from (right half, a quarter down) at 20 pixels high.
QByteArray wmf(int width, int height, const QColor &background, const QColor &fill, const QString &text);

// An enhanced metafile with the same drawing, its frame saying width x height pixels at 96 dpi.
QByteArray emf(int width, int height, const QColor &background, const QColor &fill, const QString &text);

// A PNG of width x height transparent pixels (8-bit RGBA), its data compressed here: a few KB on
// disk for megabytes decoded.
QByteArray emptyPng(int width, int height);

// An icon file of `count` entries that all point at the same `png`, each declaring 256 x 256.
QByteArray iconOfPngs(const QByteArray &png, int count);

// One icon file of the entries of one-entry icon files (as icon() writes them), in that order.
QByteArray iconOfEntries(const QList<QByteArray> &icons);

// A progressive JPEG of width x height with `emptyScans` refinement scans of no data added before
// its end: each one a pass of the decoder over the whole picture.
QByteArray jpegWithEmptyScans(int width, int height, int emptyScans);

// A placeable metafile of width x height pixels holding `count` rectangle records.
QByteArray wmfOfRectangles(int width, int height, int count);

} // namespace SamplePictures

#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

// Small pure readers of picture file headers, driven by tests with byte strings. Every reader
// checks each offset against the data's length: a truncated or hostile file gives an empty answer.
namespace PictureFormats {

// The most pixels a picture may have: a Pro Photo CD scan (6144 x 4096), the largest picture of the
// floppies and CD-ROMs of the time. A larger one is forged or not of the time: it is not drawn.
constexpr qint64 kLargestPicturePixels = 6144 * 4096;

enum class Kind { Other, Wmf, Emf, Ani, Icon };

// What a file is, judged by its first bytes (never by its name).
Kind kindOf(const QByteArray &data);

// The first "icon" chunk of an animated cursor (RIFF "ACON"): a plain .CUR or .ICO file.
QByteArray firstAniIcon(const QByteArray &ani);

// One picture of an icon or cursor file, as its directory entry says and as its data says.
struct IconEntry
{
    QSize declared; // from the directory: 0 stands for 256 or more
    QSize real;     // from the entry's PNG IHDR or bitmap header; invalid when unreadable
    bool png = false;
    QByteArray directory; // its 16 bytes in the directory
    QByteArray data; // the entry's bytes (up to the file's end when the directory says more)
};

// The entries of an icon or cursor file (Kind::Icon), read from its directory without decoding.
QList<IconEntry> iconEntries(const QByteArray &ico);

// Whether the entry's real size is what its directory says (a declared 0 taking any size of 256 or
// more): a forged or broken entry does not.
bool entryIsConsistent(const IconEntry &entry);

// A plain one-entry icon or cursor file holding a bitmap entry, for Qt's reader.
QByteArray singleEntryIcon(const QByteArray &ico, const IconEntry &entry);

// The number of scans (SOS markers) of a JPEG file, walking its segments and its entropy-coded
// data; -1 when it is not a JPEG. Every scan of a progressive JPEG is a pass over the whole picture.
int jpegScanCount(const QByteArray &jpeg);

// The number of records of a Windows metafile up to its end record, walking the record sizes; -1
// when it is not a metafile or a record's size is broken (below the 3 words of its own header).
int wmfRecordCount(const QByteArray &wmf);

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

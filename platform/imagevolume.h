#pragma once

// What the image lister reads through: one file system inside one image file. Not for use
// outside the image readers.

#include "imagedirectorylister.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>

#include <cstdint>
#include <memory>
#include <vector>

// Reads 2048-byte logical sectors out of an image, whatever holds them (a plain ISO, raw
// 2352-byte sectors, a CUE sheet's BIN, an NRG).
class SectorReader
{
public:
    virtual ~SectorReader() = default;
    // Reads `count` sectors from `sector` on into `out` (2048 * count bytes); false past the end
    // of the image or on a read error.
    virtual bool read(std::uint32_t sector, std::uint32_t count, char *out) = 0;
    // Where the last session's volume descriptors begin (a sector).
    virtual std::uint32_t sessionStart() const { return 0; }
};

// Opens a plain or raw (2352-byte) sector file, or whatever libcdio's image drivers read (CUE,
// NRG); null when none fits.
std::unique_ptr<SectorReader> openSectors(const QString &path);

using ImageDirectory = ImageDirectoryLister::Directory;

class ImageVolume
{
public:
    virtual ~ImageVolume() = default;
    virtual ImageKind kind() const = 0;
    virtual ImageDirectory root() = 0;
    // Adds the entries of `directory` (native path `path` from "/") to `entries` and its
    // sub-directories to `children`; false when it cannot be read.
    virtual bool list(const ImageDirectory &directory, QByteArrayView path, DirectoryListing &entries,
                      std::vector<ImageDirectory> &children) = 0;
    // Writes the bytes of the file `name` (a native name, not a directory nor a link) of
    // `directory` to `out`, one chunk at a time; false when it is not there, its data lies outside
    // the image or a write fails.
    virtual bool copyFile(const ImageDirectory &directory, QByteArrayView path, QByteArrayView name,
                          QIODevice &out) = 0;
};

// The size of the chunks a file is copied in: the memory a copy takes, whatever the file's size.
constexpr std::uint32_t kImageCopyChunk = 64 * 1024;

// The first reader that recognises the image, null when none does.
std::unique_ptr<ImageVolume> openIsoVolume(std::unique_ptr<SectorReader> sectors);
std::unique_ptr<ImageVolume> openFatVolume(const QString &path);
std::unique_ptr<ImageVolume> openUdfVolume(const QString &path);

// Appends the UTF-8 form of UCS-2 text (big- or little-endian) to `out`; a lone surrogate gives
// U+FFFD, so a name with bad units still is one name.
void appendUtf16AsUtf8(const unsigned char *units, size_t count, bool bigEndian, QByteArray &out);

inline std::uint32_t le16(const unsigned char *p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8;
}
inline std::uint32_t le32(const unsigned char *p)
{
    return le16(p) | le16(p + 2) << 16;
}
